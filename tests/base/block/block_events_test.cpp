#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_event.h>
#include <orlo/base/block/block_listener.h>
#include <orlo/base/engine/scene_engine.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using ::testing::ElementsAre;
using testing::Holder;
using testing::Journal;
using testing::RecordingListener;
using testing::TestBlock;

class BlockEventsTest : public ::testing::Test {
 protected:
  void TearDown() override { SceneEngine::SetScene(nullptr); }
  Journal journal;
};

TEST_F(BlockEventsTest, EventValueStoresItsThreeFields) {
  TestBlock block("block");
  const BlockEvent event(&block, 13, -4);
  EXPECT_EQ(event.block, &block);
  EXPECT_EQ(event.code, 13);
  EXPECT_EQ(event.param, -4);
  const BlockEvent empty;
  EXPECT_EQ(empty.block, nullptr);
  EXPECT_EQ(empty.code, 0);
  EXPECT_EQ(empty.param, 0);
  BlockEvent assigned;
  assigned = event;
  EXPECT_EQ(assigned.code, 13);
}

TEST_F(BlockEventsTest, SameListenerAddedTwiceHearsEachEventOnce) {
  TestBlock block("block");
  RecordingListener listener;
  block.AddBlockListener(&listener);
  block.AddBlockListener(&listener);
  block.PostEvent(3, 1);
  EXPECT_EQ(listener.events.size(), 1u);
  block.RemoveBlockListener(&listener);
  block.PostEvent(3, 1);
  EXPECT_EQ(listener.events.size(), 1u);
}

TEST_F(BlockEventsTest, RemovingAnAbsentListenerIsIgnored) {
  TestBlock block("block");
  RecordingListener attached("attached");
  RecordingListener absent("absent");
  block.AddBlockListener(&attached);
  block.RemoveBlockListener(&absent);
  block.PostEvent(3, 0);
  EXPECT_EQ(attached.events.size(), 1u);
  block.RemoveBlockListener(&attached);
}

TEST_F(BlockEventsTest, PostEventDeliversTheEventAsItIs) {
  TestBlock block("block");
  TestBlock other("other");
  RecordingListener listener;
  block.AddBlockListener(&listener);
  block.PostEvent(BlockEvent(&other, 21, 5));
  block.PostEvent(4, 6);
  ASSERT_EQ(listener.events.size(), 2u);
  EXPECT_EQ(listener.events[0].block, &other);
  EXPECT_EQ(listener.events[0].code, 21);
  EXPECT_EQ(listener.events[0].param, 5);
  EXPECT_EQ(listener.events[1].block, &block);
  EXPECT_EQ(listener.events[1].code, 4);
  EXPECT_EQ(listener.events[1].param, 6);
  block.RemoveBlockListener(&listener);
}

TEST_F(BlockEventsTest, LinkingDeliversCodeTwoWithTheSlotRestampedAtEveryHop) {
  // grandparent -> parent -> a; a sets slot 2 to b.
  Holder holder;
  auto* grandparent = new TestBlock("grandparent");
  auto* parent = new TestBlock("parent");
  auto* a = new TestBlock("a");
  holder.Hold(grandparent);
  ASSERT_TRUE(grandparent->MakeDependencyByID(0, parent).IsOk());
  ASSERT_TRUE(parent->MakeDependencyByID(0, a).IsOk());
  RecordingListener a_listener("a");
  RecordingListener parent_listener("parent");
  RecordingListener grandparent_listener("grandparent");
  a->AddBlockListener(&a_listener);
  parent->AddBlockListener(&parent_listener);
  grandparent->AddBlockListener(&grandparent_listener);

  ASSERT_TRUE(a->MakeDependencyByID(2, new TestBlock("b")).IsOk());
  for (const auto& [listener, block] : std::initializer_list<std::pair<RecordingListener*, Block*>>{
           {&a_listener, a}, {&parent_listener, parent}, {&grandparent_listener, grandparent}}) {
    ASSERT_EQ(listener->events.size(), 1u);
    EXPECT_EQ(listener->events[0].code, 2);
    EXPECT_EQ(listener->events[0].param, 2);
    EXPECT_EQ(listener->events[0].block, block);
  }
  a->RemoveBlockListener(&a_listener);
  parent->RemoveBlockListener(&parent_listener);
  grandparent->RemoveBlockListener(&grandparent_listener);
}

