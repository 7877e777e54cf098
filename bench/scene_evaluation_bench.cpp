// Cost of evaluating the absolute matrix of every node of a scene, on the shared scene
// workload (flat, balanced 8-ary tree, chain) at 10,000 and 100,000 nodes:
//   - SceneEngine::GetAbsoluteTMs, one top-down pass that evaluates each node's own transform
//     once and multiplies it by its parent's result;
//   - Node::GetAbsoluteTM called for every node, which climbs to the root each time (flat and
//     tree only: on the chain it is quadratic).
// Each reports nodes per second and blocks per second, the blocks being every block the scene
// holds (numbered as a save numbers them).
#include <benchmark/benchmark.h>

#include <vector>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

#include "bench/scene_workload.h"
#include "bench/workload_bench.h"

namespace {

using Orlo::Matrix3;
using Orlo::Node;
using Orlo::SceneEngine;
using Orlo::bench::BuildSceneWorkload;
using Orlo::bench::NodesOf;
using Orlo::bench::ShapeOf;
using Orlo::bench::WorkloadShape;
using Orlo::bench::WorkloadShapeName;

// An engine holding one workload scene, current while it lives.
struct WorkloadScene {
  WorkloadScene(WorkloadShape shape, int count) {
    SceneEngine::SetScene(&engine);
    engine.InitScene();
    nodes = BuildSceneWorkload(&engine, shape, count);
    engine.InitBlocks(engine.GetMainScene());
    engine.SetBlockIDs();
    num_blocks = engine.GetNumBlocks();
  }
  ~WorkloadScene() {
    engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
  }

  SceneEngine engine;
  std::vector<Node*> nodes;
  int num_blocks = 0;
};

void SetRates(benchmark::State& state, WorkloadShape shape, const WorkloadScene& scene) {
  const double iterations = static_cast<double>(state.iterations());
  state.counters["nodes/s"] = benchmark::Counter(
      iterations * static_cast<double>(scene.nodes.size()), benchmark::Counter::kIsRate);
  state.counters["blocks/s"] = benchmark::Counter(
      iterations * static_cast<double>(scene.num_blocks), benchmark::Counter::kIsRate);
  state.counters["blocks"] = static_cast<double>(scene.num_blocks);
  state.SetLabel(WorkloadShapeName(shape));
}

void BM_TopDownEvaluation(benchmark::State& state) {
  const WorkloadShape shape = ShapeOf(state);
  WorkloadScene scene(shape, NodesOf(state));
  std::vector<SceneEngine::NodeMatrix> out;
  out.reserve(scene.nodes.size() + 1);
  for (auto _ : state) {
    out.clear();
    scene.engine.GetAbsoluteTMs(0, out);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  SetRates(state, shape, scene);
}

void BM_GetAbsoluteTMPerNode(benchmark::State& state) {
  const WorkloadShape shape = ShapeOf(state);
  WorkloadScene scene(shape, NodesOf(state));
  for (auto _ : state) {
    for (Node* node : scene.nodes) {
      Matrix3<double> matrix = node->GetAbsoluteTM(0);
      benchmark::DoNotOptimize(matrix);
    }
  }
  SetRates(state, shape, scene);
}

constexpr int kFlat = static_cast<int>(WorkloadShape::kFlat);
constexpr int kTree = static_cast<int>(WorkloadShape::kTree);
constexpr int kChain = static_cast<int>(WorkloadShape::kChain);

BENCHMARK(BM_TopDownEvaluation)
    ->ArgNames({"shape", "nodes"})
    ->ArgsProduct({{kFlat, kTree, kChain}, {10000, 100000}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetAbsoluteTMPerNode)
    ->ArgNames({"shape", "nodes"})
    ->ArgsProduct({{kFlat, kTree}, {10000, 100000}})
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
