#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

#include "tests/base/engine/engine_test_scene.h"
#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::ExpectMatrixEq;
using testing::LoggingObject;
using testing::ScopedBlock;
using testing::TestBlock;
using testing::TestMaterial;

// ---- Selection ----

class SelectionTest : public testing::EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    a = AddNode("a");
    b = AddNode("b");
    c = AddNode("c");
  }

  std::vector<Node*> Selection() {
    std::vector<Node*> out;
    for (unsigned i = 0; i < engine.GetNumSelectedNodes(); ++i) {
      out.push_back(engine.GetSelectedNode(i));
    }
    return out;
  }

  Node* a = nullptr;
  Node* b = nullptr;
  Node* c = nullptr;
};

TEST_F(SelectionTest, ANewEngineSelectsNothing) {
  EXPECT_EQ(engine.GetNumSelectedNodes(), 0u);
  EXPECT_EQ(engine.GetSelectedNode(0), nullptr);
}

TEST_F(SelectionTest, ModeZeroReplacesTheSelectionAndItsFlags) {
  std::vector<Node*> first{a, b};
  engine.SelectNodes(first, 0);
  EXPECT_EQ(Selection(), first);
  EXPECT_TRUE(a->IsSelected());
  EXPECT_TRUE(b->IsSelected());
  std::vector<Node*> second{c};
  engine.SelectNodes(second, 0);
  EXPECT_EQ(Selection(), second);
  EXPECT_FALSE(a->IsSelected());
  EXPECT_FALSE(b->IsSelected());
  EXPECT_TRUE(c->IsSelected());
}

TEST_F(SelectionTest, ModeZeroCopiesTheGivenList) {
  std::vector<Node*> nodes{a};
  engine.SelectNodes(nodes, 0);
  nodes.push_back(b);
  EXPECT_EQ(engine.GetNumSelectedNodes(), 1u);
}

TEST_F(SelectionTest, ModeOneAppendsAndKeepsDuplicates) {
  std::vector<Node*> first{a, b};
  engine.SelectNodes(first, 0);
  std::vector<Node*> more{a, c};
  engine.SelectNodes(more, 1);
  EXPECT_EQ(Selection(), (std::vector<Node*>{a, b, a, c}));
  EXPECT_EQ(engine.GetNumSelectedNodes(), 4u);
  EXPECT_TRUE(a->IsSelected());
  EXPECT_TRUE(c->IsSelected());
}

TEST_F(SelectionTest, ModeTwoRemovesEveryEqualEntryAndKeepsTheOrderOfTheRest) {
  std::vector<Node*> all{a, b, a, c, b};
  engine.SelectNodes(all, 0);
  std::vector<Node*> remove{a, MainNode()};
  engine.SelectNodes(remove, 2);
  EXPECT_EQ(Selection(), (std::vector<Node*>{b, c, b}));
  EXPECT_FALSE(a->IsSelected());
  EXPECT_TRUE(b->IsSelected());
  EXPECT_TRUE(c->IsSelected());
  EXPECT_FALSE(MainNode()->IsSelected());
}

TEST_F(SelectionTest, ModeTwoWithNoNodesKeepsTheSelectionButMarksItAgain) {
  std::vector<Node*> nodes{a, b};
  engine.SelectNodes(nodes, 0);
  a->SetSelected(false);
  std::vector<Node*> none;
  engine.SelectNodes(none, 2);
  EXPECT_EQ(Selection(), nodes);
  EXPECT_TRUE(a->IsSelected());
  EXPECT_TRUE(b->IsSelected());
}

TEST_F(SelectionTest, AnUnknownModeKeepsTheSelectionAndMarksItAgain) {
  std::vector<Node*> nodes{b};
  engine.SelectNodes(nodes, 0);
  b->SetSelected(false);
  std::vector<Node*> other{a, c};
  engine.SelectNodes(other, 3);
  engine.SelectNodes(other, -1);
  EXPECT_EQ(Selection(), nodes);
  EXPECT_TRUE(b->IsSelected());
  EXPECT_FALSE(a->IsSelected());
  EXPECT_FALSE(c->IsSelected());
}