TEST_F(BlockEventsTest, ListenersHearBeforeDependantsAndTheClimbIsDepthFirst) {
  // source has dependants first and second (in that order); first has dependant top.
  auto* source = new TestBlock("source", 1);
  auto* first = new TestBlock("first", 1);
  auto* second = new TestBlock("second", 1);
  auto* top = new TestBlock("top", 1);
  ASSERT_TRUE(first->MakeDependencyByID(0, source).IsOk());
  ASSERT_TRUE(second->MakeDependencyByID(0, source).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(0, first).IsOk());
  Holder top_holder(top);
  Holder second_holder(second);
  RecordingListener source_listener("source", &journal);
  RecordingListener first_listener("first", &journal);
  RecordingListener second_listener("second", &journal);
  RecordingListener top_listener("top", &journal);
  source->AddBlockListener(&source_listener);
  first->AddBlockListener(&first_listener);
  second->AddBlockListener(&second_listener);
  top->AddBlockListener(&top_listener);

  source->PostEvent(3, 9);
  EXPECT_THAT(journal.entries,
              ElementsAre("hear source 3/9 from source", "hear first 3/9 from first",
                          "hear top 3/9 from top", "hear second 3/9 from second"));

  source->RemoveBlockListener(&source_listener);
  first->RemoveBlockListener(&first_listener);
  second->RemoveBlockListener(&second_listener);
  top->RemoveBlockListener(&top_listener);
}

TEST_F(BlockEventsTest, DependantRecordedTwiceReceivesTheEventTwice) {
  auto* source = new TestBlock("source");
  TestBlock dependant("dependant");
  ASSERT_TRUE(dependant.MakeDependencyByID(0, source).IsOk());
  ASSERT_TRUE(dependant.MakeDependencyByID(1, source).IsOk());
  RecordingListener listener;
  dependant.AddBlockListener(&listener);
  source->PostEvent(3, 0);
  EXPECT_EQ(listener.events.size(), 2u);
  dependant.RemoveBlockListener(&listener);
  dependant.DeleteThisBlock(false);
}

TEST_F(BlockEventsTest, MutedBlockDeliversNothingAndCutsTheUpwardPath) {
  auto* source = new TestBlock("source");
  auto* middle_block = new TestBlock("middle");
  TestBlock& middle = *middle_block;
  TestBlock top("top");
  ASSERT_TRUE(middle.MakeDependencyByID(0, source).IsOk());
  ASSERT_TRUE(top.MakeDependencyByID(0, middle_block).IsOk());
  RecordingListener middle_listener("middle");
  RecordingListener top_listener("top");
  middle.AddBlockListener(&middle_listener);
  top.AddBlockListener(&top_listener);

  middle.SetSendEvents(false);
  EXPECT_FALSE(middle.GetSendEvents());
  source->PostEvent(3, 0);
  middle.PostEvent(3, 0);
  EXPECT_TRUE(middle_listener.events.empty());
  EXPECT_TRUE(top_listener.events.empty());

  // Nothing was queued while muted.
  middle.SetSendEvents(true);
  EXPECT_TRUE(top_listener.events.empty());
  source->PostEvent(3, 0);
  EXPECT_EQ(middle_listener.events.size(), 1u);
  EXPECT_EQ(top_listener.events.size(), 1u);

  middle.RemoveBlockListener(&middle_listener);
  top.RemoveBlockListener(&top_listener);
  top.DeleteDependency(0);  // releases middle, then source
}

TEST_F(BlockEventsTest, BlockLosingItsLastDependantTellsOnlyItsListenersThenGoes) {
  TestBlock dependant("dependant", 1, &journal);
  auto* block = new TestBlock("block", 1, &journal);
  ASSERT_TRUE(dependant.MakeDependencyByID(0, block).IsOk());
  RecordingListener block_listener("block", &journal);
  RecordingListener dependant_listener("dependant", &journal);
  block->AddBlockListener(&block_listener);
  dependant.AddBlockListener(&dependant_listener);

  dependant.DeleteDependency(0);
  EXPECT_THAT(journal.entries, ElementsAre("hear block 1/0 from block", "delete block",
                                           "hear dependant 2/0 from dependant"));
  dependant.RemoveBlockListener(&dependant_listener);
}

// A listener that detaches itself from the block it hears.
class SelfRemovingListener : public RecordingListener {
 public:
  SelfRemovingListener(Block* block, std::string name, Journal* journal)
      : RecordingListener(std::move(name), journal), m_block(block) {}
  void OnBlockEvent(BlockEvent event) override {
    RecordingListener::OnBlockEvent(event);
    m_block->RemoveBlockListener(this);
  }

 private:
  Block* m_block;
};

TEST_F(BlockEventsTest, ListenerThatRemovesItselfMakesTheNextOneMissTheEvent) {
  TestBlock block("block");
  SelfRemovingListener leaving(&block, "leaving", &journal);
  RecordingListener skipped("skipped", &journal);
  RecordingListener last("last", &journal);
  block.AddBlockListener(&leaving);
  block.AddBlockListener(&skipped);
  block.AddBlockListener(&last);
  block.PostEvent(3, 0);
  EXPECT_THAT(journal.entries, ElementsAre("hear leaving 3/0 from block", "hear last 3/0 from block"));
  block.PostEvent(3, 1);
  EXPECT_EQ(skipped.events.size(), 1u);
  block.RemoveBlockListener(&skipped);
  block.RemoveBlockListener(&last);
}

