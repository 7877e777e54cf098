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
  EXPECT_EQ(run.out, PLUGINS_GOLDEN);
  EXPECT_EQ(run.err, "");
}

TEST_F(PluginsCommandTest, JsonListsTypesAndTheExportExtensionsOfAPlugin) {
  const ToolRun run = Run({"plugins", "--json", "--plugin", ExamplePluginPath()}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  const nlohmann::json& factories = json["factories"];
  ASSERT_EQ(factories.size(), 21u);
  EXPECT_EQ(factories[0]["name"], "BlockTable");
  EXPECT_EQ(factories[0]["type"],
            nlohmann::json::parse(R"({"class_id": 105, "super_class_id": 32, "sub_id": 16})"));
  EXPECT_EQ(factories[19]["name"], "Torus");
  EXPECT_EQ(factories[20]["name"], "NodeListExporter");
  EXPECT_EQ(factories[20]["type"]["class_id"], 100010);
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
