#include <orlo/base/block/block_table.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <orlo/base/block/internal/irregular_links.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using ::testing::ElementsAre;
using testing::Holder;
using testing::Journal;
using testing::RecordingListener;
using testing::TestBlock;

constexpr char kOutOfRange[] = "BlockTable::SetBlock: The id of the blocks is out of range";

std::vector<Block*> Entries(const BlockTable& table) {
  std::vector<Block*> entries;
  for (unsigned i = 0; i < table.GetNumBlocks(); ++i) entries.push_back(table.GetBlock(int(i)));
  return entries;
}

std::vector<Block*> DependantsOf(const Block* block) {
  std::vector<Block*> out;
  block->GetDependants(out);
  return out;
}

// A table held by a scene-like root, with a listener on it.
class BlockTableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    table = new BlockTable(true);
    holder.Hold(table);
    table->AddBlockListener(&listener);
  }
  void TearDown() override {
    if (table != nullptr) table->RemoveBlockListener(&listener);
  }

  TestBlock* NewBlock(const std::string& name) { return new TestBlock(name, 3, &journal); }

  Journal journal;
  Holder holder;
  BlockTable* table = nullptr;
  RecordingListener listener;
};

TEST_F(BlockTableTest, IdentityAndFactory) {
  EXPECT_EQ(table->GetClassName(), "BlockTable");
  EXPECT_EQ(table->GetBlockType().class_id, 105u);
  EXPECT_EQ(table->GetBlockType().super_class_id, 32u);
  EXPECT_EQ(table->GetBlockType().sub_id, 16u);
  BlockVectorFactory factory;
  EXPECT_EQ(factory.GetName(), "BlockTable");
  EXPECT_EQ(factory.GetBlockType().class_id, 105u);
  EXPECT_EQ(factory.GetBlockType().super_class_id, 32u);
  EXPECT_EQ(factory.GetBlockType().sub_id, 16u);
  for (bool flag : {true, false}) {
    Block* made = factory.GetBlock(flag);
    EXPECT_EQ(made->GetClassName(), "BlockTable");
    EXPECT_EQ(made->NumDependencies(), 0);
    made->DeleteThis();
  }
}

TEST_F(BlockTableTest, NewTableIsEmptyAndHasTheBaseDefaults) {
  EXPECT_EQ(table->GetNumBlocks(), 0u);
  EXPECT_EQ(table->NumDependencies(), 0);
  EXPECT_EQ(table->GetBlock(0), nullptr);
  EXPECT_EQ(table->GetDataTable(), nullptr);
  EXPECT_EQ(table->GetDependencyType(0), 0u);
  EXPECT_EQ(table->PostLoad(), 0);
}

TEST_F(BlockTableTest, PushBackLinksTheEntryAndPostsOneEvent) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  EXPECT_THAT(DependantsOf(a), ElementsAre(table));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 0);
  EXPECT_EQ(listener.events[0].block, table);
  EXPECT_TRUE(table->GetSendEvents());
}

TEST_F(BlockTableTest, ALinkedPushBackEntryIsAnOrdinaryLink) {
  // Not the same block set twice into one slot: nothing is recorded as irregular, so no walk
  // pays for it later.
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  table->PushBack(a);
  EXPECT_THAT(DependantsOf(a), ElementsAre(table, table));
  EXPECT_TRUE(internal::IrregularLinks::Empty());
}

TEST_F(BlockTableTest, PushBackOfNullAppendsANullEntry) {
  table->PushBack(nullptr);
  EXPECT_THAT(Entries(*table), ElementsAre(nullptr));
  EXPECT_EQ(listener.events.size(), 1u);
}

TEST_F(BlockTableTest, PushBackOfABlockThatWouldCloseACycleKeepsItUnlinked) {
  // The holder's root depends on the table, so the root may not become an entry.
  table->PushBack(holder.Root());
  EXPECT_THAT(Entries(*table), ElementsAre(holder.Root()));
  EXPECT_THAT(DependantsOf(holder.Root()), ElementsAre());
  EXPECT_TRUE(internal::IrregularLinks::Contains(table, holder.Root()));
  ASSERT_EQ(listener.events.size(), 1u);
  table->SetDependency(0, nullptr);  // the unlinked entry must not be released
}

