#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::Journal;
using testing::ScopedBlock;
using testing::TestBlock;
using testing::TestMaterial;

// A test block that logs its PostLoad calls and, when asked, links a new block into its last
// slot during its first PostLoad.
class PostLoadBlock : public TestBlock {
 public:
  PostLoadBlock(std::string name, int num_slots, Journal* journal)
      : TestBlock(std::move(name), num_slots, nullptr), m_journal(journal) {}

  int PostLoad() override {
    m_journal->Add("post-load " + Name());
    if (grow_on_post_load != nullptr) {
      PostLoadBlock* grown = grow_on_post_load;
      grow_on_post_load = nullptr;
      EXPECT_TRUE(MakeDependencyByID(NumDependencies() - 1, grown).IsOk());
    }
    return 1;
  }

  PostLoadBlock* grow_on_post_load = nullptr;

 private:
  Journal* m_journal;
};

// Every block reachable from `root`, each once: the reference count for the numbering.
std::set<const Block*> Reachable(const Block* root) {
  std::set<const Block*> seen{root};
  std::vector<const Block*> stack{root};
  while (!stack.empty()) {
    const Block* block = stack.back();
    stack.pop_back();
    for (int i = 0; i < block->NumDependencies(); ++i) {
      const Block* dependency = block->GetDependency(i);
      if (dependency != nullptr && seen.insert(dependency).second) stack.push_back(dependency);
    }
  }
  return seen;
}

// The first-visit pre-order of the blocks below `root`, written recursively: the reference
// for the work-stack walks. Small graphs only.
void ReferencePreOrder(Block* block, std::set<Block*>& seen, std::vector<Block*>& out) {
  if (!seen.insert(block).second) return;
  out.push_back(block);
  for (int i = 0; i < block->NumDependencies(); ++i) {
    if (Block* dependency = block->GetDependency(i)) ReferencePreOrder(dependency, seen, out);
  }
}

class SceneNumberingTest : public ::testing::Test {
 protected:
  void SetUp() override { engine.InitScene(); }
  void TearDown() override { SceneEngine::SetScene(nullptr); }

  SceneEngine engine;
};

TEST_F(SceneNumberingTest, TheMainSceneIsNumberedZeroAndTheCountIsTheDistinctReachableBlocks) {
  engine.InitBlocks(engine.GetMainScene());
  engine.SetBlockIDs();
  EXPECT_EQ(engine.GetMainScene()->GetID(), 0u);
  const std::set<const Block*> reachable = Reachable(engine.GetMainScene());
  EXPECT_EQ(engine.GetNumBlocks(), static_cast<int>(reachable.size()));
  std::set<std::uint32_t> numbers;
  for (const Block* block : reachable) numbers.insert(block->GetID());
  ASSERT_EQ(numbers.size(), reachable.size());
  EXPECT_EQ(*numbers.begin(), 0u);
  EXPECT_EQ(*numbers.rbegin(), static_cast<std::uint32_t>(reachable.size() - 1));
}

TEST_F(SceneNumberingTest, NumbersFollowThePreOrderOfTheSlots) {
  Node* a = new Node(true);
  Node* b = new Node(true);
  ASSERT_TRUE(a->AddChild(b).IsOk());
  ASSERT_TRUE(engine.GetMainNode()->AddChild(a).IsOk());
  auto* shared = new TestMaterial("shared");
  ASSERT_TRUE(a->SetMaterial(shared).IsOk());
  ASSERT_TRUE(b->SetMaterial(shared).IsOk());

  engine.InitBlocks(engine.GetMainScene());
  engine.SetBlockIDs();

  std::set<Block*> seen;
  std::vector<Block*> order;
  ReferencePreOrder(engine.GetMainScene(), seen, order);
  ASSERT_EQ(engine.GetNumBlocks(), static_cast<int>(order.size()));
  for (std::size_t k = 0; k < order.size(); ++k) {
    EXPECT_EQ(order[k]->GetID(), k) << order[k]->GetClassName();
  }
}

TEST_F(SceneNumberingTest, SetBlockIDsTwiceWithoutInitBlocksKeepsTheNumbersAndCountsZero) {
  engine.InitBlocks(engine.GetMainScene());
  engine.SetBlockIDs();
  const int count = engine.GetNumBlocks();
  ASSERT_GT(count, 1);
  std::vector<std::uint32_t> before;
  std::set<Block*> seen;
  std::vector<Block*> order;
  ReferencePreOrder(engine.GetMainScene(), seen, order);
  for (Block* block : order) before.push_back(block->GetID());

  engine.SetBlockIDs();

  EXPECT_EQ(engine.GetNumBlocks(), 0);
  for (std::size_t k = 0; k < order.size(); ++k) EXPECT_EQ(order[k]->GetID(), before[k]);
}

