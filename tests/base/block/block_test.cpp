#include <orlo/base/block/block.h>

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <orlo/base/block/block_table.h>
#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/scene_engine.h>
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

constexpr char kCyclic[] = "Block::MakeDependencyByID : Cyclic Dependency.";

std::vector<Block*> DependantsOf(const Block* block) {
  std::vector<Block*> out;
  block->GetDependants(out);
  return out;
}

class BlockTest : public ::testing::Test {
 protected:
  void TearDown() override { SceneEngine::SetScene(nullptr); }
  Journal journal;
};

TEST_F(BlockTest, NewBlockHasDefaults) {
  TestBlock block("a");
  EXPECT_EQ(block.GetData(), nullptr);
  EXPECT_TRUE(block.GetSendEvents());
  EXPECT_EQ(block.GetID(), 0xFFFFFFFFu);
  EXPECT_EQ(block.GetSaved(), 0);
  EXPECT_EQ(block.GetParentBlock(), nullptr);
  EXPECT_TRUE(DependantsOf(&block).empty());
}

// The saved mark only says whether the block was written, so it is kept as one bit.
TEST_F(BlockTest, AnyNonZeroSavedMarkReadsBackAsOne) {
  TestBlock block("a");
  for (int mark : {1, 5, -3}) {
    block.SetSaved(mark);
    EXPECT_EQ(block.GetSaved(), 1) << mark;
    block.SetSaved(0);
    EXPECT_EQ(block.GetSaved(), 0);
  }
}

TEST_F(BlockTest, BaseVirtualsHaveTheirDefaults) {
  TestBlock block("a");
  EXPECT_EQ(block.GetDependencyType(0), 0u);
  EXPECT_EQ(block.GetDataTable(), nullptr);
  const Status status = block.SetDataTable(nullptr);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "This Block has no DataTables.");
  EXPECT_EQ(block.PostLoad(), 0);
}

TEST_F(BlockTest, DataPointerIsKeptForTheHost) {
  TestBlock block("a");
  int host_value = 0;
  block.SetData(&host_value);
  EXPECT_EQ(block.GetData(), &host_value);
}

TEST_F(BlockTest, LinkingRecordsBothDirections) {
  Holder holder;
  auto* a = new TestBlock("a");
  auto* b = new TestBlock("b");
  holder.Hold(a);
  const Status status = a->MakeDependencyByID(1, b);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(status.GetMessage(), "");
  EXPECT_EQ(a->GetDependency(1), b);
  EXPECT_THAT(DependantsOf(b), ElementsAre(a));
}

TEST_F(BlockTest, LinkingABlockToItselfIsRefusedAndChangesNothing) {
  TestBlock a("a");
  RecordingListener listener;
  a.AddBlockListener(&listener);
  const Status status = a.MakeDependencyByID(0, &a);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), kCyclic);
  EXPECT_EQ(a.GetDependency(0), nullptr);
  EXPECT_TRUE(DependantsOf(&a).empty());
  EXPECT_TRUE(listener.events.empty());
  a.RemoveBlockListener(&listener);
}

TEST_F(BlockTest, LinkThatWouldCloseACycleIsRefused) {
  // A -> B -> K
  Holder holder;
  auto* a = new TestBlock("a");
  auto* b = new TestBlock("b");
  auto* k = new TestBlock("k");
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(b->MakeDependencyByID(0, k).IsOk());

  const Status status = k->MakeDependencyByID(0, a);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), kCyclic);
  EXPECT_EQ(k->GetDependency(0), nullptr);
  EXPECT_THAT(DependantsOf(a), ElementsAre(holder.Root()));
  EXPECT_FALSE(k->OkToSetAsDependency(a));
  EXPECT_TRUE(a->OkToSetAsDependency(k));
}

TEST_F(BlockTest, OkToSetAsDependencyRefusesItselfAndAcceptsNull) {
  TestBlock a("a");
  EXPECT_FALSE(a.OkToSetAsDependency(&a));
  EXPECT_TRUE(a.OkToSetAsDependency(nullptr));
}