TEST_F(BlockTableTest, PushBackOfTheTableItselfKeepsAnUnlinkedEntry) {
  table->PushBack(table);
  EXPECT_THAT(Entries(*table), ElementsAre(table));
  EXPECT_THAT(DependantsOf(table), ElementsAre(holder.Root()));
}

TEST_F(BlockTableTest, TableHoldingItsOwnDependantUnlinkedIsReleasedWithItsHolder) {
  // The refused entry leads back to the holder's root while the root releases the table.
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  table->PushBack(holder.Root());
  table->RemoveBlockListener(&listener);
  holder.Root()->DeleteDependency(0);
  EXPECT_THAT(journal.entries, ElementsAre("delete a"));
  EXPECT_EQ(holder.Root()->GetDependency(0), nullptr);
  table = nullptr;
}

TEST(BlockTableStandaloneTest, TableHoldingItselfSurvivesSetBlockIntoThatEntry) {
  Journal journal;
  auto* table = new BlockTable(true);
  table->PushBack(table);
  auto* a = new TestBlock("a", 3, &journal);
  EXPECT_TRUE(table->SetBlock(0, a).IsOk());
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  EXPECT_THAT(DependantsOf(a), ElementsAre(table));
  table->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete a"));
}

TEST_F(BlockTableTest, GetDependencyNameIsTheEntrysClassName) {
  table->PushBack(NewBlock("a"));
  table->PushBack(nullptr);
  EXPECT_EQ(table->GetDependencyName(0), "TestBlock");
  EXPECT_EQ(table->GetDependencyName(1), "no_dependency");
  EXPECT_EQ(table->GetDependencyName(2), "no_dependency");
  EXPECT_EQ(table->GetDependencyName(-1), "no_dependency");
}

TEST_F(BlockTableTest, OutOfRangeSlotsReadAsNullAndIgnoreStores) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  TestBlock stray("stray");
  table->SetDependency(1, &stray);
  table->SetDependency(-1, &stray);
  EXPECT_EQ(table->GetDependency(1), nullptr);
  EXPECT_EQ(table->GetDependency(-1), nullptr);
  EXPECT_EQ(table->GetBlock(-1), nullptr);
  EXPECT_THAT(Entries(*table), ElementsAre(a));
}

TEST_F(BlockTableTest, GetBlockIdFindsTheLastPosition) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  for (Block* entry : {static_cast<Block*>(a), static_cast<Block*>(b), static_cast<Block*>(a)}) {
    table->PushBack(entry);
  }
  table->PushBack(NewBlock("c"));
  table->PushBack(b);
  EXPECT_EQ(table->GetBlockId(b), 4u);
  EXPECT_EQ(table->GetBlockId(a), 2u);
  TestBlock absent("absent");
  EXPECT_EQ(table->GetBlockId(&absent), 0xFFFFFFFFu);
  EXPECT_TRUE(table->IsBlock(b));
  EXPECT_FALSE(table->IsBlock(&absent));
}

TEST_F(BlockTableTest, SetBlockLinksIntoAnExistingEntryAndReleasesTheOldOne) {
  TestBlock* old = NewBlock("old");
  TestBlock* replacement = NewBlock("replacement");
  table->PushBack(old);
  listener.events.clear();
  const Status status = table->SetBlock(0, replacement);
  EXPECT_TRUE(status.IsOk());
  EXPECT_THAT(Entries(*table), ElementsAre(replacement));
  EXPECT_THAT(journal.entries, ElementsAre("delete old"));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST_F(BlockTableTest, SetBlockOutOfRangeOrWithNullIsRefused) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  listener.events.clear();
  TestBlock other("other");
  for (const Status& status :
       {table->SetBlock(0, nullptr), table->SetBlock(1, &other), table->SetBlock(-1, &other)}) {
    EXPECT_EQ(status.GetCode(), 2);
    EXPECT_EQ(status.GetMessage(), kOutOfRange);
  }
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  EXPECT_TRUE(listener.events.empty());
}

