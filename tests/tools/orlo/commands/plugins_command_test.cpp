#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using PluginsCommandTest = ToolTest;

TEST_F(PluginsCommandTest, ListsTheFactoriesInRegistrationOrder) {
  const ToolRun run = Run({"plugins"}, 0);
  EXPECT_EQ(run.out,
            "factories (20):\n"
            "  BlockTable                   (105, 32, 16)\n"
            "  BezierKeysController         (300, 48, 16)\n"
            "  Point3Controller             (300, 48, 32)\n"
            "  Transform3Controller         (300, 48, 48)\n"
            "  LookAtController             (300, 48, 64)\n"
            "  NodeTransform                (110, 16, 48)\n"
            "  Node                         (115, 16, 32)\n"
            "  MainScene                    (100, 16, 16)\n"
            "  DataFloat                    (200, 64, 64)\n"
            "  DataInt                      (200, 64, 48)\n"
            "  DataBool                     (200, 64, 32)\n"
            "  DataPoint3                   (200, 64, 80)\n"
            "  DataColor                    (200, 64, 96)\n"
            "  DataString                   (200, 64, 112)\n"
            "  DataTable                    (205, 64, 16)\n"
            "  DemoCamera                   (600, 128, 784)\n"
            "  DemoBox                      (510, 200, 2)\n"
            "  DemoMaterial                 (405, 200, 3)\n"
            "  DemoDeformer                 (800, 200, 4)\n"
            "  DemoDeformerStack            (520, 200, 5)\n"
            "import extensions: none\n"
            "export extensions: none\n"
            "plug-ins: none\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(PluginsCommandTest, JsonListsTypesAndTheExportExtensionsOfAPlugin) {
  const ToolRun run = Run({"plugins", "--json", "--plugin", ExamplePluginPath()}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  const nlohmann::json& factories = json["factories"];
  ASSERT_EQ(factories.size(), 22u);
  EXPECT_EQ(factories[0]["name"], "BlockTable");
  EXPECT_EQ(factories[0]["type"],
            nlohmann::json::parse(R"({"class_id": 105, "super_class_id": 32, "sub_id": 16})"));
  EXPECT_EQ(factories[20]["name"], "Torus");
  EXPECT_EQ(factories[21]["name"], "NodeListExporter");
  EXPECT_EQ(factories[21]["type"]["class_id"], 100010);
  EXPECT_EQ(json["import_extensions"], nlohmann::json::array());
  EXPECT_EQ(json["export_extensions"], nlohmann::json::array({".nodes"}));
  EXPECT_EQ(json["plugins"], nlohmann::json::array({ExamplePluginPath()}));
}

TEST_F(PluginsCommandTest, ExtraArgumentsAreAUsageError) {
  const ToolRun run = Run({"plugins", "extra"}, 2);
  EXPECT_EQ(run.out, "");
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: usage: ", 0), 0u) << run.err;
}

}  // namespace
}  // namespace Orlo::cli::testing
