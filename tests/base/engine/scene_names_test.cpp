#include <gtest/gtest.h>

#include <string>

#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;
using testing::TestBlock;
using testing::TestMaterial;
using testing::TestModifier;
using testing::TestTexture;

TEST(SceneNamesTest, ANodeIsNamedThroughItsOwnName) {
  ScopedBlock<Node> node(new Node(true));
  node->SetName("box");
  EXPECT_TRUE(SceneEngine::HasName(node.get()));
  EXPECT_EQ(SceneEngine::GetName(node.get()), "box");
  SceneEngine::SetName(node.get(), "sphere");
  EXPECT_EQ(node->GetName(), "sphere");
}

TEST(SceneNamesTest, AModifierIsNamedThroughItsNameString) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  modifier->SetName("bend");
  EXPECT_TRUE(SceneEngine::HasName(modifier.get()));
  EXPECT_EQ(SceneEngine::GetName(modifier.get()), "bend");
  SceneEngine::SetName(modifier.get(), "twist");
  EXPECT_EQ(modifier->GetName(), "twist");
}

TEST(SceneNamesTest, MaterialsAndTexturesAreNamedThroughTheMaterialsNameOperations) {
  ScopedBlock<TestMaterial> material(new TestMaterial("steel"));
  EXPECT_TRUE(SceneEngine::HasName(material.get()));
  EXPECT_EQ(SceneEngine::GetName(material.get()), "steel");
  SceneEngine::SetName(material.get(), "brass");
  EXPECT_EQ(material->GetName(), "brass");

  ScopedBlock<TestTexture> texture(new TestTexture());
  SceneEngine::SetName(texture.get(), "bricks");
  EXPECT_TRUE(SceneEngine::HasName(texture.get()));
  EXPECT_EQ(texture->GetName(), "bricks");
  EXPECT_EQ(SceneEngine::GetName(texture.get()), "bricks");
}

TEST(SceneNamesTest, ADataTableHasNoNameAndSetNameChangesNothing) {
  ScopedBlock<DataTable> table(new DataTable(true));
  EXPECT_FALSE(SceneEngine::HasName(table.get()));
  EXPECT_EQ(SceneEngine::GetName(table.get()), "");
  SceneEngine::SetName(table.get(), "table");
  EXPECT_EQ(SceneEngine::GetName(table.get()), "");
  EXPECT_EQ(table->GetNumDatas(), 0);
}

TEST(SceneNamesTest, ANullBlockHasNoName) {
  EXPECT_FALSE(SceneEngine::HasName(nullptr));
  EXPECT_EQ(SceneEngine::GetName(nullptr), "");
  SceneEngine::SetName(nullptr, "nothing");
}

TEST(SceneNamesTest, TheKindIsTheClassIdAlone) {
  // A material of another class id range is not named; a texture-transform (415) neither.
  ScopedBlock<TestMaterial> odd(new TestMaterial("odd", BlockType(415, 1, 1)));
  EXPECT_FALSE(SceneEngine::HasName(odd.get()));
  EXPECT_EQ(SceneEngine::GetName(odd.get()), "");
  SceneEngine::SetName(odd.get(), "renamed");
  EXPECT_EQ(odd->GetName(), "odd");
  // Whatever the other two components of its type, a modifier class id names it.
  ScopedBlock<TestModifier> modifier(new TestModifier(BlockType(800, 77, 99)));
  modifier->SetName("m");
  EXPECT_EQ(SceneEngine::GetName(modifier.get()), "m");
}

TEST(SceneNamesTest, ABlockThatOnlyClaimsANamedKindReadsAsUnnamed) {
  // A block of another class that reports a node's class id: it has the kind, so HasName is
  // true, but it carries no node name to read or write.
  ScopedBlock<TestBlock> impostor(new TestBlock("impostor", 0));
  impostor->SetType(BlockType(115, 1, 1));
  EXPECT_TRUE(SceneEngine::HasName(impostor.get()));
  EXPECT_EQ(SceneEngine::GetName(impostor.get()), "");
  SceneEngine::SetName(impostor.get(), "x");
  EXPECT_EQ(impostor->Name(), "impostor");
  impostor->SetType(BlockType(405, 1, 1));
  EXPECT_EQ(SceneEngine::GetName(impostor.get()), "");
}

}  // namespace
}  // namespace Orlo
