#include <orlo/base/block/block_paths.h>

#include <random>
#include <vector>

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
  const PathTotals totals = CountPathTotals(root);
  EXPECT_EQ(totals.blocks, 5u);
  EXPECT_EQ(totals.visits, 9u);
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

TEST(BlockPathsTest, TotalsAgreeWithThePerBlockCountsOnRandomGraphs) {
  // Random links among blocks and tables (links that would close a cycle are refused), and
  // refused PushBacks that leave cycle-closing unlinked entries.
  std::mt19937 random(7);
  for (int graph = 0; graph < 200; ++graph) {
    // The keeper holds every block, so that none goes when a slot is set again.
    auto* keeper = new BlockTable(true);
    Holder holder(keeper);
    std::vector<Block*> blocks;
    for (int i = 0; i < 24; ++i) {
      if (random() % 3 == 0) {
        blocks.push_back(new BlockTable(true));
      } else {
        blocks.push_back(new TestBlock("b", 3));
      }
      keeper->PushBack(blocks.back());
    }
    for (std::size_t i = 1; i < blocks.size(); ++i) {
      Block* owner = blocks[random() % i];
      if (auto* table = dynamic_cast<BlockTable*>(owner)) {
        table->PushBack(blocks[i]);
      } else {
        (void)owner->MakeDependencyByID(static_cast<int>(random() % 3), blocks[i]);
      }
    }
    for (int extra = 0; extra < 40; ++extra) {
      Block* owner = blocks[random() % blocks.size()];
      Block* held = blocks[random() % blocks.size()];
      if (auto* table = dynamic_cast<BlockTable*>(owner)) {
        if (table->GetNumBlocks() < 6) table->PushBack(held);
      } else if (owner != held) {
        (void)owner->MakeDependencyByID(static_cast<int>(random() % 3), held);
      }
    }
    for (Block* from : {blocks[0], blocks[1], blocks[5]}) {
      const auto paths = CountPathsFromRoot(from);
      std::uint64_t sum = 0;
      for (const auto& entry : paths) sum += entry.second;
      const PathTotals totals = CountPathTotals(from);
      EXPECT_EQ(totals.blocks, paths.size()) << "graph " << graph;
      EXPECT_EQ(totals.visits, sum) << "graph " << graph;
    }
  }
}

}  // namespace
}  // namespace Orlo
