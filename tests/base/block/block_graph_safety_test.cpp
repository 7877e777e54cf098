// The block graph stays safe when one block is linked into several slots of one owner, when
// the same block is set twice into one slot, and when tables are cloned deep or hold
// themselves: every block is destroyed exactly once, exactly when nothing holds it any more,
// and nothing keeps a pointer to a destroyed block.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_table.h>
#include <orlo/base/engine/scene_engine.h>

#include "tests/testing/block_record_stream.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::Holder;
using testing::Journal;
using testing::RecordingListener;
using testing::TestBlock;

// How many times the journal recorded the destruction of `name`.
int Deletions(const Journal& journal, const std::string& name) {
  return static_cast<int>(
      std::count(journal.entries.begin(), journal.entries.end(), "delete " + name));
}

// How many entries of `block`'s dependants are `dependant`.
int EntriesOf(const Block* block, const Block* dependant) {
  std::vector<Block*> dependants;
  block->GetDependants(dependants);
  return static_cast<int>(std::count(dependants.begin(), dependants.end(), dependant));
}

class BlockGraphSafetyTest : public ::testing::Test {
 protected:
  TestBlock* NewBlock(const std::string& name) { return new TestBlock(name, 3, &journal); }

  Journal journal;
};

// ---- One block in three slots of one owner ----

