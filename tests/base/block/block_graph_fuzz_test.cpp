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

std::vector<std::uint8_t> FromHex(const std::string& hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
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

// Inputs that once broke a check, kept so that the fix stays in place.
TEST(BlockGraphFuzzTest, InputsThatOnceFailedPass) {
  const char* const inputs[] = {
      // Replacing a table entry left unlinked by a refused PushBack took a back reference
      // that one of the table's linked entries of the same block still needed.
      "0104a60ea60eb240a600ff01a60000002ea60ea60eb240b2002b40a600026200a69f7107000000a6"
      "a63b4100a0a0a0a0a0a0a0030303a0a000000000a0a0a0a00000a0a0a0a0a0a0a0030303a0a66200"
      "a6a6419fa6a6",
  };
  testing::BlockGraphOps ops;
  for (const char* hex : inputs) {
    const std::vector<std::uint8_t> bytes = FromHex(hex);
    EXPECT_EQ(ops.Run(bytes.data(), bytes.size()), "") << "bytes " << hex;
  }
}

}  // namespace
}  // namespace Orlo
