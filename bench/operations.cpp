#include "bench/operations.h"

std::vector<OperationKind> allOperations()
{
    std::vector<OperationKind> all;
    for (const std::vector<OperationKind> &some :
         {exchangeOperations(), cacheOperations(), listOperations()})
        all.insert(all.end(), some.begin(), some.end());
    return all;
}
