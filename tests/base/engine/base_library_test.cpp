#include <orlo/base/engine/base_library.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/scene_engine.h>

namespace Orlo {
namespace {

class BaseLibraryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

struct Registration {
  std::string factory_name;
  std::string class_name;
  BlockType type;
};

// The factories of the base library, in the order hosts and the scene reader see them.
const std::vector<Registration>& ExpectedRegistrations() {
  static const std::vector<Registration> registrations = {
      {"BlockTable", "BlockTable", BlockType(105, 32, 16)},
      {"BezierKeysController", "FloatController", BlockType(300, 48, 16)},
      {"Point3Controller", "Point3Controller", BlockType(300, 48, 32)},
      {"Transform3Controller", "Transform3Controller", BlockType(300, 48, 48)},
      {"LookAtController", "LookAtController", BlockType(300, 48, 64)},
      {"NodeTransform", "NodeTransform", BlockType(110, 16, 48)},
      {"Node", "Node", BlockType(115, 16, 32)},
      {"MainScene", "MainScene", BlockType(100, 16, 16)},
      {"DataFloat", "DataFloat", BlockType(200, 64, 64)},
      {"DataInt", "DataInt", BlockType(200, 64, 48)},
      {"DataBool", "DataBool", BlockType(200, 64, 32)},
      {"DataPoint3", "DataPoint3", BlockType(200, 64, 80)},
      {"DataColor", "DataColor", BlockType(200, 64, 96)},
      {"DataString", "DataString", BlockType(200, 64, 112)},
      {"DataTable", "DataTable", BlockType(205, 64, 16)},
  };
  return registrations;
}

TEST_F(BaseLibraryTest, RegistersEveryClassInItsFixedOrder) {
  const auto& expected = ExpectedRegistrations();
  ASSERT_EQ(SceneEngine::GetNumBlockFactories(), expected.size());
  for (unsigned i = 0; i < expected.size(); ++i) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(i);
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory->GetName(), expected[i].factory_name) << i;
    const BlockType type = factory->GetBlockType();
    EXPECT_EQ(type.class_id, expected[i].type.class_id) << i;
    EXPECT_EQ(type.super_class_id, expected[i].type.super_class_id) << i;
    EXPECT_EQ(type.sub_id, expected[i].type.sub_id) << i;
  }
  EXPECT_EQ(SceneEngine::GetBlockFactory(static_cast<unsigned>(expected.size())), nullptr);
}

TEST_F(BaseLibraryTest, EveryFactoryMakesABlockOfItsClassWithEitherFlag) {
  const auto& expected = ExpectedRegistrations();
  for (unsigned i = 0; i < SceneEngine::GetNumBlockFactories(); ++i) {
    for (bool create_defaults : {false, true}) {
      Block* block = SceneEngine::GetBlockFactory(i)->GetBlock(create_defaults);
      ASSERT_NE(block, nullptr);
      EXPECT_EQ(block->GetClassName(), expected[i].class_name) << i;
      const BlockType type = block->GetBlockType();
      EXPECT_EQ(type.class_id, expected[i].type.class_id) << i;
      EXPECT_EQ(type.super_class_id, expected[i].type.super_class_id) << i;
      EXPECT_EQ(type.sub_id, expected[i].type.sub_id) << i;
      block->DeleteThisBlock(true);
    }
  }
}

TEST_F(BaseLibraryTest, ScalarControllerFactoryAndClassKeepTheirDifferentNames) {
  BlockFactory* factory = SceneEngine::GetBlockFactory(1);
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(factory->GetName(), "BezierKeysController");
  Block* block = factory->GetBlock(false);
  EXPECT_EQ(block->GetClassName(), "FloatController");
  block->DeleteThis();
}

}  // namespace
}  // namespace Orlo
