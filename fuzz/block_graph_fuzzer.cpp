// Fuzz target: reads its input as a sequence of block-graph operations and stops the run at
// the first broken invariant. Memory errors and leaks are left to the sanitizers the target
// is built with.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/testing/block_graph_ops.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Orlo::testing::BlockGraphOps ops;
  const std::string failure = ops.Run(data, size);
  if (!failure.empty()) {
    std::fprintf(stderr, "block graph check failed: %s\n", failure.c_str());
    std::abort();
  }
  return 0;
}
