// Shared set-up of the engine tests: a fixture that owns an engine with a fresh scene and makes
// it current for the length of a test, helpers that build small hierarchies, and an object
// that logs which nodes built it.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

#include "tests/base/scene/scene_test_blocks.h"

namespace Orlo::testing {

// An engine with a fresh scene, current while the test runs. The scene goes with the engine,
// after the current engine has been reset.
class EngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::SetScene(&engine);
    engine.InitScene();
  }
  void TearDown() override { SceneEngine::SetScene(nullptr); }

  Node* MainNode() { return engine.GetMainNode(); }

  // A new empty node named `name` under `parent` (the main node when null).
  Node* AddNode(const char* name, Node* parent = nullptr) {
    Node* node = engine.CreateEmptyNode(Point3<double>(0, 0, 0), name);
    if (parent != nullptr) {
      EXPECT_TRUE(engine.SetParent(parent, node).IsOk());
    }
    return node;
  }

  static std::vector<std::string> Names(const std::vector<Node*>& nodes) {
    std::vector<std::string> names;
    for (const Node* node : nodes) names.push_back(node != nullptr ? node->GetName() : "null");
    return names;
  }

  SceneEngine engine;
};

// An object that appends the name of the node it is built for to a shared log, and can run
// one extra action at its first build.
class LoggingObject : public TestObject {
 public:
  explicit LoggingObject(std::vector<std::string>* log) : m_log(log) {}

  Object* BuildObject(int time, Node* node) override {
    m_log->push_back((node != nullptr ? node->GetName() : "null") + "@" + std::to_string(time));
    if (first_build) {
      auto action = std::move(first_build);
      first_build = nullptr;
      action();
    }
    return TestObject::BuildObject(time, node);
  }

  std::function<void()> first_build;

 private:
  std::vector<std::string>* m_log;
};

}  // namespace Orlo::testing
