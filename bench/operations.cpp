#include "bench/operations.h"

const std::vector<int> SIZES = {100, 1000, 10000, 100000};

std::vector<OperationKind> allOperations()
{
    std::vector<OperationKind> all;
    for (const std::vector<OperationKind> &some :
         {exchangeOperations(), cacheOperations(), listOperations()})
        all.insert(all.end(), some.begin(), some.end());
    return all;
}