TEST_F(BlockTableTest, SetBlockReportsACycle) {
  table->PushBack(NewBlock("a"));
  const Status status = table->SetBlock(0, holder.Root());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Block::MakeDependencyByID : Cyclic Dependency.");
}

TEST_F(BlockTableTest, EraseByIndexReleasesTheEntryAndMovesTheRestDown) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  TestBlock* c = NewBlock("c");
  table->PushBack(a);
  table->PushBack(b);
  table->PushBack(c);
  listener.events.clear();
  table->Erase(1);
  EXPECT_THAT(Entries(*table), ElementsAre(a, c));
  EXPECT_THAT(journal.entries, ElementsAre("delete b"));
  ASSERT_EQ(listener.events.size(), 1u);  // the slot's own event stays muted
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 1);
  EXPECT_TRUE(table->GetSendEvents());
}

TEST_F(BlockTableTest, EraseOutOfRangeChangesNothingAndPostsNothing) {
  for (const char* name : {"a", "b", "c"}) table->PushBack(NewBlock(name));
  listener.events.clear();
  table->Erase(5);
  table->Erase(-1);
  EXPECT_EQ(table->GetNumBlocks(), 3u);
  EXPECT_TRUE(listener.events.empty());
  EXPECT_TRUE(journal.entries.empty());
  EXPECT_TRUE(table->GetSendEvents());
}

TEST_F(BlockTableTest, EraseByBlockRemovesEveryEntryAndPostsOneEvent) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  table->PushBack(a);
  table->PushBack(b);
  table->PushBack(a);
  listener.events.clear();
  table->Erase(a);
  EXPECT_THAT(Entries(*table), ElementsAre(b));
  EXPECT_THAT(journal.entries, ElementsAre("delete a"));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST_F(BlockTableTest, EraseByBlockOfAnAbsentBlockPostsNothing) {
  TestBlock absent("absent");
  table->Erase(&absent);  // empty table
  table->PushBack(NewBlock("a"));
  listener.events.clear();
  table->Erase(&absent);
  EXPECT_EQ(table->GetNumBlocks(), 1u);
  EXPECT_TRUE(listener.events.empty());
  EXPECT_TRUE(table->GetSendEvents());
}

TEST_F(BlockTableTest, ErasedEntryHeldElsewhereSurvives) {
  Holder keeper;
  TestBlock* a = NewBlock("a");
  keeper.Hold(a);
  table->PushBack(a);
  table->Erase(0);
  EXPECT_TRUE(journal.entries.empty());
  EXPECT_THAT(DependantsOf(a), ElementsAre(keeper.Root()));
}

TEST_F(BlockTableTest, SwapBlocksExchangesTheLastPositions) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  TestBlock* c = NewBlock("c");
  table->PushBack(a);
  table->PushBack(b);
  table->PushBack(c);
  listener.events.clear();
  table->SwapBlocks(a, c);
  EXPECT_THAT(Entries(*table), ElementsAre(c, b, a));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 0);
  EXPECT_THAT(DependantsOf(a), ElementsAre(table));
}

TEST_F(BlockTableTest, SwapBlocksWithItselfStillPostsTheEvent) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  listener.events.clear();
  table->SwapBlocks(a, a);
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  EXPECT_EQ(listener.events.size(), 1u);
}

TEST_F(BlockTableTest, SwapBlocksWithAMissingOrNullBlockDoesNothing) {
  TestBlock absent("absent");
  table->SwapBlocks(&absent, &absent);  // empty table
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  listener.events.clear();
  table->SwapBlocks(a, &absent);
  table->SwapBlocks(nullptr, a);
  table->SwapBlocks(a, nullptr);
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  EXPECT_TRUE(listener.events.empty());
}

