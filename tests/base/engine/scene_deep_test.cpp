// The engine's walks on a chain of 100,000 nodes, with the default thread stack: numbering,
// resetting and saving a scene must not recurse with its depth, and must stay linear although
// every node's transform links its parent's transform.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/base/engine/scene_engine.h>

#include "bench/scene_workload.h"

namespace Orlo {
namespace {

constexpr int kDepth = 100000;

// The chain is built once for the suite: building and releasing 100,000 default nodes is what
// takes the time, and the tests only read the scene or renumber it.
class SceneDeepTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    engine_holder = std::make_unique<SceneEngine>();
    engine = engine_holder.get();
    engine->InitScene();
    nodes_holder = std::make_unique<std::vector<Node*>>(
        bench::BuildSceneWorkload(engine, bench::WorkloadShape::kChain, kDepth));
    nodes = nodes_holder.get();
  }
  static void TearDownTestSuite() {
    nodes = nullptr;
    nodes_holder.reset();
    engine = nullptr;
    engine_holder.reset();
  }
  void TearDown() override { SceneEngine::SetScene(nullptr); }

  static std::unique_ptr<SceneEngine> engine_holder;
  static std::unique_ptr<std::vector<Node*>> nodes_holder;
  static SceneEngine* engine;
  static std::vector<Node*>* nodes;
};

std::unique_ptr<SceneEngine> SceneDeepTest::engine_holder;
std::unique_ptr<std::vector<Node*>> SceneDeepTest::nodes_holder;
SceneEngine* SceneDeepTest::engine = nullptr;
std::vector<Node*>* SceneDeepTest::nodes = nullptr;

TEST_F(SceneDeepTest, TheWorkloadBuildsAChainBelowTheMainNode) {
  ASSERT_EQ(nodes->size(), static_cast<std::size_t>(kDepth));
  EXPECT_EQ((*nodes)[0]->GetParent(), engine->GetMainNode());
  EXPECT_EQ((*nodes)[kDepth - 1]->GetParent(), (*nodes)[kDepth - 2]);
  EXPECT_EQ((*nodes)[kDepth - 1]->GetName(), "node_99999");
  EXPECT_EQ((*nodes)[kDepth - 1]->GetNodeTransform()->GetParentTransform(),
            (*nodes)[kDepth - 2]->GetNodeTransform());
  std::vector<Node*> all;
  engine->GetAllSceneNodes(all);
  EXPECT_EQ(all, *nodes);
}

TEST_F(SceneDeepTest, NumberingAChainGivesEveryBlockOneNumberInPreOrder) {
  engine->InitBlocks(engine->GetMainScene());
  engine->SetBlockIDs();
  // Each default node brings the same number of blocks, and the pre-order enters node i + 1
  // (through node i's children table) before node i's transform.
  const int count = engine->GetNumBlocks();
  ASSERT_GT(count, kDepth);
  EXPECT_EQ(engine->GetMainScene()->GetID(), 0u);
  for (int i = 1; i < kDepth; ++i) {
    ASSERT_GT((*nodes)[i]->GetID(), (*nodes)[i - 1]->GetID()) << i;
    ASSERT_LT((*nodes)[i]->GetID(), static_cast<std::uint32_t>(count));
  }
  // The transforms are numbered on the way back up, the deepest first.
  EXPECT_GT((*nodes)[0]->GetNodeTransform()->GetID(), (*nodes)[1]->GetNodeTransform()->GetID());

  engine->InitBlocks(engine->GetMainScene());
  EXPECT_EQ(engine->GetMainScene()->GetID(), Block::kNoID);
  for (Node* node : *nodes) {
    ASSERT_EQ(node->GetID(), Block::kNoID);
    ASSERT_EQ(node->GetNodeTransform()->GetID(), Block::kNoID);
  }
}

TEST_F(SceneDeepTest, SavingAChainWritesEveryBlock) {
  // The content is checked on small scenes elsewhere; here the walk must finish and reach
  // every block, without a file of several hundred megabytes on disk.
  const Status status = engine->SaveScene("/dev/null");
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_GT(engine->GetNumBlocks(), kDepth);
  for (Node* node : *nodes) {
    ASSERT_EQ(node->GetSaved(), 1);
    ASSERT_EQ(node->GetNodeTransform()->GetSaved(), 1);
    ASSERT_EQ(node->GetNodeTransformController()->GetSaved(), 1);
  }
}

}  // namespace
}  // namespace Orlo
