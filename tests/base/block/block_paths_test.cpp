#include <orlo/base/block/block_paths.h>

#include <gtest/gtest.h>

#include <orlo/base/block/block_table.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::Holder;
using testing::TestBlock;

TEST(BlockPathsTest, CountsThePathsToEveryBlockOfADiamond) {
  // root -> a, b; a -> c; b -> c (twice); c -> d
  auto* root = new TestBlock("root", 2);
  auto* a = new TestBlock("a", 1);
  auto* b = new TestBlock("b", 2);
  auto* c = new TestBlock("c", 1);
  auto* d = new TestBlock("d", 1);
  Holder holder(root);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, c).IsOk());
  ASSERT_TRUE(b->MakeDependencyByID(0, c).IsOk());
  ASSERT_TRUE(b->MakeDependencyByID(1, c).IsOk());
  ASSERT_TRUE(c->MakeDependencyByID(0, d).IsOk());

  const auto paths = CountPathsFromRoot(root);
  EXPECT_EQ(paths.size(), 5u);
  EXPECT_EQ(paths.at(root), 1u);
  EXPECT_EQ(paths.at(a), 1u);
  EXPECT_EQ(paths.at(b), 1u);
  EXPECT_EQ(paths.at(c), 3u);
  EXPECT_EQ(paths.at(d), 3u);
  EXPECT_EQ(CountPerPathVisits(root), 9u);
  EXPECT_EQ(CountPerPathVisits(d), 1u);
}

// Each rung holds the next one in both of its slots.
std::vector<TestBlock*> BuildLadder(int levels) {
  std::vector<TestBlock*> ladder;
  for (int i = 0; i < levels; ++i) ladder.push_back(new TestBlock("rung", 2));
  for (int i = levels - 1; i > 0; --i) {
    EXPECT_TRUE(ladder[i - 1]->MakeDependencyByID(0, ladder[i]).IsOk());
    EXPECT_TRUE(ladder[i - 1]->MakeDependencyByID(1, ladder[i]).IsOk());
  }
  return ladder;
}

TEST(BlockPathsTest, CountsALadderOfSharedBlocksWithoutWalkingItsPaths) {
  std::vector<TestBlock*> ladder = BuildLadder(11);
  Holder holder(ladder.front());
  const auto paths = CountPathsFromRoot(ladder.front());
  for (int i = 0; i < 11; ++i) EXPECT_EQ(paths.at(ladder[i]), 1u << i);
  EXPECT_EQ(CountPerPathVisits(ladder.front()), (1u << 11) - 1);
}

TEST(BlockPathsTest, SaturatesOnALadderOfSixtyFiveRungs) {
  std::vector<TestBlock*> ladder = BuildLadder(66);
  Holder holder(ladder.front());
  const auto paths = CountPathsFromRoot(ladder.front());
  EXPECT_EQ(paths.at(ladder[63]), std::uint64_t{1} << 63);
  EXPECT_EQ(paths.at(ladder[64]), kMaxPathCount);
  EXPECT_EQ(paths.at(ladder[65]), kMaxPathCount);
  EXPECT_EQ(CountPerPathVisits(ladder.front()), kMaxPathCount);
}

TEST(BlockPathsTest, DoesNotFollowTheCycleOfAnUnlinkedTableEntry) {
  // block -> table, and the table's refused PushBack of block leaves an unlinked entry that
  // closes a cycle.
  auto* block = new TestBlock("block", 1);
  auto* table = new BlockTable(true);
  Holder holder(block);
  ASSERT_TRUE(block->MakeDependencyByID(0, table).IsOk());
  table->PushBack(block);
  ASSERT_EQ(table->GetBlock(0), block);
  const auto paths = CountPathsFromRoot(block);
  EXPECT_EQ(paths.size(), 2u);
  EXPECT_EQ(paths.at(block), 1u);
  EXPECT_EQ(paths.at(table), 1u);
  EXPECT_EQ(CountPerPathVisits(table), 2u);
}

TEST(BlockPathsTest, CountsAChainOfAHundredThousandBlocksWithTheDefaultStack) {
  std::vector<TestBlock*> chain;
  for (int i = 0; i < 100000; ++i) chain.push_back(new TestBlock("link", 1));
  for (std::size_t i = chain.size() - 1; i > 0; --i) {
    ASSERT_TRUE(chain[i - 1]->MakeDependencyByID(0, chain[i]).IsOk());
  }
  Holder holder(chain.front());
  EXPECT_EQ(CountPerPathVisits(chain.front()), 100000u);
}

}  // namespace
}  // namespace Orlo
