#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/state_container.h>
#include <orlo/support/state_recorder.h>

namespace Orlo {
namespace {

// A recorded change that reports its destruction, and optionally reads the name of a node
// as it goes, to show that the node is still alive at that moment.
class ProbeChange : public StateContainer {
 public:
  ProbeChange(std::vector<std::string>* log, Node* node = nullptr) : m_log(log), m_node(node) {}
  ~ProbeChange() override {
    m_log->push_back(m_node != nullptr ? "destroyed with node " + m_node->GetName() : "destroyed");
  }
  void Revert() override {}
  void Apply() override {}

 private:
  std::vector<std::string>* m_log;
  Node* m_node;
};

// Puts one accepted step holding `change` into the recorder.
void RecordStep(StateContainer* change) {
  StateRecorder* recorder = SceneEngine::GetStateRecorder();
  recorder->Begin();
  recorder->Put(change);
  recorder->Accept("step");
}

class SceneLifetimeTest : public ::testing::Test {
 protected:
  void TearDown() override {
    SceneEngine::SetScene(nullptr);
    SceneEngine::SetBitmapManager(nullptr);
    // Destroying an engine is the one way to destroy the process-wide recorder.
    { SceneEngine cleanup; }
  }
};

TEST_F(SceneLifetimeTest, ANewEngineHasNoSceneNoPathAndNoCount) {
  SceneEngine engine;
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  EXPECT_EQ(engine.GetMainNode(), nullptr);
  EXPECT_EQ(engine.GetScenePath(), "");
  EXPECT_EQ(engine.GetNumBlocks(), -1);
}

TEST_F(SceneLifetimeTest, InitSceneMakesAMainSceneWhoseMainNodeIsNamedMainNode) {
  SceneEngine engine;
  engine.InitScene();
  ASSERT_NE(engine.GetMainScene(), nullptr);
  ASSERT_NE(engine.GetMainNode(), nullptr);
  EXPECT_EQ(engine.GetMainNode(), engine.GetMainScene()->GetMainNode());
  EXPECT_EQ(engine.GetMainNode()->GetName(), "MainNode");
  EXPECT_EQ(engine.GetMainNode()->GetNumChildren(), 0);
  EXPECT_NE(engine.GetMainScene()->GetDataTable(), nullptr);
}

TEST_F(SceneLifetimeTest, InitSceneTwiceReplacesTheScene) {
  SceneEngine engine;
  engine.InitScene();
  Node* child = new Node(true);
  ASSERT_TRUE(engine.GetMainNode()->AddChild(child).IsOk());
  engine.InitScene();
  ASSERT_NE(engine.GetMainNode(), nullptr);
  EXPECT_EQ(engine.GetMainNode()->GetNumChildren(), 0);
  EXPECT_EQ(engine.GetMainNode()->GetName(), "MainNode");
}

TEST_F(SceneLifetimeTest, ResetSceneDiscardsTheOldSceneAndTheUndoHistory) {
  SceneEngine engine;
  SceneEngine::StateRecorderInit();
  engine.InitScene();
  ASSERT_TRUE(engine.GetMainNode()->AddChild(new Node(true)).IsOk());
  std::vector<std::string> log;
  RecordStep(new ProbeChange(&log));
  ASSERT_TRUE(SceneEngine::GetStateRecorder()->CanUndo());

  engine.ResetScene();

  EXPECT_EQ(log, std::vector<std::string>{"destroyed"});
  EXPECT_FALSE(SceneEngine::GetStateRecorder()->CanUndo());
  ASSERT_NE(engine.GetMainNode(), nullptr);
  EXPECT_EQ(engine.GetMainNode()->GetNumChildren(), 0);
  EXPECT_EQ(engine.GetMainNode()->GetName(), "MainNode");
}

TEST_F(SceneLifetimeTest, InitSceneClearsTheHistoryBeforeDeletingTheOldScene) {
  SceneEngine engine;
  SceneEngine::StateRecorderInit();
  engine.InitScene();
  Node* child = new Node(true);
  child->SetName("old child");
  ASSERT_TRUE(engine.GetMainNode()->AddChild(child).IsOk());
  std::vector<std::string> log;
  RecordStep(new ProbeChange(&log, child));
  engine.InitScene();
  EXPECT_EQ(log, std::vector<std::string>{"destroyed with node old child"});
}

TEST_F(SceneLifetimeTest, DeleteSceneLeavesNoSceneAndClearsTheHistory) {
  SceneEngine engine;
  SceneEngine::StateRecorderInit();
  engine.InitScene();
  std::vector<std::string> log;
  RecordStep(new ProbeChange(&log, engine.GetMainNode()));

  engine.DeleteScene();

  EXPECT_EQ(engine.GetMainScene(), nullptr);
  EXPECT_EQ(engine.GetMainNode(), nullptr);
  EXPECT_EQ(log, std::vector<std::string>{"destroyed with node MainNode"});
  EXPECT_FALSE(SceneEngine::GetStateRecorder()->CanUndo());
  // The recorder itself stays.
  EXPECT_NE(SceneEngine::GetStateRecorder(), nullptr);
  engine.DeleteScene();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneLifetimeTest, DeleteSceneWithoutAScene) {
  SceneEngine engine;
  engine.DeleteScene();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  engine.InitScene();
  EXPECT_NE(engine.GetMainNode(), nullptr);
}

TEST_F(SceneLifetimeTest, TheDestructorClearsTheHistoryThenDeletesTheSceneThenTheRecorder) {
  std::vector<std::string> log;
  {
    SceneEngine engine;
    SceneEngine::StateRecorderInit();
    engine.InitScene();
    Node* child = new Node(true);
    child->SetName("kept by the scene");
    ASSERT_TRUE(engine.GetMainNode()->AddChild(child).IsOk());
    // The change reads the node's name when destroyed: the node must still exist then.
    RecordStep(new ProbeChange(&log, child));
    EXPECT_EQ(log.size(), 0u);
  }
  EXPECT_EQ(log, std::vector<std::string>{"destroyed with node kept by the scene"});
  EXPECT_EQ(SceneEngine::GetStateRecorder(), nullptr);
}

TEST_F(SceneLifetimeTest, TheDestructorLeavesTheCurrentEngineAndTheBitmapManagerAlone) {
  BitmapManager manager;
  ASSERT_TRUE(manager.AddDirectory("maps"));
  SceneEngine other;
  SceneEngine::SetScene(&other);
  SceneEngine::SetBitmapManager(&manager);
  {
    SceneEngine engine;
    engine.InitScene();
  }
  EXPECT_EQ(SceneEngine::GetScene(), &other);
  EXPECT_EQ(SceneEngine::GetBitmapManager(), &manager);
  EXPECT_EQ(manager.GetNumDirectories(), 1);
}

TEST_F(SceneLifetimeTest, StateRecorderInitKeepsTheFirstRecorder) {
  EXPECT_EQ(SceneEngine::GetStateRecorder(), nullptr);
  SceneEngine::StateRecorderInit();
  StateRecorder* first = SceneEngine::GetStateRecorder();
  ASSERT_NE(first, nullptr);
  SceneEngine::StateRecorderInit();
  EXPECT_EQ(SceneEngine::GetStateRecorder(), first);
}

TEST_F(SceneLifetimeTest, AnEngineDestroyedWithoutASceneStillDestroysTheRecorder) {
  SceneEngine::StateRecorderInit();
  { SceneEngine engine; }
  EXPECT_EQ(SceneEngine::GetStateRecorder(), nullptr);
}

TEST_F(SceneLifetimeTest, TheBitmapManagerIsWhatTheHostSet) {
  EXPECT_EQ(SceneEngine::GetBitmapManager(), nullptr);
  BitmapManager manager;
  SceneEngine::SetBitmapManager(&manager);
  EXPECT_EQ(SceneEngine::GetBitmapManager(), &manager);
  SceneEngine::SetBitmapManager(nullptr);
  EXPECT_EQ(SceneEngine::GetBitmapManager(), nullptr);
}

TEST_F(SceneLifetimeTest, TheScenePathIsAssignedAndReturnedAsACopy) {
  SceneEngine engine;
  engine.SetScenePath("dir/a.scene");
  std::string path = engine.GetScenePath();
  path += "x";
  EXPECT_EQ(engine.GetScenePath(), "dir/a.scene");
}

}  // namespace
}  // namespace Orlo
