// The heap counters of the benchmarks that measure memory. Linking bench/heap_counter.cpp into
// a benchmark program replaces the global allocation functions there: each block is prefixed
// with its size, so the bytes still held after an operation can be told apart from short-lived
// allocations. The counters are not thread-safe; the benchmarks run on one thread.
#pragma once

#include <cstdint>

namespace Orlo::bench {

struct HeapCounters {
  std::uint64_t allocations = 0;      // every allocation so far
  std::uint64_t allocated_bytes = 0;  // the bytes they asked for
  std::int64_t live_allocations = 0;  // allocated and not freed yet
  std::int64_t live_bytes = 0;
};

// The counters now.
const HeapCounters& Heap();

// What happened on the heap since `before` was taken.
HeapCounters HeapSince(const HeapCounters& before);

}  // namespace Orlo::bench
