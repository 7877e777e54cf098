// The cycle test and the path count agree with a plain walk over every path, on graphs whose
// links were made, doubled, released and refused in random order.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <random>
#include <set>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_table.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::Holder;
using testing::TestBlock;

// Whether `target` is reachable from `top` through non-null slots: a plain recursive walk
// down from `top` that enters every block once.
bool ReachesByWalking(const Block* top, const Block* target, std::set<const Block*>& seen) {
  for (int i = 0; i < top->NumDependencies(); ++i) {
    const Block* dependency = top->GetDependency(i);
    if (dependency == nullptr) continue;
    if (dependency == target) return true;
    if (!seen.insert(dependency).second) continue;
    if (ReachesByWalking(dependency, target, seen)) return true;
  }
  return false;
}

// The number of paths from `top` down to `target`, enumerated one by one.
long long CountPathsByWalking(const Block* top, const Block* target) {
  long long count = 0;
  for (int i = 0; i < top->NumDependencies(); ++i) {
    const Block* dependency = top->GetDependency(i);
    if (dependency == nullptr) continue;
    if (dependency == target) {
      ++count;
      continue;
    }
    count += CountPathsByWalking(dependency, target);
  }
  return count;
}

// A random graph over `size` blocks, made only through the graph's own operations: links that
// may be refused, blocks set twice into one slot and released again, tables with refused
// entries. Everything hangs from one holder.
struct RandomGraph {
  explicit RandomGraph(unsigned seed, int size) : random(seed) {
    for (int i = 0; i < size; ++i) {
      Block* block = (i % 5 == 4) ? static_cast<Block*>(new BlockTable(true))
                                  : new TestBlock("b" + std::to_string(i), 3);
      // Events do not matter here, and climbing every path of a random graph is slow.
      block->SetSendEvents(false);
      blocks.push_back(block);
      holders.push_back(std::make_unique<Holder>(block));
    }
    for (int step = 0; step < size * 4; ++step) Mutate();
  }

  Block* Pick() { return blocks[random() % blocks.size()]; }

  void Mutate() {
    Block* a = Pick();
    Block* b = Pick();
    const int slot = static_cast<int>(random() % 3);
    switch (random() % 5) {
      case 0:
      case 1:
        if (auto* table = dynamic_cast<BlockTable*>(a)) {
          table->PushBack(b);  // may leave an unlinked entry
        } else {
          (void)a->MakeDependencyByID(slot, b);
        }
        break;
      case 2:  // set twice into one slot, then let go once: a leftover back reference
        if (a->NumDependencies() > slot && a->OkToSetAsDependency(b)) {
          (void)a->MakeDependencyByID(slot, b);
          (void)a->MakeDependencyByID(slot, b);
          if (random() % 2 == 0) a->DeleteDependency(slot);
        }
        break;
      case 3:
        if (a->NumDependencies() > 0) a->DeleteDependency(slot % a->NumDependencies());
        break;
      default:
        if (auto* table = dynamic_cast<BlockTable*>(a)) {
          if (table->GetNumBlocks() > 0) table->Erase(static_cast<int>(random() % 2));
        }
        break;
    }
  }

  std::mt19937 random;
  std::vector<Block*> blocks;
  std::vector<std::unique_ptr<Holder>> holders;  // declared last: released first
};

TEST(BlockReachabilityTest, CycleTestAnswersAsAWalkOverEveryPathDoes) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    RandomGraph graph(seed, 24);
    for (Block* a : graph.blocks) {
      for (Block* b : graph.blocks) {
        std::set<const Block*> seen{b};
        const bool expected = a != b && !ReachesByWalking(b, a, seen);
        ASSERT_EQ(a->OkToSetAsDependency(b), expected) << "seed " << seed;
      }
    }
  }
}

