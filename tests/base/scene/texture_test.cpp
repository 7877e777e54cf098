#include <orlo/base/scene/texture.h>

#include <gtest/gtest.h>

#include <orlo/base/engine/scene_engine.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;
using testing::TestMaterial;
using testing::TestTexture;

TEST(TextureTest, HasNoSubMaterials) {
  ScopedBlock<TestTexture> texture(new TestTexture());
  texture->SetNumSubMaterials(4);
  EXPECT_EQ(texture->GetNumSubMaterials(), 0);
  EXPECT_EQ(texture->GetSubMaterial(0), nullptr);
  ScopedBlock<TestMaterial> material(new TestMaterial());
  const Status status = texture->SetSubMaterial(0, material.get());
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "This Block has no SubMaterials.");
  EXPECT_EQ(material->GetParentBlock(), nullptr);
}

TEST(TextureTest, IsAMaterialClassButNotAMaterialKind) {
  ScopedBlock<TestTexture> texture(new TestTexture());
  Material* as_material = texture.get();
  as_material->SetName("checker");
  EXPECT_EQ(as_material->GetName(), "checker");
  EXPECT_TRUE(SceneEngine::IsTexture(texture.get()));
  EXPECT_FALSE(SceneEngine::IsMaterial(texture.get()));
}

}  // namespace
}  // namespace Orlo
