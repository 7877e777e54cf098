// Measures loading the shared scene workload (bench/scene_workload.h) at 10,000 and 100,000
// nodes in each of its three shapes.
//
// For each shape and size the scene is built and saved once, outside the timing; each
// iteration then loads the file into an engine whose scene was deleted beforehand (also
// outside the timing), so the time is LoadScene alone: reading, creating, linking, renumbering,
// the parent pointers, the table refresh and the post-load pass.
// Counters: nodes/s and blocks/s (blocks created from the file), and heap_bytes/node, the heap
// the loaded scene holds once LoadScene returns, divided by the nodes. The heap figure comes
// from replacing the global allocation functions in this program, as node_memory_bench does.
// page_faults/node counts the fresh pages the kernel handed the process during the load
// (minor faults): memory the allocator had to ask for, which costs far more on some virtual
// machines than on bare hardware and explains much of the difference between sizes there.
// Every size is loaded once before it is measured (see Sizes).
// The files live in a fresh directory under the system's temporary directory, removed at exit.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

#include <sys/resource.h>

#include <benchmark/benchmark.h>
#include <boost/filesystem.hpp>

#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/status.h>

#include "bench/heap_counter.h"
#include "bench/scene_workload.h"
#include "bench/workload_bench.h"

namespace {

long MinorFaults() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

using Orlo::SceneEngine;
using Orlo::Status;
using Orlo::bench::BuildSceneWorkload;
using Orlo::bench::NodesOf;
using Orlo::bench::ShapeOf;
using Orlo::bench::WorkFile;

void BM_Load(benchmark::State& state) {
  Orlo::RegisterBaseLibrary();
  const int nodes = NodesOf(state);
  const std::string path = WorkFile("load.scene");
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  engine.InitScene();
  BuildSceneWorkload(&engine, ShapeOf(state), nodes);
  if (!engine.SaveScene(path).IsOk()) state.SkipWithError("save failed");
  const int blocks = engine.GetNumBlocks();
  std::int64_t heap = 0;
  long faults = 0;
  for (auto _ : state) {
    state.PauseTiming();
    engine.DeleteScene();
    const std::int64_t before = Orlo::bench::Heap().live_bytes;
    const long faults_before = MinorFaults();
    state.ResumeTiming();
    const Status status = engine.LoadScene(path);
    state.PauseTiming();
    faults = MinorFaults() - faults_before;
    heap = Orlo::bench::Heap().live_bytes - before;
    if (!status.IsOk()) state.SkipWithError(status.GetMessage().c_str());
    state.ResumeTiming();
  }
  using benchmark::Counter;
  state.counters["nodes/s"] = Counter(nodes, Counter::kIsIterationInvariantRate);
  state.counters["blocks/s"] = Counter(blocks, Counter::kIsIterationInvariantRate);
  state.counters["blocks"] = blocks;
  state.counters["heap_bytes/node"] = static_cast<double>(heap) / nodes;
  state.counters["page_faults/node"] = static_cast<double>(faults) / nodes;
  Orlo::bench::SetWorkloadLabel(state);
  engine.DeleteScene();
  SceneEngine::SetScene(nullptr);
  SceneEngine::DestroyFactories();
  boost::filesystem::remove(path);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  for (int shape : {0, 1, 2}) {
    for (int nodes : {10000, 100000}) benchmark->Args({shape, nodes});
  }
  benchmark->ArgNames({"shape", "nodes"})->Unit(benchmark::kMillisecond)->UseRealTime();
  // As in the save benchmark: without a warm-up the small files load again on a heap the
  // first load left ready while the large ones load once on fresh pages. The warm-up loads
  // every size at least once first; the first load of a fresh process is slower by the
  // pages it takes from the kernel.
  benchmark->MinWarmUpTime(0.5);
}

BENCHMARK(BM_Load)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