TEST_F(BlockGraphSafetyTest, BlockInThreeSlotsLivesUntilTheLastSlotIsReleased) {
  Holder holder;
  TestBlock* a = NewBlock("a");
  holder.Hold(a);
  TestBlock* b = NewBlock("b");
  for (int slot = 0; slot < 3; ++slot) ASSERT_TRUE(a->MakeDependencyByID(slot, b).IsOk());
  EXPECT_EQ(EntriesOf(b, a), 3);

  a->DeleteDependency(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  EXPECT_GE(EntriesOf(b, a), 2);
  EXPECT_EQ(a->GetDependency(1), b);

  a->DeleteDependency(1);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  EXPECT_GE(EntriesOf(b, a), 1);
  EXPECT_EQ(a->GetDependency(2), b);

  a->DeleteDependency(2);
  EXPECT_EQ(Deletions(journal, "b"), 1);
  EXPECT_EQ(Deletions(journal, "a"), 0);
}

TEST_F(BlockGraphSafetyTest, ReleasingTheOwnerOfABlockInThreeSlotsDestroysItOnce) {
  Holder holder;
  TestBlock* a = NewBlock("a");
  holder.Hold(a);
  TestBlock* b = NewBlock("b");
  for (int slot = 0; slot < 3; ++slot) ASSERT_TRUE(a->MakeDependencyByID(slot, b).IsOk());

  holder.Root()->DeleteDependency(0);  // a loses its last dependant
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, DeleteThisBlockOfTheOwnerOfABlockInThreeSlotsDestroysItOnce) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  for (int slot = 0; slot < 3; ++slot) ASSERT_TRUE(a->MakeDependencyByID(slot, b).IsOk());

  a->DeleteThisBlock(true);
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, BlockPushedThreeTimesLivesUntilItsLastEntryIsErased) {
  Holder holder;
  auto* table = new BlockTable(true);
  holder.Hold(table);
  TestBlock* b = NewBlock("b");
  for (int i = 0; i < 3; ++i) table->PushBack(b);
  ASSERT_EQ(table->GetNumBlocks(), 3u);
  EXPECT_EQ(EntriesOf(b, table), 3);

  table->Erase(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  EXPECT_EQ(table->GetBlock(0), b);
  table->Erase(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  EXPECT_EQ(table->GetBlock(0), b);
  table->Erase(0);
  EXPECT_EQ(Deletions(journal, "b"), 1);
  EXPECT_EQ(table->GetNumBlocks(), 0u);
}

TEST_F(BlockGraphSafetyTest, ReleasingATableThatHoldsABlockThreeTimesDestroysItOnce) {
  Holder holder;
  auto* table = new BlockTable(true);
  holder.Hold(table);
  TestBlock* b = NewBlock("b");
  for (int i = 0; i < 3; ++i) table->PushBack(b);

  holder.Root()->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, DeleteThisBlockOfATableThatHoldsABlockThreeTimesDestroysItOnce) {
  auto* table = new BlockTable(true);
  TestBlock* b = NewBlock("b");
  for (int i = 0; i < 3; ++i) table->PushBack(b);

  table->DeleteThisBlock(true);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

// Makes journaled test blocks, so that the blocks a file brings back report their destruction.
class JournaledBlockFactory : public BlockFactory {
 public:
  explicit JournaledBlockFactory(Journal* journal) : m_journal(journal) {}
  BlockType GetBlockType() const override { return TestBlock::kType; }
  Block* GetBlock(bool) const override { return new TestBlock("loaded", 3, m_journal); }
  std::string GetName() const override { return "JournaledBlockFactory"; }

 private:
  Journal* m_journal;
};

// A file whose table lists the same block number in its three slots: the reader links the
// block three times, as three PushBacks would.
class LoadedTableTest : public BlockGraphSafetyTest {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    SceneEngine::AddBlockFactory(new BlockVectorFactory());
    SceneEngine::AddBlockFactory(new JournaledBlockFactory(&journal));
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }

  // The bytes of a table whose three entries are one block. The entries are raw stores, so
  // writing the file needs no link; they are emptied again before the blocks are destroyed.
  std::vector<std::uint8_t> TableWithOneBlockThreeTimes() {
    auto* table = new BlockTable(true);
    auto* block = new TestBlock("written", 3);
    table->SetNumBlocks(3);
    for (int i = 0; i < 3; ++i) table->SetDependency(i, block);
    std::vector<std::uint8_t> bytes = testing::SaveBlockGraph(table);
    for (int i = 0; i < 3; ++i) table->SetDependency(i, nullptr);
    table->DeleteThisBlock(true);
    block->DeleteThisBlock(true);
    return bytes;
  }
};

TEST_F(LoadedTableTest, BlockLoadedIntoThreeSlotsLivesUntilItsLastEntryIsErased) {
  auto* table = dynamic_cast<BlockTable*>(testing::LoadBlockGraph(TableWithOneBlockThreeTimes()));
  ASSERT_NE(table, nullptr);
  Holder holder(table);
  ASSERT_EQ(table->GetNumBlocks(), 3u);
  Block* loaded = table->GetBlock(0);
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(table->GetBlock(1), loaded);
  EXPECT_EQ(table->GetBlock(2), loaded);

  table->Erase(2);
  ASSERT_EQ(Deletions(journal, "loaded"), 0);
  table->Erase(1);
  ASSERT_EQ(Deletions(journal, "loaded"), 0);
  EXPECT_EQ(table->GetBlock(0), loaded);
  table->Erase(0);
  EXPECT_EQ(Deletions(journal, "loaded"), 1);
}

TEST_F(LoadedTableTest, ReleasingALoadedTableThatHoldsABlockThreeTimesDestroysItOnce) {
  Block* table = testing::LoadBlockGraph(TableWithOneBlockThreeTimes());
  ASSERT_NE(table, nullptr);
  Holder holder(table);
  holder.Root()->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "loaded"), 1);
}

// ---- Another dependant between two entries of one owner ----

