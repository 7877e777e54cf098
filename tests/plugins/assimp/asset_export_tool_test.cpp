#include "plugins/assimp/asset_export_tool.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugins/assimp/asset_material.h"
#include "plugins/assimp/camera_object.h"
#include "plugins/assimp/light_object.h"
#include "plugins/assimp/mesh_object.h"
#include "plugins/assimp/twist_modifier.h"
#include "tests/plugins/assimp/asset_fixture.h"
#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

using Orlo::Node;
using Orlo::Point3;

class AssetExportToolTest : public testing::PluginTest {
 protected:
  // Every node below the main node of `scene`'s engine: "parent/name" paths in pre-order.
  static std::vector<std::string> Paths(Orlo::SceneEngine& scene) {
    std::vector<Node*> nodes;
    scene.GetAllSceneNodes(nodes);
    std::vector<std::string> out;
    for (Node* node : nodes) {
      std::string path = node->GetName();
      for (Node* up = node->GetParent(); up != nullptr && up != scene.GetMainNode();
           up = up->GetParent()) {
        path = up->GetName() + "/" + path;
      }
      out.push_back(path);
    }
    return out;
  }

  // Imports the test asset, exports it as `file`, imports that into a second engine and
  // compares names, hierarchy and absolute matrices at `times`.
  void RoundTrips(const std::string& file, const std::vector<std::int32_t>& times) {
    ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("source.gltf")));
    ASSERT_TRUE(engine.ImportScene(PathOf("source.gltf")).IsOk());
    const Orlo::Status exported = engine.ExportScene(PathOf(file));
    ASSERT_TRUE(exported.IsOk()) << exported.GetMessage();

    Orlo::SceneEngine other;
    Orlo::SceneEngine::SetScene(&other);
    other.InitScene();
    const Orlo::Status imported = other.ImportScene(PathOf(file));
    EXPECT_TRUE(imported.IsOk()) << imported.GetMessage();
    EXPECT_EQ(Paths(other), Paths(engine));
    EXPECT_EQ(Paths(other), (std::vector<std::string>{"base", "base/arm", "base/arm/hand"}));
    for (const char* name : {"base", "arm", "hand"}) {
      Node* before = engine.GetNodeByName(name);
      Node* after = other.GetNodeByName(name);
      ASSERT_NE(after, nullptr) << name;
      for (std::int32_t time : times) {
        EXPECT_LT(testing::MaxDifference(after->GetAbsoluteTM(time), before->GetAbsoluteTM(time)),
                  1e-6)
            << name << " at " << time;
      }
    }
    for (const char* name : {"base", "hand"}) {
      auto* material = dynamic_cast<AssetMaterial*>(other.GetNodeByName(name)->GetMaterial());
      ASSERT_NE(material, nullptr) << name;
      EXPECT_EQ(material->GetName(), name == std::string("base") ? "red" : "blue");
      EXPECT_NE(dynamic_cast<MeshObject*>(other.GetNodeByName(name)->GetObject()), nullptr);
    }
    other.DeleteScene();
    Orlo::SceneEngine::SetScene(&engine);
  }
};

TEST_F(AssetExportToolTest, WritesTheRequiredFormats) {
  for (const char* extension : {".gltf", ".glb", ".obj", ".dae", ".ply", ".stl"}) {
    EXPECT_NE(AssetExportTool::FormatFor(extension), "") << extension;
  }
  EXPECT_EQ(AssetExportTool::FormatFor(".gltf"), "gltf2");
  EXPECT_EQ(AssetExportTool::FormatFor(".GLB"), "glb2");
  EXPECT_EQ(AssetExportTool::FormatFor(".nothing"), "");
}

TEST_F(AssetExportToolTest, GltfRoundTripKeepsHierarchyNamesMaterialsAndAnimation) {
  RoundTrips("out.gltf", testing::kAssetTimes);
}

TEST_F(AssetExportToolTest, BinaryGltfRoundTripKeepsHierarchyNamesMaterialsAndAnimation) {
  RoundTrips("out.glb", testing::kAssetTimes);
}

TEST_F(AssetExportToolTest, ColladaRoundTripKeepsHierarchyNamesMaterialsAndAnimation) {
  RoundTrips("out.dae", testing::kAssetTimes);
}

