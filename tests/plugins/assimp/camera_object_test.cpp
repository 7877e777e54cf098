#include "plugins/assimp/camera_object.h"

#include <gtest/gtest.h>

#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

class CameraObjectTest : public testing::PluginTest {};

TEST_F(CameraObjectTest, IsACameraAndCloneAndPayloadKeepEveryField) {
  auto* camera = new CameraObject;
  EXPECT_TRUE(Orlo::SceneEngine::IsCamera(camera));
  camera->SetFieldOfView(1.1);
  camera->SetNearClip(0.5);
  camera->SetFarClip(250.0);
  camera->SetAspectRatio(1.5);
  auto* copy = dynamic_cast<CameraObject*>(camera->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetFieldOfView(), 1.1);
  EXPECT_EQ(copy->GetFarClip(), 250.0);
  auto* loaded = new CameraObject;
  EXPECT_EQ(SaveAndLoad(camera, loaded), 1);
  EXPECT_EQ(loaded->GetFieldOfView(), 1.1);
  EXPECT_EQ(loaded->GetNearClip(), 0.5);
  EXPECT_EQ(loaded->GetFarClip(), 250.0);
  EXPECT_EQ(loaded->GetAspectRatio(), 1.5);
  for (Orlo::Block* block : {static_cast<Orlo::Block*>(camera), static_cast<Orlo::Block*>(copy),
                             static_cast<Orlo::Block*>(loaded)}) {
    block->DeleteThisBlock(true);
  }
}

TEST_F(CameraObjectTest, AShortChunkChangesNothing) {
  // | chunk 0x0005 | one double instead of four |
  Orlo::SceneSave save;
  save.BeginChunk(0x0005);
  save.WriteDouble(3.0);
  save.EndChunk();
  Orlo::SceneLoad load(save.TakeBytes());
  auto* camera = new CameraObject;
  camera->SetFieldOfView(0.7);
  (void)camera->Load(&load);
  EXPECT_EQ(camera->GetFieldOfView(), 0.7);
  camera->DeleteThisBlock(true);
}

}  // namespace
}  // namespace orlo_assimp