TEST_F(BlockGraphSafetyTest, BlockHeldAsACAIsDestroyedOnlyByTheLastRelease) {
  Holder holder_a;
  Holder holder_c;
  TestBlock* a = NewBlock("a");
  TestBlock* c = NewBlock("c");
  holder_a.Hold(a);
  holder_c.Hold(c);
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(c->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(1, b).IsOk());
  std::vector<Block*> dependants;
  b->GetDependants(dependants);
  ASSERT_EQ(dependants, (std::vector<Block*>{a, c, a}));

  a->DeleteDependency(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  c->DeleteDependency(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  EXPECT_EQ(a->GetDependency(1), b);
  a->DeleteDependency(1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

// ---- The same block set twice into one slot ----

// Kept as is: existing scenes count on a block surviving the release of the slot it was set
// into twice.
TEST_F(BlockGraphSafetyTest, BlockSetTwiceIntoOneSlotSurvivesTheReleaseOfThatSlot) {
  Holder holder;
  TestBlock* a = NewBlock("a");
  holder.Hold(a);
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  EXPECT_EQ(EntriesOf(b, a), 2);

  a->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "b"), 0);
  EXPECT_EQ(a->GetDependency(0), nullptr);
  EXPECT_EQ(EntriesOf(b, a), 1);
}

TEST_F(BlockGraphSafetyTest, ReleasingOneOfTwoIdenticalLinksKeepsTheBlock) {
  Holder holder;
  TestBlock* a = NewBlock("a");
  holder.Hold(a);
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(1, b).IsOk());

  a->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "b"), 0);
  EXPECT_EQ(a->GetDependency(1), b);
  EXPECT_EQ(EntriesOf(b, a), 1);

  holder.Root()->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, LeftoverReferenceIsDroppedWhenItsHolderIsReleased) {
  Holder holder;
  TestBlock* a = NewBlock("a");
  holder.Hold(a);
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  a->DeleteDependency(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);

  // Only the leftover reference keeps b: when a goes, so does b, and nothing leaks.
  holder.Root()->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, LeftoverReferenceIsDroppedWhenItsHolderIsDeleted) {
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  a->DeleteDependency(0);
  ASSERT_EQ(Deletions(journal, "b"), 0);

  a->DeleteThisBlock(true);
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, BlockHeldElsewhereOutlivesTheHolderOfALeftoverReferenceSafely) {
  Holder holder_a;
  Holder holder_c;
  TestBlock* a = NewBlock("a");
  TestBlock* c = NewBlock("c");
  holder_a.Hold(a);
  holder_c.Hold(c);
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(c->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  a->DeleteDependency(0);
  ASSERT_EQ(EntriesOf(b, a), 1);

  holder_a.Root()->DeleteDependency(0);
  ASSERT_EQ(Deletions(journal, "a"), 1);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  std::vector<Block*> dependants;
  b->GetDependants(dependants);
  EXPECT_EQ(dependants, std::vector<Block*>{c});

  // An event from b climbs through c only.
  RecordingListener listener;
  c->AddBlockListener(&listener);
  b->PostEvent(3, 7);
  c->RemoveBlockListener(&listener);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, c);
  EXPECT_EQ(listener.events[0].param, 7);

  c->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, BlockHeldElsewhereNoLongerListsADeletedHolderOfALeftoverReference) {
  Holder holder_c;
  TestBlock* a = NewBlock("a");
  TestBlock* c = NewBlock("c");
  holder_c.Hold(c);
  TestBlock* b = NewBlock("b");
  ASSERT_TRUE(c->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  a->DeleteDependency(0);

  a->DeleteThisBlock(true);
  ASSERT_EQ(Deletions(journal, "b"), 0);
  EXPECT_EQ(EntriesOf(b, a), 0);
  // b is destroyed by the release of its real holder, without touching a.
  b->DeleteThisBlock(true);
  EXPECT_EQ(Deletions(journal, "b"), 1);
  EXPECT_EQ(c->GetDependency(0), nullptr);
}

// ---- Cloning tables ----

constexpr int kTableDepth = 100000;

TEST_F(BlockGraphSafetyTest, LeftoverReferenceThatClosesACycleOfOwnershipLeavesNothingBehind) {
  // a sets b twice into slot 0 and empties it: b lives on, held by a's leftover reference.
  // b then takes a as a dependency, which no slot forbids. When the last outside holder
  // lets go, a and b would hold each other forever: both are destroyed instead.
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  {
    Holder holder(a);
    ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
    ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
    a->DeleteDependency(0);
    ASSERT_EQ(EntriesOf(b, a), 1);
    ASSERT_TRUE(b->MakeDependencyByID(0, a).IsOk());
    EXPECT_TRUE(journal.entries.empty());
  }
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, ACycleThatOnlyADestroyedBlockOwnedGoesWithIt) {
  // b keeps two leftover references: one from a, one from c. b then takes a as a dependency.
  // Once every outside holder has let go, only c's leftover reference keeps b (and so a)
  // alive; when c is destroyed its reference goes, and a and b go with it.
  TestBlock* a = NewBlock("a");
  TestBlock* b = NewBlock("b");
  TestBlock* c = NewBlock("c");
  {
    // Let go of in the order a, b, c.
    Holder holds_c(c);
    Holder holds_b(b);
    Holder holds_a(a);
    for (TestBlock* holder : {a, c}) {
      ASSERT_TRUE(holder->MakeDependencyByID(1, b).IsOk());
      ASSERT_TRUE(holder->MakeDependencyByID(1, b).IsOk());
      holder->DeleteDependency(1);
    }
    ASSERT_TRUE(b->MakeDependencyByID(0, a).IsOk());
    EXPECT_TRUE(journal.entries.empty());
  }
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
  EXPECT_EQ(Deletions(journal, "c"), 1);
}

TEST_F(BlockGraphSafetyTest, ACycleHiddenBehindARefusedTableEntryIsReleased) {
  // The table sets b twice into its entry and empties it, leaving b a leftover reference to
  // the table; b then holds the table in a slot, and the table's PushBack(b) is refused,
  // leaving an entry that holds b without owning it. Nothing outside holds either of them once
  // the holders let go: both are destroyed, and the block the table held first goes too.
  auto* table = new BlockTable(true);
  TestBlock* first = NewBlock("first");
  TestBlock* b = NewBlock("b");
  {
    Holder holds_table(table);
    Holder holds_first(first);
    Holder holds_b(b);
    table->PushBack(first);
    ASSERT_TRUE(table->MakeDependencyByID(0, b).IsOk());
    ASSERT_TRUE(table->MakeDependencyByID(0, b).IsOk());
    table->DeleteDependency(0);
    ASSERT_TRUE(b->MakeDependencyByID(1, table).IsOk());
    ASSERT_TRUE(b->MakeDependencyByID(1, table).IsOk());
    table->PushBack(b);
    ASSERT_EQ(table->GetNumBlocks(), 2);
    EXPECT_TRUE(journal.entries.empty());
  }
  EXPECT_EQ(Deletions(journal, "first"), 1);
  EXPECT_EQ(Deletions(journal, "b"), 1);
}

TEST_F(BlockGraphSafetyTest, CloneOfADeepChainOfTablesHasTheSameShape) {
  auto* root = new BlockTable(true);
  BlockTable* current = root;
  for (int i = 0; i < kTableDepth; ++i) {
    auto* next = new BlockTable(true);
    // Muted while the chain grows, so each PushBack's event stops at the table it changed.
    current->PushBack(next);
    current->SetSendEvents(false);
    current = next;
  }
  current->PushBack(NewBlock("leaf"));
  Holder holder(root);

  Block* copy = root->Clone();
  ASSERT_NE(copy, nullptr);
  Holder copy_holder(copy);
  Block* level = copy;
  int depth = 0;
  while (level != nullptr && level->GetClassName() == "BlockTable") {
    ASSERT_EQ(level->NumDependencies(), 1) << "at depth " << depth;
    ASSERT_NE(level, root);
    level = level->GetDependency(0);
    ++depth;
  }
  EXPECT_EQ(depth, kTableDepth + 1);
  ASSERT_NE(level, nullptr);
  auto* leaf_copy = dynamic_cast<TestBlock*>(level);
  ASSERT_NE(leaf_copy, nullptr);
  EXPECT_EQ(leaf_copy->Name(), "leaf_clone");

  copy_holder.Root()->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "leaf_clone"), 1);
  EXPECT_EQ(Deletions(journal, "leaf"), 0);
}

