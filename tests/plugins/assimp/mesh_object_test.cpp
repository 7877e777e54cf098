#include "plugins/assimp/mesh_object.h"

#include <gtest/gtest.h>

#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

using Orlo::Point3;
using testing::PluginTest;

MeshObject* MakeTriangle() {
  auto* mesh = new MeshObject;
  mesh->SetPositions({{0, 0, 0}, {2, 0, 0}, {0, 3, 1}});
  mesh->SetNormals({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
  mesh->SetTextureCoordinates({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
  mesh->SetFaces({{0, 1, 2}});
  return mesh;
}

class MeshObjectTest : public PluginTest {};

TEST_F(MeshObjectTest, TheFactoryMakesAMeshOfClass515ThatAcceptsModifiers) {
  Orlo::BlockFactory* factory = nullptr;
  for (unsigned i = 0; i < Orlo::SceneEngine::GetNumBlockFactories(); ++i) {
    if (Orlo::SceneEngine::GetBlockFactory(i)->GetName() == "MeshObject")
      factory = Orlo::SceneEngine::GetBlockFactory(i);
  }
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(factory->GetBlockType().class_id, 515u);
  Orlo::Block* block = factory->GetBlock(true);
  auto* mesh = dynamic_cast<MeshObject*>(block);
  ASSERT_NE(mesh, nullptr);
  EXPECT_TRUE(Orlo::SceneEngine::IsRawObject(mesh));
  EXPECT_EQ(mesh->Flags() & (1 << 22), 1 << 22);
  EXPECT_EQ(mesh->BuildObject(0, nullptr), mesh);
  block->DeleteThisBlock(true);
}

TEST_F(MeshObjectTest, PointsAreThePositionsAndTheBoxFollowsPointsWereSet) {
  MeshObject* mesh = MakeTriangle();
  EXPECT_EQ(mesh->GetNumPoints(), 3);
  EXPECT_EQ(mesh->GetPoint(1).x, 2.0);
  EXPECT_EQ(mesh->GetPoint(7).x, 0.0);  // outside: the origin
  mesh->SetPoint(1, Point3<double>(5, 0, 0));
  mesh->SetPoint(9, Point3<double>(99, 99, 99));  // ignored
  mesh->PointsWereSet();
  const Orlo::Box3<double> box = mesh->GetObjectBoundingBox(0);
  EXPECT_EQ(box.max.x, 5.0);
  EXPECT_EQ(box.max.y, 3.0);
  EXPECT_EQ(box.min.z, 0.0);
  Orlo::Matrix3<double> shift;
  shift.m[3][0] = 10;
  EXPECT_EQ(mesh->GetObjectBoundingBox(0, &shift).max.x, 15.0);
  mesh->DeleteThisBlock(true);
}

TEST_F(MeshObjectTest, CloneCopiesEveryArray) {
  MeshObject* mesh = MakeTriangle();
  auto* copy = dynamic_cast<MeshObject*>(mesh->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetPositions().size(), 3u);
  EXPECT_EQ(copy->GetPositions()[2].y, 3.0);
  EXPECT_EQ(copy->GetNormals().size(), 3u);
  EXPECT_EQ(copy->GetTextureCoordinates()[1].x, 1.0);
  ASSERT_EQ(copy->GetFaces().size(), 1u);
  EXPECT_EQ(copy->GetFaces()[0][2], 2);
  mesh->DeleteThisBlock(true);
  copy->DeleteThisBlock(true);
}

TEST_F(MeshObjectTest, APayloadReadsBackIntoTheSameMesh) {
  MeshObject* mesh = MakeTriangle();
  auto* loaded = new MeshObject;
  EXPECT_EQ(SaveAndLoad(mesh, loaded), 1);
  EXPECT_EQ(loaded->GetPositions().size(), 3u);
  EXPECT_EQ(loaded->GetPositions()[2].z, 1.0);
  EXPECT_EQ(loaded->GetNormals()[0].z, 1.0);
  EXPECT_EQ(loaded->GetTextureCoordinates()[2].y, 1.0);
  ASSERT_EQ(loaded->GetFaces().size(), 1u);
  EXPECT_EQ(loaded->GetFaces()[0][1], 1);
  EXPECT_EQ(loaded->GetObjectBoundingBox(0).max.y, 3.0);
  mesh->DeleteThisBlock(true);
  loaded->DeleteThisBlock(true);
}

TEST_F(MeshObjectTest, ACountLargerThanItsChunkIsCorruptionAndChangesNothing) {
  // | chunk 0x0010 | count 1000000 | one point (24 bytes) |
  Orlo::SceneSave save;
  save.BeginChunk(0x0010);
  save.WriteUInt32(1000000);
  for (int i = 0; i < 3; ++i) save.WriteDouble(1.0);
  save.EndChunk();
  Orlo::SceneLoad load(save.TakeBytes());
  MeshObject* mesh = MakeTriangle();
  EXPECT_EQ(mesh->Load(&load), 0);
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(mesh->GetNumPoints(), 3);
  mesh->DeleteThisBlock(true);
}

TEST_F(MeshObjectTest, AFaceIndexOutsideThePositionsIsCorruptionAndChangesNothing) {
  // | chunk 0x0010 | 1 point | chunk 0x0025 | 1 face (0, 1, 2) |
  Orlo::SceneSave save;
  save.BeginChunk(0x0010);
  save.WriteUInt32(1);
  for (int i = 0; i < 3; ++i) save.WriteDouble(1.0);
  save.EndChunk();
  save.BeginChunk(0x0025);
  save.WriteUInt32(1);
  for (int i = 0; i < 3; ++i) save.WriteInt32(i);
  save.EndChunk();
  Orlo::SceneLoad load(save.TakeBytes());
  MeshObject* mesh = MakeTriangle();
  EXPECT_EQ(mesh->Load(&load), 0);
  EXPECT_EQ(mesh->GetNumPoints(), 3);
  EXPECT_EQ(mesh->GetPoint(1).x, 2.0);
  mesh->DeleteThisBlock(true);
}

TEST_F(MeshObjectTest, ASceneWithAMeshSavesAndLoadsThroughTheRegisteredFactory) {
  Orlo::Node* node = engine.CreateObjectNode(MakeTriangle(), Point3<double>(1, 0, 0), "tri");
  ASSERT_NE(node, nullptr);
  ASSERT_TRUE(engine.SaveScene(PathOf("mesh.orlo")).IsOk());
  Orlo::SceneEngine other;
  Orlo::SceneEngine::SetScene(&other);
  ASSERT_TRUE(other.LoadScene(PathOf("mesh.orlo")).IsOk());
  Orlo::Node* loaded = other.GetNodeByName("tri");
  ASSERT_NE(loaded, nullptr);
  auto* mesh = dynamic_cast<MeshObject*>(loaded->GetObject());
  ASSERT_NE(mesh, nullptr);
  EXPECT_EQ(mesh->GetFaces().size(), 1u);
  other.DeleteScene();
  Orlo::SceneEngine::SetScene(&engine);
}

}  // namespace
}  // namespace orlo_assimp
