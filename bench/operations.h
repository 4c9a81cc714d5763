// The operations of the driver that are measured: once defined, they are timed by bench_driver and
// counted by count_driver.
#ifndef KVT_BENCH_OPERATIONS_H
#define KVT_BENCH_OPERATIONS_H

#include <functional>
#include <vector>

/// Does a prepared operation once more. Unless said otherwise, every call costs the same.
using Operation = std::function<void()>;

/// A kind of operation and the sizes it is measured at.
struct OperationKind {
    const char *name;            ///< as it stands in the tables
    std::vector<int> sizes;      ///< numbers of variables, or of queued requests; rising
    int repeats;                 ///< how often count_driver does it, the figures being averages
    Operation (*prepare)(int n); ///< brings the driver to size `n`; ends all earlier operations
    bool growing = false;        ///< makes the cache grow: timed no more often either
};

/// The numbers of variables that most operations are measured at.
extern const std::vector<int> SIZES;

/// One whole exchange of each area: the request is built, its reply judged, stored and retired.
std::vector<OperationKind> exchangeOperations();

/// The host's calls to the cache, and the address texts they begin with.
std::vector<OperationKind> cacheOperations();

/// The rebuild of the read list, and the two queues.
std::vector<OperationKind> listOperations();

/// All of the above.
std::vector<OperationKind> allOperations();

#endif
