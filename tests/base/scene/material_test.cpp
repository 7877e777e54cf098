#include <orlo/base/scene/material.h>

#include <gtest/gtest.h>

#include <orlo/base/engine/scene_engine.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;
using testing::TestMaterial;

// A material library's class needs only the name and sub-material operations and Shade
// besides Block's own: TestMaterial defines nothing else of Material, and it compiles.
TEST(MaterialTest, AHostMaterialDefinesOnlyTheNamedOperations) {
  ScopedBlock<TestMaterial> material(new TestMaterial("brick"));
  Material* as_material = material.get();
  EXPECT_EQ(as_material->GetName(), "brick");
  as_material->SetName("stone");
  EXPECT_EQ(as_material->GetName(), "stone");
  EXPECT_TRUE(SceneEngine::IsMaterial(material.get()));
  EXPECT_FALSE(SceneEngine::IsTexture(material.get()));
}

TEST(MaterialTest, CopiesAreMemberwise) {
  TestMaterial material("copper");
  TestMaterial copy(material);
  EXPECT_EQ(copy.GetName(), "copper");
  copy = TestMaterial("tin");
  EXPECT_EQ(copy.GetName(), "tin");
}

}  // namespace
}  // namespace Orlo
