// What the benchmarks over the shared scene workload (bench/scene_workload.h) have in common:
// the shape and node count of a run, taken from its arguments (shape, nodes), its label, and
// the files it writes, which live in one fresh directory under the system's temporary
// directory, removed when the program exits.
#pragma once

#include <string>

#include <benchmark/benchmark.h>
#include <boost/filesystem.hpp>

#include "bench/scene_workload.h"

namespace Orlo::bench {

inline WorkloadShape ShapeOf(const benchmark::State& state) {
  return static_cast<WorkloadShape>(state.range(0));
}

inline int NodesOf(const benchmark::State& state) { return static_cast<int>(state.range(1)); }

// "<shape>/<nodes>", e.g. "tree/10000".
inline void SetWorkloadLabel(benchmark::State& state) {
  state.SetLabel(std::string(WorkloadShapeName(ShapeOf(state))) + "/" +
                 std::to_string(NodesOf(state)));
}

// The path of the file `name` in this program's directory.
inline std::string WorkFile(const std::string& name) {
  static const struct Directory {
    boost::filesystem::path path;
    Directory()
        : path(boost::filesystem::temp_directory_path() /
               boost::filesystem::unique_path("orlo-bench-%%%%-%%%%")) {
      boost::filesystem::create_directories(path);
    }
    ~Directory() { boost::filesystem::remove_all(path); }
  } directory;
  return (directory.path / name).string();
}

}  // namespace Orlo::bench
