#include "plugins/assimp/twist_modifier.h"

#include <cmath>

#include <gtest/gtest.h>

#include "plugins/assimp/mesh_object.h"
#include "plugins/assimp/twist_object_modifier.h"
#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

using Orlo::Point3;

constexpr double kHalfTurn = 3.14159265358979323846;

// A column of points along z from 0 to 2, each at x = 1.
MeshObject* MakeColumn() {
  auto* mesh = new MeshObject;
  mesh->SetPositions({{1, 0, 0}, {1, 0, 1}, {1, 0, 2}});
  mesh->SetFaces({{0, 1, 2}});
  return mesh;
}

class TwistModifierTest : public testing::PluginTest {};

TEST_F(TwistModifierTest, ANewTwistHasItsParametersInATable) {
  auto* twist = new TwistModifier(true);
  EXPECT_TRUE(Orlo::SceneEngine::IsModifier(twist));
  ASSERT_NE(twist->GetDataTable(), nullptr);
  EXPECT_EQ(twist->GetDataTable()->GetDataName(TwistModifier::kAngleID), "angle");
  EXPECT_EQ(twist->GetDataTable()->GetDataName(TwistModifier::kAxisID), "axis");
  EXPECT_EQ(twist->GetAngle(0), 0.0);
  EXPECT_EQ(twist->GetAxis(), 2);
  twist->DeleteThisBlock(true);
}

TEST_F(TwistModifierTest, BuildingTheStackTwistsACopyAndLeavesTheMeshAsModelled) {
  MeshObject* mesh = MakeColumn();
  auto* twist = new TwistModifier(true);
  twist->SetAngle(kHalfTurn, 0);
  Orlo::ObjectModifier* stack = twist->GetNewObjectModifier();
  ASSERT_TRUE(Orlo::SceneEngine::IsObjectModifier(stack));
  EXPECT_EQ(stack->GetModifier(), twist);
  ASSERT_TRUE(stack->SetObjectToModify(mesh).IsOk());
  Orlo::Node* node = engine.CreateObjectNode(stack, Point3<double>(0, 0, 0), "column");
  auto* built = dynamic_cast<MeshObject*>(node->BuildObject(0));
  ASSERT_NE(built, nullptr);
  EXPECT_NE(built, mesh);
  // Bottom unturned, middle a quarter turn, top half a turn about z.
  EXPECT_NEAR(built->GetPoint(0).x, 1.0, 1e-12);
  EXPECT_NEAR(built->GetPoint(1).x, 0.0, 1e-12);
  EXPECT_NEAR(built->GetPoint(1).y, 1.0, 1e-12);
  EXPECT_NEAR(built->GetPoint(2).x, -1.0, 1e-12);
  EXPECT_NEAR(built->GetPoint(2).z, 2.0, 1e-12);
  EXPECT_EQ(mesh->GetPoint(2).x, 1.0);
  // A new angle is seen by the next build, though the time is the same.
  twist->SetAngle(kHalfTurn / 2, 0);
  auto* again = dynamic_cast<MeshObject*>(node->BuildObject(0));
  ASSERT_NE(again, nullptr);
  EXPECT_NEAR(again->GetPoint(2).x, 0.0, 1e-12);
  EXPECT_NEAR(again->GetPoint(2).y, 1.0, 1e-12);
}

TEST_F(TwistModifierTest, AnAnimatedAngleIsTwistedAgainAtEveryTime) {
  auto* twist = new TwistModifier(true);
  auto* angle = new Orlo::BezierController(0.0);
  angle->SetKey(Orlo::BezierKey(0, kHalfTurn));
  angle->SetKey(Orlo::BezierKey(10, kHalfTurn / 2));
  ASSERT_TRUE(twist->GetDataTable()->SetController(TwistModifier::kAngleID, angle, 0));
  Orlo::ObjectModifier* stack = twist->GetNewObjectModifier();
  ASSERT_TRUE(stack->SetObjectToModify(MakeColumn()).IsOk());
  Orlo::Node* node = engine.CreateObjectNode(stack, Point3<double>(0, 0, 0), "column");
  auto* first = dynamic_cast<MeshObject*>(node->BuildObject(0));
  ASSERT_NE(first, nullptr);
  EXPECT_NEAR(first->GetPoint(2).x, -1.0, 1e-12);
  auto* later = dynamic_cast<MeshObject*>(node->BuildObject(10));
  ASSERT_NE(later, nullptr);
  EXPECT_NEAR(later->GetPoint(2).x, 0.0, 1e-12);
  EXPECT_NEAR(later->GetPoint(2).y, 1.0, 1e-12);
}

