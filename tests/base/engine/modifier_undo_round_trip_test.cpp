// Random sequences of modifier insertions, each bracketed by the recorder: undone to the start,
// the scene saves to the bytes it saved before them; redone to the end, to the bytes it saved
// after them.
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/object_modifier.h>

#include "tests/base/engine/undo_test_blocks.h"

namespace Orlo {
namespace {

using Bytes = std::vector<char>;
using testing::LinkingModifier;
using testing::ProbeObject;

class ModifierUndoRoundTripTest : public ::testing::Test {
 protected:
  void SetUp() override {
    { SceneEngine cleanup; }  // no recorder left by an earlier test
    SceneEngine::SetScene(&engine);
    directory = boost::filesystem::temp_directory_path() /
                boost::filesystem::unique_path("orlo-modifier-undo-%%%%-%%%%");
    boost::filesystem::create_directories(directory);
  }
  void TearDown() override {
    engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
    { SceneEngine cleanup; }
    boost::system::error_code ignored;
    boost::filesystem::remove_all(directory, ignored);
  }

  // The bytes of the scene as saved now.
  Bytes Saved() {
    const std::string path = (directory / "scene.orlo").string();
    EXPECT_TRUE(engine.SaveScene(path).IsOk());
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // The objects of `node`'s chain, top first.
  static std::vector<Object*> Chain(Node* node) {
    std::vector<Object*> chain;
    for (Object* element = node->GetObject(); element != nullptr;) {
      chain.push_back(element);
      if (!SceneEngine::IsObjectModifier(element)) break;
      element = static_cast<ObjectModifier*>(element)->GetObjectToModify();
    }
    return chain;
  }

  SceneEngine engine;
  boost::filesystem::path directory;
};

TEST_F(ModifierUndoRoundTripTest, UndoneToTheStartAndRedoneToTheEndTheSceneSavesTheSameBytes) {
  std::mt19937 random(23);
  SceneEngine::StateRecorderInit();
  for (int round = 0; round < 12; ++round) {
    engine.InitScene();
    std::vector<Node*> nodes;
    const int num_nodes = 1 + static_cast<int>(random() % 4);
    for (int i = 0; i < num_nodes; ++i) {
      const std::string name = "n" + std::to_string(i);
      Node* node = engine.CreateEmptyNode(Point3<double>(i, 0.0, 0.0), name.c_str());
      ASSERT_TRUE(node->SetObject(new ProbeObject("o" + std::to_string(i))).IsOk());
      nodes.push_back(node);
    }
    const Bytes before = Saved();

    const int num_steps = 1 + static_cast<int>(random() % 8);
    for (int step = 0; step < num_steps; ++step) {
      SceneEngine::StateRecorderBegin();
      auto* modifier = new LinkingModifier();
      Node* node = nodes[random() % nodes.size()];
      const int time = static_cast<int>(random() % 100);
      switch (random() % 3) {
        case 0:  // on top of the node's chain
          ASSERT_TRUE(engine.AddModifierToNodes({node}, {}, modifier, time).IsOk());
          break;
        case 1: {  // above an element somewhere in the chain
          const std::vector<Object*> chain = Chain(node);
          Object* below = chain[random() % chain.size()];
          ASSERT_TRUE(engine.AddModifierToNodes({node}, {below}, modifier, time).IsOk());
          break;
        }
        default: {  // directly under several nodes at once
          std::vector<Node*> some;
          for (Node* candidate : nodes) {
            if (random() % 2 == 0) some.push_back(candidate);
          }
          if (some.empty()) some.push_back(node);
          ASSERT_TRUE(engine.AddModifierToNodes(some, modifier, time));
          break;
        }
      }
      SceneEngine::StateRecorderAccept("insert modifier");
      bool inserted = false;
      for (Node* target : nodes) {
        inserted = inserted || engine.GetObjectModifier(target, modifier) != nullptr;
      }
      ASSERT_TRUE(inserted) << "round " << round << ", step " << step;
    }
    const Bytes after = Saved();
    EXPECT_NE(after, before) << "round " << round;

    int undone = 0;
    while (SceneEngine::StateRecorderCanUndo()) {
      SceneEngine::StateRecorderUndo();
      ++undone;
    }
    EXPECT_EQ(undone, num_steps) << "round " << round;
    EXPECT_EQ(Saved(), before) << "round " << round;
    while (SceneEngine::StateRecorderCanRedo()) SceneEngine::StateRecorderRedo();
    EXPECT_EQ(Saved(), after) << "round " << round;
  }
}

}  // namespace
}  // namespace Orlo
