#include <orlo/base/controllers/look_at_controller.h>

#include <gtest/gtest.h>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/testing/scoped_block.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;

void ExpectRow(const Matrix3<double>& m, int row, Point3<double> expected) {
  EXPECT_DOUBLE_EQ(m.m[row][0], expected.x) << "row " << row;
  EXPECT_DOUBLE_EQ(m.m[row][1], expected.y) << "row " << row;
  EXPECT_DOUBLE_EQ(m.m[row][2], expected.z) << "row " << row;
}

class LookAtControllerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::SetScene(&m_engine);
    m_engine.InitScene();
  }
  void TearDown() override {
    m_engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
  }

  SceneEngine m_engine;
};

TEST_F(LookAtControllerTest, ItIdentifiesItselfAndNamesItsFourSlots) {
  ScopedBlock<LookAtController> controller(new LookAtController(true));
  EXPECT_EQ(controller->GetClassName(), "LookAtController");
  EXPECT_TRUE(controller->GetBlockType() == BlockType(300, 48, 64));
  EXPECT_EQ(controller->GetControllerType(), 7);
  ASSERT_EQ(controller->NumDependencies(), 4);
  const char* names[] = {"data_table", "transform", "aim_node", "up_node"};
  const unsigned types[] = {205, 110, 115, 115};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(controller->GetDependencyName(i), names[i]);
    EXPECT_EQ(controller->GetDependencyType(i), types[i]);
  }
  EXPECT_EQ(controller->GetDependencyName(4), "no_dependency");
  EXPECT_EQ(controller->GetDependencyName(-1), "no_dependency");
  EXPECT_EQ(controller->GetDependencyType(4), 0u);
  EXPECT_EQ(controller->GetDependency(4), nullptr);
  EXPECT_EQ(controller->GetDependency(-1), nullptr);
  LookAtControllerFactory factory;
  EXPECT_EQ(factory.GetName(), "LookAtController");
  EXPECT_TRUE(factory.GetBlockType() == LookAtController::m_block_type);
}

TEST_F(LookAtControllerTest, CreatingWithSubBlocksLinksATransformAndAFilledTable) {
  ScopedBlock<LookAtController> controller(new LookAtController(true));
  ASSERT_NE(controller->GetTransformController(), nullptr);
  EXPECT_TRUE(controller->GetTransformController()->GetBlockType() ==
              Transform3Controller::m_block_type);
  DataTable* table = controller->GetDataTable();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->GetNumDatas(), 2);
  EXPECT_EQ(table->GetDataName(0), "axis_aim");
  EXPECT_EQ(table->GetDataName(1), "axis_up");
  EXPECT_EQ(table->GetInt(0, 0, 0), 5);
  EXPECT_EQ(table->GetInt(1, 0, 0), 0);
  EXPECT_EQ(controller->GetAimNode(), nullptr);
  EXPECT_EQ(controller->GetUpNode(), nullptr);

  ScopedBlock<LookAtController> bare(new LookAtController(false));
  for (int i = 0; i < 4; ++i) EXPECT_EQ(bare->GetDependency(i), nullptr);
}

TEST_F(LookAtControllerTest, TheLinkingConstructorLinksAimUpAndTransform) {
  Node* aim = m_engine.CreateEmptyNode(Point3<double>(1.0, 0.0, 0.0), "aim");
  Node* up = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 5.0), "up");
  auto* transform = new Transform3Controller(true);
  ScopedBlock<LookAtController> controller(new LookAtController(transform, aim, up));
  EXPECT_EQ(controller->GetAimNode(), aim);
  EXPECT_EQ(controller->GetUpNode(), up);
  EXPECT_EQ(controller->GetTransformController(), transform);
  EXPECT_NE(controller->GetDataTable(), nullptr);
}

TEST_F(LookAtControllerTest, WithNothingLinkedItLooksDownXWithZUp) {
  ScopedBlock<LookAtController> controller(new LookAtController(false));
  Matrix3<double> m = controller->GetMatrix3(0);
  ExpectRow(m, 0, Point3<double>(0.0, -1.0, 0.0));
  ExpectRow(m, 1, Point3<double>(0.0, 0.0, 1.0));
  ExpectRow(m, 2, Point3<double>(-1.0, 0.0, 0.0));
  ExpectRow(m, 3, Point3<double>(0.0, 0.0, 0.0));
}