TEST_F(SceneNumberingTest, ABlockSharedByTwoParentsGetsOneNumberAtItsFirstVisit) {
  // root holds a and b; a and b both hold shared.
  ScopedBlock<TestBlock> root(new TestBlock("root", 2));
  auto* a = new TestBlock("a", 1);
  auto* b = new TestBlock("b", 1);
  auto* shared = new TestBlock("shared", 0);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, b).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, shared).IsOk());
  ASSERT_TRUE(b->MakeDependencyByID(0, shared).IsOk());
  engine.InitBlocks(root.get());

  int next_id = 5;
  engine.SetIDToBlock(root.get(), next_id);

  EXPECT_EQ(root->GetID(), 5u);
  EXPECT_EQ(a->GetID(), 6u);
  EXPECT_EQ(shared->GetID(), 7u);
  EXPECT_EQ(b->GetID(), 8u);
  EXPECT_EQ(next_id, 9);
}

TEST_F(SceneNumberingTest, SetIDToBlockLeavesANumberedBlockAndItsSubtreeAlone) {
  ScopedBlock<TestBlock> root(new TestBlock("root", 2));
  auto* numbered = new TestBlock("numbered", 1);
  auto* below = new TestBlock("below", 0);
  auto* fresh = new TestBlock("fresh", 0);
  ASSERT_TRUE(root->MakeDependencyByID(0, numbered).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, fresh).IsOk());
  ASSERT_TRUE(numbered->MakeDependencyByID(0, below).IsOk());
  numbered->SetID(40);

  int next_id = 0;
  engine.SetIDToBlock(root.get(), next_id);

  EXPECT_EQ(root->GetID(), 0u);
  EXPECT_EQ(numbered->GetID(), 40u);
  EXPECT_EQ(below->GetID(), Block::kNoID);
  EXPECT_EQ(fresh->GetID(), 1u);
  EXPECT_EQ(next_id, 2);

  int untouched = 7;
  engine.SetIDToBlock(numbered, untouched);
  EXPECT_EQ(untouched, 7);
  engine.SetIDToBlock(nullptr, untouched);
  EXPECT_EQ(untouched, 7);
}

TEST_F(SceneNumberingTest, InitBlocksResetsEveryReachableBlockAndNothingElse) {
  ScopedBlock<TestBlock> root(new TestBlock("root", 2));
  auto* a = new TestBlock("a", 1);
  auto* shared = new TestBlock("shared", 1);
  auto* leaf = new TestBlock("leaf", 0);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, shared).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, shared).IsOk());
  ASSERT_TRUE(shared->MakeDependencyByID(0, leaf).IsOk());
  ScopedBlock<TestBlock> outside(new TestBlock("outside", 0));
  // Numbers that collide with the positions the walk gives, and marks of every kind.
  root->SetID(2);
  a->SetID(0);
  a->SetSaved(1);
  shared->SetID(1);
  shared->SetSaved(-3);
  leaf->SetID(Block::kNoID);
  leaf->SetSaved(5);
  outside->SetID(3);
  outside->SetSaved(1);

  engine.InitBlocks(root.get());

  for (Block* block : {static_cast<Block*>(root.get()), static_cast<Block*>(a),
                       static_cast<Block*>(shared), static_cast<Block*>(leaf)}) {
    EXPECT_EQ(block->GetID(), Block::kNoID);
    EXPECT_EQ(block->GetSaved(), 0);
  }
  EXPECT_EQ(outside->GetID(), 3u);
  EXPECT_EQ(outside->GetSaved(), 1);
  engine.InitBlocks(nullptr);
}

TEST_F(SceneNumberingTest, TheWalksStopAtACycleLeftInRawSlots) {
  // root -> a -> b, and b's raw slot points back at a: a cycle no link would have made.
  ScopedBlock<TestBlock> root(new TestBlock("root", 1));
  auto* a = new TestBlock("a", 1);
  auto* b = new TestBlock("b", 1);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, b).IsOk());
  b->SetDependency(0, a);

  engine.InitBlocks(root.get());
  int next_id = 0;
  engine.SetIDToBlock(root.get(), next_id);
  EXPECT_EQ(next_id, 3);
  EXPECT_EQ(b->GetID(), 2u);

  engine.InitBlocks(root.get());
  std::vector<Block*> listed;
  int counter = 0;
  engine.EnumBlock(root.get(), counter, listed);
  EXPECT_EQ(listed, (std::vector<Block*>{root.get(), a, b}));
  b->SetDependency(0, nullptr);
}

TEST_F(SceneNumberingTest, EnumBlocksListsASharedBlockOncePerPathInPreOrder) {
  Node* first = new Node(true);
  Node* second = new Node(true);
  ASSERT_TRUE(engine.GetMainNode()->AddChild(first).IsOk());
  ASSERT_TRUE(engine.GetMainNode()->AddChild(second).IsOk());
  auto* shared = new TestMaterial("shared");
  ASSERT_TRUE(first->SetMaterial(shared).IsOk());
  ASSERT_TRUE(second->SetMaterial(shared).IsOk());

  std::vector<Block*> listed{nullptr};  // appended to, not cleared
  engine.EnumBlocks(listed);

  ASSERT_GE(listed.size(), 2u);
  EXPECT_EQ(listed[0], nullptr);
  EXPECT_EQ(listed[1], engine.GetMainScene());
  int shared_entries = 0;
  for (Block* block : listed) shared_entries += block == shared ? 1 : 0;
  EXPECT_EQ(shared_entries, 2);
  // Nothing was numbered or marked by the listing.
  EXPECT_EQ(engine.GetMainScene()->GetID(), Block::kNoID);
  EXPECT_EQ(shared->GetID(), Block::kNoID);
}