TEST_F(SelectionTest, GetSelectedNodeOfAnIndexAtOrPastTheCountIsNull) {
  std::vector<Node*> nodes{a, b};
  engine.SelectNodes(nodes, 0);
  EXPECT_EQ(engine.GetSelectedNode(1), b);
  EXPECT_EQ(engine.GetSelectedNode(2), nullptr);
  EXPECT_EQ(engine.GetSelectedNode(~0u), nullptr);
}

TEST_F(SelectionTest, ANullEntryIsKeptButNeverMarked) {
  std::vector<Node*> nodes{nullptr, a};
  engine.SelectNodes(nodes, 0);
  EXPECT_EQ(engine.GetNumSelectedNodes(), 2u);
  EXPECT_EQ(engine.GetSelectedNode(0), nullptr);
  EXPECT_TRUE(a->IsSelected());
  // Removing goes through null marks: a null entry goes whatever is removed.
  std::vector<Node*> remove{c};
  engine.SelectNodes(remove, 2);
  EXPECT_EQ(Selection(), (std::vector<Node*>{a}));
}

// ---- Evaluation ----

class EvaluationTest : public testing::EngineTest {
 protected:
  // A node named `name` under `parent` whose object logs its builds.
  Node* AddLogged(const char* name, Node* parent = nullptr) {
    auto* object = new LoggingObject(&log);
    Node* node = engine.CreateObjectNode(object, Point3<double>(), name);
    if (parent != nullptr) {
      EXPECT_TRUE(engine.SetParent(parent, node).IsOk());
    }
    objects.push_back(object);
    return node;
  }

  std::vector<std::string> log;
  std::vector<LoggingObject*> objects;
};

TEST_F(EvaluationTest, EvaluateNodeBuildsTheNodeThenItsDescendantsInPreOrder) {
  Node* a = AddLogged("a");
  AddLogged("a1", a);
  Node* a2 = AddLogged("a2", a);
  AddLogged("a2x", a2);
  AddLogged("b");
  engine.EvaluateNode(a, 7);
  EXPECT_EQ(log, (std::vector<std::string>{"a@7", "a1@7", "a2@7", "a2x@7"}));
  log.clear();
  engine.EvaluateNode(MainNode(), 3);
  EXPECT_EQ(log, (std::vector<std::string>{"a@3", "a1@3", "a2@3", "a2x@3", "b@3"}));
}

TEST_F(EvaluationTest, EvaluateNodeReadsTheChildCountAgainAfterEachChild) {
  Node* a = AddLogged("a");
  AddLogged("b");
  // Building a adds a node under the main node, after b: the walk still reaches it.
  objects[0]->first_build = [this] { AddLogged("late"); };
  engine.EvaluateNode(MainNode(), 0);
  EXPECT_EQ(log, (std::vector<std::string>{"a@0", "b@0", "late@0"}));
  (void)a;
}

TEST_F(EvaluationTest, EvaluateNodeOfNullDoesNothing) {
  AddLogged("a");
  engine.EvaluateNode(nullptr, 0);
  EXPECT_TRUE(log.empty());
}

TEST_F(EvaluationTest, EvaluateSceneEvaluatesFromTheMainNodeWhateverTheFlag) {
  Node* a = AddLogged("a");
  AddLogged("a1", a);
  engine.EvaluateScene(5, true);
  engine.EvaluateScene(6, false);
  EXPECT_EQ(log, (std::vector<std::string>{"a@5", "a1@5", "a@6", "a1@6"}));
}

TEST_F(EvaluationTest, EvaluateSceneBuildsTheMainNodesOwnObject) {
  auto* object = new LoggingObject(&log);
  ASSERT_TRUE(MainNode()->SetObject(object).IsOk());
  engine.EvaluateScene(1, false);
  EXPECT_EQ(log, (std::vector<std::string>{"MainNode@1"}));
}

