#include "plugins/assimp/asset_material.h"

#include <gtest/gtest.h>

#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

class AssetMaterialTest : public testing::PluginTest {};

TEST_F(AssetMaterialTest, ANewMaterialHasEveryParameterNamedWithItsDefault) {
  auto* material = new AssetMaterial(true);
  EXPECT_TRUE(Orlo::SceneEngine::IsMaterial(material));
  Orlo::DataTable* table = material->GetDataTable();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->GetNumDatas(), 7);
  EXPECT_EQ(table->GetDataName(AssetMaterial::kDiffuseColorID), "diffuse_color");
  EXPECT_EQ(table->GetDataName(AssetMaterial::kNormalTextureID), "normal_texture");
  EXPECT_FLOAT_EQ(material->GetDiffuseColor(0).g, 0.8f);
  EXPECT_EQ(material->GetOpacity(0), 1.0);
  EXPECT_EQ(material->GetDiffuseTexture(), "");
  material->DeleteThisBlock(true);
}

TEST_F(AssetMaterialTest, CloneCopiesTheNameAndTheTableValues) {
  auto* material = new AssetMaterial(true);
  material->SetName("steel");
  material->SetSpecularColor(Orlo::Color(0.1f, 0.2f, 0.3f), 0);
  material->SetShininess(40.0, 0);
  material->SetDiffuseTexture("steel.png");
  auto* copy = dynamic_cast<AssetMaterial*>(material->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetName(), "steel");
  EXPECT_NE(copy->GetDataTable(), material->GetDataTable());
  EXPECT_FLOAT_EQ(copy->GetSpecularColor(0).b, 0.3f);
  EXPECT_EQ(copy->GetShininess(0), 40.0);
  EXPECT_EQ(copy->GetDiffuseTexture(), "steel.png");
  material->DeleteThisBlock(true);
  copy->DeleteThisBlock(true);
}

TEST_F(AssetMaterialTest, ThePayloadKeepsTheName) {
  auto* material = new AssetMaterial(true);
  material->SetName("rubber");
  auto* loaded = new AssetMaterial(false);
  EXPECT_EQ(SaveAndLoad(material, loaded), 1);
  EXPECT_EQ(loaded->GetName(), "rubber");
  material->DeleteThisBlock(true);
  loaded->DeleteThisBlock(true);
}

TEST_F(AssetMaterialTest, ASceneSavedAndLoadedKeepsTheParameters) {
  auto* material = new AssetMaterial(true);
  material->SetName("glass");
  material->SetOpacity(0.25, 0);
  material->SetNormalTexture("glass_n.png");
  engine.GetMainScene()->AddMaterial(material);
  ASSERT_TRUE(engine.SaveScene(PathOf("material.orlo")).IsOk());
  Orlo::SceneEngine other;
  Orlo::SceneEngine::SetScene(&other);
  ASSERT_TRUE(other.LoadScene(PathOf("material.orlo")).IsOk());
  ASSERT_EQ(other.GetMainScene()->GetNumMaterials(), 1);
  auto* loaded = dynamic_cast<AssetMaterial*>(other.GetMainScene()->GetMaterial(0));
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(loaded->GetName(), "glass");
  EXPECT_EQ(loaded->GetOpacity(0), 0.25);
  EXPECT_EQ(loaded->GetNormalTexture(), "glass_n.png");
  other.DeleteScene();
  Orlo::SceneEngine::SetScene(&engine);
}

TEST_F(AssetMaterialTest, HasNoSubMaterials) {
  auto* material = new AssetMaterial(true);
  material->SetNumSubMaterials(3);
  EXPECT_EQ(material->GetNumSubMaterials(), 0);
  EXPECT_EQ(material->GetSubMaterial(0), nullptr);
  const Orlo::Status status = material->SetSubMaterial(0, nullptr);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "AssetMaterial::SetSubMaterial : This Block has no SubMaterials.");
  material->DeleteThisBlock(true);
}

}  // namespace
}  // namespace orlo_assimp
