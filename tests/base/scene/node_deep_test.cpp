// The walks that follow the node hierarchy keep explicit stacks or loops: a chain of 100,000
// nodes, far deeper than the call stack could follow recursively, is evaluated, listed,
// cloned, notified and released with the default stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::FixedMatrixController;
using testing::Holder;
using testing::RecordingListener;
using testing::ScopedBlock;
using testing::Translation;

constexpr int kDepth = 100000;

// A fixed translation by (1, 0, 0) that counts how many of its kind were deleted.
class CountedController : public FixedMatrixController {
 public:
  explicit CountedController(int* deleted)
      : FixedMatrixController(Translation(1, 0, 0)), m_deleted(deleted) {}
  Block* Clone() override { return new CountedController(m_deleted); }
  void DeleteThis() override {
    ++*m_deleted;
    delete this;
  }

 private:
  int* m_deleted;
};

// A chain root -> ... -> deepest of kDepth nodes, each with a transform whose controller
// moves it by (1, 0, 0), and the transforms chained as AddChild chains them.
//
// Built so that every step costs the same however long the chain is:
// - the nodes are attached from the top down, each before it has children, without
//   transforms yet: AddChild's first cycle test then walks only the fresh child;
// - the transforms are given afterwards, and linked to their parent transforms from the
//   bottom up, so that each link's cycle test meets a parent transform that has no parent yet.
// (Attaching nodes that already have transforms from the top down would make AddChild's second
// cycle test walk the whole chain of parent transforms above each new child.)
struct Chain {
  explicit Chain(int* deleted) {
    nodes.reserve(kDepth);
    nodes.push_back(new Node(false));
    holder.Hold(nodes.back());
    for (int i = 1; i < kDepth; ++i) {
      auto* child = new Node(false);
      EXPECT_TRUE(nodes.back()->AddChild(child).IsOk());
      nodes.push_back(child);
    }
    for (Node* node : nodes) {
      auto* transform = new NodeTransform(false);
      EXPECT_TRUE(transform->SetNodePRS(new CountedController(deleted)).IsOk());
      EXPECT_TRUE(node->SetNodeTransform(transform).IsOk());
    }
    for (int i = kDepth - 1; i > 0; --i) {
      EXPECT_TRUE(nodes[i]
                      ->GetNodeTransform()
                      ->SetParentTransform(nodes[i - 1]->GetNodeTransform())
                      .IsOk());
    }
  }
  Holder holder;
  std::vector<Node*> nodes;
};

int ChainLength(const NodeTransform* transform) {
  int length = 0;
  for (; transform != nullptr; transform = transform->GetParentTransform()) ++length;
  return length;
}

// One chain serves every test of the suite: building and releasing it is what costs, above all
// under the sanitizers. Tests that change it put it back as they found it, except the release
// test, which takes it apart and stands last in this file; should a runner order another test
// after it, that test gets a new chain.
class NodeDeepTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { s_chain = new Chain(&s_deleted); }
  static void TearDownTestSuite() {
    delete s_chain;
    s_chain = nullptr;
  }
  void SetUp() override { s_deleted = 0; }

  // The shared chain, built again when a test has taken it apart.
  static Chain& SharedChain() {
    if (s_consumed) {
      delete s_chain;
      s_chain = new Chain(&s_deleted);
      s_consumed = false;
    }
    return *s_chain;
  }

  static int s_deleted;
  static Chain* s_chain;
  static bool s_consumed;
  // Short names for the tests.
  Chain& chain = SharedChain();
  int& deleted = s_deleted;
};

int NodeDeepTest::s_deleted = 0;
Chain* NodeDeepTest::s_chain = nullptr;
bool NodeDeepTest::s_consumed = false;

TEST_F(NodeDeepTest, TheChainIsLinkedAsAddChildLinksIt) {
  Node* deepest = chain.nodes.back();
  EXPECT_EQ(deepest->GetParent(), chain.nodes[kDepth - 2]);
  EXPECT_EQ(chain.nodes[1]->GetParent(), chain.nodes[0]);
  EXPECT_EQ(ChainLength(deepest->GetNodeTransform()), kDepth);
}

TEST_F(NodeDeepTest, GetAbsoluteTMOfTheDeepestNodeMultipliesEveryLevel) {
  testing::ExpectMatrixEq(chain.nodes.back()->GetAbsoluteTM(0), Translation(kDepth, 0, 0));
  testing::ExpectMatrixEq(chain.nodes[kDepth / 2]->GetAbsoluteTM(0),
                          Translation(kDepth / 2 + 1, 0, 0));
}

