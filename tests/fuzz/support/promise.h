// What holds for every input.
#ifndef KVT_TESTS_FUZZ_SUPPORT_PROMISE_H
#define KVT_TESTS_FUZZ_SUPPORT_PROMISE_H

#include <cstdio>
#include <cstdlib>

/// Ends the process, with the promise on stderr, unless it is `kept`.
inline void require(bool kept, const char *promise)
{
    if (kept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

#endif