TEST_F(BlockGraphSafetyTest, CloneOfATableThatHoldsItselfNullsThatEntry) {
  auto* table = new BlockTable(true);
  Holder holder(table);
  table->PushBack(NewBlock("entry"));
  table->PushBack(table);  // refused by the cycle test: stays as an unlinked entry
  ASSERT_EQ(table->GetNumBlocks(), 2u);
  ASSERT_EQ(table->GetBlock(1), table);

  Block* copy = table->Clone();
  ASSERT_NE(copy, nullptr);
  Holder copy_holder(copy);
  ASSERT_EQ(copy->NumDependencies(), 2);
  auto* entry_copy = dynamic_cast<TestBlock*>(copy->GetDependency(0));
  ASSERT_NE(entry_copy, nullptr);
  EXPECT_EQ(entry_copy->Name(), "entry_clone");
  EXPECT_EQ(copy->GetDependency(1), nullptr);
}

// ---- A refused PushBack ----

TEST_F(BlockGraphSafetyTest, RefusedPushBackDoesNotOwnItsBlockAndIsNulledWhenItGoes) {
  Holder holder_a;
  Holder holder_table;
  TestBlock* a = NewBlock("a");
  holder_a.Hold(a);
  auto* table = new BlockTable(true);
  holder_table.Hold(table);
  ASSERT_TRUE(a->MakeDependencyByID(0, table).IsOk());

  ASSERT_FALSE(table->OkToSetAsDependency(a));
  table->PushBack(a);  // a reaches the table: the entry stays unlinked
  ASSERT_EQ(table->GetNumBlocks(), 1u);
  ASSERT_EQ(table->GetBlock(0), a);
  EXPECT_EQ(EntriesOf(a, table), 0);

  // a's real owner lets go: a is destroyed although the table still lists it.
  holder_a.Root()->DeleteDependency(0);
  EXPECT_EQ(Deletions(journal, "a"), 1);
  EXPECT_EQ(table->GetNumBlocks(), 1u);
  EXPECT_EQ(table->GetBlock(0), nullptr);
}

