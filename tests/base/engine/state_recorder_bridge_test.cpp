#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <orlo/base/engine/replace_dependency_state_container.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/state_container.h>
#include <orlo/support/state_recorder.h>

#include "tests/base/engine/undo_test_blocks.h"

namespace Orlo {
namespace {

using testing::LinkingModifier;
using testing::ProbeObject;

// A change that logs what the recorder does with it.
class LoggedChange : public StateContainer {
 public:
  LoggedChange(std::vector<std::string>* log, std::string name)
      : m_log(log), m_name(std::move(name)) {}
  ~LoggedChange() override { m_log->push_back("destroy " + m_name); }
  void Revert() override { m_log->push_back("revert " + m_name); }
  void Apply() override { m_log->push_back("apply " + m_name); }

 private:
  std::vector<std::string>* m_log;
  std::string m_name;
};

class StateRecorderBridgeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Start without a recorder whatever ran before.
    { SceneEngine cleanup; }
  }
  void TearDown() override {
    SceneEngine::SetScene(nullptr);
    { SceneEngine cleanup; }
  }
};

TEST_F(StateRecorderBridgeTest, WithoutARecorderTheBridgesAreSilentAndPutDestroysTheRecord) {
  std::vector<std::string> log;
  ASSERT_EQ(SceneEngine::GetStateRecorder(), nullptr);
  SceneEngine::StateRecorderBegin();
  EXPECT_FALSE(SceneEngine::StateRecorderIsHolding());
  SceneEngine::StateRecorderPut(new LoggedChange(&log, "a"));
  EXPECT_EQ(log, std::vector<std::string>{"destroy a"});
  SceneEngine::StateRecorderPut(nullptr);
  SceneEngine::StateRecorderAccept("step");
  EXPECT_FALSE(SceneEngine::StateRecorderCanUndo());
  EXPECT_FALSE(SceneEngine::StateRecorderCanRedo());
  SceneEngine::StateRecorderUndo();
  SceneEngine::StateRecorderRedo();
  SceneEngine::StateRecorderRestore();
  SceneEngine::StateRecorderCancel();
  SceneEngine::StateRecorderClear();
  SceneEngine::StateRecorderDelete();
  EXPECT_EQ(SceneEngine::GetStateRecorder(), nullptr);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(StateRecorderBridgeTest, ASecondInitKeepsTheFirstRecorder) {
  SceneEngine::StateRecorderInit();
  StateRecorder* first = SceneEngine::GetStateRecorder();
  ASSERT_NE(first, nullptr);
  SceneEngine::StateRecorderInit();
  EXPECT_EQ(SceneEngine::GetStateRecorder(), first);
}

TEST_F(StateRecorderBridgeTest, DeleteLeavesTheRecorderAndItsHistoryInPlace) {
  std::vector<std::string> log;
  SceneEngine::StateRecorderInit();
  StateRecorder* recorder = SceneEngine::GetStateRecorder();
  SceneEngine::StateRecorderBegin();
  SceneEngine::StateRecorderPut(new LoggedChange(&log, "a"));
  SceneEngine::StateRecorderAccept("step");
  SceneEngine::StateRecorderDelete();
  EXPECT_EQ(SceneEngine::GetStateRecorder(), recorder);
  EXPECT_TRUE(SceneEngine::StateRecorderCanUndo());
  EXPECT_TRUE(log.empty());
  // The change logs into this test's vector: drop it before the vector goes.
  SceneEngine::StateRecorderClear();
  EXPECT_EQ(log, std::vector<std::string>{"destroy a"});
}

TEST_F(StateRecorderBridgeTest, TheBridgesForwardABracketedEditToTheRecorder) {
  std::vector<std::string> log;
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  EXPECT_TRUE(SceneEngine::StateRecorderIsHolding());
  SceneEngine::StateRecorderPut(new LoggedChange(&log, "a"));
  SceneEngine::StateRecorderPut(new LoggedChange(&log, "b"));
  EXPECT_FALSE(SceneEngine::StateRecorderCanUndo());
  SceneEngine::StateRecorderAccept("edit");
  EXPECT_FALSE(SceneEngine::StateRecorderIsHolding());
  EXPECT_EQ(SceneEngine::GetStateRecorder()->GetUndoName(), "edit");
  EXPECT_TRUE(SceneEngine::StateRecorderCanUndo());
  EXPECT_FALSE(SceneEngine::StateRecorderCanRedo());

  SceneEngine::StateRecorderUndo();
  EXPECT_TRUE(SceneEngine::StateRecorderCanRedo());
  SceneEngine::StateRecorderRedo();
  EXPECT_EQ(log, (std::vector<std::string>{"revert b", "revert a", "apply a", "apply b"}));

  log.clear();
  SceneEngine::StateRecorderClear();
  EXPECT_FALSE(SceneEngine::StateRecorderCanUndo());
  EXPECT_EQ(log, (std::vector<std::string>{"destroy b", "destroy a"}));
}

TEST_F(StateRecorderBridgeTest, CancelDropsAndRestoreRevertsThePendingChanges) {
  std::vector<std::string> log;
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  SceneEngine::StateRecorderPut(new LoggedChange(&log, "a"));
  SceneEngine::StateRecorderCancel();
  EXPECT_FALSE(SceneEngine::StateRecorderIsHolding());
  EXPECT_EQ(log, std::vector<std::string>{"destroy a"});

  log.clear();
  SceneEngine::StateRecorderBegin();
  SceneEngine::StateRecorderPut(new LoggedChange(&log, "b"));
  SceneEngine::StateRecorderRestore();
  EXPECT_TRUE(SceneEngine::StateRecorderIsHolding());
  EXPECT_EQ(log, (std::vector<std::string>{"revert b", "destroy b"}));
  SceneEngine::StateRecorderCancel();
  EXPECT_FALSE(SceneEngine::StateRecorderCanUndo());
}

// Builds a scene with a node and a modifier inserted under it inside one recorded step.
// Returns the node; *object_deleted and *modifier_deleted report the blocks' destruction.
Node* SceneWithOneRecordedInsertion(SceneEngine& engine, bool* object_deleted,
                                    bool* modifier_deleted) {
  engine.InitScene();
  Node* node = engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "node");
  EXPECT_TRUE(node->SetObject(new ProbeObject("object", object_deleted)).IsOk());
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  Status status = engine.AddModifierToNodes({node}, {}, new LinkingModifier(modifier_deleted), 0);
  EXPECT_TRUE(status.IsOk());
  SceneEngine::StateRecorderAccept("add modifier");
  EXPECT_TRUE(SceneEngine::IsObjectModifier(node->GetObject()));
  return node;
}

