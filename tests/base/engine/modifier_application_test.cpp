#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <boost/filesystem.hpp>

#include <orlo/base/block/block_listener.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/support/state_recorder.h>
#include <orlo/support/time_interval.h>

#include "tests/base/engine/undo_test_blocks.h"

namespace Orlo {
namespace {

using testing::LinkingModifier;
using testing::ProbeObject;
using testing::TestObjectModifier;

// The bits of an object's flags that let a modifier go on it.
constexpr int kFlagBit22 = 0x400000;
constexpr int kFlagBit23 = 0x800000;

// The node's object chain, top first.
std::vector<Object*> Chain(Node* node) {
  std::vector<Object*> chain;
  Object* element = node->GetObject();
  while (element != nullptr) {
    chain.push_back(element);
    if (!SceneEngine::IsObjectModifier(element)) break;
    element = static_cast<ObjectModifier*>(element)->GetObjectToModify();
  }
  return chain;
}

// Records the events a block delivers to its listeners.
class EventLog : public BlockListener {
 public:
  void OnBlockEvent(BlockEvent event) override { codes.push_back(event.code); }
  std::vector<int> codes;
};

class ModifierApplicationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    { SceneEngine cleanup; }
    SceneEngine::SetScene(&m_engine);
    m_engine.InitScene();
    m_node = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "node");
    m_object = new ProbeObject("object");
    ASSERT_TRUE(m_node->SetObject(m_object).IsOk());
  }
  void TearDown() override {
    m_engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
    { SceneEngine cleanup; }
  }

  // An object modifier of a new modifier, linked between the node and its object.
  ObjectModifier* InsertOnTop(Modifier** modifier_out = nullptr) {
    auto* modifier = new LinkingModifier();
    EXPECT_TRUE(m_engine.AddModifierToNodes({m_node}, {}, modifier, 0).IsOk());
    if (modifier_out != nullptr) *modifier_out = modifier;
    return m_engine.GetObjectModifier(m_node, modifier);
  }

  SceneEngine m_engine;
  Node* m_node = nullptr;
  ProbeObject* m_object = nullptr;
};

TEST_F(ModifierApplicationTest, WithNoObjectsGivenTheModifierGoesOnTopOfTheWholeChain) {
  ObjectModifier* lower = InsertOnTop();
  ASSERT_NE(lower, nullptr);
  Modifier* modifier = nullptr;
  ObjectModifier* upper = InsertOnTop(&modifier);
  ASSERT_NE(upper, nullptr);
  EXPECT_EQ(upper->GetModifier(), modifier);
  EXPECT_EQ(Chain(m_node), (std::vector<Object*>{upper, lower, m_object}));
}

TEST_F(ModifierApplicationTest, TheModifierGoesAboveTheGivenObjectAndTheModifiersAboveKeepState) {
  Modifier* active_modifier = nullptr;
  ObjectModifier* above = InsertOnTop(&active_modifier);
  Modifier* inactive_modifier = nullptr;
  ObjectModifier* top = InsertOnTop(&inactive_modifier);
  inactive_modifier->SetActive(false);
  // Results valid at time 0 only, so the build at time 5 goes down the whole chain instead of
  // taking the cached ones.
  static_cast<TestObjectModifier*>(above)->interval = TimeInterval(0, 0);
  static_cast<TestObjectModifier*>(top)->interval = TimeInterval(0, 0);

  auto* modifier = new LinkingModifier();
  ASSERT_TRUE(m_engine.AddModifierToNodes({m_node}, {m_object}, modifier, 5).IsOk());
  ObjectModifier* inserted = m_engine.GetObjectModifier(m_node, modifier);
  ASSERT_NE(inserted, nullptr);
  EXPECT_EQ(Chain(m_node), (std::vector<Object*>{top, above, inserted, m_object}));
  EXPECT_TRUE(active_modifier->IsActive());
  EXPECT_FALSE(inactive_modifier->IsActive());
  // The modifiers above were switched off for the build that decided the insertion.
  auto* above_stack = static_cast<TestObjectModifier*>(above);
  auto* top_stack = static_cast<TestObjectModifier*>(top);
  for (const std::string& entry : above_stack->log) EXPECT_NE(entry, "apply 5");
  for (const std::string& entry : top_stack->log) EXPECT_NE(entry, "apply 5");
  EXPECT_EQ(m_object->last_time, 5);
  // Switched back on, the modifier above applies again.
  (void)m_node->BuildObject(6);
  EXPECT_EQ(above_stack->log.back(), "apply 6");
}