TEST_F(BlockTest, TestDependantCountsPathsNotBlocks) {
  // top -> left -> bottom, top -> right -> bottom, top -> bottom: three paths to bottom.
  Holder holder;
  auto* top = new TestBlock("top");
  auto* left = new TestBlock("left");
  auto* right = new TestBlock("right");
  auto* bottom = new TestBlock("bottom");
  holder.Hold(top);
  ASSERT_TRUE(top->MakeDependencyByID(0, left).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(1, right).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(2, bottom).IsOk());
  ASSERT_TRUE(left->MakeDependencyByID(0, bottom).IsOk());
  ASSERT_TRUE(right->MakeDependencyByID(2, bottom).IsOk());

  int count = 0;
  top->TestDependant(bottom, count);
  EXPECT_EQ(count, 3);
  count = 10;
  top->TestDependant(bottom, count);
  EXPECT_EQ(count, 13);  // adds to the count it is given
  count = 0;
  top->TestDependant(nullptr, count);
  EXPECT_EQ(count, 0);
  bottom->TestDependant(top, count);
  EXPECT_EQ(count, 0);
}

TEST_F(BlockTest, TestDependantEndsOnACycleLeftByRawStores) {
  TestBlock a("a");
  TestBlock b("b");
  TestBlock target("target");
  a.SetDependency(0, &b);
  b.SetDependency(0, &a);  // raw stores can close a cycle the links would refuse
  b.SetDependency(1, &target);
  int count = 0;
  a.TestDependant(&target, count);
  EXPECT_EQ(count, 1);
}

TEST_F(BlockTest, TestDependantDoesNotCountBelowTheTarget) {
  // a -> target, and target -> x -> target through raw stores: below the target lies another
  // way to it, which is not counted.
  TestBlock a("a");
  TestBlock target("target");
  TestBlock x("x");
  a.SetDependency(0, &target);
  target.SetDependency(0, &x);
  x.SetDependency(0, &target);
  int count = 0;
  a.TestDependant(&target, count);
  EXPECT_EQ(count, 1);
}

TEST_F(BlockTest, MakeDependantRefusesACycleAndOtherwiseAppends) {
  Holder holder;
  auto* a = new TestBlock("a");
  auto* b = new TestBlock("b");
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  // b is reachable from a, so a may not become a dependant of ... a's own dependency chain.
  EXPECT_FALSE(a->MakeDependant(0, b));
  EXPECT_THAT(DependantsOf(a), ElementsAre(holder.Root()));

  TestBlock lone("lone");
  EXPECT_TRUE(lone.MakeDependant(5, a));
  EXPECT_TRUE(lone.MakeDependant(5, a));
  EXPECT_TRUE(lone.MakeDependant(0, nullptr));
  EXPECT_THAT(DependantsOf(&lone), ElementsAre(a, a, nullptr));
}

TEST_F(BlockTest, LinkingNullEmptiesTheSlotReleasesTheOldBlockAndDeliversEventTwo) {
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  auto* old = new TestBlock("old", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(2, old).IsOk());
  RecordingListener listener;
  a->AddBlockListener(&listener);

  EXPECT_TRUE(a->MakeDependencyByID(2, nullptr).IsOk());
  EXPECT_EQ(a->GetDependency(2), nullptr);
  EXPECT_THAT(journal.entries, ElementsAre("delete old"));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 2);
  EXPECT_EQ(listener.events[0].block, a);
  a->RemoveBlockListener(&listener);
}

TEST_F(BlockTest, LinkingNullIntoAnEmptySlotDoesNothing) {
  TestBlock a("a");
  RecordingListener listener;
  a.AddBlockListener(&listener);
  EXPECT_TRUE(a.MakeDependencyByID(1, nullptr).IsOk());
  a.DeleteDependency(1);
  EXPECT_TRUE(listener.events.empty());
  a.RemoveBlockListener(&listener);
}

TEST_F(BlockTest, LinkingIntoASlotTheBlockDoesNotHaveIsRefused) {
  // Such a link would leave a back reference that nothing ever releases.
  TestBlock a("a", 2);
  TestBlock b("b");
  for (int index : {-1, 2, 100}) {
    const Status status = a.MakeDependencyByID(index, &b);
    EXPECT_EQ(status.GetCode(), 2);
    EXPECT_EQ(status.GetMessage(),
              "Block::MakeDependencyByID : The dependency index is out of range.");
  }
  EXPECT_TRUE(DependantsOf(&b).empty());
}

TEST_F(BlockTest, ReplacingALinkReleasesTheOldBlockAfterLinkingTheNewOne) {
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  auto* first = new TestBlock("first", 3, &journal);
  auto* second = new TestBlock("second", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, first).IsOk());
  RecordingListener listener("first-listener", &journal);
  first->AddBlockListener(&listener);

  ASSERT_TRUE(a->MakeDependencyByID(0, second).IsOk());
  EXPECT_EQ(a->GetDependency(0), second);
  EXPECT_THAT(journal.entries, ElementsAre("hear first-listener 1/0 from first", "delete first"));
}

