// The engine's walks keep explicit stacks: a scene whose nodes form one chain of 100,000, far
// deeper than the call stack could follow recursively, is numbered, saved, listed, searched,
// evaluated, refreshed and edited with the default stack, each in time linear in the chain,
// although every node's transform links its parent's transform.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

#include "tests/base/scene/scene_test_blocks.h"

namespace Orlo {
namespace {

using testing::FixedMatrixController;
using testing::TestMaterial;
using testing::TestObject;

constexpr int kDepth = 100000;

// An object that counts its builds and deletions in counters shared by the whole chain.
class ChainObject : public TestObject {
 public:
  ChainObject(int* built, int* deleted) : m_built(built), m_deleted(deleted) {}
  Object* BuildObject(int, Node*) override {
    ++*m_built;
    return nullptr;
  }
  void DeleteThis() override {
    ++*m_deleted;
    delete this;
  }

 private:
  int* m_built;
  int* m_deleted;
};

// A small rotation, a scale close to 1 and a translation: multiplied 100,000 times, the
// products round differently at every level, so equal results are equal computations.
Matrix3<double> LevelMatrix(int i) {
  Matrix3<double> m;
  m.FromEulerAnglesXYZ(0.001 * (i % 5), 0.002 * (i % 3), 0.0005 * (i % 7));
  const double scale = 1.0 + 1e-6 * (i % 11);
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) m.m[r][c] *= scale;
  }
  m.SetRow(3, Point3<double>(0.01 * (i % 13), 1.0, -0.5));
  return m;
}

// A scene whose main node holds one chain of kDepth light nodes (a transform with a fixed
// matrix, an object, a name, no parameter table), node_0 at the top.
//
// The chain is built from the bottom up: each node is attached to its parent before the parent
// is attached, so each link's cycle tests meet a parent that nothing holds yet, and the events
// a link posts stop at once; the whole build is linear in the chain.
struct ChainScene {
  ChainScene() {
    SceneEngine::SetScene(&engine);
    engine.InitScene();
    nodes.reserve(kDepth);
    for (int i = 0; i < kDepth; ++i) {
      auto* node = new Node(false);
      node->SetName("node_" + std::to_string(i));
      auto* transform = new NodeTransform(false);
      EXPECT_TRUE(transform->SetNodePRS(new FixedMatrixController(LevelMatrix(i))).IsOk());
      EXPECT_TRUE(node->SetNodeTransform(transform).IsOk());
      EXPECT_TRUE(node->SetObject(new ChainObject(&built, &deleted)).IsOk());
      nodes.push_back(node);
    }
    for (int i = kDepth - 1; i > 0; --i) EXPECT_TRUE(nodes[i - 1]->AddChild(nodes[i]).IsOk());
    EXPECT_TRUE(engine.GetMainNode()->AddChild(nodes[0]).IsOk());
    SceneEngine::SetScene(nullptr);
  }

  SceneEngine engine;
  std::vector<Node*> nodes;
  int built = 0;
  int deleted = 0;
  // Set by a test that takes the chain apart: the next test that needs it gets a new one.
  bool consumed = false;
};

// One chain serves every test of the suite: building and releasing it is what costs, above all
// under the sanitizers. The tests leave it as they found it, except the deletion test, which
// takes it apart and stands last in this file; should a runner order another test after it,
// that test gets a new chain.
class SceneDeepTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { s_scene = new ChainScene(); }
  static void TearDownTestSuite() { DeleteChain(); }
  void SetUp() override {
    SceneEngine::SetScene(&engine);
    s_scene->built = 0;
  }
  void TearDown() override { SceneEngine::SetScene(nullptr); }

  static void DeleteChain() {
    SceneEngine::SetScene(&s_scene->engine);
    delete s_scene;
    s_scene = nullptr;
    SceneEngine::SetScene(nullptr);
  }
  // The shared chain, built again when a test has taken it apart.
  static ChainScene& SharedChain() {
    if (s_scene->consumed) {
      DeleteChain();
      s_scene = new ChainScene();
    }
    return *s_scene;
  }

  static ChainScene* s_scene;
  ChainScene& scene = SharedChain();
  SceneEngine& engine = scene.engine;
};