TEST_F(EvaluationTest, ReevaluateAllNodesBuildsTheListTakenBeforeTheFirstBuild) {
  Node* a = AddLogged("a");
  AddLogged("a1", a);
  AddLogged("b");
  objects[0]->first_build = [this] { AddLogged("late"); };
  engine.ReevaluateAllNodes(2);
  EXPECT_EQ(log, (std::vector<std::string>{"a@2", "a1@2", "b@2"}));
  log.clear();
  engine.ReevaluateAllNodes(4);
  EXPECT_EQ(log, (std::vector<std::string>{"a@4", "a1@4", "b@4", "late@4"}));
}

TEST_F(EvaluationTest, ReevaluateAllNodesLeavesTheMainNodeOut) {
  ASSERT_TRUE(MainNode()->SetObject(new LoggingObject(&log)).IsOk());
  AddLogged("a");
  engine.ReevaluateAllNodes(0);
  EXPECT_EQ(log, (std::vector<std::string>{"a@0"}));
}

TEST(SceneEngineWithoutSceneTest, EvaluationAndTableRefreshDoNothing) {
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  engine.EvaluateScene(0, false);
  engine.ReevaluateAllNodes(0);
  engine.UpdateDataTables();
  std::vector<SceneEngine::NodeMatrix> out;
  engine.GetAbsoluteTMs(0, out);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(engine.GetNodeByName("MainNode"), nullptr);
  EXPECT_FALSE(engine.DoesNodeExistsInScene(nullptr));
  SceneEngine::SetScene(nullptr);
}

// ---- Absolute matrices of the whole scene ----

class AbsoluteTMsTest : public testing::EngineTest {
 protected:
  // Every entry equals GetAbsoluteTM of its node bit for bit, and the entries list the main
  // node, then the scene's nodes in pre-order.
  void ExpectSameAsGetAbsoluteTM(int time) {
    std::vector<SceneEngine::NodeMatrix> out;
    engine.GetAbsoluteTMs(time, out);
    std::vector<Node*> expected_nodes{MainNode()};
    engine.GetAllSceneNodes(expected_nodes);
    ASSERT_EQ(out.size(), expected_nodes.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
      ASSERT_EQ(out[i].node, expected_nodes[i]) << i;
      const Matrix3<double> expected = out[i].node->GetAbsoluteTM(time);
      for (int r = 0; r < 4; ++r) {
        for (int col = 0; col < 3; ++col) {
          // Bit for bit: not even a difference in the last place is allowed.
          ASSERT_EQ(out[i].matrix.m[r][col], expected.m[r][col]) << i << " " << r << "," << col;
        }
      }
    }
  }

  // A random tree of `count` nodes with random positions, rotations and scales, keyed at times
  // 0 and 10 so that time 5 interpolates. Node i hangs under a random earlier node or the main
  // node.
  void BuildRandomTree(unsigned seed, int count) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(-100.0, 100.0);
    std::uniform_real_distribution<double> angle(-3.2, 3.2);
    std::uniform_real_distribution<double> scale(0.1, 3.0);
    std::vector<Node*> nodes;
    for (int i = 0; i < count; ++i) {
      Node* node = engine.CreateEmptyNode(Point3<double>(), ("n" + std::to_string(i)).c_str());
      Matrix3Controller* controller = node->GetNodeTransformController();
      for (int time : {0, 10}) {
        controller->SetPosition(
            Point3<double>(coordinate(random), coordinate(random), coordinate(random)), time);
        controller->SetRotation(Point3<double>(angle(random), angle(random), angle(random)), time);
        controller->SetScale(Point3<double>(scale(random), scale(random), scale(random)), time);
      }
      std::uniform_int_distribution<int> pick(-1, i - 1);
      const int parent = pick(random);
      if (parent >= 0) {
        EXPECT_TRUE(engine.SetParent(nodes[parent], node).IsOk());
      }
      nodes.push_back(node);
    }
  }
};

TEST_F(AbsoluteTMsTest, OnRandomTreesEveryMatrixEqualsGetAbsoluteTMBitForBit) {
  for (unsigned seed : {1u, 2u, 3u, 4u, 5u}) {
    engine.InitScene();
    BuildRandomTree(seed, 300);
    for (int time : {0, 5, 10, 20}) ExpectSameAsGetAbsoluteTM(time);
  }
}

