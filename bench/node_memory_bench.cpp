// The heap a default node takes, alone and 100,000 times under one parent.
//
// A default node (Node(true)) is what every scene is made of: the node, its parameter table
// with six display parameters, its children table, its NodeTransform and the transform's
// Transform3Controller with its table, thirty parameters, four vector and twelve scalar
// controllers: 58 blocks. The heap figures come from replacing the global allocation
// functions in this program: each block is prefixed with its size, so the bytes still held
// once the nodes are built can be told apart from short-lived allocations.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include <orlo/base/scene/node.h>

namespace {

// Counters of the replaced allocator. The benchmark runs on one thread.
struct HeapCounters {
  std::uint64_t allocations = 0;
  std::uint64_t allocated_bytes = 0;
  std::int64_t live_allocations = 0;
  std::int64_t live_bytes = 0;
};

HeapCounters g_heap;

// Keeps the prefix a multiple of the strictest fundamental alignment.
constexpr std::size_t kPrefix = alignof(std::max_align_t);

void* CountedAllocate(std::size_t size) {
  void* raw = std::malloc(size + kPrefix);
  if (raw == nullptr) return nullptr;
  *static_cast<std::size_t*>(raw) = size;
  ++g_heap.allocations;
  g_heap.allocated_bytes += size;
  ++g_heap.live_allocations;
  g_heap.live_bytes += static_cast<std::int64_t>(size);
  return static_cast<char*>(raw) + kPrefix;
}

void CountedFree(void* pointer) {
  if (pointer == nullptr) return;
  void* raw = static_cast<char*>(pointer) - kPrefix;
  --g_heap.live_allocations;
  g_heap.live_bytes -= static_cast<std::int64_t>(*static_cast<std::size_t*>(raw));
  std::free(raw);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* pointer = CountedAllocate(size)) return pointer;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  if (void* pointer = CountedAllocate(size)) return pointer;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocate(size);
}
void operator delete(void* pointer) noexcept { CountedFree(pointer); }
void operator delete[](void* pointer) noexcept { CountedFree(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { CountedFree(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { CountedFree(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { CountedFree(pointer); }
void operator delete[](void* pointer, const std::nothrow_t&) noexcept { CountedFree(pointer); }

namespace {

using Orlo::Node;

HeapCounters Since(const HeapCounters& before) {
  HeapCounters delta;
  delta.allocations = g_heap.allocations - before.allocations;
  delta.allocated_bytes = g_heap.allocated_bytes - before.allocated_bytes;
  delta.live_allocations = g_heap.live_allocations - before.live_allocations;
  delta.live_bytes = g_heap.live_bytes - before.live_bytes;
  return delta;
}

void Report(benchmark::State& state, const HeapCounters& built, int nodes) {
  // What the nodes keep once built, in all and per node, and what building them asked for.
  state.counters["heap_bytes"] = static_cast<double>(built.live_bytes);
  state.counters["heap_blocks"] = static_cast<double>(built.live_allocations);
  state.counters["bytes_per_node"] = static_cast<double>(built.live_bytes) / nodes;
  state.counters["blocks_per_node"] = static_cast<double>(built.live_allocations) / nodes;
  state.counters["bytes_requested"] = static_cast<double>(built.allocated_bytes);
  state.counters["allocations"] = static_cast<double>(built.allocations);
}

void BM_DefaultNodeHeap(benchmark::State& state) {
  HeapCounters built;
  for (auto _ : state) {
    const HeapCounters before = g_heap;
    auto* node = new Node(true);
    built = Since(before);
    node->DeleteThisBlock(true);
    benchmark::ClobberMemory();
  }
  Report(state, built, 1);
}
BENCHMARK(BM_DefaultNodeHeap);

// 100,000 default nodes added to one default parent with AddChild. The parent itself and the
// growth of its children table are counted in the total.
void BM_HundredThousandChildrenHeap(benchmark::State& state) {
  constexpr int kChildren = 100000;
  HeapCounters built;
  for (auto _ : state) {
    const HeapCounters before = g_heap;
    auto* parent = new Node(true);
    for (int i = 0; i < kChildren; ++i) {
      if (!parent->AddChild(new Node(true)).IsOk()) state.SkipWithError("AddChild failed");
    }
    built = Since(before);
    parent->DeleteThisBlock(true);
    benchmark::ClobberMemory();
  }
  Report(state, built, kChildren + 1);
}
BENCHMARK(BM_HundredThousandChildrenHeap)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