// A block that turns every event it gets into two events of its own, in order.
class TranslatingBlock : public TestBlock {
 public:
  using TestBlock::TestBlock;
  void ProcessEvent(BlockEvent event) override {
    PostEvent(BlockEvent(this, 100 + event.code, 1));
    PostEvent(BlockEvent(this, 100 + event.code, 2));
  }
};

TEST_F(BlockEventsTest, EventsPostedByOneDependantArriveInTheOrderPosted) {
  auto* source = new TestBlock("source", 1);
  auto* translator = new TranslatingBlock("translator", 1);
  TestBlock top("top", 1);
  ASSERT_TRUE(translator->MakeDependencyByID(0, source).IsOk());
  ASSERT_TRUE(top.MakeDependencyByID(0, translator).IsOk());
  RecordingListener translator_listener("translator", &journal);
  RecordingListener top_listener("top", &journal);
  translator->AddBlockListener(&translator_listener);
  top.AddBlockListener(&top_listener);

  source->PostEvent(3, 0);
  EXPECT_THAT(journal.entries,
              ElementsAre("hear translator 103/1 from translator", "hear top 103/1 from top",
                          "hear translator 103/2 from translator", "hear top 103/2 from top"));
  translator->RemoveBlockListener(&translator_listener);
  top.RemoveBlockListener(&top_listener);
  top.DeleteDependency(0);  // releases translator, then source
}

// A listener that posts an event of its own on another block while it hears one.
class RelayingListener : public RecordingListener {
 public:
  RelayingListener(Block* target, Journal* journal)
      : RecordingListener("relay", journal), m_target(target) {}
  void OnBlockEvent(BlockEvent event) override {
    RecordingListener::OnBlockEvent(event);
    if (event.code == 3) m_target->PostEvent(50, 0);
  }

 private:
  Block* m_target;
};

TEST_F(BlockEventsTest, EventPostedByAListenerIsDeliveredBeforeTheListenerReturns) {
  auto* source = new TestBlock("source", 1, &journal);
  TestBlock dependant("dependant", 1, &journal);
  TestBlock elsewhere("elsewhere", 1, &journal);
  ASSERT_TRUE(dependant.MakeDependencyByID(0, source).IsOk());
  RelayingListener relay(&elsewhere, &journal);
  RecordingListener elsewhere_listener("elsewhere", &journal);
  RecordingListener dependant_listener("dependant", &journal);
  source->AddBlockListener(&relay);
  elsewhere.AddBlockListener(&elsewhere_listener);
  dependant.AddBlockListener(&dependant_listener);

  source->PostEvent(3, 0);
  EXPECT_THAT(journal.entries,
              ElementsAre("hear relay 3/0 from source", "hear elsewhere 50/0 from elsewhere",
                          "hear dependant 3/0 from dependant"));
  source->RemoveBlockListener(&relay);
  elsewhere.RemoveBlockListener(&elsewhere_listener);
  dependant.RemoveBlockListener(&dependant_listener);
  dependant.DeleteDependency(0);
}

TEST_F(BlockEventsTest, ProcessEventWithCodeAndParamStampsTheBlock) {
  TestBlock block("block");
  RecordingListener listener;
  block.AddBlockListener(&listener);
  block.ProcessEvent(7, 8);
  block.ProcessEvent(BlockEvent(nullptr, 9, 1));
  ASSERT_EQ(listener.events.size(), 2u);
  EXPECT_EQ(listener.events[0].block, &block);
  EXPECT_EQ(listener.events[0].code, 7);
  EXPECT_EQ(listener.events[0].param, 8);
  EXPECT_EQ(listener.events[1].block, &block);
  block.RemoveBlockListener(&listener);
}

TEST_F(BlockEventsTest, HostHooksDoNothing) {
  TestBlock block("block");
  RecordingListener listener;
  block.AddBlockListener(&listener);
  block.ActionBegin(1, 2);
  block.ActionEnd(1, 2);
  block.Update(5);
  EXPECT_TRUE(listener.events.empty());
  block.RemoveBlockListener(&listener);
}

TEST_F(BlockEventsTest, ListenerCanBeDestroyedWithAndWithoutACurrentEngine) {
  auto* without_engine = new RecordingListener("without");
  delete without_engine;
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  auto* with_engine = new RecordingListener("with");
  delete with_engine;
  EXPECT_EQ(SceneEngine::GetScene(), &engine);
}

}  // namespace
}  // namespace Orlo
