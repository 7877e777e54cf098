#include "bench/scene_workload.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

namespace Orlo {
namespace {

using bench::BuildSceneWorkload;
using bench::WorkloadShape;

constexpr int kCount = 90;

class SceneWorkloadTest : public ::testing::TestWithParam<WorkloadShape> {
 protected:
  void TearDown() override { SceneEngine::SetScene(nullptr); }
};

TEST_P(SceneWorkloadTest, NodesAreNamedPlacedAndLinkedAsTheShapeSays) {
  SceneEngine engine;
  engine.InitScene();
  const std::vector<Node*> nodes = BuildSceneWorkload(&engine, GetParam(), kCount);
  ASSERT_EQ(nodes.size(), static_cast<std::size_t>(kCount));

  // Every node appears once below the main node, in the order of a pre-order walk.
  std::vector<Node*> all;
  engine.GetAllSceneNodes(all);
  EXPECT_EQ(all.size(), nodes.size());

  for (int i = 0; i < kCount; ++i) {
    SCOPED_TRACE("node " + std::to_string(i));
    Node* node = nodes[static_cast<std::size_t>(i)];
    EXPECT_EQ(node->GetName(), "node_" + std::to_string(i));
    const int parent_index = bench::WorkloadParent(GetParam(), i);
    Node* parent =
        parent_index < 0 ? engine.GetMainNode() : nodes[static_cast<std::size_t>(parent_index)];
    EXPECT_EQ(node->GetParent(), parent);
    EXPECT_EQ(node->GetNodeTransform()->GetParentTransform(), parent->GetNodeTransform());

    Matrix3Controller* prs = node->GetNodeTransformController();
    const double d = i;
    const Point3<double> position = prs->GetPosition(0);
    EXPECT_DOUBLE_EQ(position.x, d * 0.01);
    EXPECT_DOUBLE_EQ(position.y, 2 * d * 0.01);
    EXPECT_DOUBLE_EQ(position.z, 3 * d * 0.01);
    const Point3<double> rotation = prs->GetRotation(0);
    EXPECT_DOUBLE_EQ(rotation.x, 0.1 * d);
    EXPECT_DOUBLE_EQ(rotation.y, 0.2 * d);
    EXPECT_DOUBLE_EQ(rotation.z, 0.3 * d);
    const Point3<double> scale = prs->GetScale(0);
    EXPECT_DOUBLE_EQ(scale.x, 1 + 0.001 * d);
    EXPECT_DOUBLE_EQ(scale.y, 1 + 0.001 * d);
    EXPECT_DOUBLE_EQ(scale.z, 1 + 0.001 * d);
  }
}

TEST_P(SceneWorkloadTest, ChildrenAreInIndexOrder) {
  SceneEngine engine;
  engine.InitScene();
  const std::vector<Node*> nodes = BuildSceneWorkload(&engine, GetParam(), kCount);
  std::vector<Node*> parents{engine.GetMainNode()};
  parents.insert(parents.end(), nodes.begin(), nodes.end());
  for (Node* parent : parents) {
    for (int c = 1; c < parent->GetNumChildren(); ++c) {
      const std::string before = parent->GetChild(c - 1)->GetName();
      const std::string after = parent->GetChild(c)->GetName();
      EXPECT_LT(std::stoi(before.substr(5)), std::stoi(after.substr(5)));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, SceneWorkloadTest,
                         ::testing::Values(WorkloadShape::kFlat, WorkloadShape::kTree,
                                           WorkloadShape::kChain),
                         [](const ::testing::TestParamInfo<WorkloadShape>& info) {
                           return std::string(bench::WorkloadShapeName(info.param));
                         });

TEST(SceneWorkloadShapeTest, TheTreeIsEightAryInBreadthFirstOrder) {
  for (int i = 0; i < 8; ++i) EXPECT_EQ(bench::WorkloadParent(WorkloadShape::kTree, i), -1);
  for (int k = 0; k < 20; ++k) {
    for (int i = 8 * k + 8; i <= 8 * k + 15; ++i) {
      EXPECT_EQ(bench::WorkloadParent(WorkloadShape::kTree, i), k);
    }
  }
  EXPECT_EQ(bench::WorkloadParent(WorkloadShape::kChain, 0), -1);
  EXPECT_EQ(bench::WorkloadParent(WorkloadShape::kChain, 5), 4);
  EXPECT_EQ(bench::WorkloadParent(WorkloadShape::kFlat, 5), -1);
}

}  // namespace
}  // namespace Orlo