TEST_F(LookAtControllerTest, AnEyeAboveTheAimWithoutUpNodeFallsBackToXForItsFirstAxis) {
  Node* aim = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "aim");
  ScopedBlock<LookAtController> controller(
      LookAtController::Create(&m_engine, Point3<double>(0.0, 0.0, 10.0), aim, nullptr));
  Matrix3<double> m = controller->GetMatrix3(0);
  ExpectRow(m, 0, Point3<double>(1.0, 0.0, 0.0));
  ExpectRow(m, 1, Point3<double>(0.0, 1.0, 0.0));
  ExpectRow(m, 2, Point3<double>(0.0, 0.0, 1.0));
  ExpectRow(m, 3, Point3<double>(0.0, 0.0, 10.0));
}

TEST_F(LookAtControllerTest, TheUpNodeSteersTheAxes) {
  ScopedBlock<LookAtController> controller(
      LookAtController::Create(&m_engine, Point3<double>(0.0, 0.0, 0.0),
                               Point3<double>(0.0, 10.0, 0.0), Point3<double>(3.0, 0.0, 0.0)));
  ASSERT_NE(controller->GetAimNode(), nullptr);
  ASSERT_NE(controller->GetUpNode(), nullptr);
  EXPECT_EQ(controller->GetAimNode()->GetName(), "Aim");
  EXPECT_EQ(controller->GetUpNode()->GetName(), "Up");
  EXPECT_TRUE(m_engine.DoesNodeExistsInScene(controller->GetUpNode()));
  Matrix3<double> m = controller->GetMatrix3(0);
  // Z points from the target back to the eye, X = up × Z, Y = Z × X.
  ExpectRow(m, 2, Point3<double>(0.0, -1.0, 0.0));
  ExpectRow(m, 0, Point3<double>(0.0, 0.0, -1.0));
  ExpectRow(m, 1, Point3<double>(1.0, 0.0, 0.0));
}

TEST_F(LookAtControllerTest, AnEyeOnTheTargetGivesXForZ) {
  ScopedBlock<LookAtController> controller(LookAtController::Create(
      &m_engine, Point3<double>(2.0, 2.0, 2.0), Point3<double>(2.0, 2.0, 2.0)));
  Matrix3<double> m = controller->GetMatrix3(0);
  ExpectRow(m, 2, Point3<double>(1.0, 0.0, 0.0));
  ExpectRow(m, 3, Point3<double>(2.0, 2.0, 2.0));
}

TEST_F(LookAtControllerTest, AThreeComponentControllerGivesTheEyeToo) {
  auto* point = new Point3Controller(true);
  point->SetPoint3(0, Point3<double>(100.0, 0.0, 7.0));
  ScopedBlock<LookAtController> controller(new LookAtController(false));
  controller->SetTransformController(point);
  Matrix3<double> m = controller->GetMatrix3(0);
  ExpectRow(m, 3, Point3<double>(100.0, 0.0, 7.0));
  ExpectRow(m, 2, Point3<double>(0.0, 0.0, 1.0));
}

TEST_F(LookAtControllerTest, GetPositionIsTheEyeOfTheLastEvaluation) {
  ScopedBlock<LookAtController> controller(new LookAtController(true));
  EXPECT_EQ(controller->GetPosition(0), Point3<double>(0.0, 0.0, 0.0));
  controller->SetPosition(Point3<double>(4.0, 5.0, 6.0), 0);
  // Not evaluated at the time asked: the stored matrix answers.
  EXPECT_EQ(controller->GetPosition(0), Point3<double>(0.0, 0.0, 0.0));
  (void)controller->GetMatrix3(0);
  EXPECT_EQ(controller->GetPosition(99), Point3<double>(4.0, 5.0, 6.0));
  controller->SetRotation(Point3<double>(1.0, 1.0, 1.0), 0);
  controller->SetScale(Point3<double>(2.0, 2.0, 2.0), 0);
  EXPECT_EQ(controller->GetRotation(0), Point3<double>(0.0, 0.0, 0.0));
  EXPECT_EQ(controller->GetScale(0), Point3<double>(0.0, 0.0, 0.0));
  // The wrapped transform took the position, and nothing else.
  auto* transform = static_cast<Transform3Controller*>(controller->GetTransformController());
  EXPECT_EQ(transform->GetRotation(0), Point3<double>(0.0, 0.0, 0.0));
}