TEST_F(AbsoluteTMsTest, TheMainNodesOwnTransformIsPartOfEveryMatrix) {
  MainNode()->GetNodeTransformController()->SetPosition(Point3<double>(100, 0, 0), 0);
  MainNode()->GetNodeTransformController()->SetScale(Point3<double>(2, 2, 2), 0);
  BuildRandomTree(9, 50);
  ExpectSameAsGetAbsoluteTM(0);
  std::vector<SceneEngine::NodeMatrix> out;
  engine.GetAbsoluteTMs(0, out);
  EXPECT_EQ(out[0].matrix.m[3][0], 100.0);
  EXPECT_EQ(out[0].matrix.m[0][0], 2.0);
}

TEST_F(AbsoluteTMsTest, NodesWithoutATransformCountAsTheIdentity) {
  Node* a = engine.CreateEmptyNode(testing::Translation(1, 2, 3), "a");
  auto* bare = new Node(false);
  ASSERT_TRUE(a->AddChild(bare).IsOk());
  Node* below = engine.CreateEmptyNode(testing::Translation(0, 0, 1), "below");
  ASSERT_TRUE(engine.SetParent(bare, below).IsOk());
  ExpectSameAsGetAbsoluteTM(0);
  std::vector<SceneEngine::NodeMatrix> out;
  engine.GetAbsoluteTMs(0, out);
  ASSERT_EQ(out.size(), 4u);
  ExpectMatrixEq(out[2].matrix, out[1].matrix);
}

TEST_F(AbsoluteTMsTest, ANodeWhoseParentPointerDisagreesStillGetsItsGetAbsoluteTM) {
  Node* a = engine.CreateEmptyNode(testing::Translation(5, 0, 0), "a");
  // Linked through the table only, as a file links it before the parent pointers are set:
  // GetAbsoluteTM then sees no parent, and so must the whole-scene pass.
  auto* loose = new Node(true);
  loose->GetNodeTransformController()->SetPosition(Point3<double>(0, 1, 0), 0);
  a->GetChildren()->PushBack(loose);
  ASSERT_EQ(loose->GetParent(), nullptr);
  ExpectSameAsGetAbsoluteTM(0);
  engine.SetParentPointer(MainNode());
  ExpectSameAsGetAbsoluteTM(0);
}

TEST_F(AbsoluteTMsTest, EntriesAreAppendedWithoutClearing) {
  AddNode("a");
  std::vector<SceneEngine::NodeMatrix> out(1, {nullptr, testing::Translation(9, 9, 9)});
  engine.GetAbsoluteTMs(0, out);
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0].node, nullptr);
  EXPECT_EQ(out[1].node, MainNode());
  EXPECT_EQ(out[2].node->GetName(), "a");
}

// ---- Parameter tables ----

// A block with plain slots that counts its table refreshes; the refresh can add a slot.
class RefreshCounter : public TestBlock {
 public:
  explicit RefreshCounter(std::string name, int num_slots = 2,
                          std::vector<std::string>* log = nullptr)
      : TestBlock(std::move(name), num_slots), m_log(log) {}
  void UpdateDataTable(bool create) override {
    ++refreshes;
    last_create = create;
    if (m_log != nullptr) m_log->push_back(Name());
    if (grow_on_refresh != nullptr) {
      Block* grown = grow_on_refresh;
      grow_on_refresh = nullptr;
      m_extra = true;
      (void)MakeDependencyByID(NumDependencies() - 1, grown);
    }
  }
  int NumDependencies() const override { return TestBlock::NumDependencies() + (m_extra ? 1 : 0); }
  void SetDependency(int index, Block* block) override {
    if (m_extra && index == TestBlock::NumDependencies()) {
      m_extra_slot = block;
      return;
    }
    TestBlock::SetDependency(index, block);
  }
  Block* GetDependency(int index) const override {
    if (m_extra && index == TestBlock::NumDependencies()) return m_extra_slot;
    return TestBlock::GetDependency(index);
  }

  int refreshes = 0;
  bool last_create = true;
  Block* grow_on_refresh = nullptr;

 private:
  std::vector<std::string>* m_log;
  bool m_extra = false;
  Block* m_extra_slot = nullptr;
};