TEST_F(BlockTableTest, BulkEditsLeaveATableTheCallerMutedUnmuted) {
  // PushBack and both Erase forms mute the table on entry and set it sending again on the
  // way out, whatever it was before; the summary event then goes out.
  TestBlock* a = NewBlock("a");
  table->SetSendEvents(false);
  table->PushBack(a);
  EXPECT_TRUE(table->GetSendEvents());
  EXPECT_EQ(listener.events.size(), 1u);

  table->SetSendEvents(false);
  table->Erase(7);  // out of range: unmuted, nothing posted
  EXPECT_TRUE(table->GetSendEvents());
  table->SetSendEvents(false);
  TestBlock absent("absent");
  table->Erase(&absent);  // absent: unmuted, nothing posted
  EXPECT_TRUE(table->GetSendEvents());
  EXPECT_EQ(listener.events.size(), 1u);

  table->SetSendEvents(false);
  table->Erase(0);
  EXPECT_TRUE(table->GetSendEvents());
  EXPECT_EQ(listener.events.size(), 2u);

  table->SetSendEvents(false);
  table->Erase(&absent);  // empty table: unmuted, nothing posted
  EXPECT_TRUE(table->GetSendEvents());
  EXPECT_EQ(listener.events.size(), 2u);
}

TEST_F(BlockTableTest, SwapBlocksAndSetBlockDoNotTouchTheMute) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  table->PushBack(a);
  table->PushBack(b);
  listener.events.clear();
  table->SetSendEvents(false);
  table->SwapBlocks(a, b);
  EXPECT_TRUE(table->SetBlock(0, NewBlock("c")).IsOk());
  EXPECT_FALSE(table->GetSendEvents());
  EXPECT_TRUE(listener.events.empty());
  table->SetSendEvents(true);
}

TEST_F(BlockTableTest, SummaryEventClimbsToTheTablesDependantsOnce) {
  RecordingListener root_listener("root");
  holder.Root()->AddBlockListener(&root_listener);
  table->PushBack(NewBlock("a"));
  table->PushBack(NewBlock("b"));
  ASSERT_EQ(root_listener.events.size(), 2u);
  for (const BlockEvent& event : root_listener.events) {
    EXPECT_EQ(event.block, holder.Root());
    EXPECT_EQ(event.code, 2);
    EXPECT_EQ(event.param, 0);  // the link's own event (parameter 1) stayed muted
  }
  root_listener.events.clear();
  table->Erase(1);
  ASSERT_EQ(root_listener.events.size(), 1u);
  EXPECT_EQ(root_listener.events[0].param, 1);
  holder.Root()->RemoveBlockListener(&root_listener);
}

TEST_F(BlockTableTest, SetBlockPostsTheSlotIndex) {
  table->PushBack(NewBlock("a"));
  table->PushBack(NewBlock("b"));
  listener.events.clear();
  ASSERT_TRUE(table->SetBlock(1, NewBlock("c")).IsOk());
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 1);
  EXPECT_EQ(listener.events[0].block, table);
  EXPECT_THAT(journal.entries, ElementsAre("delete b"));
}

TEST_F(BlockTableTest, EraseByIndexOfANullEntryRemovesItAndPostsTheEvent) {
  TestBlock* a = NewBlock("a");
  table->PushBack(nullptr);
  table->PushBack(a);
  listener.events.clear();
  table->Erase(0);
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST_F(BlockTableTest, EraseByBlockOfNullRemovesEveryNullEntry) {
  TestBlock* a = NewBlock("a");
  table->PushBack(nullptr);
  table->PushBack(a);
  table->PushBack(nullptr);
  listener.events.clear();
  table->Erase(static_cast<Block*>(nullptr));
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST_F(BlockTableTest, EraseByBlockOfAdjacentEntriesReleasesTheBlockOnce) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  table->PushBack(b);
  table->PushBack(a);
  table->PushBack(a);
  table->Erase(a);
  EXPECT_THAT(Entries(*table), ElementsAre(b));
  EXPECT_THAT(journal.entries, ElementsAre("delete a"));
}

TEST_F(BlockTableTest, SwapBlocksUsesTheLastPositionOfEach) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  for (Block* entry : {static_cast<Block*>(a), static_cast<Block*>(b), static_cast<Block*>(a),
                       static_cast<Block*>(b)}) {
    table->PushBack(entry);
  }
  table->SwapBlocks(a, b);
  EXPECT_THAT(Entries(*table), ElementsAre(a, b, b, a));
  EXPECT_THAT(DependantsOf(a), ElementsAre(table, table));
  EXPECT_THAT(DependantsOf(b), ElementsAre(table, table));
}