TEST_F(LookAtControllerTest, SetDataTableRefusesABlockThatIsNoTable) {
  ScopedBlock<LookAtController> controller(new LookAtController(true));
  DataTable* before = controller->GetDataTable();
  ScopedBlock<BlockTable> not_a_table(new BlockTable(true));
  Status status = controller->SetDataTable(reinterpret_cast<DataTable*>(not_a_table.get()));
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(),
            "LookAtController::SetDataTable : The block is not a valid data_table.");
  EXPECT_EQ(controller->GetDataTable(), before);
  EXPECT_TRUE(controller->SetDataTable(nullptr).IsOk());
  EXPECT_EQ(controller->GetDataTable(), nullptr);
}

TEST_F(LookAtControllerTest, ACloneSharesTheNodesClonesTheTableAndHasNoTransform) {
  ScopedBlock<LookAtController> controller(
      LookAtController::Create(&m_engine, Point3<double>(0.0, 0.0, 0.0),
                               Point3<double>(1.0, 0.0, 0.0), Point3<double>(0.0, 0.0, 1.0)));
  ASSERT_TRUE(controller->GetDataTable()->SetValue(0, 2, 0, 0).IsOk());
  ScopedBlock<LookAtController> clone(static_cast<LookAtController*>(controller->Clone()));
  EXPECT_EQ(clone->GetAimNode(), controller->GetAimNode());
  EXPECT_EQ(clone->GetUpNode(), controller->GetUpNode());
  EXPECT_EQ(clone->GetTransformController(), nullptr);
  ASSERT_NE(clone->GetDataTable(), nullptr);
  EXPECT_NE(clone->GetDataTable(), controller->GetDataTable());
  EXPECT_EQ(clone->GetDataTable()->GetInt(0, 0, 0), 2);
}

TEST_F(LookAtControllerTest, TheNodeMembersReachTheControllerOfItsTransform) {
  Node* node = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "node");
  Node* aim = m_engine.CreateEmptyNode(Point3<double>(1.0, 0.0, 0.0), "aim");
  Node* up = m_engine.CreateEmptyNode(Point3<double>(0.0, 1.0, 0.0), "up");
  // An ordinary transform: the setters succeed and change nothing.
  EXPECT_TRUE(node->SetLookAtAimNode(aim).IsOk());
  EXPECT_TRUE(node->SetLookAtUpNode(up).IsOk());
  EXPECT_EQ(node->GetLookAtAimNode(), nullptr);
  EXPECT_EQ(node->GetLookAtUpNode(), nullptr);

  auto* look_at = new LookAtController(true);
  ASSERT_TRUE(node->GetNodeTransform()->SetNodePRS(look_at).IsOk());
  EXPECT_TRUE(node->SetLookAtAimNode(aim).IsOk());
  EXPECT_TRUE(node->SetLookAtUpNode(up).IsOk());
  EXPECT_EQ(node->GetLookAtAimNode(), aim);
  EXPECT_EQ(node->GetLookAtUpNode(), up);
  EXPECT_EQ(look_at->GetAimNode(), aim);
}

TEST_F(LookAtControllerTest, SaveAndLoadTouchNoBytesSinceTheLinksTravelAsDependencies) {
  ScopedBlock<LookAtController> controller(LookAtController::Create(
      &m_engine, Point3<double>(1.0, 2.0, 3.0), Point3<double>(4.0, 5.0, 6.0)));
  SceneSave save;
  EXPECT_EQ(controller->Save(&save), 1);
  EXPECT_TRUE(save.TakeBytes().empty());

  // A chunk the controller must leave unread.
  SceneSave other;
  other.BeginChunk(0x0005);
  other.WriteUInt32(7u);
  other.EndChunk();
  SceneLoad load(other.TakeBytes());
  ScopedBlock<LookAtController> loaded(new LookAtController(false));
  EXPECT_EQ(loaded->Load(&load), 1);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0005u);
}

TEST_F(LookAtControllerTest, TheFactoryPassesItsFlagToTheConstructor) {
  LookAtControllerFactory factory;
  ScopedBlock<Block> full(factory.GetBlock(true));
  ScopedBlock<Block> bare(factory.GetBlock(false));
  EXPECT_EQ(full->GetClassName(), "LookAtController");
  EXPECT_NE(full->GetDependency(0), nullptr);
  EXPECT_NE(full->GetDependency(1), nullptr);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(bare->GetDependency(i), nullptr);
}

}  // namespace
}  // namespace Orlo
