#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

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
  EXPECT_THAT(journal.entries,
              ElementsAre("hear leaving 3/0 from block", "hear last 3/0 from block"));
  block.PostEvent(3, 1);
  EXPECT_EQ(skipped.events.size(), 1u);
  block.RemoveBlockListener(&skipped);
  block.RemoveBlockListener(&last);
}

// A block that drops every event it gets: the climb stops there.
class DroppingBlock : public TestBlock {
 public:
  using TestBlock::TestBlock;
  void ProcessEvent(BlockEvent) override {}
};

// A listener that attaches another listener to the block it hears, the first time.
class RecruitingListener : public RecordingListener {
 public:
  RecruitingListener(Block* block, BlockListener* recruit, Journal* journal)
      : RecordingListener("recruiter", journal), m_block(block), m_recruit(recruit) {}
  void OnBlockEvent(BlockEvent event) override {
    RecordingListener::OnBlockEvent(event);
    m_block->AddBlockListener(m_recruit);
  }

 private:
  Block* m_block;
  BlockListener* m_recruit;
};

TEST_F(BlockEventsTest, ListenerAddedDuringDeliveryHearsTheSameEvent) {
  // The number of listeners is read again before each one is called.
  TestBlock block("block");
  RecordingListener recruit("recruit", &journal);
  RecruitingListener recruiter(&block, &recruit, &journal);
  block.AddBlockListener(&recruiter);
  block.PostEvent(3, 4);
  EXPECT_THAT(journal.entries,
              ElementsAre("hear recruiter 3/4 from block", "hear recruit 3/4 from block"));
  block.RemoveBlockListener(&recruiter);
  block.RemoveBlockListener(&recruit);
}

// A block that records the sender named by each event handed to its ProcessEvent.
class SenderRecordingBlock : public TestBlock {
 public:
  using TestBlock::TestBlock;
  void ProcessEvent(BlockEvent event) override {
    senders.push_back(event.block);
    TestBlock::ProcessEvent(event);
  }
  std::vector<Block*> senders;
};

TEST_F(BlockEventsTest, DependantGetsTheEventAsItsDependencyPostedIt) {
  // The sender field names the block that handed the event over; PostEvent itself changes
  // nothing in it, so an event posted with another sender arrives with that sender.
  auto* source = new TestBlock("source", 1);
  SenderRecordingBlock dependant("dependant", 1);
  ASSERT_TRUE(dependant.MakeDependencyByID(0, source).IsOk());
  dependant.senders.clear();
  TestBlock stranger("stranger");
  source->PostEvent(3, 0);
  source->PostEvent(BlockEvent(&stranger, 3, 0));
  source->ProcessEvent(BlockEvent(&stranger, 3, 0));  // restamped by the source first
  EXPECT_THAT(dependant.senders, ElementsAre(source, &stranger, source));
  dependant.DeleteDependency(0);
}

