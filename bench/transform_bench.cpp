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

#include "bench/heap_counter.h"

namespace {

using Orlo::BezierController;
using Orlo::BezierKey;
using Orlo::Point3Controller;
using Orlo::Transform3Controller;
using Orlo::bench::Heap;
using Orlo::bench::HeapCounters;
using Orlo::bench::HeapSince;

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
    const HeapCounters before = Heap();
    auto* transform = new Transform3Controller(true);
    built = HeapSince(before);
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