// A listener that records, when the block it hears announces its release, what its former
// dependant and the replacing block look like at that moment.
class ReleaseWitness : public RecordingListener {
 public:
  ReleaseWitness(Block* dependant, Block* replacement, Journal* journal)
      : RecordingListener("witness", journal), m_dependant(dependant), m_replacement(replacement) {}
  void OnBlockEvent(BlockEvent event) override {
    RecordingListener::OnBlockEvent(event);
    if (event.code != 1) return;
    std::vector<Block*> dependants;
    m_replacement->GetDependants(dependants);
    replacement_linked = dependants.size() == 1 && dependants[0] == m_dependant;
    slot_still_old = m_dependant->GetDependency(0) == event.block;
  }
  bool replacement_linked = false;
  bool slot_still_old = false;

 private:
  Block* m_dependant;
  Block* m_replacement;
};

TEST_F(BlockTest, ReplacingALinkRecordsTheNewBackReferenceReleasesTheOldThenStoresAndNotifies) {
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  auto* first = new TestBlock("first", 3, &journal);
  auto* second = new TestBlock("second", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, first).IsOk());
  ReleaseWitness witness(a, second, &journal);
  first->AddBlockListener(&witness);
  RecordingListener a_listener("a", &journal);
  a->AddBlockListener(&a_listener);

  ASSERT_TRUE(a->MakeDependencyByID(0, second).IsOk());
  // When first goes, second already lists a but a's slot still holds first; the slot's
  // event comes last.
  EXPECT_TRUE(witness.replacement_linked);
  EXPECT_TRUE(witness.slot_still_old);
  EXPECT_THAT(journal.entries,
              ElementsAre("hear witness 1/0 from first", "delete first", "hear a 2/0 from a"));
  a->RemoveBlockListener(&a_listener);
}

TEST_F(BlockTest, ReplacingTheOnlyReferenceReleasesEverythingBelowAnnouncingEachBlock) {
  // a -> old -> {mid -> leaf}; replacing old in a's slot releases old, mid and leaf.
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  auto* old = new TestBlock("old", 3, &journal);
  auto* mid = new TestBlock("mid", 3, &journal);
  auto* leaf = new TestBlock("leaf", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(1, old).IsOk());
  ASSERT_TRUE(old->MakeDependencyByID(0, mid).IsOk());
  ASSERT_TRUE(mid->MakeDependencyByID(2, leaf).IsOk());
  RecordingListener old_listener("old", &journal);
  RecordingListener mid_listener("mid", &journal);
  RecordingListener leaf_listener("leaf", &journal);
  old->AddBlockListener(&old_listener);
  mid->AddBlockListener(&mid_listener);
  leaf->AddBlockListener(&leaf_listener);

  ASSERT_TRUE(a->MakeDependencyByID(1, new TestBlock("new", 3, &journal)).IsOk());
  EXPECT_THAT(journal.entries,
              ElementsAre("hear old 1/0 from old", "hear mid 1/0 from mid",
                          "hear leaf 1/0 from leaf", "delete leaf", "hear mid 2/2 from mid",
                          "delete mid", "hear old 2/0 from old", "delete old"));
}

TEST_F(BlockTest, RefusedCycleLeavesTheSlotItsOldBlockAndTheListenersAlone) {
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  auto* k = new TestBlock("k", 3, &journal);
  auto* kept = new TestBlock("kept", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, k).IsOk());
  ASSERT_TRUE(k->MakeDependencyByID(1, kept).IsOk());
  RecordingListener k_listener("k", &journal);
  k->AddBlockListener(&k_listener);

  const Status status = k->MakeDependencyByID(1, a);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), kCyclic);
  EXPECT_EQ(k->GetDependency(1), kept);
  EXPECT_THAT(DependantsOf(kept), ElementsAre(k));
  EXPECT_THAT(DependantsOf(a), ElementsAre(holder.Root()));
  EXPECT_TRUE(journal.entries.empty());
  k->RemoveBlockListener(&k_listener);
}