TEST_F(ModifierApplicationTest, AnObjectOutsideTheChainPutsTheModifierNowhere) {
  auto* stranger = new ProbeObject("stranger");
  auto* modifier = new LinkingModifier();
  bool modifier_deleted = false;
  auto* probe_modifier = new LinkingModifier(&modifier_deleted);
  ASSERT_TRUE(m_engine.AddModifierToNodes({m_node}, {stranger}, probe_modifier, 0).IsOk());
  // The walk ended at the plain object, which cannot hold an object modifier: the chain is
  // unchanged and the unused object modifier is released with the modifier only it held.
  EXPECT_EQ(Chain(m_node), std::vector<Object*>{m_object});
  EXPECT_TRUE(modifier_deleted);
  stranger->DeleteThisBlock(true);
  modifier->DeleteThisBlock(true);
}

TEST_F(ModifierApplicationTest, EveryNodeCountButOneGivesCodeZeroAndChangesNothing) {
  Node* other = m_engine.CreateEmptyNode(Point3<double>(1.0, 0.0, 0.0), "other");
  auto* other_object = new ProbeObject("other object");
  ASSERT_TRUE(other->SetObject(other_object).IsOk());
  auto* modifier = new LinkingModifier();
  Status two = m_engine.AddModifierToNodes({m_node, other}, {}, modifier, 0);
  EXPECT_EQ(two.GetCode(), 0);
  EXPECT_EQ(two.GetMessage(), "");
  Status none = m_engine.AddModifierToNodes({}, {}, modifier, 0);
  EXPECT_EQ(none.GetCode(), 0);
  EXPECT_EQ(Chain(m_node), std::vector<Object*>{m_object});
  EXPECT_EQ(Chain(other), std::vector<Object*>{other_object});
  modifier->DeleteThisBlock(true);
}

TEST_F(ModifierApplicationTest, ANullNodeOrModifierIsRefusedWithItsMessage) {
  auto* modifier = new LinkingModifier();
  Status null_node = m_engine.AddModifierToNodes({nullptr}, {}, modifier, 0);
  EXPECT_EQ(null_node.GetCode(), 2);
  EXPECT_EQ(null_node.GetMessage(), "There should be at least one valid node.");
  Status null_modifier = m_engine.AddModifierToNodes({m_node}, {}, nullptr, 0);
  EXPECT_EQ(null_modifier.GetCode(), 2);
  EXPECT_EQ(null_modifier.GetMessage(), "Modifier can't be NULL.");
  EXPECT_EQ(Chain(m_node), std::vector<Object*>{m_object});
  modifier->DeleteThisBlock(true);
}

TEST_F(ModifierApplicationTest, AnObjectWithoutBit22Or23TakesNoModifier) {
  Node* plain = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "plain");
  auto* object = new ProbeObject("plain object", nullptr, 0x1);
  ASSERT_TRUE(plain->SetObject(object).IsOk());
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  auto* modifier = new LinkingModifier();
  Status status = m_engine.AddModifierToNodes({plain}, {}, modifier, 0);
  EXPECT_EQ(status.GetCode(), 0);
  EXPECT_EQ(Chain(plain), std::vector<Object*>{object});
  EXPECT_EQ(SceneEngine::GetStateRecorder()->NumPendingChanges(), 0u);
  SceneEngine::StateRecorderCancel();
  modifier->DeleteThisBlock(true);
}

TEST_F(ModifierApplicationTest, EitherFlagBitLetsTheModifierIn) {
  for (int flags : {kFlagBit22, kFlagBit23}) {
    Node* node = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "flagged");
    ASSERT_TRUE(node->SetObject(new ProbeObject("flagged object", nullptr, flags)).IsOk());
    auto* modifier = new LinkingModifier();
    ASSERT_TRUE(m_engine.AddModifierToNodes({node}, {}, modifier, 0).IsOk());
    EXPECT_NE(m_engine.GetObjectModifier(node, modifier), nullptr) << flags;
  }
}

TEST_F(ModifierApplicationTest, TheModifierTakesTheBuiltObjectsBoundingBox) {
  m_object->box = Box3<double>(Point3<double>(-4.0, 0.0, 1.0), Point3<double>(2.0, 3.0, 5.0));
  Modifier* modifier = nullptr;
  InsertOnTop(&modifier);
  EXPECT_EQ(modifier->GetBox(), m_object->box);
}