// What the history holds when the scene goes: an undone step (its records alone hold the
// object modifier and the modifier), or a done one.
enum class History { kUndone, kDone };

void ExpectSceneGoesCleanly(History history, void (*remove)(SceneEngine&)) {
  bool object_deleted = false;
  bool modifier_deleted = false;
  auto engine = std::make_unique<SceneEngine>();
  SceneEngine::SetScene(engine.get());
  SceneWithOneRecordedInsertion(*engine, &object_deleted, &modifier_deleted);
  if (history == History::kUndone) SceneEngine::StateRecorderUndo();
  EXPECT_EQ(SceneEngine::StateRecorderCanRedo(), history == History::kUndone);
  remove(*engine);
  EXPECT_TRUE(object_deleted);
  EXPECT_TRUE(modifier_deleted);
  EXPECT_FALSE(SceneEngine::StateRecorderCanUndo());
  EXPECT_FALSE(SceneEngine::StateRecorderCanRedo());
  engine.reset();
  SceneEngine::SetScene(nullptr);
}

TEST_F(StateRecorderBridgeTest, DeleteSceneIsSafeWhateverTheHistoryHolds) {
  for (History history : {History::kUndone, History::kDone}) {
    ExpectSceneGoesCleanly(history, [](SceneEngine& engine) { engine.DeleteScene(); });
  }
}

TEST_F(StateRecorderBridgeTest, InitSceneIsSafeWhateverTheHistoryHolds) {
  for (History history : {History::kUndone, History::kDone}) {
    ExpectSceneGoesCleanly(history, [](SceneEngine& engine) { engine.InitScene(); });
  }
}

TEST_F(StateRecorderBridgeTest, ResetSceneIsSafeWhateverTheHistoryHolds) {
  for (History history : {History::kUndone, History::kDone}) {
    ExpectSceneGoesCleanly(history, [](SceneEngine& engine) { engine.ResetScene(); });
  }
}

TEST_F(StateRecorderBridgeTest, TheEnginesDestructorIsSafeWhateverTheHistoryHolds) {
  for (History history : {History::kUndone, History::kDone}) {
    bool object_deleted = false;
    bool modifier_deleted = false;
    {
      SceneEngine engine;
      SceneEngine::SetScene(&engine);
      SceneWithOneRecordedInsertion(engine, &object_deleted, &modifier_deleted);
      if (history == History::kUndone) SceneEngine::StateRecorderUndo();
    }
    SceneEngine::SetScene(nullptr);
    EXPECT_TRUE(object_deleted);
    EXPECT_TRUE(modifier_deleted);
    EXPECT_EQ(SceneEngine::GetStateRecorder(), nullptr);
  }
}

TEST_F(StateRecorderBridgeTest, AnUndoneStepKeepsItsBlocksAliveUntilTheHistoryDropsThem) {
  bool object_deleted = false;
  bool modifier_deleted = false;
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  Node* node = SceneWithOneRecordedInsertion(engine, &object_deleted, &modifier_deleted);
  SceneEngine::StateRecorderUndo();
  EXPECT_FALSE(SceneEngine::IsObjectModifier(node->GetObject()));
  EXPECT_FALSE(modifier_deleted);
  // A new step after an undo drops the redoable one, and with it the last hold on the
  // object modifier and its modifier.
  SceneEngine::StateRecorderBegin();
  SceneEngine::StateRecorderPut(new ReplaceDependencyStateContainer(node, 1, nullptr));
  SceneEngine::StateRecorderAccept("other");
  EXPECT_TRUE(modifier_deleted);
  EXPECT_FALSE(object_deleted);
  engine.DeleteScene();
  EXPECT_TRUE(object_deleted);
}

}  // namespace
}  // namespace Orlo