TEST(BlockReachabilityTest, MakeDependantRefusesExactlyWhatTheCycleTestRefuses) {
  RandomGraph graph(7, 20);
  for (Block* a : graph.blocks) {
    for (Block* b : graph.blocks) {
      if (a == b) continue;
      std::set<const Block*> seen{b};
      if (!ReachesByWalking(b, a, seen)) continue;
      // a is below b: a may not become one of b's dependants.
      std::vector<Block*> before;
      b->GetDependants(before);
      EXPECT_FALSE(b->MakeDependant(0, a));
      std::vector<Block*> after;
      b->GetDependants(after);
      EXPECT_EQ(before, after);
    }
  }
}

TEST(BlockReachabilityTest, TestDependantCountsEveryPathOfAnAcyclicGraph) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    std::vector<TestBlock*> blocks;
    for (int i = 0; i < 12; ++i) blocks.push_back(new TestBlock("b" + std::to_string(i), 3));
    Holder holder(blocks.front());
    // Links only from lower to higher positions, duplicates welcome: acyclic, many paths.
    // Slot 0 links the next block, so the holder of the first one keeps them all.
    for (int i = 0; i < 11; ++i) {
      for (int slot = 0; slot < 3; ++slot) {
        const int below = slot == 0 ? i + 1 : i + 1 + static_cast<int>(random() % (11 - i));
        ASSERT_TRUE(blocks[i]->MakeDependencyByID(slot, blocks[below]).IsOk());
      }
    }
    for (TestBlock* target : blocks) {
      int count = 0;
      blocks.front()->TestDependant(target, count);
      EXPECT_EQ(count, CountPathsByWalking(blocks.front(), target)) << "seed " << seed;
    }
  }
}

// level[0] holds level[1] in both slots, level[1] holds level[2] in both, and so on.
std::vector<TestBlock*> BuildLadder(int levels) {
  std::vector<TestBlock*> ladder;
  for (int i = 0; i < levels; ++i) ladder.push_back(new TestBlock("rung", 2));
  for (int i = levels - 1; i > 0; --i) {
    EXPECT_TRUE(ladder[i - 1]->MakeDependencyByID(0, ladder[i]).IsOk());
    EXPECT_TRUE(ladder[i - 1]->MakeDependencyByID(1, ladder[i]).IsOk());
  }
  return ladder;
}

TEST(BlockReachabilityTest, TestDependantCountsTheLadderPathsWithoutWalkingThem) {
  std::vector<TestBlock*> ladder = BuildLadder(21);
  Holder holder(ladder.front());
  int count = 0;
  ladder.front()->TestDependant(ladder.back(), count);
  EXPECT_EQ(count, 1 << 20);
  count = 5;
  ladder[10]->TestDependant(ladder.back(), count);
  EXPECT_EQ(count, 5 + (1 << 10));
}

TEST(BlockReachabilityTest, TestDependantSaturatesInsteadOfOverflowing) {
  std::vector<TestBlock*> ladder = BuildLadder(80);
  Holder holder(ladder.front());
  int count = 0;
  ladder.front()->TestDependant(ladder.back(), count);
  EXPECT_EQ(count, INT_MAX);
  count = INT_MAX - 1;
  ladder[70]->TestDependant(ladder.back(), count);
  EXPECT_EQ(count, INT_MAX);
  // The cycle test over the same ladder answers at once, both ways.
  EXPECT_FALSE(ladder.back()->OkToSetAsDependency(ladder.front()));
  EXPECT_TRUE(ladder.front()->OkToSetAsDependency(ladder.back()));
}

TEST(BlockReachabilityTest, CycleTestsOverALongLadderFinish) {
  std::vector<TestBlock*> ladder = BuildLadder(100000);
  Holder holder(ladder.front());
  EXPECT_FALSE(ladder.back()->OkToSetAsDependency(ladder.front()));
  EXPECT_TRUE(ladder.front()->OkToSetAsDependency(ladder.back()));
  EXPECT_EQ(ladder.back()->MakeDependencyByID(0, ladder.front()).GetCode(), 3);
  // (Linking below the ladder would post an event that climbs every one of its 2^99999
  // paths, as events do through duplicate dependants; only the cycle tests are checked.)
}

}  // namespace
}  // namespace Orlo
