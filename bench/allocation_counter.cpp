#include "bench/allocation_counter.h"

#include <atomic>
#include <cstddef>

namespace
{

std::atomic<long> calls{0};

void count()
{
    calls.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

long allocations()
{
    return calls.load(std::memory_order_relaxed);
}

// The C library's own functions under their other names; operator new and Qt come here as well.
// NOLINTBEGIN(bugprone-reserved-identifier): these are the C library's names
extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t number, size_t size);
void *__libc_realloc(void *block, size_t size);

void *malloc(size_t size) noexcept
{
    count();
    return __libc_malloc(size);
}

void *calloc(size_t number, size_t size) noexcept
{
    count();
    return __libc_calloc(number, size);
}

void *realloc(void *block, size_t size) noexcept
{
    count();
    return __libc_realloc(block, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)
