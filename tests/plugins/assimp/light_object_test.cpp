#include "plugins/assimp/light_object.h"

#include <gtest/gtest.h>

#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

class LightObjectTest : public testing::PluginTest {};

TEST_F(LightObjectTest, IsALightAndCloneAndPayloadKeepEveryField) {
  auto* light = new LightObject;
  EXPECT_TRUE(Orlo::SceneEngine::IsLight(light));
  light->SetKind(LightObject::kSpot);
  light->SetColor(Orlo::Color(1.0f, 0.5f, 0.25f));
  light->SetIntensity(3.0);
  light->SetInnerConeAngle(0.2);
  light->SetOuterConeAngle(0.6);
  auto* copy = dynamic_cast<LightObject*>(light->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetKind(), LightObject::kSpot);
  EXPECT_EQ(copy->GetOuterConeAngle(), 0.6);
  auto* loaded = new LightObject;
  EXPECT_EQ(SaveAndLoad(light, loaded), 1);
  EXPECT_EQ(loaded->GetKind(), LightObject::kSpot);
  EXPECT_EQ(loaded->GetColor().g, 0.5f);
  EXPECT_EQ(loaded->GetIntensity(), 3.0);
  EXPECT_EQ(loaded->GetInnerConeAngle(), 0.2);
  EXPECT_EQ(loaded->GetOuterConeAngle(), 0.6);
  for (Orlo::Block* block : {static_cast<Orlo::Block*>(light), static_cast<Orlo::Block*>(copy),
                             static_cast<Orlo::Block*>(loaded)}) {
    block->DeleteThisBlock(true);
  }
}

TEST_F(LightObjectTest, AKindOutsideTheEnumerationReadsAsAPointLight) {
  // | chunk 0x0005 | kind 42 | colour | intensity | inner | outer |
  Orlo::SceneSave save;
  save.BeginChunk(0x0005);
  save.WriteInt32(42);
  for (int i = 0; i < 3; ++i) save.WriteFloat(1.0f);
  for (int i = 0; i < 3; ++i) save.WriteDouble(1.0);
  save.EndChunk();
  Orlo::SceneLoad load(save.TakeBytes());
  auto* light = new LightObject;
  light->SetKind(LightObject::kDirectional);
  EXPECT_EQ(light->Load(&load), 1);
  EXPECT_EQ(light->GetKind(), LightObject::kPoint);
  light->DeleteThisBlock(true);
}

}  // namespace
}  // namespace orlo_assimp