// A block held by many dependants (a parent's transform, a shared material) keeps the others
// in link order whatever order they let go in, including a dependant holding it in two slots
// and one that linked it twice through one slot.
TEST_F(BlockTest, ABlockHeldByManyKeepsItsOtherDependantsInOrderAsTheyLetGo) {
  for (int order = 0; order < 3; ++order) {
    auto* shared = new TestBlock("shared", 0);
    Holder keeps(shared);
    std::vector<Block*> expected{keeps.Root()};
    std::vector<TestBlock*> holders;
    for (int i = 0; i < 40; ++i) {
      holders.push_back(new TestBlock("h" + std::to_string(i), 2));
      ASSERT_TRUE(holders.back()->MakeDependencyByID(0, shared).IsOk());
      expected.push_back(holders.back());
    }
    // Holder 5 in both of its slots; holder 7 twice through slot 0.
    ASSERT_TRUE(holders[5]->MakeDependencyByID(1, shared).IsOk());
    expected.push_back(holders[5]);
    ASSERT_TRUE(holders[7]->MakeDependencyByID(0, shared).IsOk());
    expected.push_back(holders[7]);
    ASSERT_EQ(DependantsOf(shared), expected);
    std::vector<std::size_t> releases(holders.size());
    for (std::size_t i = 0; i < releases.size(); ++i) {
      releases[i] = order == 0 ? i : order == 1 ? releases.size() - 1 - i : (i * 17) % releases.size();
    }
    for (std::size_t index : releases) {
      Block* holder = holders[index];
      holder->DeleteDependency(0);
      // The holder's first entry goes. Holder 7's two entries through one slot are not
      // adjacent, so the walk takes both: its slot held the block once.
      expected.erase(std::find(expected.begin(), expected.end(), holder));
      if (index == 7) expected.erase(std::find(expected.begin(), expected.end(), holder));
      ASSERT_EQ(DependantsOf(shared), expected) << "order " << order << ", holder " << index;
    }
    holders[5]->DeleteDependency(1);
    expected.erase(std::find(expected.begin(), expected.end(), holders[5]));
    EXPECT_EQ(DependantsOf(shared), expected);
    for (TestBlock* holder : holders) holder->DeleteThisBlock(true);
  }
}

TEST_F(BlockTest, EraseDependantFromTableOfTheLastDependantReleasesAndReportsIt) {
  TestBlock dependant("dependant", 1);
  auto* block = new TestBlock("block", 3, &journal);
  auto* below = new TestBlock("below", 3, &journal);
  ASSERT_TRUE(block->MakeDependencyByID(2, below).IsOk());
  ASSERT_TRUE(block->MakeDependant(0, &dependant));
  RecordingListener listener("block", &journal);
  block->AddBlockListener(&listener);
  EXPECT_TRUE(block->EraseDependantFromTable(&dependant));
  EXPECT_THAT(journal.entries, ElementsAre("hear block 1/0 from block", "delete below",
                                           "hear block 2/2 from block", "delete block"));
}

TEST_F(BlockTest, BlockHeldThroughARawStoreAloneIsReleasedWithItsHolder) {
  // Nothing lists the holder as a dependant of `raw`, so when the holder lets go the list is
  // already empty, and that is the last dependant gone: `raw` is released.
  TestBlock holder_block("holder", 1);
  auto* raw = new TestBlock("raw", 3, &journal);
  holder_block.SetDependency(0, raw);
  RecordingListener listener("raw", &journal);
  raw->AddBlockListener(&listener);
  holder_block.DeleteDependency(0);
  EXPECT_THAT(journal.entries, ElementsAre("hear raw 1/0 from raw", "delete raw"));
  EXPECT_EQ(holder_block.GetDependency(0), nullptr);
}

