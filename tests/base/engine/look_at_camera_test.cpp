#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <orlo/base/controllers/look_at_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

#include "tests/base/scene/scene_test_blocks.h"

namespace Orlo {
namespace {

using testing::ExpectMatrixEq;
using testing::TestObject;

// Makes the camera objects of a host library (class 600, 128, 784).
class CameraFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return BlockType(600, 128, 784); }
  Block* GetBlock(bool) const override {
    return new TestObject("camera", BlockType(600, 128, 784));
  }
  std::string GetName() const override { return "Camera"; }
};

class LookAtCameraTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    SceneEngine::SetScene(&m_engine);
    m_engine.InitScene();
  }
  void TearDown() override {
    m_engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
    SceneEngine::DestroyFactories();
  }

  SceneEngine m_engine;
};

TEST_F(LookAtCameraTest, TheCameraLooksAtItsAimNodeFromItsOwnPosition) {
  SceneEngine::AddBlockFactory(new CameraFactory());
  Node* camera = m_engine.CreateLookAtCamera(Point3<double>(0.0, 0.0, 10.0),
                                             Point3<double>(0.0, 0.0, 0.0), "cam");
  ASSERT_NE(camera, nullptr);
  EXPECT_EQ(camera->GetName(), "cam");
  ASSERT_NE(camera->GetObject(), nullptr);
  EXPECT_TRUE(SceneEngine::IsCamera(camera->GetObject()));
  Node* aim = m_engine.GetNodeByName("cam_aim");
  ASSERT_NE(aim, nullptr);
  EXPECT_EQ(aim->GetParent(), m_engine.GetMainNode());
  EXPECT_EQ(camera->GetParent(), m_engine.GetMainNode());
  EXPECT_EQ(camera->GetLookAtAimNode(), aim);
  EXPECT_EQ(camera->GetLookAtUpNode(), nullptr);

  auto* look_at = dynamic_cast<LookAtController*>(camera->GetNodeTransformController());
  ASSERT_NE(look_at, nullptr);
  // The node's own transform controller was wrapped: it still holds the position.
  auto* transform = dynamic_cast<Transform3Controller*>(look_at->GetTransformController());
  ASSERT_NE(transform, nullptr);
  EXPECT_EQ(transform->GetPosition(0), Point3<double>(0.0, 0.0, 10.0));

  Matrix3<double> m = camera->GetAbsoluteTM(0);
  EXPECT_EQ(m.GetRow(2), Point3<double>(0.0, 0.0, 1.0));
  EXPECT_EQ(m.GetRow(3), Point3<double>(0.0, 0.0, 10.0));

  // Moving the aim node turns the camera.
  aim->GetNodeTransformController()->SetPosition(Point3<double>(0.0, 20.0, 10.0), 0);
  EXPECT_EQ(camera->GetAbsoluteTM(0).GetRow(2), Point3<double>(0.0, -1.0, 0.0));
}

TEST_F(LookAtCameraTest, WithoutACameraFactoryTheCameraNodeHasNoObject) {
  Node* camera = m_engine.CreateLookAtCamera(Point3<double>(1.0, 2.0, 3.0),
                                             Point3<double>(4.0, 5.0, 6.0), "cam");
  EXPECT_EQ(camera->GetObject(), nullptr);
  EXPECT_NE(camera->GetLookAtAimNode(), nullptr);
  EXPECT_EQ(camera->GetAbsoluteTM(0).GetRow(3), Point3<double>(1.0, 2.0, 3.0));
}

// Look-at nodes aiming before and after themselves in the walk, into other branches, at
// their own descendants and at other look-at nodes: the whole-scene pass must give every
// node's GetAbsoluteTM bit for bit.
TEST_F(LookAtCameraTest, TheWholeScenePassMatchesGetAbsoluteTMWhateverTheLookAtNodesAimAt) {
  std::mt19937 random(7u);
  std::uniform_real_distribution<double> coordinate(-50.0, 50.0);
  auto point = [&]() {
    return Point3<double>(coordinate(random), coordinate(random), coordinate(random));
  };
  std::vector<Node*> nodes;
  for (int i = 0; i < 40; ++i) {
    Node* node = m_engine.CreateEmptyNode(point(), ("n" + std::to_string(i)).c_str());
    node->GetNodeTransformController()->SetRotation(point(), 0);
    if (!nodes.empty() && random() % 3 != 0) {
      ASSERT_TRUE(nodes[random() % nodes.size()]->AddChild(node).IsOk());
    }
    nodes.push_back(node);
  }
  int aimed = 0;
  for (int i = 0; i < 15; ++i) {
    Node* node = nodes[random() % nodes.size()];
    if (dynamic_cast<LookAtController*>(node->GetNodeTransformController()) != nullptr) continue;
    auto* look_at = new LookAtController(true);
    look_at->SetTransformController(node->GetNodeTransformController());
    ASSERT_TRUE(node->GetNodeTransform()->SetNodePRS(look_at).IsOk());
    // An aim that would close a cycle (the node itself or one of its ancestors) is refused
    // by the graph and leaves the slot empty.
    (void)node->SetLookAtAimNode(nodes[random() % nodes.size()]);
    if (random() % 2 == 0) (void)node->SetLookAtUpNode(nodes[random() % nodes.size()]);
    if (node->GetLookAtAimNode() != nullptr) ++aimed;
  }
  ASSERT_GT(aimed, 5);

  std::vector<SceneEngine::NodeMatrix> matrices;
  m_engine.GetAbsoluteTMs(3, matrices);
  ASSERT_EQ(matrices.size(), nodes.size() + 1);
  for (const SceneEngine::NodeMatrix& entry : matrices) {
    ExpectMatrixEq(entry.matrix, entry.node->GetAbsoluteTM(3));
  }
}

}  // namespace
}  // namespace Orlo