TEST_F(TwistModifierTest, AnInactiveTwistHandsTheMeshThrough) {
  MeshObject* mesh = MakeColumn();
  auto* twist = new TwistModifier(true);
  twist->SetAngle(1.0, 0);
  twist->SetActive(false);
  Orlo::ObjectModifier* stack = twist->GetNewObjectModifier();
  ASSERT_TRUE(stack->SetObjectToModify(mesh).IsOk());
  Orlo::Node* node = engine.CreateObjectNode(stack, Point3<double>(0, 0, 0), "column");
  EXPECT_EQ(node->BuildObject(0), mesh);
}

TEST_F(TwistModifierTest, TwistsAboutTheChosenAxis) {
  const Point3<double> p = TwistModifier::Twist(Point3<double>(2, 0, 1), kHalfTurn / 2, 0, 0, 2);
  // About x, at x = 2 (the top): a quarter turn takes (y, z) = (0, 1) to (-1, 0).
  EXPECT_NEAR(p.x, 2.0, 1e-12);
  EXPECT_NEAR(p.y, -1.0, 1e-12);
  EXPECT_NEAR(p.z, 0.0, 1e-12);
}

TEST_F(TwistModifierTest, CloneKeepsParametersAndTheStackClonesItsMesh) {
  auto* twist = new TwistModifier(true);
  twist->SetName("spiral");
  twist->SetAngle(0.5, 0);
  twist->SetAxis(1);
  auto* copy = dynamic_cast<TwistModifier*>(twist->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetName(), "spiral");
  EXPECT_EQ(copy->GetAngle(0), 0.5);
  EXPECT_EQ(copy->GetAxis(), 1);
  EXPECT_NE(copy->GetDataTable(), twist->GetDataTable());

  Orlo::ObjectModifier* stack = twist->GetNewObjectModifier();
  ASSERT_TRUE(stack->SetObjectToModify(MakeColumn()).IsOk());
  auto* stack_copy = dynamic_cast<TwistObjectModifier*>(stack->Clone());
  ASSERT_NE(stack_copy, nullptr);
  EXPECT_EQ(stack_copy->GetModifier(), twist);
  ASSERT_NE(stack_copy->GetObjectToModify(), nullptr);
  EXPECT_NE(stack_copy->GetObjectToModify(), stack->GetObjectToModify());
  stack->DeleteThisBlock(true);
  stack_copy->DeleteThisBlock(true);
  copy->DeleteThisBlock(true);
}

TEST_F(TwistModifierTest, ASceneWithATwistedMeshSavesAndLoadsTheStack) {
  auto* twist = new TwistModifier(true);
  twist->SetName("spiral");
  twist->SetAngle(0.75, 0);
  ASSERT_TRUE(engine.CreateObjectNode(MakeColumn(), Point3<double>(0, 0, 0), "column"));
  Orlo::Node* node = engine.GetNodeByName("column");
  std::vector<Orlo::Node*> nodes{node};
  ASSERT_TRUE(engine.AddModifierToNodes(nodes, twist, 0));
  ASSERT_TRUE(engine.SaveScene(PathOf("twist.orlo")).IsOk());
  Orlo::SceneEngine other;
  Orlo::SceneEngine::SetScene(&other);
  ASSERT_TRUE(other.LoadScene(PathOf("twist.orlo")).IsOk());
  Orlo::Node* loaded = other.GetNodeByName("column");
  ASSERT_NE(loaded, nullptr);
  auto* stack = dynamic_cast<TwistObjectModifier*>(loaded->GetObject());
  ASSERT_NE(stack, nullptr);
  auto* loaded_twist = dynamic_cast<TwistModifier*>(stack->GetModifier());
  ASSERT_NE(loaded_twist, nullptr);
  EXPECT_EQ(loaded_twist->GetName(), "spiral");
  EXPECT_EQ(loaded_twist->GetAngle(0), 0.75);
  EXPECT_NE(dynamic_cast<MeshObject*>(stack->GetObjectToModify()), nullptr);
  other.DeleteScene();
  Orlo::SceneEngine::SetScene(&engine);
}

}  // namespace
}  // namespace orlo_assimp