// Hands out object modifiers whose transform is not the identity.
class MovedStackModifier : public LinkingModifier {
 public:
  ObjectModifier* GetNewObjectModifier() override {
    ObjectModifier* object_modifier = LinkingModifier::GetNewObjectModifier();
    Matrix3<double> moved;
    moved.SetRow(3, Point3<double>(1.0, 2.0, 3.0));
    object_modifier->SetTransform(moved);
    return object_modifier;
  }
};

TEST_F(ModifierApplicationTest, BothFormsResetTheNewObjectModifiersTransform) {
  auto* modifier = new MovedStackModifier();
  ASSERT_TRUE(m_engine.AddModifierToNodes({m_node}, {}, modifier, 0).IsOk());
  ObjectModifier* inserted = m_engine.GetObjectModifier(m_node, modifier);
  ASSERT_NE(inserted, nullptr);
  testing::ExpectMatrixEq(inserted->GetTransform(), Matrix3<double>::Identity());

  auto* list_modifier = new MovedStackModifier();
  ASSERT_TRUE(m_engine.AddModifierToNodes({m_node}, list_modifier, 0));
  ObjectModifier* listed = m_engine.GetObjectModifier(m_node, list_modifier);
  ASSERT_NE(listed, nullptr);
  testing::ExpectMatrixEq(listed->GetTransform(), Matrix3<double>::Identity());
}

TEST_F(ModifierApplicationTest, AnInsertionRecordsTwoRelinkingsAndTellsTheNodesListeners) {
  EventLog listener;
  m_node->AddBlockListener(&listener);
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  InsertOnTop();
  EXPECT_EQ(SceneEngine::GetStateRecorder()->NumPendingChanges(), 2u);
  SceneEngine::StateRecorderAccept("add");
  EXPECT_FALSE(listener.codes.empty());
  EXPECT_EQ(listener.codes.back(), 2);
  m_node->RemoveBlockListener(&listener);
}

TEST_F(ModifierApplicationTest, WithoutARecorderTheLinksStillChange) {
  ASSERT_EQ(SceneEngine::GetStateRecorder(), nullptr);
  ObjectModifier* inserted = InsertOnTop();
  EXPECT_EQ(Chain(m_node), (std::vector<Object*>{inserted, m_object}));
}

TEST_F(ModifierApplicationTest, UndoAndRedoRestoreTheChainAboveAnObjectModifier) {
  ObjectModifier* above = InsertOnTop();
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  auto* modifier = new LinkingModifier();
  ASSERT_TRUE(m_engine.AddModifierToNodes({m_node}, {m_object}, modifier, 0).IsOk());
  SceneEngine::StateRecorderAccept("insert");
  ObjectModifier* inserted = m_engine.GetObjectModifier(m_node, modifier);
  ASSERT_NE(inserted, nullptr);

  SceneEngine::StateRecorderUndo();
  EXPECT_EQ(Chain(m_node), (std::vector<Object*>{above, m_object}));
  EXPECT_EQ(m_engine.GetObjectModifier(m_node, modifier), nullptr);
  EXPECT_EQ(inserted->GetObjectToModify(), nullptr);
  SceneEngine::StateRecorderRedo();
  EXPECT_EQ(Chain(m_node), (std::vector<Object*>{above, inserted, m_object}));
  // The node builds through the restored chain.
  EXPECT_EQ(m_node->BuildObject(1), m_object);
}

TEST_F(ModifierApplicationTest, UndoAndRedoAfterTheNodeWasDeletedChangeNothingAndTouchNoFreedBlock) {
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  auto* modifier = new LinkingModifier();
  ASSERT_TRUE(m_engine.AddModifierToNodes({m_node}, {}, modifier, 0).IsOk());
  SceneEngine::StateRecorderAccept("insert");
  ASSERT_TRUE(m_engine.DeleteNode(m_node));
  m_node = nullptr;

  // The records name blocks of the deleted node; they forgot them when they went.
  ASSERT_TRUE(SceneEngine::StateRecorderCanUndo());
  SceneEngine::StateRecorderUndo();
  SceneEngine::StateRecorderRedo();
  EXPECT_EQ(m_engine.GetMainNode()->GetNumChildren(), 0);
}

TEST_F(ModifierApplicationTest, GetObjectModifierIsNullWithoutAMatch) {
  auto* modifier = new LinkingModifier();
  EXPECT_EQ(m_engine.GetObjectModifier(nullptr, modifier), nullptr);
  EXPECT_EQ(m_engine.GetObjectModifier(m_node, modifier), nullptr);
  Node* empty = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "empty");
  EXPECT_EQ(m_engine.GetObjectModifier(empty, modifier), nullptr);
  InsertOnTop();
  EXPECT_EQ(m_engine.GetObjectModifier(m_node, modifier), nullptr);
  modifier->DeleteThisBlock(true);
}