TEST_F(BlockTest, SettingTheSameBlockTwiceLeavesTwoBackReferences) {
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  auto* b = new TestBlock("b", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  EXPECT_THAT(DependantsOf(b), ElementsAre(a, a));

  // Of two adjacent references only the first goes, so b survives the release of its slot.
  a->DeleteDependency(0);
  EXPECT_EQ(a->GetDependency(0), nullptr);
  EXPECT_THAT(DependantsOf(b), ElementsAre(a));
  EXPECT_TRUE(journal.entries.empty());
  b->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete b"));
}

TEST_F(BlockTest, EraseDependantStepsOverTheEntryAfterARemovedOne) {
  TestBlock b("b");
  TestBlock a("a");
  TestBlock other("other");
  // [a, a, a, other, a]: the 1st, 3rd and 5th go; the 2nd is stepped over.
  Block* a_block = &a;
  for (Block* dependant : {a_block, a_block, a_block, static_cast<Block*>(&other), a_block}) {
    ASSERT_TRUE(b.MakeDependant(0, dependant));
  }
  EXPECT_FALSE(b.EraseDependantFromTable(&a));
  EXPECT_THAT(DependantsOf(&b), ElementsAre(&a, &other));
}

TEST_F(BlockTest, ReleasingTheOnlyReferenceDeletesEverythingOnlyItKept) {
  // holder -> top -> {mid -> leaf, shared}; keeper -> shared keeps shared alive.
  Holder holder;
  Holder keeper;
  auto* top = new TestBlock("top", 3, &journal);
  auto* mid = new TestBlock("mid", 3, &journal);
  auto* leaf = new TestBlock("leaf", 3, &journal);
  auto* shared = new TestBlock("shared", 3, &journal);
  holder.Hold(top);
  keeper.Hold(shared);
  ASSERT_TRUE(top->MakeDependencyByID(0, mid).IsOk());
  ASSERT_TRUE(mid->MakeDependencyByID(1, leaf).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(2, shared).IsOk());
  RecordingListener top_listener("top-listener", &journal);
  RecordingListener leaf_listener("leaf-listener", &journal);
  top->AddBlockListener(&top_listener);
  leaf->AddBlockListener(&leaf_listener);

  holder.Root()->DeleteDependency(0);
  // Depth first: top announces, mid and leaf go before top's next slot; each emptied slot
  // reports code 2 with its index to the listeners still attached; shared survives.
  EXPECT_THAT(journal.entries,
              ElementsAre("hear top-listener 1/0 from top", "hear leaf-listener 1/0 from leaf",
                          "delete leaf", "delete mid", "hear top-listener 2/0 from top",
                          "hear top-listener 2/2 from top", "delete top"));
  EXPECT_THAT(DependantsOf(shared), ElementsAre(keeper.Root()));
}

TEST_F(BlockTest, DeleteAllDependenciesReleasesEverySlot) {
  Holder holder;
  auto* a = new TestBlock("a", 3, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, new TestBlock("x", 3, &journal)).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(2, new TestBlock("y", 3, &journal)).IsOk());
  a->DeleteAllDependencies();
  EXPECT_EQ(a->GetDependency(0), nullptr);
  EXPECT_EQ(a->GetDependency(2), nullptr);
  EXPECT_THAT(journal.entries, ElementsAre("delete x", "delete y"));
}

// A listener that appends one more entry to a table the first time it hears it.
class AppendingListener : public BlockListener {
 public:
  AppendingListener(BlockTable* table, Block* extra) : m_table(table), m_extra(extra) {}
  void OnBlockEvent(BlockEvent) override {
    if (m_extra == nullptr) return;
    Block* extra = m_extra;
    m_extra = nullptr;
    m_table->PushBack(extra);
  }

 private:
  BlockTable* m_table;
  Block* m_extra;
};

TEST_F(BlockTest, DeleteAllDependenciesReadsTheSlotCountAgainAfterEveryStep) {
  // The first emptied slot makes a listener append an entry; it is released too.
  Holder holder;
  auto* table = new BlockTable(true);
  holder.Hold(table);
  table->PushBack(new TestBlock("a", 3, &journal));
  AppendingListener appender(table, new TestBlock("appended", 3, &journal));
  table->AddBlockListener(&appender);
  table->DeleteAllDependencies();
  EXPECT_THAT(journal.entries, ElementsAre("delete a", "delete appended"));
  EXPECT_EQ(table->GetNumBlocks(), 2u);
  EXPECT_EQ(table->GetBlock(0), nullptr);
  EXPECT_EQ(table->GetBlock(1), nullptr);
  table->RemoveBlockListener(&appender);
}

TEST_F(BlockTest, ReplaceDependencyOfAnAbsentBlockReturnsFalse) {
  Holder holder;
  auto* a = new TestBlock("a");
  holder.Hold(a);
  TestBlock absent("absent");
  TestBlock replacement("replacement");
  EXPECT_FALSE(a->ReplaceDependency(&absent, &replacement));
  TestBlock no_slots("no_slots", 0);
  EXPECT_FALSE(no_slots.ReplaceDependency(nullptr, &replacement));
}

TEST_F(BlockTest, ReplaceDependencyChangesTheFirstMatchingSlotOnly) {
  Holder holder;
  auto* a = new TestBlock("a", 4);
  auto* x = new TestBlock("x");
  auto* y = new TestBlock("y");
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(1, x).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(3, x).IsOk());
  EXPECT_TRUE(a->ReplaceDependency(x, y));
  EXPECT_EQ(a->GetDependency(1), y);
  EXPECT_EQ(a->GetDependency(3), x);
  EXPECT_THAT(DependantsOf(x), ElementsAre(a));

  EXPECT_TRUE(a->ReplaceDependency(x, nullptr));
  EXPECT_EQ(a->GetDependency(3), nullptr);
}