TEST_F(BlockTableTest, SetNumBlocksGrowsWithNullEntriesWithoutEvents) {
  table->PushBack(NewBlock("a"));
  listener.events.clear();
  table->SetNumBlocks(3);
  EXPECT_EQ(table->GetNumBlocks(), 3u);
  EXPECT_EQ(table->GetBlock(1), nullptr);
  EXPECT_EQ(table->GetBlock(2), nullptr);
  table->SetNumBlocks(3);
  EXPECT_EQ(table->GetNumBlocks(), 3u);
  EXPECT_TRUE(listener.events.empty());
}

TEST_F(BlockTableTest, SetNumBlocksDestroysDroppedEntriesEvenWhenUsedElsewhere) {
  TestBlock* user = NewBlock("user");
  Holder user_holder(user);
  TestBlock* c = NewBlock("c");
  TestBlock* d = NewBlock("d");
  table->PushBack(NewBlock("a"));
  table->PushBack(NewBlock("b"));
  table->PushBack(c);
  table->PushBack(d);
  ASSERT_TRUE(user->MakeDependencyByID(1, c).IsOk());
  RecordingListener user_listener;
  user->AddBlockListener(&user_listener);
  listener.events.clear();

  table->SetNumBlocks(2);
  EXPECT_EQ(table->GetNumBlocks(), 2u);
  EXPECT_THAT(journal.entries, ElementsAre("delete d", "delete c"));
  EXPECT_EQ(user->GetDependency(1), nullptr);
  EXPECT_TRUE(user_listener.events.empty());
  EXPECT_TRUE(listener.events.empty());
  user->RemoveBlockListener(&user_listener);
}

TEST_F(BlockTableTest, SetNumBlocksLeavesTheTableSending) {
  // Unlike the bulk edits the table is not muted: a dropped entry that empties its own slots
  // reports that through the table.
  TestBlock* entry = NewBlock("entry");
  ASSERT_TRUE(entry->MakeDependencyByID(1, NewBlock("below")).IsOk());
  table->PushBack(NewBlock("kept"));
  table->PushBack(entry);
  table->PushBack(nullptr);
  listener.events.clear();
  table->SetNumBlocks(1);
  EXPECT_EQ(table->GetNumBlocks(), 1u);
  EXPECT_THAT(journal.entries, ElementsAre("delete below", "delete entry"));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, table);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 1);
}

TEST_F(BlockTableTest, SetNumBlocksShrinksPastRepeatedEntriesSafely) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  table->PushBack(a);
  table->PushBack(a);
  table->SetNumBlocks(0);
  EXPECT_EQ(table->GetNumBlocks(), 0u);
  EXPECT_THAT(journal.entries, ElementsAre("delete a"));
}

TEST_F(BlockTableTest, ShrinkingPastTheTablesOwnEntryOnlyDropsIt) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  table->PushBack(table);  // refused: the table cannot hold itself, the entry stays unlinked
  table->PushBack(NewBlock("c"));
  listener.events.clear();
  table->SetNumBlocks(1);
  EXPECT_THAT(Entries(*table), ElementsAre(a));
  EXPECT_THAT(journal.entries, ElementsAre("delete c"));
  EXPECT_THAT(DependantsOf(table), ElementsAre(holder.Root()));
}

