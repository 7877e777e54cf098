// Plug-in loading through the tool: --plugin, ORLO_PLUGIN_PATH, and the failures it reports.
#include <gtest/gtest.h>

#include <string>

#include <boost/filesystem.hpp>
#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using PluginLoaderTest = ToolTest;

bool ListsFactory(const nlohmann::json& json, const std::string& name) {
  for (const auto& factory : json["factories"]) {
    if (factory["name"] == name) return true;
  }
  return false;
}

TEST_F(PluginLoaderTest, APluginNamedOnTheCommandLineRegistersItsClasses) {
  const ToolRun run = Run({"plugins", "--json", "--plugin", ExamplePluginPath()}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_TRUE(ListsFactory(json, "Torus"));
  EXPECT_TRUE(ListsFactory(json, "NodeListExporter"));
  EXPECT_EQ(json["plugins"], nlohmann::json::array({ExamplePluginPath()}));
  EXPECT_EQ(run.err, "");
}

TEST_F(PluginLoaderTest, ThePluginOptionMayFollowTheSubcommand) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun run = Run({"info", path, "--plugin", ExamplePluginPath()}, 0);
  EXPECT_NE(run.out.find("missing factories: none"), std::string::npos) << run.out;
}

TEST_F(PluginLoaderTest, PluginsInTheFoldersOfThePluginPathAreLoaded) {
  const std::string folder = Path("plugins");
  boost::filesystem::create_directories(folder);
  const std::string copy = folder + "/libexample.so";
  boost::filesystem::copy_file(ExamplePluginPath(), copy);
  ToolOptions options;
  options.environment["ORLO_PLUGIN_PATH"] = Path("empty-entry-before") + "::" + folder;
  const ToolRun run = Run({"plugins", "--json"}, 0, options);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_TRUE(ListsFactory(json, "Torus"));
  EXPECT_EQ(json["plugins"], nlohmann::json::array({copy}));
}

TEST_F(PluginLoaderTest, WithoutPluginsThePluginClassesAreNotRegistered) {
  const ToolRun run = Run({"plugins", "--json"}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_FALSE(ListsFactory(json, "Torus"));
  EXPECT_EQ(json["plugins"], nlohmann::json::array());
}

TEST_F(PluginLoaderTest, ANamedPluginThatCannotBeLoadedEndsTheRunNamingItAndWhy) {
  const std::string missing = Path("missing.so");
  const ToolRun run = Run({"plugins", "--plugin", missing}, 2);
  EXPECT_EQ(run.out, "");
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: plug-in " + missing + ": cannot load: ", 0), 0u) << run.err;
  EXPECT_NE(run.err.find("No such file"), std::string::npos) << run.err;
}

TEST_F(PluginLoaderTest, ALibraryWithoutTheRegistrationFunctionIsRefused) {
  const ToolRun run = Run({"plugins", "--plugin", ORLO_NOT_A_PLUGIN_PATH}, 2);
  EXPECT_EQ(run.err, std::string("orlo: plug-in ") + ORLO_NOT_A_PLUGIN_PATH +
                         ": no function OrloRegisterPlugin\n");
}

TEST_F(PluginLoaderTest, ABrokenPluginInAFolderIsReportedAndSkipped) {
  const std::string folder = Path("plugins");
  boost::filesystem::create_directories(folder);
  WriteBytes(folder + "/libbroken.so", {'n', 'o', 't', ' ', 'E', 'L', 'F'});
  boost::filesystem::copy_file(ExamplePluginPath(), folder + "/libexample.so");
  ToolOptions options;
  options.environment["ORLO_PLUGIN_PATH"] = folder;
  const ToolRun run = Run({"plugins", "--json"}, 0, options);
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: plug-in " + folder + "/libbroken.so: cannot load: ", 0), 0u)
      << run.err;
  EXPECT_TRUE(ListsFactory(nlohmann::json::parse(run.out), "Torus"));
}

TEST_F(PluginLoaderTest, TheSamePluginGivenTwiceRegistersOnce) {
  const ToolRun run = Run(
      {"plugins", "--json", "--plugin", ExamplePluginPath(), "--plugin", ExamplePluginPath()}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  int toruses = 0;
  for (const auto& factory : json["factories"]) toruses += factory["name"] == "Torus" ? 1 : 0;
  EXPECT_EQ(toruses, 1);
  EXPECT_EQ(json["plugins"].size(), 1u);
}

}  // namespace
}  // namespace Orlo::cli::testing
