// Measures building and saving the shared scene workload (bench/scene_workload.h) at 10,000
// and 100,000 nodes in each of its three shapes, against the I/O ceiling for the same file.
//
// For each shape and size:
//   BM_Build      InitScene, then the nodes built through the public API (the old scene is
//                 deleted outside the timing);
//   BM_Save       SaveScene of the built scene to a file;
//   BM_IoCeiling  the same number of bytes as the saved file written to a file in plain 1 MiB
//                 writes: what the disk and the page cache allow for this file.
// Counters: nodes/s and blocks/s (every block reachable from the main scene), the file's bytes
// per node, and bytes/s for the save and the ceiling. The files live in a fresh directory
// under the system's temporary directory, removed at exit.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/filesystem.hpp>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/support/status.h>

#include "bench/scene_workload.h"
#include "bench/workload_bench.h"

namespace {

using Orlo::SceneEngine;
using Orlo::Status;
using Orlo::bench::BuildSceneWorkload;
using Orlo::bench::NodesOf;
using Orlo::bench::ShapeOf;
using Orlo::bench::WorkFile;

// The number of blocks reachable from the main scene, as the numbering counts them.
int CountBlocks(SceneEngine& engine) {
  engine.InitBlocks(engine.GetMainScene());
  engine.SetBlockIDs();
  return engine.GetNumBlocks();
}


void SetRates(benchmark::State& state, int nodes, int blocks) {
  using benchmark::Counter;
  state.counters["nodes/s"] = Counter(nodes, Counter::kIsIterationInvariantRate);
  state.counters["blocks/s"] = Counter(blocks, Counter::kIsIterationInvariantRate);
}

void BM_Build(benchmark::State& state) {
  const int nodes = NodesOf(state);
  int blocks = 0;
  for (auto _ : state) {
    SceneEngine engine;
    engine.InitScene();
    BuildSceneWorkload(&engine, ShapeOf(state), nodes);
    state.PauseTiming();
    blocks = CountBlocks(engine);
    engine.DeleteScene();
    state.ResumeTiming();
  }
  SetRates(state, nodes, blocks);
  Orlo::bench::SetWorkloadLabel(state);
}

void BM_Save(benchmark::State& state) {
  const int nodes = NodesOf(state);
  SceneEngine engine;
  engine.InitScene();
  BuildSceneWorkload(&engine, ShapeOf(state), nodes);
  const std::string path = WorkFile("save.scene");
  for (auto _ : state) {
    const Status status = engine.SaveScene(path);
    if (!status.IsOk()) state.SkipWithError(status.GetMessage().c_str());
  }
  const double bytes = static_cast<double>(boost::filesystem::file_size(path));
  SetRates(state, nodes, engine.GetNumBlocks());
  state.counters["bytes/node"] = bytes / nodes;
  state.counters["bytes/s"] =
      benchmark::Counter(bytes, benchmark::Counter::kIsIterationInvariantRate);
  Orlo::bench::SetWorkloadLabel(state);
  boost::filesystem::remove(path);
}

void BM_IoCeiling(benchmark::State& state) {
  // The file size comes from one save of the same scene, outside the timing.
  std::uintmax_t size = 0;
  {
    SceneEngine engine;
    engine.InitScene();
    BuildSceneWorkload(&engine, ShapeOf(state), NodesOf(state));
    const std::string sized = WorkFile("sized.scene");
    if (!engine.SaveScene(sized).IsOk()) state.SkipWithError("save failed");
    size = boost::filesystem::file_size(sized);
    boost::filesystem::remove(sized);
  }
  const std::vector<char> buffer(std::size_t{1} << 20, '\x5a');
  const std::string path = WorkFile("plain.bin");
  for (auto _ : state) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) state.SkipWithError("cannot open the file");
    std::uintmax_t left = size;
    while (left > 0) {
      const std::size_t piece =
          left < buffer.size() ? static_cast<std::size_t>(left) : buffer.size();
      if (::write(fd, buffer.data(), piece) != static_cast<ssize_t>(piece)) {
        state.SkipWithError("write failed");
        break;
      }
      left -= piece;
    }
    ::close(fd);
  }
  state.counters["bytes/s"] =
      benchmark::Counter(static_cast<double>(size), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["bytes/node"] = static_cast<double>(size) / NodesOf(state);
  Orlo::bench::SetWorkloadLabel(state);
  boost::filesystem::remove(path);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  for (int shape : {0, 1, 2}) {
    for (int nodes : {10000, 100000}) benchmark->Args({shape, nodes});
  }
  benchmark->ArgNames({"shape", "nodes"})->Unit(benchmark::kMillisecond)->UseRealTime();
  // Without a warm-up the small scenes run many times on a heap that earlier runs left
  // ready, and the large ones once on a cold heap, so their ratio would mostly measure the
  // kernel handing out fresh pages. The warm-up runs every size at least once first.
  benchmark->MinWarmUpTime(0.5);
}

BENCHMARK(BM_Build)->Apply(Sizes);
BENCHMARK(BM_Save)->Apply(Sizes);
BENCHMARK(BM_IoCeiling)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