TEST(BlockTableStandaloneTest, ShrinkingPastAnUnlinkedDependantDestroysItThenTheAbandonedTable) {
  // owner -> table, and a refused PushBack left owner as the table's entry. Destroying owner
  // outright lets go of the table, which is not destroyed while it shrinks; once it has shrunk
  // nothing holds it, so it is released with what it still holds instead of being leaked.
  Journal journal;
  RecordingListener listener("table", &journal);
  auto* owner = new TestBlock("owner", 1, &journal);
  auto* table = new BlockTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  table->PushBack(new TestBlock("a", 3, &journal));
  table->PushBack(owner);
  table->AddBlockListener(&listener);
  table->SetNumBlocks(1);
  EXPECT_THAT(journal.entries,
              ElementsAre("delete owner", "hear table 1/0", "delete a", "hear table 2/0"));
}

TEST_F(BlockTableTest, CloneIsDeep) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  table->PushBack(a);
  table->PushBack(b);
  auto* copy = static_cast<BlockTable*>(table->Clone());
  Holder copy_holder(copy);
  ASSERT_EQ(copy->GetNumBlocks(), 2u);
  auto* a_clone = static_cast<TestBlock*>(copy->GetBlock(0));
  auto* b_clone = static_cast<TestBlock*>(copy->GetBlock(1));
  EXPECT_EQ(a_clone->Name(), "a_clone");
  EXPECT_EQ(b_clone->Name(), "b_clone");
  EXPECT_THAT(DependantsOf(a_clone), ElementsAre(copy));
  EXPECT_THAT(DependantsOf(a), ElementsAre(table));
}

TEST_F(BlockTableTest, CloneClonesARepeatedEntryOncePerPosition) {
  TestBlock* a = NewBlock("a");
  table->PushBack(a);
  table->PushBack(a);
  listener.events.clear();
  auto* copy = static_cast<BlockTable*>(table->Clone());
  Holder copy_holder(copy);
  ASSERT_EQ(copy->GetNumBlocks(), 2u);
  EXPECT_NE(copy->GetBlock(0), copy->GetBlock(1));
  EXPECT_NE(copy->GetBlock(0), a);
  EXPECT_THAT(DependantsOf(copy->GetBlock(1)), ElementsAre(copy));
  EXPECT_TRUE(listener.events.empty());  // the source posts nothing
}

TEST_F(BlockTableTest, DestroyingATableReportsEachEmptiedSlot) {
  auto* standalone = new BlockTable(true);
  standalone->PushBack(NewBlock("a"));
  standalone->PushBack(nullptr);
  standalone->PushBack(NewBlock("c"));
  RecordingListener standalone_listener("standalone", &journal);
  standalone->AddBlockListener(&standalone_listener);
  standalone->DeleteThis();
  EXPECT_THAT(journal.entries,
              ElementsAre("delete a", "hear standalone 2/0", "delete c", "hear standalone 2/2"));
}

TEST_F(BlockTableTest, DestroyingATableReleasesItsEntries) {
  auto* standalone = new BlockTable(true);
  standalone->PushBack(NewBlock("a"));
  standalone->PushBack(NewBlock("b"));
  standalone->DeleteThis();
  EXPECT_THAT(journal.entries, ElementsAre("delete a", "delete b"));
}

TEST_F(BlockTableTest, SavedTableWritesItsCountAndListsItsEntriesAsDependencies) {
  TestBlock* entries[3] = {NewBlock("a"), NewBlock("b"), NewBlock("c")};
  for (int i = 0; i < 3; ++i) {
    entries[i]->SetID(static_cast<std::uint32_t>(10 + i));
    table->PushBack(entries[i]);
  }
  SceneSave save;
  EXPECT_EQ(table->Save(&save), 1);
  table->SaveBlockDependencies(&save);
  SceneLoad load(save.TakeBytes());

  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0005u);
  EXPECT_EQ(load.BytesLeftInChunk(), 4u);
  std::int32_t count = 0;
  load.ReadInt32(count);
  EXPECT_EQ(count, 3);
  load.CloseChunk();

  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0010u);
  std::int32_t numbers[4] = {};
  for (std::int32_t& number : numbers) load.ReadInt32(number);
  EXPECT_THAT(numbers, ElementsAre(3, 10, 11, 12));
}