TEST_F(NodeDeepTest, GetDecendantsOfTheRootListsTheWholeChainInOrder) {
  std::vector<Node*> out;
  chain.nodes.front()->GetDecendants(out);
  ASSERT_EQ(out.size(), static_cast<std::size_t>(kDepth - 1));
  EXPECT_TRUE(std::equal(out.begin(), out.end(), chain.nodes.begin() + 1));
}

TEST_F(NodeDeepTest, CloningTheDeepestTransformCopiesTheWholeChainOfParents) {
  {
    ScopedBlock<Block> clone(chain.nodes.back()->GetNodeTransform()->Clone());
    auto* copy = dynamic_cast<NodeTransform*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(ChainLength(copy), kDepth);
    EXPECT_NE(copy->GetParentTransform(), chain.nodes[kDepth - 2]->GetNodeTransform());
  }
  // Releasing the copy released every copied controller, and only those.
  EXPECT_EQ(deleted, kDepth);
}

TEST_F(NodeDeepTest, CloningTheDeepestNodeCopiesItsChainOfParentTransforms) {
  {
    ScopedBlock<Block> clone(chain.nodes.back()->Clone());
    auto* copy = dynamic_cast<Node*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(ChainLength(copy->GetNodeTransform()), kDepth);
    EXPECT_EQ(copy->GetParent(), nullptr);
  }
  EXPECT_EQ(deleted, kDepth);
}

TEST_F(NodeDeepTest, CloningTheDeepestNodeForEditingJoinsItsParent) {
  Node* deepest = chain.nodes.back();
  Node* copy = deepest->Clone(0, false);
  EXPECT_EQ(copy->GetParent(), chain.nodes[kDepth - 2]);
  // The copied chain of parent transforms was let go when the copy joined the parent.
  EXPECT_EQ(deleted, kDepth - 1);
  EXPECT_EQ(copy->GetNodeTransform()->GetParentTransform(),
            chain.nodes[kDepth - 2]->GetNodeTransform());
  testing::ExpectMatrixEq(copy->GetAbsoluteTM(0), Translation(kDepth, 0, 0));
  EXPECT_TRUE(chain.nodes[kDepth - 2]->RemoveChild(copy).IsOk());
  EXPECT_EQ(deleted, kDepth);
}

TEST_F(NodeDeepTest, ChangesRelayToTheirOwnNodeOnly) {
  Node* root = chain.nodes.front();
  Node* deepest = chain.nodes.back();
  RecordingListener root_listener;
  RecordingListener deepest_listener;
  root->AddBlockListener(&root_listener);
  deepest->AddBlockListener(&deepest_listener);
  root->GetNodeTransformController()->SetMatrix3(Translation(2, 0, 0), 0);
  deepest->GetNodeTransformController()->SetMatrix3(Translation(3, 0, 0), 0);
  deepest->SetName("deepest");
  ASSERT_EQ(root_listener.events.size(), 1u);
  EXPECT_EQ(root_listener.events[0].code, 13);
  ASSERT_EQ(deepest_listener.events.size(), 2u);
  EXPECT_EQ(deepest_listener.events[0].code, 13);
  EXPECT_EQ(deepest_listener.events[1].code, 3);
  root->RemoveBlockListener(&root_listener);
  deepest->RemoveBlockListener(&deepest_listener);
  testing::ExpectMatrixEq(deepest->GetAbsoluteTM(0), Translation(kDepth + 3, 0, 0));
  root->GetNodeTransformController()->SetMatrix3(Translation(1, 0, 0), 0);
  deepest->GetNodeTransformController()->SetMatrix3(Translation(1, 0, 0), 0);
  deepest->SetName("");
}

// Takes the shared chain apart: keep it last.
TEST_F(NodeDeepTest, RemovingTheTopChildReleasesTheWholeChainBelow) {
  s_consumed = true;
  Node* root = chain.nodes.front();
  EXPECT_TRUE(root->RemoveChild(chain.nodes[1]).IsOk());
  EXPECT_EQ(root->GetNumChildren(), 0);
  EXPECT_EQ(deleted, kDepth - 1);
}

}  // namespace
}  // namespace Orlo
