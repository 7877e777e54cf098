#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/engine/replace_dependency_state_container.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/state_recorder.h>

#include "tests/base/engine/undo_test_blocks.h"

namespace Orlo {
namespace {

using testing::ProbeObject;

// The object slot of a node.
constexpr int kObjectSlot = 1;

class ReplaceDependencyStateContainerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::SetScene(&m_engine);
    m_engine.InitScene();
    m_node = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "node");
  }
  void TearDown() override {
    m_engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
    // Destroying an engine is the one way to destroy the process-wide recorder.
    { SceneEngine cleanup; }
  }

  SceneEngine m_engine;
  Node* m_node = nullptr;
};

TEST_F(ReplaceDependencyStateContainerTest, TheRecordReadsTheOldDependencyAndKeepsItAlive) {
  auto* old_object = new ProbeObject("old");
  auto* new_object = new ProbeObject("new");
  ASSERT_TRUE(m_node->SetObject(old_object).IsOk());

  ReplaceDependencyStateContainer record(m_node, kObjectSlot, new_object);
  EXPECT_EQ(record.GetBlock(), m_node);
  EXPECT_EQ(record.GetSlot(), kObjectSlot);
  EXPECT_EQ(record.GetOldDependency(), old_object);
  EXPECT_EQ(record.GetNewDependency(), new_object);
  ASSERT_EQ(record.GetKeepAlive()->GetNumBlocks(), 1u);
  EXPECT_EQ(record.GetKeepAlive()->GetBlock(0), old_object);
  ASSERT_TRUE(m_node->SetObject(new_object).IsOk());
}

TEST_F(ReplaceDependencyStateContainerTest, ARecordOfAnEmptySlotHoldsNoBlockUntilItIsReverted) {
  auto* new_object = new ProbeObject("new");
  ReplaceDependencyStateContainer record(m_node, kObjectSlot, new_object);
  EXPECT_EQ(record.GetOldDependency(), nullptr);
  EXPECT_EQ(record.GetKeepAlive()->GetNumBlocks(), 0u);
  ASSERT_TRUE(m_node->SetObject(new_object).IsOk());

  record.Revert();
  EXPECT_EQ(m_node->GetObject(), nullptr);
  ASSERT_EQ(record.GetKeepAlive()->GetNumBlocks(), 1u);
  EXPECT_EQ(record.GetKeepAlive()->GetBlock(0), new_object);
  record.Apply();
  EXPECT_EQ(m_node->GetObject(), new_object);
}

TEST_F(ReplaceDependencyStateContainerTest,
       UndoRestoresTheOldBlockEvenWhenNothingElseReferencedItInBetween) {
  bool old_deleted = false;
  bool new_deleted = false;
  auto* old_object = new ProbeObject("old", &old_deleted);
  auto* new_object = new ProbeObject("new", &new_deleted);
  ASSERT_TRUE(m_node->SetObject(old_object).IsOk());
  SceneEngine::StateRecorderInit();

  SceneEngine::StateRecorderBegin();
  SceneEngine::StateRecorderPut(
      new ReplaceDependencyStateContainer(m_node, kObjectSlot, new_object));
  ASSERT_TRUE(m_node->SetObject(new_object).IsOk());
  SceneEngine::StateRecorderAccept("replace");
  // Only the record holds the old object now.
  std::vector<Block*> dependants;
  old_object->GetDependants(dependants);
  ASSERT_EQ(dependants.size(), 1u);
  EXPECT_FALSE(old_deleted);

  SceneEngine::StateRecorderUndo();
  EXPECT_FALSE(old_deleted);
  EXPECT_FALSE(new_deleted);
  EXPECT_EQ(m_node->GetObject(), old_object);

  SceneEngine::StateRecorderRedo();
  EXPECT_EQ(m_node->GetObject(), new_object);
  SceneEngine::StateRecorderUndo();
  EXPECT_EQ(m_node->GetObject(), old_object);
  EXPECT_FALSE(new_deleted);

  // The relinking keeps both directions: the node is listed by the block in its slot only.
  dependants.clear();
  old_object->GetDependants(dependants);
  EXPECT_EQ(std::count(dependants.begin(), dependants.end(), m_node), 1);
  dependants.clear();
  new_object->GetDependants(dependants);
  EXPECT_EQ(std::count(dependants.begin(), dependants.end(), m_node), 0);

  // Clearing the history lets go of the object the undo took out of the slot.
  SceneEngine::StateRecorderClear();
  EXPECT_TRUE(new_deleted);
  EXPECT_FALSE(old_deleted);
  // The flags live in this frame: the scene goes before they do.
  m_engine.DeleteScene();
  EXPECT_TRUE(old_deleted);
}