TEST_F(BlockTableTest, SavedPayloadIsOneCountChunkByteForByte) {
  for (const char* name : {"a", "b", "c"}) table->PushBack(NewBlock(name));
  SceneSave save;
  ASSERT_EQ(table->Save(&save), 1);
  // | id 0x0005 | length 4 | count 3 |
  const std::vector<std::uint8_t> expected = {0x05, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0};
  EXPECT_EQ(save.TakeBytes(), expected);
}

// A payload as a table's Save writes it, plus `extra` trailing bytes standing in for the
// dependency chunk that follows in a scene file.
std::vector<std::uint8_t> CountPayload(std::int32_t count, int extra_numbers) {
  SceneSave save;
  save.BeginChunk(0x0099);  // an unknown chunk is skipped
  save.WriteInt32(77);
  save.EndChunk();
  save.BeginChunk(0x0005);
  save.WriteInt32(count);
  save.EndChunk();
  save.BeginChunk(0x0010);
  for (int i = 0; i < extra_numbers; ++i) save.WriteInt32(-1);
  save.EndChunk();
  return save.TakeBytes();
}

TEST_F(BlockTableTest, LoadGrowsWithNullEntries) {
  SceneLoad load(CountPayload(3, 3));
  EXPECT_EQ(table->Load(&load), 1);
  EXPECT_THAT(Entries(*table), ElementsAre(nullptr, nullptr, nullptr));
  EXPECT_FALSE(load.HasError());
}

TEST_F(BlockTableTest, LoadShrinksByDestroyingTheDroppedEntries) {
  for (const char* name : {"a", "b", "c"}) table->PushBack(NewBlock(name));
  SceneLoad load(CountPayload(1, 1));
  EXPECT_EQ(table->Load(&load), 1);
  EXPECT_EQ(table->GetNumBlocks(), 1u);
  EXPECT_THAT(journal.entries, ElementsAre("delete c", "delete b"));
}

TEST_F(BlockTableTest, LoadOfTheCurrentCountChangesNothing) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  table->PushBack(a);
  table->PushBack(b);
  SceneLoad load(CountPayload(2, 2));
  EXPECT_EQ(table->Load(&load), 1);
  EXPECT_THAT(Entries(*table), ElementsAre(a, b));
  EXPECT_TRUE(journal.entries.empty());
}

TEST_F(BlockTableTest, LoadShrinkingDestroysEntriesUsedElsewhere) {
  TestBlock* user = NewBlock("user");
  Holder user_holder(user);
  TestBlock* b = NewBlock("b");
  table->PushBack(NewBlock("a"));
  table->PushBack(b);
  ASSERT_TRUE(user->MakeDependencyByID(0, b).IsOk());
  SceneLoad load(CountPayload(1, 1));
  EXPECT_EQ(table->Load(&load), 1);
  EXPECT_EQ(table->GetNumBlocks(), 1u);
  EXPECT_THAT(journal.entries, ElementsAre("delete b"));
  EXPECT_EQ(user->GetDependency(0), nullptr);
}

TEST_F(BlockTableTest, LoadOfAnEmptyPayloadSucceedsAndChangesNothing) {
  table->PushBack(NewBlock("a"));
  SceneLoad load(std::vector<std::uint8_t>{});
  EXPECT_EQ(table->Load(&load), 1);
  EXPECT_EQ(table->GetNumBlocks(), 1u);
}

TEST_F(BlockTableTest, LoadRejectsACountTheFileCannotHold) {
  SceneLoad load(CountPayload(0x7FFFFFFF, 2));
  EXPECT_EQ(table->Load(&load), 0);
  EXPECT_EQ(table->GetNumBlocks(), 0u);
  EXPECT_TRUE(load.HasError());
}