TEST_F(BlockTest, ReplaceDependencySwallowsTheCycleRefusal) {
  Holder holder;
  auto* a = new TestBlock("a");
  auto* x = new TestBlock("x");
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, x).IsOk());
  EXPECT_TRUE(x->ReplaceDependency(nullptr, a));  // an empty slot matches null
  EXPECT_EQ(x->GetDependency(0), nullptr);
}

TEST_F(BlockTest, DeleteThisBlockWithoutDeletingDetachesInBothDirections) {
  Holder holder;
  auto* parent = new TestBlock("parent", 3, &journal);
  auto* block = new TestBlock("block", 3, &journal);
  auto* child = new TestBlock("child", 3, &journal);
  holder.Hold(parent);
  ASSERT_TRUE(parent->MakeDependencyByID(0, block).IsOk());
  ASSERT_TRUE(parent->MakeDependencyByID(2, block).IsOk());
  ASSERT_TRUE(block->MakeDependencyByID(1, child).IsOk());
  RecordingListener parent_listener("parent-listener", &journal);
  parent->AddBlockListener(&parent_listener);
  parent->LogProcessedEvents(true);

  block->DeleteThisBlock(false);
  // Emptying the block's own slot posts code 2 through it to the parent, still attached then
  // (twice: the parent links it twice); the detaching itself posts nothing.
  EXPECT_THAT(
      journal.entries,
      ElementsAre("delete child", "process parent 2/1", "hear parent-listener 2/1 from parent",
                  "process parent 2/1", "hear parent-listener 2/1 from parent"));
  EXPECT_TRUE(DependantsOf(block).empty());
  for (int i = 0; i < block->NumDependencies(); ++i) EXPECT_EQ(block->GetDependency(i), nullptr);
  EXPECT_EQ(parent->GetDependency(0), nullptr);
  EXPECT_EQ(parent->GetDependency(2), nullptr);
  parent->RemoveBlockListener(&parent_listener);
  block->DeleteThis();
}

TEST_F(BlockTest, DeleteThisBlockDeletesTheBlockWithACurrentEngineToo) {
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  auto* block = new TestBlock("block", 3, &journal);
  block->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete block"));
}

TEST_F(BlockTest, ParentBlockIsTheFirstDependantLinked) {
  TestBlock first("first");
  TestBlock second("second");
  auto* shared = new TestBlock("shared", 3, &journal);
  EXPECT_EQ(shared->GetParentBlock(), nullptr);
  ASSERT_TRUE(first.MakeDependencyByID(0, shared).IsOk());
  ASSERT_TRUE(second.MakeDependencyByID(0, shared).IsOk());
  EXPECT_EQ(shared->GetParentBlock(), &first);
  first.DeleteDependency(0);
  EXPECT_EQ(shared->GetParentBlock(), &second);
  second.DeleteDependency(0);
  EXPECT_THAT(journal.entries, ElementsAre("delete shared"));
}

TEST_F(BlockTest, GetDependantsAppendsWithoutClearing) {
  TestBlock b("b");
  TestBlock a("a");
  ASSERT_TRUE(a.MakeDependencyByID(0, &b).IsOk());
  ASSERT_TRUE(a.MakeDependencyByID(1, &b).IsOk());
  std::vector<Block*> out{nullptr};
  b.GetDependants(out);
  EXPECT_THAT(out, ElementsAre(nullptr, &a, &a));
  a.SetDependency(0, nullptr);
  a.SetDependency(1, nullptr);
}

TEST_F(BlockTest, RemoveFromDependantsUsesRawStores) {
  TestBlock a("a");
  TestBlock b("b");
  ASSERT_TRUE(a.MakeDependencyByID(0, &b).IsOk());
  ASSERT_TRUE(a.MakeDependencyByID(2, &b).IsOk());
  RecordingListener listener;
  a.AddBlockListener(&listener);
  b.RemoveFromDependants();
  EXPECT_EQ(a.GetDependency(0), nullptr);
  EXPECT_EQ(a.GetDependency(2), nullptr);
  EXPECT_TRUE(DependantsOf(&b).empty());
  EXPECT_TRUE(listener.events.empty());
  a.RemoveBlockListener(&listener);
}

TEST_F(BlockTest, CopyStartsWithTheSameRelations) {
  TestBlock source("source");
  TestBlock dependant("dependant");
  RecordingListener listener;
  ASSERT_TRUE(dependant.MakeDependencyByID(0, &source).IsOk());
  source.AddBlockListener(&listener);
  source.SetID(9);
  source.SetSaved(1);
  source.SetSendEvents(false);

  TestBlock copy(source);
  EXPECT_THAT(DependantsOf(&copy), ElementsAre(&dependant));
  EXPECT_EQ(copy.GetID(), 9u);
  EXPECT_EQ(copy.GetSaved(), 1);
  EXPECT_FALSE(copy.GetSendEvents());
  copy.SetSendEvents(true);
  copy.PostEvent(3, 4);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, &copy);
  source.RemoveBlockListener(&listener);
  dependant.SetDependency(0, nullptr);
}

