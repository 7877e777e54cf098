// Random sequences of linking, relinking, releasing, table edits, clones, muting, events and
// deletion over a small pool of blocks keep the graph's bookkeeping whole after every step and
// leave no block behind. The sequences come from a fixed seed, so a failure repeats; the fuzz
// target fuzz/block_graph_fuzzer.cpp runs the same harness on generated inputs.
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/testing/block_graph_ops.h"

namespace Orlo {
namespace {

constexpr int kSequences = 10000;
constexpr std::uint32_t kSeed = 20261123;

std::string Hex(const std::vector<std::uint8_t>& bytes) {
  std::string out;
  char digits[4];
  for (std::uint8_t byte : bytes) {
    std::snprintf(digits, sizeof digits, "%02x", byte);
    out += digits;
  }
  return out;
}

TEST(BlockGraphFuzzTest, RandomOperationSequencesKeepTheGraphWholeAndLeaveNothingBehind) {
  std::mt19937 random(kSeed);
  testing::BlockGraphOps ops;
  std::vector<std::uint8_t> bytes;
  for (int sequence = 0; sequence < kSequences; ++sequence) {
    bytes.resize(12 + random() % 117);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    const std::string failure = ops.Run(bytes.data(), bytes.size());
    ASSERT_EQ(failure, "") << "sequence " << sequence << ", bytes " << Hex(bytes);
  }
  // Every operation was carried out, often: a harness that skipped one would test nothing.
  for (int op = 0; op < testing::BlockGraphOps::kNumOps; ++op) {
    EXPECT_GE(ops.OpsRun()[static_cast<std::size_t>(op)], 1000) << "operation " << op;
  }
}

}  // namespace
}  // namespace Orlo