TEST_F(SceneNumberingTest, EnumBlockListsEveryPathInPreOrderAndLeavesTheCounterAlone) {
  //  root -> a -> shared, root -> shared, root -> numbered -> hidden
  ScopedBlock<TestBlock> root(new TestBlock("root", 3));
  auto* a = new TestBlock("a", 1);
  auto* shared = new TestBlock("shared", 0);
  auto* numbered = new TestBlock("numbered", 1);
  auto* hidden = new TestBlock("hidden", 0);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, shared).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(2, numbered).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, shared).IsOk());
  ASSERT_TRUE(numbered->MakeDependencyByID(0, hidden).IsOk());
  engine.InitBlocks(root.get());
  numbered->SetID(9);

  std::vector<Block*> listed;
  int counter = 17;
  engine.EnumBlock(root.get(), counter, listed);

  EXPECT_EQ(listed, (std::vector<Block*>{root.get(), a, shared, shared}));
  EXPECT_EQ(counter, 17);
  EXPECT_EQ(shared->GetID(), Block::kNoID);
  EXPECT_EQ(shared->GetSaved(), 0);
}

TEST_F(SceneNumberingTest, CallPostLoadVisitsEveryPathInPreOrder) {
  Journal journal;
  ScopedBlock<PostLoadBlock> root(new PostLoadBlock("root", 2, &journal));
  auto* a = new PostLoadBlock("a", 1, &journal);
  auto* shared = new PostLoadBlock("shared", 0, &journal);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, shared).IsOk());
  ASSERT_TRUE(a->MakeDependencyByID(0, shared).IsOk());

  engine.CallPostLoad(root.get());
  engine.CallPostLoad(nullptr);

  EXPECT_EQ(journal.entries, (std::vector<std::string>{"post-load root", "post-load a",
                                                       "post-load shared", "post-load shared"}));
}

TEST_F(SceneNumberingTest, CallPostLoadVisitsADependencyThatAPostLoadAdds) {
  Journal journal;
  ScopedBlock<PostLoadBlock> root(new PostLoadBlock("root", 2, &journal));
  auto* a = new PostLoadBlock("a", 0, &journal);
  ASSERT_TRUE(root->MakeDependencyByID(0, a).IsOk());
  auto* grown = new PostLoadBlock("grown", 0, &journal);
  root->grow_on_post_load = grown;

  engine.CallPostLoad(root.get());

  EXPECT_EQ(journal.entries,
            (std::vector<std::string>{"post-load root", "post-load a", "post-load grown"}));
}

// A block whose PostLoad links `block` into slot 1 of `target`.
class LinkingBlock : public PostLoadBlock {
 public:
  LinkingBlock(Journal* journal, Block* target, Block* block)
      : PostLoadBlock("linker", 0, journal), m_target(target), m_block(block) {}
  int PostLoad() override {
    PostLoadBlock::PostLoad();
    EXPECT_TRUE(m_target->MakeDependencyByID(1, m_block).IsOk());
    return 1;
  }

 private:
  Block* m_target;
  Block* m_block;
};

TEST_F(SceneNumberingTest, CallPostLoadVisitsASlotThatADescendantFilledDuringTheWalk) {
  Journal journal;
  ScopedBlock<PostLoadBlock> root(new PostLoadBlock("root", 2, &journal));
  auto* late = new PostLoadBlock("late", 0, &journal);
  ASSERT_TRUE(root->MakeDependencyByID(0, new LinkingBlock(&journal, root.get(), late)).IsOk());

  engine.CallPostLoad(root.get());

  EXPECT_EQ(journal.entries,
            (std::vector<std::string>{"post-load root", "post-load linker", "post-load late"}));
}

TEST_F(SceneNumberingTest, GetAllSceneNodesListsTheNodesBelowTheMainNodeInPreOrder) {
  Node* a = new Node(true);
  Node* a1 = new Node(true);
  Node* b = new Node(true);
  ASSERT_TRUE(a->AddChild(a1).IsOk());
  ASSERT_TRUE(engine.GetMainNode()->AddChild(a).IsOk());
  ASSERT_TRUE(engine.GetMainNode()->AddChild(b).IsOk());

  std::vector<Node*> nodes{nullptr};
  engine.GetAllSceneNodes(nodes);

  EXPECT_EQ(nodes, (std::vector<Node*>{nullptr, a, a1, b}));
}

TEST_F(SceneNumberingTest, AnEmptySceneHasNoSceneNodes) {
  std::vector<Node*> nodes;
  engine.GetAllSceneNodes(nodes);
  EXPECT_TRUE(nodes.empty());
}

}  // namespace
}  // namespace Orlo
