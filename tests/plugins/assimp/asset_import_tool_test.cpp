#include "plugins/assimp/asset_import_tool.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugins/assimp/asset_material.h"
#include "plugins/assimp/camera_object.h"
#include "plugins/assimp/light_object.h"
#include "plugins/assimp/mesh_object.h"
#include "tests/plugins/assimp/asset_fixture.h"
#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

using Orlo::Node;

class AssetImportToolTest : public testing::PluginTest {
 protected:
  // The names of the nodes below the main node in pre-order, each indented by its depth.
  std::vector<std::string> Tree() {
    std::vector<Node*> nodes;
    engine.GetAllSceneNodes(nodes);
    std::vector<std::string> out;
    for (Node* node : nodes) {
      int depth = 0;
      for (Node* up = node->GetParent(); up != nullptr && up != engine.GetMainNode();
           up = up->GetParent()) {
        ++depth;
      }
      out.push_back(std::string(static_cast<std::size_t>(depth) * 2, ' ') + node->GetName());
    }
    return out;
  }

  std::string MaterialName(const char* node_name) {
    Node* node = engine.GetNodeByName(node_name);
    auto* material = node != nullptr ? dynamic_cast<AssetMaterial*>(node->GetMaterial()) : nullptr;
    return material != nullptr ? material->GetName() : "none";
  }

  // Imports the test asset written in `format` and checks hierarchy, materials and the
  // absolute matrices at every key time.
  void ImportsTheTestAsset(const std::string& format, const std::string& file) {
    ASSERT_TRUE(testing::WriteTestAsset(format, PathOf(file)));
    const Orlo::Status status = engine.ImportScene(PathOf(file));
    ASSERT_TRUE(status.IsOk()) << status.GetMessage();
    EXPECT_EQ(status.GetMessage(), "");
    EXPECT_EQ(Tree(), (std::vector<std::string>{"base", "  arm", "    hand"}));
    EXPECT_EQ(MaterialName("base"), "red");
    EXPECT_EQ(MaterialName("hand"), "blue");
    EXPECT_EQ(MaterialName("arm"), "none");
    ASSERT_NE(engine.GetNodeByName("hand"), nullptr);
    EXPECT_NE(dynamic_cast<MeshObject*>(engine.GetNodeByName("hand")->GetObject()), nullptr);
    testing::ExpectAssetMatrices(engine);
  }
};

TEST_F(AssetImportToolTest, ListsTheCommonExtensionsInLowerCase) {
  auto* tool = new AssetImportTool;
  const std::vector<std::string> extensions = tool->GetExtensions();
  for (const char* wanted : {".gltf", ".glb", ".obj", ".dae", ".ply", ".stl", ".fbx"}) {
    EXPECT_NE(std::find(extensions.begin(), extensions.end(), wanted), extensions.end()) << wanted;
  }
  tool->DeleteThisBlock(true);
}

TEST_F(AssetImportToolTest, ImportsAGltfHierarchyWithMaterialsAndAnimation) {
  ImportsTheTestAsset("gltf2", "asset.gltf");
}

TEST_F(AssetImportToolTest, ImportsACollladaHierarchyWithMaterialsAndAnimation) {
  ImportsTheTestAsset("collada", "asset.dae");
}

TEST_F(AssetImportToolTest, KeyedRotationsDoNotJumpByAWholeTurn) {
  ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("asset.gltf")));
  ASSERT_TRUE(engine.ImportScene(PathOf("asset.gltf")).IsOk());
  Node* arm = engine.GetNodeByName("arm");
  ASSERT_NE(arm, nullptr);
  // 240 degrees stays 240 degrees after 120, not -120.
  for (std::int32_t time : testing::kAssetTimes) {
    EXPECT_NEAR(arm->GetNodeTransformController()->GetRotation(time).z, testing::ArmTurn(time),
                1e-6)
        << time;
  }
}