TEST_F(BlockTest, CopyAssignmentCopiesEveryField) {
  TestBlock source("source");
  TestBlock dependant("dependant");
  RecordingListener listener;
  ASSERT_TRUE(dependant.MakeDependencyByID(0, &source).IsOk());
  source.AddBlockListener(&listener);
  int host_value = 0;
  source.SetData(&host_value);
  source.SetID(4);
  source.SetSaved(1);
  source.SetSendEvents(false);

  TestBlock target("target");
  static_cast<Block&>(target) = source;
  EXPECT_EQ(target.GetData(), &host_value);
  EXPECT_THAT(DependantsOf(&target), ElementsAre(&dependant));
  EXPECT_EQ(target.GetID(), 4u);
  EXPECT_EQ(target.GetSaved(), 1);
  EXPECT_FALSE(target.GetSendEvents());
  target.SetSendEvents(true);
  target.PostEvent(3, 0);
  EXPECT_EQ(listener.events.size(), 1u);
  source.RemoveBlockListener(&listener);
  target.RemoveBlockListener(&listener);
  dependant.SetDependency(0, nullptr);
}

TEST_F(BlockTest, BlockThatHoldsItselfInARawSlotIsReleasedOnce) {
  auto* block = new TestBlock("self", 2, &journal);
  block->SetDependency(1, block);
  block->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete self"));
}

TEST_F(BlockTest, ReleaseCascadeSkipsABlockAlreadyBeingReleased) {
  // b holds a in a raw slot without a back reference: releasing a releases b, whose raw slot
  // leads back to a, which is already going.
  Holder holder;
  auto* a = new TestBlock("a", 1, &journal);
  auto* b = new TestBlock("b", 1, &journal);
  holder.Hold(a);
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  b->SetDependency(0, a);
  holder.Root()->DeleteDependency(0);
  EXPECT_THAT(journal.entries, ElementsAre("delete b", "delete a"));
}

TEST_F(BlockTest, BlockHoldingItselfInARawSlotSurvivesALinkIntoThatSlot) {
  // Replacing the raw self entry must not release the block that is doing the replacing.
  auto* block = new TestBlock("self", 2, &journal);
  auto* other = new TestBlock("other", 2, &journal);
  block->SetDependency(0, block);
  ASSERT_TRUE(block->MakeDependencyByID(0, other).IsOk());
  EXPECT_TRUE(journal.entries.empty());
  EXPECT_EQ(block->GetDependency(0), other);
  EXPECT_THAT(DependantsOf(other), ElementsAre(block));
  block->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete other", "delete self"));
}

TEST_F(BlockTest, ReleaseThatReachesTheReleasingBlockThroughARawSlotLeavesItAlive) {
  // root -> table, and table holds root in a raw slot (as a refused PushBack leaves it).
  // Releasing the table reaches root again, which has no dependants but is still running.
  auto* root = new TestBlock("root", 1, &journal);
  auto* table = new TestBlock("table", 1, &journal);
  ASSERT_TRUE(root->MakeDependencyByID(0, table).IsOk());
  table->SetDependency(0, root);
  root->DeleteDependency(0);
  EXPECT_THAT(journal.entries, ElementsAre("delete table"));
  EXPECT_EQ(root->GetDependency(0), nullptr);
  root->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete table", "delete root"));
}

TEST_F(BlockTest, DeleteThisBlockOfABlockReachedBackThroughARawSlotDeletesItOnce) {
  // owner -> block, and block holds owner in a raw slot. block lets go of owner, whose only
  // dependant it was: owner is released, reaches block again and drops its back reference,
  // but block (whose DeleteThisBlock is running) is deleted only once.
  auto* owner = new TestBlock("owner", 1, &journal);
  auto* block = new TestBlock("block", 1, &journal);
  ASSERT_TRUE(owner->MakeDependencyByID(0, block).IsOk());
  block->SetDependency(0, owner);
  block->DeleteThisBlock(true);
  EXPECT_THAT(journal.entries, ElementsAre("delete owner", "delete block"));
}

// ---- The block's scene-file record ----