TEST_F(BlockEventsTest, LinkingDeliversCodeTwoThroughTheVirtualProcessEvent) {
  // The slot change goes to the block's own ProcessEvent: a block that drops events lets
  // its listeners hear nothing, and the link is made all the same.
  DroppingBlock dropper("dropper", 2);
  RecordingListener listener;
  dropper.AddBlockListener(&listener);
  auto* dependency = new TestBlock("dependency");
  ASSERT_TRUE(dropper.MakeDependencyByID(1, dependency).IsOk());
  EXPECT_EQ(dropper.GetDependency(1), dependency);
  dropper.DeleteDependency(1);
  EXPECT_TRUE(listener.events.empty());

  SenderRecordingBlock recorder("recorder", 2);
  TestBlock* logged = new TestBlock("logged");
  ASSERT_TRUE(recorder.MakeDependencyByID(1, logged).IsOk());
  recorder.DeleteDependency(1);
  EXPECT_THAT(recorder.senders, ElementsAre(&recorder, &recorder));
  dropper.RemoveBlockListener(&listener);
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

TEST_F(BlockEventsTest, BlockThatDropsAnEventEndsItsClimb) {
  auto* source = new TestBlock("source", 1);
  auto* dropper = new DroppingBlock("dropper", 1);
  TestBlock top("top", 1);
  ASSERT_TRUE(dropper->MakeDependencyByID(0, source).IsOk());
  ASSERT_TRUE(top.MakeDependencyByID(0, dropper).IsOk());
  RecordingListener dropper_listener("dropper");
  RecordingListener top_listener("top");
  dropper->AddBlockListener(&dropper_listener);
  top.AddBlockListener(&top_listener);
  source->PostEvent(3, 0);
  EXPECT_TRUE(dropper_listener.events.empty());
  EXPECT_TRUE(top_listener.events.empty());
  dropper->RemoveBlockListener(&dropper_listener);
  top.RemoveBlockListener(&top_listener);
  top.DeleteDependency(0);
}

// The delivery rules written as plainly as possible, recursively: what a block's listeners
// and dependants hear when it posts `event`. Used to check the real delivery on a graph.
enum class Kind { kDefault, kTranslating, kDropping };

void ModelPost(Block* block, BlockEvent event, const std::map<Block*, Kind>& kinds,
               const std::map<Block*, std::string>& names, std::vector<std::string>& out);

void ModelProcess(Block* block, BlockEvent event, const std::map<Block*, Kind>& kinds,
                  const std::map<Block*, std::string>& names, std::vector<std::string>& out) {
  switch (kinds.at(block)) {
    case Kind::kDefault:
      event.block = block;
      ModelPost(block, event, kinds, names, out);
      break;
    case Kind::kTranslating:
      ModelPost(block, BlockEvent(block, 100 + event.code, 1), kinds, names, out);
      ModelPost(block, BlockEvent(block, 100 + event.code, 2), kinds, names, out);
      break;
    case Kind::kDropping:
      break;
  }
}

void ModelPost(Block* block, BlockEvent event, const std::map<Block*, Kind>& kinds,
               const std::map<Block*, std::string>& names, std::vector<std::string>& out) {
  if (!block->GetSendEvents()) return;
  out.push_back("hear " + names.at(block) + " " + std::to_string(event.code) + "/" +
                std::to_string(event.param) + " from " + names.at(event.block));
  std::vector<Block*> dependants;
  block->GetDependants(dependants);
  for (Block* dependant : dependants) ModelProcess(dependant, event, kinds, names, out);
}

TEST_F(BlockEventsTest, DeliveryOnABranchyGraphFollowsTheDepthFirstRules) {
  // Links (dependant -> dependency): a, b (twice), c -> s; d, e -> a; f -> d, e, c; g -> b;
  // h -> c; top -> f, h, g. d posts two events for each one it gets, b drops what it gets,
  // and h is muted.
  // Declared first so that the listeners outlive the graph, whatever happens below.
  std::vector<std::unique_ptr<RecordingListener>> listeners;
  std::map<Block*, Kind> kinds;
  std::map<Block*, std::string> names;
  auto make = [&](const std::string& name, Kind kind) -> TestBlock* {
    TestBlock* block = nullptr;
    switch (kind) {
      case Kind::kDefault:
        block = new TestBlock(name, 3, &journal);
        break;
      case Kind::kTranslating:
        block = new TranslatingBlock(name, 3, &journal);
        break;
      case Kind::kDropping:
        block = new DroppingBlock(name, 3, &journal);
        break;
    }
    kinds[block] = kind;
    names[block] = name;
    return block;
  };
  TestBlock* s = make("s", Kind::kDefault);
  TestBlock* a = make("a", Kind::kDefault);
  TestBlock* b = make("b", Kind::kDropping);
  TestBlock* c = make("c", Kind::kDefault);
  TestBlock* d = make("d", Kind::kTranslating);
  TestBlock* e = make("e", Kind::kDefault);
  TestBlock* f = make("f", Kind::kDefault);
  TestBlock* g = make("g", Kind::kDefault);
  TestBlock* h = make("h", Kind::kDefault);
  TestBlock* top = make("top", Kind::kDefault);
  Holder holder(top);
  kinds[holder.Root()] = Kind::kDefault;
  names[holder.Root()] = "holder";
  ASSERT_TRUE(top->MakeDependencyByID(0, f).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(1, h).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(2, g).IsOk());
  ASSERT_TRUE(f->MakeDependencyByID(0, d).IsOk());
  ASSERT_TRUE(f->MakeDependencyByID(1, e).IsOk());
  ASSERT_TRUE(f->MakeDependencyByID(2, c).IsOk());
  ASSERT_TRUE(g->MakeDependencyByID(0, b).IsOk());
  ASSERT_TRUE(h->MakeDependencyByID(0, c).IsOk());
  ASSERT_TRUE(d->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(e->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, s).IsOk());
  ASSERT_TRUE(b->MakeDependencyByID(0, s).IsOk());
  ASSERT_TRUE(b->MakeDependencyByID(1, s).IsOk());
  ASSERT_TRUE(c->MakeDependencyByID(0, s).IsOk());
  h->SetSendEvents(false);

  for (auto& [block, name] : names) {
    listeners.push_back(std::make_unique<RecordingListener>(name, &journal));
    block->AddBlockListener(listeners.back().get());
  }
  journal.entries.clear();

  std::vector<std::string> expected;
  ModelPost(s, BlockEvent(s, 3, 7), kinds, names, expected);
  s->PostEvent(3, 7);
  EXPECT_EQ(journal.entries, expected);
  // The same order written out: a's whole upward chain (d's two events one after the
  // other, then e) before b (dropped twice) and c; h is muted.
  EXPECT_THAT(
      journal.entries,
      ElementsAre("hear s 3/7 from s", "hear a 3/7 from a",  //
                  "hear d 103/1 from d", "hear f 103/1 from f", "hear top 103/1 from top",
                  "hear holder 103/1 from holder", "hear d 103/2 from d", "hear f 103/2 from f",
                  "hear top 103/2 from top", "hear holder 103/2 from holder", "hear e 3/7 from e",
                  "hear f 3/7 from f", "hear top 3/7 from top",
                  "hear holder 3/7 from holder",  //
                  "hear c 3/7 from c", "hear f 3/7 from f", "hear top 3/7 from top",
                  "hear holder 3/7 from holder"));

  std::size_t i = 0;
  for (auto& [block, name] : names) block->RemoveBlockListener(listeners[i++].get());
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
