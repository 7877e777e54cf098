// The replaced global allocation functions behind bench/heap_counter.h.
#include "bench/heap_counter.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace Orlo::bench {
namespace {

HeapCounters g_heap;

// Keeps the prefix a multiple of the strictest fundamental alignment.
constexpr std::size_t kPrefix = alignof(std::max_align_t);

// Out of line: inlined into the replaced operators, GCC takes the prefix arithmetic for an
// access outside the caller's object and warns.
[[gnu::noinline]] void* CountedAllocate(std::size_t size) {
  void* raw = std::malloc(size + kPrefix);
  if (raw == nullptr) return nullptr;
  *static_cast<std::size_t*>(raw) = size;
  ++g_heap.allocations;
  g_heap.allocated_bytes += size;
  ++g_heap.live_allocations;
  g_heap.live_bytes += static_cast<std::int64_t>(size);
  return static_cast<char*>(raw) + kPrefix;
}

[[gnu::noinline]] void CountedFree(void* pointer) {
  if (pointer == nullptr) return;
  void* raw = static_cast<char*>(pointer) - kPrefix;
  --g_heap.live_allocations;
  g_heap.live_bytes -= static_cast<std::int64_t>(*static_cast<std::size_t*>(raw));
  std::free(raw);
}

}  // namespace

const HeapCounters& Heap() { return g_heap; }

HeapCounters HeapSince(const HeapCounters& before) {
  HeapCounters delta;
  delta.allocations = g_heap.allocations - before.allocations;
  delta.allocated_bytes = g_heap.allocated_bytes - before.allocated_bytes;
  delta.live_allocations = g_heap.live_allocations - before.live_allocations;
  delta.live_bytes = g_heap.live_bytes - before.live_bytes;
  return delta;
}

}  // namespace Orlo::bench

void* operator new(std::size_t size) {
  if (void* pointer = Orlo::bench::CountedAllocate(size)) return pointer;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  if (void* pointer = Orlo::bench::CountedAllocate(size)) return pointer;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Orlo::bench::CountedAllocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Orlo::bench::CountedAllocate(size);
}
void operator delete(void* pointer) noexcept { Orlo::bench::CountedFree(pointer); }
void operator delete[](void* pointer) noexcept { Orlo::bench::CountedFree(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { Orlo::bench::CountedFree(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { Orlo::bench::CountedFree(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
  Orlo::bench::CountedFree(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
  Orlo::bench::CountedFree(pointer);
}