TEST_F(ModifierApplicationTest, TheListFormPutsOneObjectModifierUnderEveryNode) {
  Node* moved = m_engine.CreateEmptyNode(Point3<double>(10.0, 0.0, 0.0), "moved");
  auto* moved_object = new ProbeObject("moved object");
  ASSERT_TRUE(moved->SetObject(moved_object).IsOk());
  SceneEngine::StateRecorderInit();
  SceneEngine::StateRecorderBegin();
  auto* modifier = new LinkingModifier();
  EXPECT_TRUE(m_engine.AddModifierToNodes({m_node, moved}, modifier, 0));
  EXPECT_EQ(SceneEngine::GetStateRecorder()->NumPendingChanges(), 4u);
  SceneEngine::StateRecorderAccept("add to both");
  ObjectModifier* first = m_engine.GetObjectModifier(m_node, modifier);
  ObjectModifier* second = m_engine.GetObjectModifier(moved, modifier);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(Chain(moved), (std::vector<Object*>{second, moved_object}));
  // Both boxes gathered in world space: (-1,-2,-3)..(1,2,3) and the same moved by 10 on x.
  EXPECT_EQ(modifier->GetBox(),
            Box3<double>(Point3<double>(-1.0, -2.0, -3.0), Point3<double>(11.0, 2.0, 3.0)));

  SceneEngine::StateRecorderUndo();
  EXPECT_EQ(Chain(m_node), std::vector<Object*>{m_object});
  EXPECT_EQ(Chain(moved), std::vector<Object*>{moved_object});
  SceneEngine::StateRecorderRedo();
  EXPECT_EQ(Chain(moved), (std::vector<Object*>{second, moved_object}));
}

TEST_F(ModifierApplicationTest, TheListFormAnswersFalseWhenANodesObjectTakesNoModifier) {
  Node* plain = m_engine.CreateEmptyNode(Point3<double>(0.0, 0.0, 0.0), "plain");
  auto* plain_object = new ProbeObject("plain object", nullptr, 0x1);
  ASSERT_TRUE(plain->SetObject(plain_object).IsOk());
  auto* modifier = new LinkingModifier();
  EXPECT_FALSE(m_engine.AddModifierToNodes({plain, m_node}, modifier, 0));
  EXPECT_EQ(Chain(plain), std::vector<Object*>{plain_object});
  EXPECT_NE(m_engine.GetObjectModifier(m_node, modifier), nullptr);
  EXPECT_FALSE(m_engine.AddModifierToNodes({m_node}, nullptr, 0));
}

// Random insertions, each its own recorded step, undone to the start and redone to the end,
// bring every node's chain back to the state before and after them.
TEST_F(ModifierApplicationTest, RandomInsertionsUndoneAndRedoneRestoreEveryChain) {
  std::vector<Node*> nodes{m_node};
  for (int i = 0; i < 3; ++i) {
    Node* node = m_engine.CreateEmptyNode(Point3<double>(i, 0.0, 0.0), "node");
    EXPECT_TRUE(node->SetObject(new ProbeObject("object")).IsOk());
    nodes.push_back(node);
  }
  auto chains = [&nodes]() {
    std::vector<std::vector<Object*>> all;
    for (Node* node : nodes) all.push_back(Chain(node));
    return all;
  };
  SceneEngine::StateRecorderInit();
  std::mt19937 random(20261123u);
  const auto before = chains();
  int steps = 0;
  for (int i = 0; i < 40; ++i) {
    Node* node = nodes[random() % nodes.size()];
    std::vector<Object*> chain = Chain(node);
    std::vector<Object*> objects;
    if (random() % 2 == 0) objects.push_back(chain[random() % chain.size()]);
    SceneEngine::StateRecorderBegin();
    if (random() % 3 == 0) {
      ASSERT_TRUE(m_engine.AddModifierToNodes({nodes[0], nodes[1]}, new LinkingModifier(), 0));
    } else {
      ASSERT_TRUE(m_engine.AddModifierToNodes({node}, objects, new LinkingModifier(), 0).IsOk());
    }
    SceneEngine::StateRecorderAccept("insert");
    ++steps;
  }
  const auto after = chains();
  ASSERT_NE(before, after);
  for (int i = 0; i < steps; ++i) SceneEngine::StateRecorderUndo();
  EXPECT_FALSE(SceneEngine::StateRecorderCanUndo());
  EXPECT_EQ(chains(), before);
  for (int i = 0; i < steps; ++i) SceneEngine::StateRecorderRedo();
  EXPECT_FALSE(SceneEngine::StateRecorderCanRedo());
  EXPECT_EQ(chains(), after);
  for (Node* node : nodes) EXPECT_EQ(node->BuildObject(0), Chain(node).back());
}

