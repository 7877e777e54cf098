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

#include "bench/heap_counter.h"

namespace {

using Orlo::Node;
using Orlo::bench::Heap;
using Orlo::bench::HeapCounters;
using Orlo::bench::HeapSince;

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
    const HeapCounters before = Heap();
    auto* node = new Node(true);
    built = HeapSince(before);
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
    const HeapCounters before = Heap();
    auto* parent = new Node(true);
    for (int i = 0; i < kChildren; ++i) {
      if (!parent->AddChild(new Node(true)).IsOk()) state.SkipWithError("AddChild failed");
    }
    built = HeapSince(before);
    parent->DeleteThisBlock(true);
    benchmark::ClobberMemory();
  }
  Report(state, built, kChildren + 1);
}
BENCHMARK(BM_HundredThousandChildrenHeap)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
