// Cost of evaluating a transform controller, and the heap a default one takes.
//
// GetMatrix3 is measured with 0, 10 and 1,000 keys in each of its nine scalar controllers.
// The heap figures come from replacing the global allocation functions in this program: each
// block is prefixed with its size, so the bytes still held once a default controller is built
// (the controller, its twelve scalar and four vector controllers, its table and its thirty
// parameters, with their containers) can be told apart from short-lived allocations.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>

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

using Orlo::BezierController;
using Orlo::BezierKey;
using Orlo::Point3Controller;
using Orlo::Transform3Controller;

// Gives each of the nine scalar controllers of position, rotation and scale `keys` keys,
// ten ticks apart from time 0.
void AddKeys(Transform3Controller* transform, int keys) {
  for (int slot = 1; slot <= 3; ++slot) {
    auto* point3 = dynamic_cast<Point3Controller*>(transform->GetDependency(slot));
    for (int axis = 0; axis < 3; ++axis) {
      auto* scalar = dynamic_cast<BezierController*>(point3->GetDependency(axis));
      for (int k = 0; k < keys; ++k) scalar->SetKey(BezierKey(k * 10, 0.001 * (k + axis + 1)));
    }
  }
}

void BM_GetMatrix3(benchmark::State& state) {
  const int keys = static_cast<int>(state.range(0));
  auto* transform = new Transform3Controller(true);
  AddKeys(transform, keys);
  // Between two keys in the middle of the list, so no exact match ends the search early.
  const int time = keys > 0 ? (keys / 2) * 10 + 5 : 5;
  for (auto _ : state) {
    Orlo::Matrix3<double> m = transform->GetMatrix3(time);
    benchmark::DoNotOptimize(m);
  }
  state.counters["keys_per_scalar"] = static_cast<double>(keys);
  transform->DeleteThisBlock(true);
}
BENCHMARK(BM_GetMatrix3)->Arg(0)->Arg(10)->Arg(1000);

void BM_DefaultTransformHeap(benchmark::State& state) {
  HeapCounters built;
  for (auto _ : state) {
    const HeapCounters before = g_heap;
    auto* transform = new Transform3Controller(true);
    built.allocations = g_heap.allocations - before.allocations;
    built.allocated_bytes = g_heap.allocated_bytes - before.allocated_bytes;
    built.live_allocations = g_heap.live_allocations - before.live_allocations;
    built.live_bytes = g_heap.live_bytes - before.live_bytes;
    transform->DeleteThisBlock(true);
    benchmark::ClobberMemory();
  }
  // What one controller keeps once built, and what building it asked for in all.
  state.counters["heap_bytes"] = static_cast<double>(built.live_bytes);
  state.counters["heap_blocks"] = static_cast<double>(built.live_allocations);
  state.counters["bytes_requested"] = static_cast<double>(built.allocated_bytes);
  state.counters["allocations"] = static_cast<double>(built.allocations);
}
BENCHMARK(BM_DefaultTransformHeap);

}  // namespace

BENCHMARK_MAIN();
