// Counts what the program asks of the heap.
#ifndef KVT_BENCH_ALLOCATION_COUNTER_H
#define KVT_BENCH_ALLOCATION_COUNTER_H

/// Returns how often the program, its libraries included, has called malloc, calloc or realloc so
/// far. Any thread.
long allocations();

#endif