class UpdateDataTablesTest : public testing::EngineTest {};

TEST_F(UpdateDataTablesTest, RefreshesEveryBlockInPreOrderWithFalse) {
  std::vector<std::string> log;
  auto* top = new RefreshCounter("top", 2, &log);
  auto* left = new RefreshCounter("left", 1, &log);
  auto* leaf = new RefreshCounter("leaf", 0, &log);
  auto* right = new RefreshCounter("right", 0, &log);
  ASSERT_TRUE(top->MakeDependencyByID(0, left).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(1, right).IsOk());
  ASSERT_TRUE(left->MakeDependencyByID(0, leaf).IsOk());
  ScopedBlock<RefreshCounter> hold(top);
  engine.UpdateDataTables(top);
  EXPECT_EQ(log, (std::vector<std::string>{"top", "left", "leaf", "right"}));
  EXPECT_FALSE(top->last_create);
  engine.UpdateDataTables(nullptr);
  EXPECT_EQ(log.size(), 4u);
}

TEST_F(UpdateDataTablesTest, ABlockReachedAlongTwoPathsIsRefreshedTwice) {
  auto* top = new RefreshCounter("top", 2);
  auto* shared = new RefreshCounter("shared", 0);
  ASSERT_TRUE(top->MakeDependencyByID(0, shared).IsOk());
  ASSERT_TRUE(top->MakeDependencyByID(1, shared).IsOk());
  ScopedBlock<RefreshCounter> hold(top);
  engine.UpdateDataTables(top);
  EXPECT_EQ(top->refreshes, 1);
  EXPECT_EQ(shared->refreshes, 2);
}

TEST_F(UpdateDataTablesTest, AMaterialSharedByTwoNodesIsRefreshedOncePerPath) {
  auto* material = new TestMaterial("shared");
  Node* a = AddNode("a");
  Node* b = AddNode("b");
  ASSERT_TRUE(a->SetMaterial(material).IsOk());
  ASSERT_TRUE(b->SetMaterial(material).IsOk());
  engine.UpdateDataTables();
  EXPECT_EQ(material->table_updates, 2);
}

TEST_F(UpdateDataTablesTest, SlotsAddedByABlocksOwnRefreshAreLeftForTheNextPass) {
  auto* top = new RefreshCounter("top", 0);
  auto* grown = new RefreshCounter("grown", 0);
  top->grow_on_refresh = grown;
  ScopedBlock<RefreshCounter> hold(top);
  engine.UpdateDataTables(top);
  ASSERT_EQ(top->GetDependency(0), grown);
  EXPECT_EQ(grown->refreshes, 0);
  engine.UpdateDataTables(top);
  EXPECT_EQ(grown->refreshes, 1);
}

TEST_F(UpdateDataTablesTest, ABlockAlreadyOnThePathIsNotEnteredAgain) {
  auto* top = new RefreshCounter("top", 1);
  auto* below = new RefreshCounter("below", 1);
  ASSERT_TRUE(top->MakeDependencyByID(0, below).IsOk());
  // A raw store closes a cycle that the graph's own operations would refuse.
  below->SetDependency(0, top);
  engine.UpdateDataTables(top);
  EXPECT_EQ(top->refreshes, 1);
  EXPECT_EQ(below->refreshes, 1);
  below->SetDependency(0, nullptr);
  top->DeleteThisBlock(true);
}

TEST_F(UpdateDataTablesTest, RepairsTheParameterTablesOfTheScene) {
  Node* a = AddNode("a");
  ASSERT_TRUE(a->GetDataTable()->SetDataName(Node::kHideID, "renamed"));
  ASSERT_TRUE(
      engine.GetMainScene()->GetDataTable()->SetDataName(MainScene::kBackgroundColorID, "renamed"));
  engine.UpdateDataTables();
  EXPECT_EQ(a->GetDataTable()->GetDataName(Node::kHideID), "hide");
  EXPECT_EQ(engine.GetMainScene()->GetDataTable()->GetDataName(MainScene::kBackgroundColorID),
            "background_color");
}

}  // namespace
}  // namespace Orlo
