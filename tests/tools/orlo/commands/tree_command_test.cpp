#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using TreeCommandTest = ToolTest;

TEST_F(TreeCommandTest, PrintsTheHierarchyWithObjectClasses) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun run = Run({"tree", "--plugin", ExamplePluginPath(), path}, 0);
  EXPECT_EQ(run.out,
            "MainNode\n"
            "  base\n"
            "    tip  object: Torus\n"
            "  lamp\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(TreeCommandTest, NamesAnObjectOfAnUnregisteredClassByItsType) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun run = Run({"tree", path}, 0);
  EXPECT_EQ(run.out,
            "MainNode\n"
            "  base\n"
            "    tip  object: unknown (510, 300, 1)\n"
            "  lamp\n");
}

TEST_F(TreeCommandTest, JsonListsNodesInPreOrderWithTheirParents) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun run = Run({"tree", "--json", "--plugin", ExamplePluginPath(), path}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["file"], path);
  const nlohmann::json& nodes = json["nodes"];
  ASSERT_EQ(nodes.size(), 4u);
  const char* names[] = {"MainNode", "base", "tip", "lamp"};
  const int parents[] = {-1, 0, 1, 0};
  const int depths[] = {0, 1, 2, 1};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(nodes[i]["name"], names[i]);
    EXPECT_EQ(nodes[i]["parent"], parents[i]);
    EXPECT_EQ(nodes[i]["depth"], depths[i]);
    EXPECT_EQ(nodes[i]["material"], nullptr);
    EXPECT_TRUE(nodes[i]["block"].is_number_unsigned());
  }
  EXPECT_EQ(nodes[2]["object"], "Torus");
  EXPECT_EQ(nodes[0]["object"], nullptr);
}

TEST_F(TreeCommandTest, ACorruptFileIsReportedOnOneLine) {
  const std::string path = WriteSmallScene("small.orlo", false);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  bytes[4] = 0xff;  // the scene chunk's length now runs past the file
  WriteBytes(path, bytes);
  const ToolRun run = Run({"tree", path}, 2);
  EXPECT_EQ(run.out, "");
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(
      run.err.rfind("orlo: " + path + ": not a readable scene file: chunk 0x0005 at offset 0", 0),
      0u)
      << run.err;
}

TEST_F(TreeCommandTest, AMissingFileIsReportedOnOneLine) {
  const ToolRun run = Run({"tree", Path("nowhere.orlo")}, 2);
  EXPECT_EQ(run.err, "orlo: " + Path("nowhere.orlo") + ": no such file\n");
}

}  // namespace
}  // namespace Orlo::cli::testing
