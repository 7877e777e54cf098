#include <orlo/base/engine/scene_engine.h>

#include <gtest/gtest.h>

#include <deque>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::TestBlock;

class SceneEngineKindsTest : public ::testing::Test {
 protected:
  void TearDown() override { SceneEngine::SetScene(nullptr); }

  // A block of the given class id.
  TestBlock* Kind(unsigned class_id) {
    TestBlock& block = m_blocks.emplace_back("kind", 0);
    block.SetType(BlockType(class_id, 1, 1));
    return &block;
  }

 private:
  std::deque<TestBlock> m_blocks;
};

TEST_F(SceneEngineKindsTest, NoEngineIsCurrentBeforeSetScene) {
  EXPECT_EQ(SceneEngine::GetScene(), nullptr);
}

TEST_F(SceneEngineKindsTest, SetSceneReplacesTheCurrentEngine) {
  SceneEngine first;
  SceneEngine second;
  SceneEngine::SetScene(&first);
  EXPECT_EQ(SceneEngine::GetScene(), &first);
  SceneEngine::SetScene(&second);
  EXPECT_EQ(SceneEngine::GetScene(), &second);
  SceneEngine::SetScene(nullptr);
  EXPECT_EQ(SceneEngine::GetScene(), nullptr);
}

TEST_F(SceneEngineKindsTest, NotificationHooksAcceptAnything) {
  SceneEngine engine;
  TestBlock block("block");
  engine.BlockIsBeingDeleted(&block);
  engine.BlockIsBeingDeleted(nullptr);
  engine.ListenerIsBeingDeleted(nullptr);
  EXPECT_EQ(block.GetID(), Block::kNoID);
}

TEST_F(SceneEngineKindsTest, EveryPredicateIsFalseForNull) {
  for (auto predicate :
       {&SceneEngine::IsNode, &SceneEngine::IsNodeTransform, &SceneEngine::IsDataTable,
        &SceneEngine::IsControl, &SceneEngine::IsMaterial, &SceneEngine::IsTexture,
        &SceneEngine::IsTextureTransform, &SceneEngine::IsObject, &SceneEngine::IsBaseObject,
        &SceneEngine::IsPrimitiveObject, &SceneEngine::IsRawObject, &SceneEngine::IsObjectModifier,
        &SceneEngine::IsCamera, &SceneEngine::IsLight, &SceneEngine::IsModifier}) {
    EXPECT_FALSE(predicate(nullptr));
  }
}

TEST_F(SceneEngineKindsTest, EachPredicateMatchesItsClassIdOnly) {
  const std::vector<std::pair<bool (*)(Block*), unsigned>> cases = {
      {&SceneEngine::IsNode, 115},
      {&SceneEngine::IsNodeTransform, 110},
      {&SceneEngine::IsDataTable, 205},
      {&SceneEngine::IsControl, 300},
      {&SceneEngine::IsMaterial, 405},
      {&SceneEngine::IsTexture, 410},
      {&SceneEngine::IsTextureTransform, 415},
      {&SceneEngine::IsBaseObject, 505},
      {&SceneEngine::IsPrimitiveObject, 510},
      {&SceneEngine::IsRawObject, 515},
      {&SceneEngine::IsObjectModifier, 520},
      {&SceneEngine::IsCamera, 600},
      {&SceneEngine::IsLight, 700},
      {&SceneEngine::IsModifier, 800},
  };
  for (const auto& [predicate, class_id] : cases) {
    EXPECT_TRUE(predicate(Kind(class_id))) << class_id;
    EXPECT_FALSE(predicate(Kind(class_id + 1))) << class_id;
    EXPECT_FALSE(predicate(Kind(class_id - 1))) << class_id;
  }
}

TEST_F(SceneEngineKindsTest, PredicatesIgnoreTheOtherTwoNumbers) {
  TestBlock* node = Kind(115);
  node->SetType(BlockType(115, 999, 999));
  EXPECT_TRUE(SceneEngine::IsNode(node));
}

TEST_F(SceneEngineKindsTest, ObjectCoversTheWholeRangeFrom500To799) {
  EXPECT_TRUE(SceneEngine::IsObject(Kind(500)));
  EXPECT_TRUE(SceneEngine::IsObject(Kind(520)));  // object modifier
  EXPECT_TRUE(SceneEngine::IsObject(Kind(600)));  // camera
  EXPECT_TRUE(SceneEngine::IsObject(Kind(700)));  // light
  EXPECT_TRUE(SceneEngine::IsObject(Kind(799)));
  EXPECT_FALSE(SceneEngine::IsObject(Kind(499)));
  EXPECT_FALSE(SceneEngine::IsObject(Kind(800)));  // modifier
}

TEST_F(SceneEngineKindsTest, TextureIsNotAMaterial) {
  EXPECT_FALSE(SceneEngine::IsMaterial(Kind(410)));
  EXPECT_TRUE(SceneEngine::IsTexture(Kind(410)));
}

}  // namespace
}  // namespace Orlo