TEST_F(BlockTest, BlockInfoChunkHoldsTypeAndNumber) {
  TestBlock block("block");
  block.SetType(BlockType(115, 16, 32));
  block.SetID(42);
  SceneSave save;
  EXPECT_EQ(block.SaveBlockInfo(&save), 0);
  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0005u);
  EXPECT_EQ(load.BytesLeftInChunk(), 16u);
  std::uint32_t values[4] = {};
  for (std::uint32_t& value : values) EXPECT_TRUE(load.ReadUInt32(value));
  EXPECT_THAT(values, ElementsAre(115u, 16u, 32u, 42u));
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
}

TEST_F(BlockTest, BlockWithoutANumberWritesAllOnes) {
  TestBlock block("block");
  SceneSave save;
  block.SaveBlockInfo(&save);
  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::int32_t values[4] = {};
  for (std::int32_t& value : values) load.ReadInt32(value);
  EXPECT_EQ(values[3], -1);
}

TEST_F(BlockTest, DependencyChunkListsTheNumbersOfTheSlots) {
  TestBlock block("block");
  TestBlock x("x");
  x.SetID(7);
  block.SetDependency(1, &x);  // slots (null, x, null)
  SceneSave save;
  EXPECT_EQ(block.SaveBlockDependencies(&save), 0);
  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0010u);
  EXPECT_EQ(load.BytesLeftInChunk(), 16u);
  std::int32_t values[4] = {};
  for (std::int32_t& value : values) EXPECT_TRUE(load.ReadInt32(value));
  EXPECT_THAT(values, ElementsAre(3, -1, 7, -1));
}

TEST_F(BlockTest, LoadBlockDependenciesReadsTheNumbersIntoTheRecord) {
  TestBlock block("block");
  TestBlock x("x");
  x.SetID(7);
  block.SetDependency(1, &x);
  SceneSave save;
  block.SaveBlockDependencies(&save);
  SceneLoad load(save.TakeBytes());
  BlockLoadData record;
  record.dependency_ids = {5, 5, 5, 5, 5};
  EXPECT_EQ(block.LoadBlockDependencies(&load, &record), 0);
  EXPECT_THAT(record.dependency_ids, ElementsAre(-1, 7, -1));
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_FALSE(load.HasError());
}

TEST_F(BlockTest, LoadBlockDependenciesSkipsAChunkOfAnotherId) {
  SceneSave save;
  save.BeginChunk(0x0020);
  save.WriteInt32(3);
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  TestBlock block("block");
  BlockLoadData record;
  EXPECT_EQ(block.LoadBlockDependencies(&load, &record), 0);
  EXPECT_TRUE(record.dependency_ids.empty());
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
}

TEST_F(BlockTest, LoadBlockDependenciesWithNoChunkLeavesTheReaderAlone) {
  SceneLoad load(std::vector<std::uint8_t>{});
  TestBlock block("block");
  BlockLoadData record;
  EXPECT_EQ(block.LoadBlockDependencies(&load, &record), 0);
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_FALSE(load.HasError());
}

TEST_F(BlockTest, LoadBlockDependenciesAtTheEndOfAChunkLeavesThatChunkOpen) {
  // | id 0x0015 | length 0 |: the enclosing record has no child left.
  SceneSave save;
  save.BeginChunk(0x0015);
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  TestBlock block("block");
  BlockLoadData record;
  record.dependency_ids = {4};
  EXPECT_EQ(block.LoadBlockDependencies(&load, &record), 0);
  EXPECT_EQ(load.Depth(), 1);
  EXPECT_THAT(record.dependency_ids, ElementsAre(4));
  EXPECT_FALSE(load.HasError());
}

TEST_F(BlockTest, LoadBlockDependenciesRejectsACountLargerThanItsChunk) {
  SceneSave save;
  save.BeginChunk(0x0010);
  save.WriteInt32(0x7FFFFFFF);  // claims two billion numbers ...
  save.WriteInt32(1);           // ... and holds one
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  TestBlock block("block");
  BlockLoadData record;
  EXPECT_EQ(block.LoadBlockDependencies(&load, &record), 0);
  EXPECT_TRUE(record.dependency_ids.empty());
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
}

TEST_F(BlockTest, LoadBlockDependenciesRejectsANegativeCount) {
  SceneSave save;
  save.BeginChunk(0x0010);
  save.WriteInt32(-3);
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  TestBlock block("block");
  BlockLoadData record;
  block.LoadBlockDependencies(&load, &record);
  EXPECT_TRUE(record.dependency_ids.empty());
  EXPECT_TRUE(load.HasError());
}

}  // namespace
}  // namespace Orlo
