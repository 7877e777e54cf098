// The plug-in module as the orlo tool loads it: `orlo convert` run as a process between asset
// files and scene files.
#include <sys/wait.h>

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugins/assimp/mesh_object.h"
#include "tests/plugins/assimp/asset_fixture.h"
#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

struct ProcessRun {
  int exit_code = -1;
  std::string out;
  std::string err;
};

class OrloAssimpPluginTest : public testing::PluginTest {
 protected:
  // Runs `command` through the shell (the test's own paths need no quoting) and collects its
  // exit code, standard output and standard error.
  ProcessRun Run(const std::string& command) {
    ProcessRun run;
    const std::string err_path = PathOf("stderr.txt");
    FILE* pipe = popen((command + " 2>" + err_path).c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[4096];
    std::size_t read;
    while ((read = fread(buffer, 1, sizeof buffer, pipe)) > 0) run.out.append(buffer, read);
    const int status = pclose(pipe);
    run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    const std::vector<std::uint8_t> err = ReadBytes(err_path);
    run.err.assign(err.begin(), err.end());
    return run;
  }

  static std::string Tool() {
    return std::string(ORLO_TOOL_PATH) + " --plugin " + ORLO_ASSIMP_PLUGIN_PATH;
  }
};

TEST_F(OrloAssimpPluginTest, ConvertsAGltfAssetIntoASceneFile) {
  ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("model.gltf")));
  const ProcessRun run =
      Run(Tool() + " convert " + PathOf("model.gltf") + " " + PathOf("scene.orlo"));
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  const Orlo::Status loaded = engine.LoadScene(PathOf("scene.orlo"));
  ASSERT_TRUE(loaded.IsOk()) << loaded.GetMessage();
  testing::ExpectAssetMatrices(engine);
  EXPECT_EQ(engine.GetNodeByName("arm")->GetParent(), engine.GetNodeByName("base"));
  EXPECT_NE(dynamic_cast<MeshObject*>(engine.GetNodeByName("hand")->GetObject()), nullptr);
}

TEST_F(OrloAssimpPluginTest, ConvertsASceneFileIntoABinaryGltfAsset) {
  ASSERT_TRUE(testing::WriteTestAsset("gltf2", PathOf("model.gltf")));
  ASSERT_TRUE(engine.ImportScene(PathOf("model.gltf")).IsOk());
  ASSERT_TRUE(engine.SaveScene(PathOf("scene.orlo")).IsOk());
  const ProcessRun run = Run(Tool() + " convert " + PathOf("scene.orlo") + " " + PathOf("out.glb"));
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const std::vector<std::uint8_t> bytes = ReadBytes(PathOf("out.glb"));
  ASSERT_GE(bytes.size(), 4u);
  EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "glTF");

  Orlo::SceneEngine other;
  Orlo::SceneEngine::SetScene(&other);
  other.InitScene();
  ASSERT_TRUE(other.ImportScene(PathOf("out.glb")).IsOk());
  testing::ExpectAssetMatrices(other);
  other.DeleteScene();
  Orlo::SceneEngine::SetScene(&engine);
}

TEST_F(OrloAssimpPluginTest, AnUnreadableAssetEndsTheRunWithStatus2) {
  WriteText(PathOf("broken.gltf"), "{\"asset\": {\"version\": ");
  const ProcessRun run =
      Run(Tool() + " convert " + PathOf("broken.gltf") + " " + PathOf("scene.orlo"));
  EXPECT_EQ(run.exit_code, 2);
  const std::string prefix = "orlo: " + PathOf("broken.gltf") +
                             ": cannot read: AssetImportTool::Execute : " + PathOf("broken.gltf") +
                             ": ";
  EXPECT_EQ(run.err.rfind(prefix, 0), 0u) << run.err;
  EXPECT_FALSE(boost::filesystem::exists(PathOf("scene.orlo")));
}

TEST_F(OrloAssimpPluginTest, TheModuleIsFoundThroughTheEnvironmentsPluginFolders) {
  const std::string folder_of_module =
      boost::filesystem::path(ORLO_ASSIMP_PLUGIN_PATH).parent_path().string();
  const ProcessRun run =
      Run("ORLO_PLUGIN_PATH=" + folder_of_module + " " + ORLO_TOOL_PATH + " plugins --json");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_NE(run.out.find("\"AssetImportTool\""), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("\".gltf\""), std::string::npos);
  EXPECT_NE(run.out.find("\".glb\""), std::string::npos);
}

}  // namespace
}  // namespace orlo_assimp