// The scene as saved to a file in a fresh temporary directory, byte for byte.
class SavedScene {
 public:
  SavedScene()
      : m_dir(boost::filesystem::temp_directory_path() /
              boost::filesystem::unique_path("orlo-undo-%%%%-%%%%-%%%%")) {
    boost::filesystem::create_directories(m_dir);
  }
  ~SavedScene() { boost::filesystem::remove_all(m_dir); }

  std::vector<char> Save(SceneEngine& engine, const std::string& name) {
    const std::string path = (m_dir / name).string();
    Status status = engine.SaveScene(path);
    EXPECT_TRUE(status.IsOk()) << status.GetMessage();
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

 private:
  boost::filesystem::path m_dir;
};

// Random insertions, each its own recorded step, into chains of named modifiers with random
// active states and boxes, some modifiers shared between nodes and one object shared between
// two nodes: undone to the start, the scene saves byte for byte as before them; redone to the
// end, byte for byte as after them. Repeated for several seeds.
TEST_F(ModifierApplicationTest, RandomInsertionsUndoneAndRedoneSaveTheSameFileAsBeforeAndAfter) {
  SavedScene saved;
  for (std::uint32_t seed : {1u, 2u, 3u, 4u, 5u}) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    m_engine.InitScene();
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
    std::vector<Node*> nodes;
    auto* shared_object = new ProbeObject("shared");
    for (int i = 0; i < 5; ++i) {
      Node* node = m_engine.CreateEmptyNode(
          Point3<double>(coordinate(random), coordinate(random), coordinate(random)),
          ("node" + std::to_string(i)).c_str());
      Object* object = i < 2 ? static_cast<Object*>(shared_object) : new ProbeObject("own");
      ASSERT_TRUE(node->SetObject(object).IsOk());
      if (i > 0 && random() % 2 == 0) {
        ASSERT_TRUE(nodes[random() % nodes.size()]->AddChild(node).IsOk());
      }
      nodes.push_back(node);
    }
    auto new_modifier = [&](int index) {
      auto* modifier = new LinkingModifier();
      modifier->SetName("modifier" + std::to_string(index));
      modifier->SetActive(random() % 4 != 0);
      return modifier;
    };
    SceneEngine::StateRecorderInit();
    SceneEngine::StateRecorderClear();
    const std::vector<char> before = saved.Save(m_engine, "before.scene");

    const int steps = 10 + static_cast<int>(random() % 20);
    for (int i = 0; i < steps; ++i) {
      SceneEngine::StateRecorderBegin();
      if (random() % 4 == 0) {
        std::vector<Node*> some{nodes[random() % nodes.size()], nodes[random() % nodes.size()]};
        if (some[0] == some[1]) some.pop_back();
        ASSERT_TRUE(m_engine.AddModifierToNodes(some, new_modifier(i), i));
      } else {
        Node* node = nodes[random() % nodes.size()];
        std::vector<Object*> chain = Chain(node);
        std::vector<Object*> objects;
        if (random() % 2 == 0) objects.push_back(chain[random() % chain.size()]);
        ASSERT_TRUE(m_engine.AddModifierToNodes({node}, objects, new_modifier(i), i).IsOk());
      }
      SceneEngine::StateRecorderAccept("insert");
    }
    const std::vector<char> after = saved.Save(m_engine, "after.scene");
    ASSERT_NE(before, after);

    while (SceneEngine::StateRecorderCanUndo()) SceneEngine::StateRecorderUndo();
    EXPECT_TRUE(saved.Save(m_engine, "undone.scene") == before);
    while (SceneEngine::StateRecorderCanRedo()) SceneEngine::StateRecorderRedo();
    EXPECT_TRUE(saved.Save(m_engine, "redone.scene") == after);
    // Half-way back and forth again: the ends stay the same.
    for (int i = 0; i < steps / 2; ++i) SceneEngine::StateRecorderUndo();
    for (int i = 0; i < steps / 2; ++i) SceneEngine::StateRecorderRedo();
    EXPECT_TRUE(saved.Save(m_engine, "again.scene") == after);
  }
}

}  // namespace
}  // namespace Orlo