ChainScene* SceneDeepTest::s_scene = nullptr;

TEST_F(SceneDeepTest, NumberingGivesEveryBlockOneNumberInPreOrder) {
  engine.InitBlocks(engine.GetMainScene());
  engine.SetBlockIDs();
  const int count = engine.GetNumBlocks();
  // The main scene, its main node with its blocks, and per node of the chain the node, its
  // children table (all but the deepest), its transform, controller and object.
  ASSERT_GT(count, 4 * kDepth);
  EXPECT_EQ(engine.GetMainScene()->GetID(), 0u);
  // The pre-order enters node i + 1 (through node i's children table) before node i's
  // transform, so the nodes are numbered going down and their transforms coming back up.
  for (int i = 1; i < kDepth; ++i) {
    ASSERT_GT(scene.nodes[i]->GetID(), scene.nodes[i - 1]->GetID()) << i;
    ASSERT_LT(scene.nodes[i]->GetID(), static_cast<std::uint32_t>(count));
  }
  EXPECT_GT(scene.nodes[0]->GetNodeTransform()->GetID(),
            scene.nodes[1]->GetNodeTransform()->GetID());
  EXPECT_GT(scene.nodes[kDepth - 2]->GetNodeTransform()->GetID(),
            scene.nodes[kDepth - 1]->GetNodeTransform()->GetID());

  engine.InitBlocks(engine.GetMainScene());
  EXPECT_EQ(engine.GetMainScene()->GetID(), Block::kNoID);
  for (Node* node : scene.nodes) {
    ASSERT_EQ(node->GetID(), Block::kNoID);
    ASSERT_EQ(node->GetNodeTransform()->GetID(), Block::kNoID);
  }
}

TEST_F(SceneDeepTest, SavingWritesEveryBlock) {
  // The content is checked on small scenes elsewhere; here the walk must finish and reach
  // every block, without a large file on disk.
  const Status status = engine.SaveScene("/dev/null");
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_GT(engine.GetNumBlocks(), 4 * kDepth);
  for (Node* node : scene.nodes) {
    ASSERT_EQ(node->GetSaved(), 1);
    ASSERT_EQ(node->GetNodeTransform()->GetSaved(), 1);
    ASSERT_EQ(node->GetNodeTransformController()->GetSaved(), 1);
    ASSERT_EQ(node->GetObject()->GetSaved(), 1);
  }
}

TEST_F(SceneDeepTest, GetAllChildrenNodesListsTheWholeChainInOrder) {
  std::vector<Node*> out;
  engine.GetAllChildrenNodes(engine.GetMainNode(), out);
  EXPECT_EQ(out, scene.nodes);
  out.clear();
  engine.GetAllSceneNodes(out);
  EXPECT_EQ(out, scene.nodes);
}

TEST_F(SceneDeepTest, GetNodeByNameFindsTheDeepestNode) {
  EXPECT_EQ(engine.GetNodeByName("node_99999"), scene.nodes.back());
  EXPECT_EQ(engine.GetNodeByName("node_0"), scene.nodes.front());
  EXPECT_EQ(engine.GetNodeByName("node_100000"), nullptr);
  EXPECT_TRUE(engine.DoesNodeExistsInScene(scene.nodes.back()));
}

TEST_F(SceneDeepTest, EvaluationBuildsEveryNodeOnce) {
  engine.EvaluateScene(0, false);
  EXPECT_EQ(scene.built, kDepth);
  engine.ReevaluateAllNodes(0);
  EXPECT_EQ(scene.built, 2 * kDepth);
  engine.EvaluateNode(scene.nodes[kDepth / 2], 0);
  EXPECT_EQ(scene.built, 2 * kDepth + kDepth / 2);
}