TEST_F(AssetImportToolTest, ImportsAnObjFileWithItsTwoMaterials) {
  WriteText(PathOf("two.mtl"),
            "newmtl red\nKd 1 0 0\nNs 10\nmap_Kd red.png\n\nnewmtl blue\nKd 0 0 1\nd 0.5\n");
  WriteText(PathOf("two.obj"),
            "mtllib two.mtl\n"
            "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\n"
            "o first\nusemtl red\nf 1 2 3\n"
            "o second\nusemtl blue\nf 1 2 4\n");
  const Orlo::Status status = engine.ImportScene(PathOf("two.obj"));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_EQ(Tree(), (std::vector<std::string>{"first", "second"}));
  EXPECT_EQ(MaterialName("first"), "red");
  EXPECT_EQ(MaterialName("second"), "blue");
  auto* red = dynamic_cast<AssetMaterial*>(engine.GetNodeByName("first")->GetMaterial());
  auto* blue = dynamic_cast<AssetMaterial*>(engine.GetNodeByName("second")->GetMaterial());
  ASSERT_NE(red, nullptr);
  ASSERT_NE(blue, nullptr);
  EXPECT_EQ(red->GetDiffuseColor(0).r, 1.0f);
  EXPECT_EQ(red->GetDiffuseTexture(), "red.png");
  EXPECT_EQ(blue->GetDiffuseColor(0).b, 1.0f);
  EXPECT_EQ(blue->GetOpacity(0), 0.5);
  auto* mesh = dynamic_cast<MeshObject*>(engine.GetNodeByName("second")->GetObject());
  ASSERT_NE(mesh, nullptr);
  EXPECT_EQ(mesh->GetFaces().size(), 1u);
  EXPECT_EQ(mesh->GetObjectBoundingBox(0).max.z, 1.0);
}

TEST_F(AssetImportToolTest, ANodeWithTwoMeshesGetsAChildNodePerMeshBesideWhatTheSceneHad) {
  ASSERT_TRUE(engine.CreateEmptyNode(Orlo::Point3<double>(0, 0, 0), "existing"));
  // One glTF mesh of two primitives, each its own material: two meshes on one node. The
  // buffer holds one triangle, (0, 0, 0), (1, 0, 0), (0, 1, 0), as 9 floats.
  WriteText(PathOf("pair.gltf"), R"({
  "asset": {"version": "2.0"},
  "scene": 0,
  "scenes": [{"nodes": [0]}],
  "nodes": [{"name": "pair", "mesh": 0, "translation": [0, 0, 4]}],
  "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "material": 0},
                             {"attributes": {"POSITION": 0}, "material": 1}]}],
  "materials": [{"name": "left"}, {"name": "right"}],
  "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                 "min": [0, 0, 0], "max": [1, 1, 0]}],
  "bufferViews": [{"buffer": 0, "byteLength": 36}],
  "buffers": [{"byteLength": 36,
               "uri": "data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]
})");
  const Orlo::Status status = engine.ImportScene(PathOf("pair.gltf"));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_EQ(Tree(), (std::vector<std::string>{"existing", "pair", "  pair_mesh0", "  pair_mesh1"}));
  EXPECT_EQ(MaterialName("pair_mesh0"), "left");
  EXPECT_EQ(MaterialName("pair_mesh1"), "right");
  Node* part = engine.GetNodeByName("pair_mesh1");
  ASSERT_NE(part, nullptr);
  EXPECT_NE(dynamic_cast<MeshObject*>(part->GetObject()), nullptr);
  EXPECT_EQ(part->GetAbsoluteTM(0).m[3][2], 4.0);
}

TEST_F(AssetImportToolTest, CamerasAndLightsBecomeObjectsOfTheirNodes) {
  WriteText(PathOf("view.gltf"), R"({
  "asset": {"version": "2.0"},
  "extensionsUsed": ["KHR_lights_punctual"],
  "extensions": {"KHR_lights_punctual": {"lights": [
    {"type": "spot", "color": [1, 0.5, 0], "intensity": 2,
     "spot": {"innerConeAngle": 0.1, "outerConeAngle": 0.4}}]}},
  "scene": 0,
  "scenes": [{"nodes": [0, 1]}],
  "nodes": [
    {"name": "eye", "camera": 0, "translation": [0, -5, 2]},
    {"name": "lamp", "extensions": {"KHR_lights_punctual": {"light": 0}}}
  ],
  "cameras": [{"type": "perspective",
               "perspective": {"yfov": 0.8, "znear": 0.25, "zfar": 400, "aspectRatio": 1.5}}]
})");
  const Orlo::Status status = engine.ImportScene(PathOf("view.gltf"));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  ASSERT_NE(engine.GetNodeByName("eye"), nullptr);
  auto* camera = dynamic_cast<CameraObject*>(engine.GetNodeByName("eye")->GetObject());
  ASSERT_NE(camera, nullptr);
  EXPECT_NEAR(camera->GetNearClip(), 0.25, 1e-6);
  EXPECT_NEAR(camera->GetFarClip(), 400, 1e-4);
  EXPECT_NEAR(camera->GetAspectRatio(), 1.5, 1e-6);
  EXPECT_GT(camera->GetFieldOfView(), 0.0);
  EXPECT_EQ(engine.GetNodeByName("eye")->GetAbsoluteTM(0).m[3][1], -5.0);
  ASSERT_NE(engine.GetNodeByName("lamp"), nullptr);
  auto* light = dynamic_cast<LightObject*>(engine.GetNodeByName("lamp")->GetObject());
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->GetKind(), LightObject::kSpot);
  EXPECT_NEAR(light->GetIntensity(), 2.0, 1e-6);
  EXPECT_NEAR(light->GetColor().r, 1.0, 1e-6);
  EXPECT_NEAR(light->GetColor().g, 0.5, 1e-6);
  EXPECT_LT(light->GetInnerConeAngle(), light->GetOuterConeAngle());
}

