// The set a walk over a freshly numbered scene marks its blocks in: numbered blocks by their
// numbers, every other block by its address, and both answer as a plain set would.
#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/engine/internal/numbered_set.h>

#include "tests/testing/test_blocks.h"

namespace Orlo::internal {
namespace {

using testing::TestBlock;

class NumberedSetTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (int i = 0; i < 40; ++i) {
      blocks.push_back(new TestBlock("b" + std::to_string(i), 0));
      if (i < 30) {
        blocks.back()->SetID(static_cast<std::uint32_t>(numbered.size()));
        numbered.push_back(blocks.back());
      }
    }
  }
  void TearDown() override {
    for (Block* block : blocks) block->DeleteThisBlock(true);
  }

  std::vector<Block*> blocks;    // 0 .. 29 numbered, 30 .. 39 not
  std::vector<Block*> numbered;  // by number
};

TEST_F(NumberedSetTest, TellsNumberedBlocksByTheirNumberAndOthersByTheirAddress) {
  NumberedSet set(numbered);
  EXPECT_EQ(set.NumberOf(blocks[4]), 4u);
  EXPECT_EQ(set.NumberOf(blocks[35]), NumberedSet::kUnnumbered);
  // A block whose id names another block's place is not that block.
  blocks[36]->SetID(4);
  EXPECT_EQ(set.NumberOf(blocks[36]), NumberedSet::kUnnumbered);
  // An id past the numbering.
  blocks[37]->SetID(1000);
  EXPECT_EQ(set.NumberOf(blocks[37]), NumberedSet::kUnnumbered);
}

TEST_F(NumberedSetTest, AnswersAsAPlainSetThroughRandomInsertions) {
  blocks[36]->SetID(4);  // a stray id must not pass for block 4
  std::mt19937 random(11);
  for (int round = 0; round < 20; ++round) {
    NumberedSet set(numbered);
    std::vector<const Block*> expected;
    for (int step = 0; step < 200; ++step) {
      const Block* block = blocks[random() % blocks.size()];
      const bool fresh = std::find(expected.begin(), expected.end(), block) == expected.end();
      if (random() % 2 == 0) {
        EXPECT_EQ(set.Insert(block), fresh);
        if (fresh) expected.push_back(block);
      } else {
        EXPECT_EQ(set.Contains(block), !fresh);
      }
    }
  }
}

}  // namespace
}  // namespace Orlo::internal
