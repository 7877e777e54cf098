// The graph walks keep explicit stacks: a chain far deeper than the call stack could follow
// recursively is linked, cycle-tested, notified and released with the default stack.
#include <gtest/gtest.h>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_table.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::Holder;
using testing::Journal;
using testing::RecordingListener;
using testing::TestBlock;

constexpr int kDepth = 100000;

// Counts the blocks of the chain that were deleted.
class CountedBlock : public TestBlock {
 public:
  CountedBlock(int* deleted) : TestBlock("link", 1), m_deleted(deleted) {}
  void DeleteThis() override {
    ++*m_deleted;
    delete this;
  }

 private:
  int* m_deleted;
};

// Builds top -> ... -> bottom, each link depending on the next one down, and returns top.
// Linking from the top keeps every cycle test short; the blocks stay muted while linking so
// each link's code-2 event does not climb the whole chain built so far.
std::vector<CountedBlock*> BuildChain(int depth, int* deleted) {
  std::vector<CountedBlock*> chain;
  chain.reserve(static_cast<std::size_t>(depth));
  for (int i = 0; i < depth; ++i) {
    auto* block = new CountedBlock(deleted);
    block->SetSendEvents(false);
    if (!chain.empty()) {
      EXPECT_TRUE(chain.back()->MakeDependencyByID(0, block).IsOk());
    }
    chain.push_back(block);
  }
  for (CountedBlock* block : chain) block->SetSendEvents(true);
  return chain;
}

TEST(DeepGraphTest, ChainIsLinkedCycleTestedNotifiedAndReleased) {
  int deleted = 0;
  std::vector<CountedBlock*> chain = BuildChain(kDepth, &deleted);
  Holder holder(chain.front());
  CountedBlock* top = chain.front();
  CountedBlock* bottom = chain.back();

  // The cycle test walks the whole chain.
  EXPECT_FALSE(bottom->OkToSetAsDependency(top));
  EXPECT_TRUE(top->OkToSetAsDependency(bottom));
  const Status refused = bottom->MakeDependencyByID(0, top);
  EXPECT_EQ(refused.GetCode(), 3);
  int paths = 0;
  top->TestDependant(bottom, paths);
  EXPECT_EQ(paths, 1);

  // An event posted at the bottom climbs to the holder.
  RecordingListener listener;
  holder.Root()->AddBlockListener(&listener);
  bottom->PostEvent(3, 11);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 11);
  EXPECT_EQ(listener.events[0].block, holder.Root());
  holder.Root()->RemoveBlockListener(&listener);

  // Releasing the top releases the whole chain.
  holder.Root()->DeleteDependency(0);
  EXPECT_EQ(deleted, kDepth);
}

TEST(DeepGraphTest, DeleteThisBlockOfTheTopOfADeepChainReleasesIt) {
  int deleted = 0;
  std::vector<CountedBlock*> chain = BuildChain(kDepth, &deleted);
  chain.front()->DeleteThisBlock(true);
  EXPECT_EQ(deleted, kDepth);
}

TEST(DeepGraphTest, DeepChainOfTablesIsReleasedWhenItsRootTableIsDestroyed) {
  Journal journal;
  auto* root = new BlockTable(true);
  BlockTable* current = root;
  for (int i = 0; i < kDepth; ++i) {
    auto* next = new BlockTable(true);
    // PushBack unmutes the table it appends to, and its event stops at the muted parent.
    current->PushBack(next);
    current->SetSendEvents(false);
    current = next;
  }
  current->PushBack(new TestBlock("leaf", 0, &journal));
  root->DeleteThis();
  EXPECT_EQ(journal.entries, std::vector<std::string>{"delete leaf"});
}

}  // namespace
}  // namespace Orlo