TEST_F(SceneDeepTest, TheWholeScenePassEqualsGetAbsoluteTMBitForBit) {
  std::vector<SceneEngine::NodeMatrix> out;
  engine.GetAbsoluteTMs(0, out);
  ASSERT_EQ(out.size(), static_cast<std::size_t>(kDepth) + 1);
  EXPECT_EQ(out[0].node, engine.GetMainNode());
  for (int i = 0; i < kDepth; ++i) ASSERT_EQ(out[i + 1].node, scene.nodes[i]) << i;
  // GetAbsoluteTM climbs the whole chain for each node: a sample keeps the test linear-ish,
  // the deepest node included.
  for (int i : {0, 1, 2, 999, 12345, 50000, 77777, kDepth - 2, kDepth - 1}) {
    const Matrix3<double> expected = scene.nodes[i]->GetAbsoluteTM(0);
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 3; ++c) ASSERT_EQ(out[i + 1].matrix.m[r][c], expected.m[r][c]) << i;
    }
  }
}

TEST_F(SceneDeepTest, SetParentPointerReachesTheDeepestNode) {
  engine.SetParentPointer(engine.GetMainNode());
  EXPECT_EQ(scene.nodes.back()->GetParent(), scene.nodes[kDepth - 2]);
  EXPECT_EQ(scene.nodes.front()->GetParent(), engine.GetMainNode());
}

TEST_F(SceneDeepTest, UpdateDataTablesRefreshesEachBlockOnceOnADeepChain) {
  // Every transform holds its parent's, so the transform at depth d is reached along
  // kDepth - d paths: once per path would be about five billion refreshes. The refresh then
  // visits each block once, the deepest included.
  Node* deepest = scene.nodes.back();
  auto* material = new TestMaterial("shared");
  ASSERT_TRUE(engine.GetMainNode()->SetMaterial(material).IsOk());
  ASSERT_TRUE(deepest->SetMaterial(material).IsOk());
  ASSERT_TRUE(deepest->SetDataTable(new DataTable(true)).IsOk());
  deepest->UpdateDataTable(true);
  ASSERT_TRUE(deepest->GetDataTable()->SetDataName(Node::kFreezeID, "renamed"));
  engine.UpdateDataTables();
  EXPECT_EQ(material->table_updates, 1);
  EXPECT_EQ(deepest->GetDataTable()->GetDataName(Node::kFreezeID), "freeze");
  // Put the chain back as it was.
  ASSERT_TRUE(deepest->SetDataTable(nullptr).IsOk());
  ASSERT_TRUE(deepest->SetMaterial(nullptr).IsOk());
  ASSERT_TRUE(engine.GetMainNode()->SetMaterial(nullptr).IsOk());
}

// Takes the shared chain apart: keep it last.
TEST_F(SceneDeepTest, DeleteNodeReleasesADeepHalfOfTheChainAndThenTheRest) {
  scene.consumed = true;
  const int deleted_before = scene.deleted;
  EXPECT_TRUE(engine.DeleteNode(scene.nodes[kDepth / 2]));
  EXPECT_EQ(scene.deleted - deleted_before, kDepth / 2);
  EXPECT_EQ(scene.nodes[kDepth / 2 - 1]->GetNumChildren(), 0);
  EXPECT_EQ(engine.GetNodeByName("node_50000"), nullptr);
  EXPECT_EQ(engine.GetNodeByName("node_49999"), scene.nodes[kDepth / 2 - 1]);
  EXPECT_TRUE(engine.DeleteNode(scene.nodes[0]));
  EXPECT_EQ(scene.deleted - deleted_before, kDepth);
  EXPECT_EQ(engine.GetMainNode()->GetNumChildren(), 0);
}

}  // namespace
}  // namespace Orlo
