// An event may stop early where nothing above can observe it; these tests make sure that it
// still reaches every listener and every translating block above, whatever was linked,
// heard or muted before.
#include <gtest/gtest.h>

#include <gmock/gmock.h>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_table.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using ::testing::ElementsAre;
using testing::Holder;
using testing::Journal;
using testing::RecordingListener;
using testing::TestBlock;

// A block with plain slots whose ProcessEvent is the default relay, and that says so.
class RelayBlock : public Block {
 public:
  explicit RelayBlock(int num_slots = 1) : m_slots(static_cast<std::size_t>(num_slots)) {}
  std::string GetClassName() const override { return "RelayBlock"; }
  BlockType GetBlockType() const override { return BlockType(900, 8, 8); }
  int NumDependencies() const override { return static_cast<int>(m_slots.size()); }
  void SetDependency(int index, Block* block) override {
    if (index >= 0 && index < NumDependencies()) m_slots[static_cast<std::size_t>(index)] = block;
  }
  Block* GetDependency(int index) const override {
    return index >= 0 && index < NumDependencies() ? m_slots[static_cast<std::size_t>(index)]
                                                   : nullptr;
  }
  std::string GetDependencyName(int) const override { return "slot"; }
  Block* Clone() override { return new RelayBlock(NumDependencies()); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }
  bool RelaysEventsUnchanged() const override { return true; }

 private:
  std::vector<Block*> m_slots;
};

// top -> ... -> bottom, linked top-down.
std::vector<RelayBlock*> BuildRelayChain(int length) {
  std::vector<RelayBlock*> chain{new RelayBlock};
  for (int i = 1; i < length; ++i) {
    auto* next = new RelayBlock;
    EXPECT_TRUE(chain.back()->MakeDependencyByID(0, next).IsOk());
    chain.push_back(next);
  }
  return chain;
}

TEST(BlockEventReachTest, AListenerAddedAboveAQuietChainHearsItsBottom) {
  std::vector<RelayBlock*> chain = BuildRelayChain(50);
  Holder holder(chain.front());
  chain.back()->PostEvent(7, 1);  // nobody to hear it yet
  RecordingListener listener;
  chain[3]->AddBlockListener(&listener);
  chain.back()->PostEvent(7, 2);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 7);
  EXPECT_EQ(listener.events[0].param, 2);
  EXPECT_EQ(listener.events[0].block, chain[3]);
  chain[3]->RemoveBlockListener(&listener);
  chain.back()->PostEvent(7, 3);
  EXPECT_EQ(listener.events.size(), 1u);
}

TEST(BlockEventReachTest, ATranslatingBlockLinkedAboveAQuietChainProcessesItsEvents) {
  Journal journal;
  std::vector<RelayBlock*> chain = BuildRelayChain(20);
  chain.back()->PostEvent(7, 0);
  auto* observer = new TestBlock("observer", 1, &journal);
  observer->LogProcessedEvents(true);
  Holder holder(observer);
  ASSERT_TRUE(observer->MakeDependencyByID(0, chain.front()).IsOk());
  journal.entries.clear();
  chain.back()->PostEvent(7, 4);
  EXPECT_THAT(journal.entries, ElementsAre("process observer 7/4"));
}

TEST(BlockEventReachTest, AQuietChainLinkedUnderAnObservedOneIsHeard) {
  std::vector<RelayBlock*> lower = BuildRelayChain(10);
  lower.back()->PostEvent(7, 0);
  std::vector<RelayBlock*> upper = BuildRelayChain(10);
  RecordingListener listener;
  upper.front()->AddBlockListener(&listener);
  Holder holder(upper.front());
  ASSERT_TRUE(upper.back()->MakeDependencyByID(0, lower.front()).IsOk());
  listener.events.clear();
  lower.back()->PostEvent(7, 5);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, upper.front());
}

TEST(BlockEventReachTest, ALeftoverBackReferenceStillCarriesEvents) {
  // Set twice into one slot and released once: the block keeps listing its holder, and events
  // climb through every dependant listed.
  auto* holder_block = new RelayBlock;
  RecordingListener listener;
  holder_block->AddBlockListener(&listener);
  Holder holder(holder_block);
  auto* block = new RelayBlock;
  Holder keeps_block(block);
  ASSERT_TRUE(holder_block->MakeDependencyByID(0, block).IsOk());
  ASSERT_TRUE(holder_block->MakeDependencyByID(0, block).IsOk());
  holder_block->DeleteDependency(0);
  listener.events.clear();
  block->PostEvent(7, 6);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].param, 6);
}

TEST(BlockEventReachTest, EventsOfATableChainReachAListenerOnTheTop) {
  RecordingListener listener;  // outlives the tables, which it hears being released
  std::vector<BlockTable*> tables{new BlockTable(true)};
  for (int i = 1; i < 30; ++i) {
    auto* next = new BlockTable(true);
    tables.back()->PushBack(next);
    tables.push_back(next);
  }
  Holder holder(tables.front());
  tables.front()->AddBlockListener(&listener);
  tables.back()->PushBack(new RelayBlock);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].block, tables.front());
}

TEST(BlockEventReachTest, ATableSubclassIsNeverPassedOver) {
  // A subclass may translate events: only a plain table says it relays them unchanged.
  class CountingTable : public BlockTable {
   public:
    CountingTable() : BlockTable(true) {}
    using Block::ProcessEvent;
    void ProcessEvent(BlockEvent event) override {
      ++processed;
      BlockTable::ProcessEvent(event);
    }
    int processed = 0;
  };
  auto* table = new CountingTable;
  Holder holder(table);
  EXPECT_FALSE(table->RelaysEventsUnchanged());
  EXPECT_TRUE(BlockTable(true).RelaysEventsUnchanged());
  auto* child = new RelayBlock;
  table->PushBack(child);
  table->processed = 0;
  child->PostEvent(7, 0);
  EXPECT_EQ(table->processed, 1);
}

}  // namespace
}  // namespace Orlo
