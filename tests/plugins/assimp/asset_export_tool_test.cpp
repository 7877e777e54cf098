#include "plugins/assimp/asset_export_tool.h"

#include <gtest/gtest.h>

#include "tests/plugins/assimp/plugin_test.h"

namespace orlo_assimp {
namespace {

class AssetExportToolTest : public testing::PluginTest {};

TEST_F(AssetExportToolTest, WritesTheRequiredFormats) {
  for (const char* extension : {".gltf", ".glb", ".obj", ".dae", ".ply", ".stl"}) {
    EXPECT_NE(AssetExportTool::FormatFor(extension), "") << extension;
  }
  EXPECT_EQ(AssetExportTool::FormatFor(".gltf"), "gltf2");
  EXPECT_EQ(AssetExportTool::FormatFor(".GLB"), "glb2");
  EXPECT_EQ(AssetExportTool::FormatFor(".nothing"), "");
}

}  // namespace
}  // namespace orlo_assimp
