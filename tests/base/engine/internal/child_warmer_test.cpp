// The warmer that evaluation runs ahead of a batch of children reads their blocks and changes
// nothing, whatever the children table holds.
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/block_table.h>
#include <orlo/base/engine/internal/child_warmer.h>
#include <orlo/base/scene/node.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo::internal {
namespace {

TEST(ChildWarmerTest, ReadsEveryKindOfChildWithoutChangingOrTellingAnything) {
  testing::ScopedBlock<BlockTable> children(new BlockTable(true));
  std::vector<Node*> nodes;
  for (int i = 0; i < 2 * ChildWarmer::kBatch + 1; ++i) {
    nodes.push_back(new Node(true));
    children->PushBack(nodes.back());
  }
  // A node whose transform is driven by a host's controller, and a child that is no node.
  auto* host_controller = new testing::FixedMatrixController(Matrix3<double>::Identity());
  ASSERT_TRUE(nodes[3]->SetNodeTransformController(host_controller).IsOk());
  children->PushBack(new testing::TestBlock("not a node", 0));

  std::vector<Block*> before;
  for (Node* node : nodes) before.push_back(node->GetNodeTransformController());
  testing::RecordingListener listener;
  children->AddBlockListener(&listener);
  for (Node* node : nodes) node->AddBlockListener(&listener);

  ChildWarmer warmer;
  for (int from = 0; from < static_cast<int>(children->GetNumBlocks());
       from += ChildWarmer::kBatch) {
    warmer.Warm(*children, from);
  }

  EXPECT_TRUE(listener.events.empty());
  EXPECT_EQ(children->GetNumBlocks(), nodes.size() + 1);
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    EXPECT_EQ(children->GetBlock(static_cast<int>(i)), nodes[i]);
    EXPECT_EQ(nodes[i]->GetNodeTransformController(), before[i]);
  }
  for (Node* node : nodes) node->RemoveBlockListener(&listener);
  children->RemoveBlockListener(&listener);
}

}  // namespace
}  // namespace Orlo::internal