TEST_F(ReplaceDependencyStateContainerTest, EachRevertKeepsTheNewDependencyOnceMore) {
  auto* new_object = new ProbeObject("new");
  ReplaceDependencyStateContainer record(m_node, kObjectSlot, new_object);
  ASSERT_TRUE(m_node->SetObject(new_object).IsOk());
  record.Revert();
  record.Apply();
  record.Revert();
  EXPECT_EQ(record.GetKeepAlive()->GetNumBlocks(), 2u);
  record.Apply();
  EXPECT_EQ(m_node->GetObject(), new_object);
}

TEST_F(ReplaceDependencyStateContainerTest, DestroyingTheRecordReleasesTheBlocksOnlyItHeld) {
  bool old_deleted = false;
  auto* old_object = new ProbeObject("old", &old_deleted);
  auto* new_object = new ProbeObject("new");
  ASSERT_TRUE(m_node->SetObject(old_object).IsOk());
  auto* record = new ReplaceDependencyStateContainer(m_node, kObjectSlot, new_object);
  ASSERT_TRUE(m_node->SetObject(new_object).IsOk());
  EXPECT_FALSE(old_deleted);
  delete record;
  EXPECT_TRUE(old_deleted);
  EXPECT_EQ(m_node->GetObject(), new_object);
}

TEST_F(ReplaceDependencyStateContainerTest, DestroyingTheRecordLeavesBlocksTheSceneStillHolds) {
  bool old_deleted = false;
  auto* old_object = new ProbeObject("old", &old_deleted);
  ASSERT_TRUE(m_node->SetObject(old_object).IsOk());
  { ReplaceDependencyStateContainer record(m_node, kObjectSlot, nullptr); }
  EXPECT_FALSE(old_deleted);
  EXPECT_EQ(m_node->GetObject(), old_object);
  m_engine.DeleteScene();
  EXPECT_TRUE(old_deleted);
}

TEST_F(ReplaceDependencyStateContainerTest, ARecordForgetsABlockThatIsDestroyedBeforeIt) {
  bool old_deleted = false;
  auto* old_object = new ProbeObject("old", &old_deleted);
  auto* new_object = new ProbeObject("new");
  ASSERT_TRUE(m_node->SetObject(old_object).IsOk());
  ReplaceDependencyStateContainer record(m_node, kObjectSlot, new_object);
  ASSERT_TRUE(m_node->SetObject(new_object).IsOk());

  ASSERT_TRUE(m_engine.DeleteNode(m_node));
  m_node = nullptr;
  EXPECT_EQ(record.GetBlock(), nullptr);
  record.Revert();  // nothing to put back into
  record.Apply();
  EXPECT_FALSE(old_deleted);  // still the record's until it goes
  EXPECT_EQ(record.GetKeepAlive()->GetNumBlocks(), 1u);
}

TEST_F(ReplaceDependencyStateContainerTest, TwoRecordsOfOneBlockBothForgetIt) {
  auto* first = new ProbeObject("first");
  auto* second = new ProbeObject("second");
  auto record_one =
      std::make_unique<ReplaceDependencyStateContainer>(m_node, kObjectSlot, first);
  ASSERT_TRUE(m_node->SetObject(first).IsOk());
  ReplaceDependencyStateContainer record_two(m_node, kObjectSlot, second);
  ASSERT_TRUE(m_node->SetObject(second).IsOk());
  record_one.reset();  // stops watching; the other record still does
  ASSERT_TRUE(m_engine.DeleteNode(m_node));
  m_node = nullptr;
  EXPECT_EQ(record_two.GetBlock(), nullptr);
}

}  // namespace
}  // namespace Orlo