TEST_F(AssetExportToolTest, FlatFormatsWriteTheMeshes) {
  ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("source.gltf")));
  ASSERT_TRUE(engine.ImportScene(PathOf("source.gltf")).IsOk());
  for (const char* file : {"out.obj", "out.ply", "out.stl"}) {
    const Orlo::Status status = engine.ExportScene(PathOf(file));
    ASSERT_TRUE(status.IsOk()) << file << ": " << status.GetMessage();
    Orlo::SceneEngine other;
    Orlo::SceneEngine::SetScene(&other);
    other.InitScene();
    ASSERT_TRUE(other.ImportScene(PathOf(file)).IsOk()) << file;
    // Two triangles, wherever the format puts them.
    std::vector<Node*> nodes;
    other.GetAllSceneNodes(nodes);
    std::size_t faces = 0;
    for (Node* node : nodes) {
      if (auto* mesh = dynamic_cast<MeshObject*>(node->GetObject()))
        faces += mesh->GetFaces().size();
    }
    EXPECT_EQ(faces, 2u) << file;
    other.DeleteScene();
    Orlo::SceneEngine::SetScene(&engine);
  }
}

TEST_F(AssetExportToolTest, CamerasLightsAndTwistedMeshesAreWritten) {
  auto* camera = new CameraObject;
  camera->SetFieldOfView(0.9);
  camera->SetNearClip(0.25);
  camera->SetFarClip(500);
  ASSERT_TRUE(engine.CreateObjectNode(camera, Point3<double>(0, -5, 2), "eye"));
  auto* light = new LightObject;
  light->SetKind(LightObject::kSpot);
  light->SetColor(Orlo::Color(1.0f, 0.5f, 0.0f));
  light->SetIntensity(2.0);
  light->SetOuterConeAngle(0.5);
  ASSERT_TRUE(engine.CreateObjectNode(light, Point3<double>(0, 0, 5), "lamp"));
  auto* mesh = new MeshObject;
  mesh->SetPositions({{1, 0, 0}, {1, 0, 1}, {0, 1, 2}});
  mesh->SetFaces({{0, 1, 2}});
  Node* column = engine.CreateObjectNode(mesh, Point3<double>(0, 0, 0), "column");
  auto* twist = new TwistModifier(true);
  twist->SetAngle(3.14159265358979323846, 0);
  std::vector<Node*> nodes{column};
  ASSERT_TRUE(engine.AddModifierToNodes(nodes, twist, 0));

  ASSERT_TRUE(engine.ExportScene(PathOf("things.dae")).IsOk());
  Orlo::SceneEngine other;
  Orlo::SceneEngine::SetScene(&other);
  other.InitScene();
  ASSERT_TRUE(other.ImportScene(PathOf("things.dae")).IsOk());
  ASSERT_NE(other.GetNodeByName("eye"), nullptr);
  auto* camera_back = dynamic_cast<CameraObject*>(other.GetNodeByName("eye")->GetObject());
  ASSERT_NE(camera_back, nullptr);
  EXPECT_NEAR(camera_back->GetFieldOfView(), 0.9, 1e-6);
  EXPECT_NEAR(camera_back->GetNearClip(), 0.25, 1e-6);
  EXPECT_NEAR(camera_back->GetFarClip(), 500, 1e-4);
  ASSERT_NE(other.GetNodeByName("lamp"), nullptr);
  auto* light_back = dynamic_cast<LightObject*>(other.GetNodeByName("lamp")->GetObject());
  ASSERT_NE(light_back, nullptr);
  EXPECT_EQ(light_back->GetKind(), LightObject::kSpot);
  EXPECT_NEAR(light_back->GetIntensity(), 2.0, 1e-6);
  EXPECT_NEAR(light_back->GetColor().g, 0.5, 1e-6);
  ASSERT_NE(other.GetNodeByName("column"), nullptr);
  auto* twisted = dynamic_cast<MeshObject*>(other.GetNodeByName("column")->GetObject());
  ASSERT_NE(twisted, nullptr);
  // The top point was turned half a turn about z: (0, 1) became (0, -1).
  ASSERT_EQ(twisted->GetNumPoints(), 3);
  EXPECT_NEAR(twisted->GetObjectBoundingBox(0).min.y, -1.0, 1e-6);
  other.DeleteScene();
  Orlo::SceneEngine::SetScene(&engine);
}

TEST_F(AssetExportToolTest, AnUnwritablePathGivesCode2) {
  const Orlo::Status status = engine.ExportScene(PathOf("missing/folder/out.gltf"));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage().rfind(
                "AssetExportTool::Execute : " + PathOf("missing/folder/out.gltf") + ": ", 0),
            0u)
      << status.GetMessage();
}

}  // namespace
}  // namespace orlo_assimp