TEST_F(AssetImportToolTest, AShearIsApproximatedAndCountedInTheMessage) {
  WriteText(PathOf("shear.gltf"), R"({
  "asset": {"version": "2.0"},
  "scene": 0,
  "scenes": [{"nodes": [0, 1]}],
  "nodes": [
    {"name": "sheared", "matrix": [1,0,0,0, 0.5,1,0,0, 0,0,1,0, 0,0,0,1]},
    {"name": "plain", "translation": [1, 2, 3]}
  ]
})");
  const Orlo::Status status = engine.ImportScene(PathOf("shear.gltf"));
  EXPECT_EQ(status.GetCode(), 0);
  EXPECT_EQ(status.GetMessage(),
            "AssetImportTool::Execute : 1 transforms were not position, rotation and scale; "
            "they were approximated.");
  Node* plain = engine.GetNodeByName("plain");
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(plain->GetAbsoluteTM(0).m[3][1], 2.0);
  EXPECT_NE(engine.GetNodeByName("sheared"), nullptr);
}

TEST_F(AssetImportToolTest, ACorruptOrTruncatedAssetGivesCode2AndChangesNothing) {
  ASSERT_TRUE(engine.CreateEmptyNode(Orlo::Point3<double>(1, 2, 3), "existing"));
  ASSERT_TRUE(engine.SaveScene(PathOf("before.orlo")).IsOk());
  const std::vector<std::uint8_t> before = ReadBytes(PathOf("before.orlo"));

  ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("whole.gltf")));
  const std::vector<std::uint8_t> whole = ReadBytes(PathOf("whole.gltf"));
  WriteText(PathOf("cut.gltf"), std::string(whole.begin(), whole.begin() + whole.size() / 2));
  WriteText(PathOf("noise.dae"), "<?xml version=\"1.0\"?><COLLADA><library_nodes><node");
  WriteText(PathOf("noise.obj"), "");
  for (const char* file : {"cut.gltf", "noise.dae", "noise.obj"}) {
    const Orlo::Status status = engine.ImportScene(PathOf(file));
    EXPECT_EQ(status.GetCode(), 2) << file;
    EXPECT_EQ(status.GetMessage().rfind("AssetImportTool::Execute : " + PathOf(file) + ": ", 0), 0u)
        << status.GetMessage();
    ASSERT_TRUE(engine.SaveScene(PathOf("after.orlo")).IsOk());
    EXPECT_EQ(ReadBytes(PathOf("after.orlo")), before) << file;
  }
}

TEST_F(AssetImportToolTest, ImportSaveLoadSaveGivesTheSameBytes) {
  ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("asset.gltf")));
  ASSERT_TRUE(engine.ImportScene(PathOf("asset.gltf")).IsOk());
  ASSERT_TRUE(engine.SaveScene(PathOf("first.orlo")).IsOk());
  Orlo::SceneEngine other;
  Orlo::SceneEngine::SetScene(&other);
  const Orlo::Status loaded = other.LoadScene(PathOf("first.orlo"));
  ASSERT_TRUE(loaded.IsOk()) << loaded.GetMessage();
  ASSERT_TRUE(other.SaveScene(PathOf("second.orlo")).IsOk());
  other.DeleteScene();
  Orlo::SceneEngine::SetScene(&engine);
  const std::vector<std::uint8_t> first = ReadBytes(PathOf("first.orlo"));
  EXPECT_GT(first.size(), 1000u);
  EXPECT_EQ(ReadBytes(PathOf("second.orlo")), first);
}

}  // namespace
}  // namespace orlo_assimp