TEST_F(BlockTableTest, LoadRejectsANegativeCount) {
  SceneLoad load(CountPayload(-1, 0));
  EXPECT_EQ(table->Load(&load), 0);
  EXPECT_EQ(table->GetNumBlocks(), 0u);
}

TEST_F(BlockTableTest, LoadOfACountChunkTooShortForItsNumberKeepsTheEntries) {
  // | id 0x0005 | length 2 | 01 00 |: the framing is sound but the count is cut short.
  const std::vector<std::uint8_t> bytes = {0x05, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x00};
  table->PushBack(NewBlock("a"));
  table->PushBack(NewBlock("b"));
  SceneLoad load(bytes);
  EXPECT_EQ(table->Load(&load), 0);
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(table->GetNumBlocks(), 2u);
  EXPECT_TRUE(journal.entries.empty());
}

TEST_F(BlockTableTest, LoadReportsACorruptChunk) {
  // | id 0x0005 | length 4 | 2 of the 4 bytes |: the chunk claims more than the file holds.
  SceneSave save;
  save.BeginChunk(0x0005);
  save.WriteInt32(1);
  save.EndChunk();
  std::vector<std::uint8_t> bytes = save.TakeBytes();
  bytes.resize(bytes.size() - 2);
  SceneLoad load(bytes);
  EXPECT_EQ(table->Load(&load), 0);
  EXPECT_EQ(table->GetNumBlocks(), 0u);
}

}  // namespace
}  // namespace Orlo

namespace Orlo {
namespace {

// Where a naive walk would find `block`: the last position holding it.
unsigned LastPositionOf(const BlockTable& table, Block* block) {
  for (unsigned i = table.GetNumBlocks(); i > 0; --i) {
    if (table.GetBlock(static_cast<int>(i - 1)) == block) return i - 1;
  }
  return BlockTable::kNotFound;
}

// A long table answers from a count of its entries; through every kind of change it gives the
// answers of a walk over the entries.
TEST(LongBlockTableTest, FindsEntriesAsAWalkWouldThroughEveryChange) {
  auto* table = new BlockTable;
  Holder holder(table);
  // Each block is kept alive by a holder of its own, so that no change to the table destroys
  // it while the test still names it.
  std::vector<Block*> pool;
  std::vector<std::unique_ptr<Holder>> keepers;
  for (int i = 0; i < 40; ++i) {
    pool.push_back(new TestBlock("b" + std::to_string(i), 0));
    keepers.push_back(std::make_unique<Holder>(pool.back()));
  }
  std::mt19937 random(7);
  auto any_block = [&]() -> Block* {
    return random() % 8 == 0 ? nullptr : pool[random() % pool.size()];
  };
  for (int step = 0; step < 3000; ++step) {
    const int size = static_cast<int>(table->GetNumBlocks());
    switch (random() % 8) {
      case 0:
      case 1:
      case 2:
        table->PushBack(any_block());
        break;
      case 3:
        if (size > 0) table->Erase(static_cast<int>(random() % size));
        break;
      case 4:
        if (random() % 4 == 0) table->Erase(any_block());
        break;
      case 5:
        if (size > 0) (void)table->SetBlock(static_cast<int>(random() % size), any_block());
        break;
      case 6:
        table->SwapBlocks(any_block(), any_block());
        break;
      default:
        // Growing only: shrinking destroys the dropped entries outright.
        if (random() % 10 == 0) table->SetNumBlocks(size + static_cast<int>(random() % 20));
        break;
    }
    for (int probe = 0; probe < 4; ++probe) {
      Block* block = any_block();
      ASSERT_EQ(table->GetBlockId(block), LastPositionOf(*table, block)) << "step " << step;
      ASSERT_EQ(table->IsBlock(block), LastPositionOf(*table, block) != BlockTable::kNotFound);
    }
  }
  EXPECT_GT(table->GetNumBlocks(), 64u);  // the count was in use
}

}  // namespace
}  // namespace Orlo