TEST_F(BlockGraphSafetyTest, ReplacingAnUnlinkedEntryLeavesTheLinkedEntriesTheirReferences) {
  // `lower` holds `inner`, whose entry for the table stays unlinked (the table reaches it);
  // through that entry `lower` reaches the table, so the table's third PushBack of `lower` is
  // refused too. Replacing that unlinked entry must not take a reference that one of the two
  // linked entries still needs: `lower` lives until the last linked entry goes.
  auto* table = new BlockTable(true);
  Holder holder(table);
  auto* lower = new BlockTable(true);
  auto* inner = new BlockTable(true);
  lower->PushBack(NewBlock("leaf"));
  lower->PushBack(inner);
  table->PushBack(lower);
  table->PushBack(lower);
  inner->PushBack(table);
  ASSERT_EQ(EntriesOf(table, inner), 0);
  table->PushBack(lower);
  ASSERT_EQ(table->GetNumBlocks(), 3u);
  ASSERT_EQ(EntriesOf(lower, table), 2);

  ASSERT_TRUE(table->SetBlock(2, NewBlock("other")).IsOk());
  EXPECT_EQ(EntriesOf(lower, table), 2);
  table->Erase(0);
  EXPECT_EQ(Deletions(journal, "leaf"), 0);
  EXPECT_EQ(EntriesOf(lower, table), 1);
  table->Erase(0);
  EXPECT_EQ(Deletions(journal, "leaf"), 1);
  EXPECT_EQ(Deletions(journal, "other"), 0);
}

}  // namespace
}  // namespace Orlo
