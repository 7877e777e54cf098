#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using BlocksCommandTest = ToolTest;

TEST_F(BlocksCommandTest, PrintsEachRecordWithItsDependenciesBySlotName) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const ToolRun run = Run({"blocks", path}, 0);
  const std::vector<std::string> lines = Lines(run.out);
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[0], "block 0: MainScene (100, 16, 16), payload 0 bytes, offset 28");
  EXPECT_EQ(lines[1], "  data_table 1, main_node 5, scene_tools 237, materials 238");
  EXPECT_EQ(lines[2], "block 1: DataTable (205, 64, 16), payload 16 bytes, offset 112");
  EXPECT_EQ(lines[3], "  DataColor 2, DataColor 3, DataInt 4");
  EXPECT_EQ(run.err, "");
}

TEST_F(BlocksCommandTest, JsonListsEveryBlockIncludingUnregisteredClasses) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun run = Run({"blocks", "--json", path}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  const nlohmann::json& blocks = json["blocks"];
  ASSERT_EQ(blocks.size(), json["header_count"].get<std::size_t>());
  int nodes = 0;
  int unknown = 0;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    const nlohmann::json& block = blocks[i];
    EXPECT_EQ(block["index"], i);
    EXPECT_EQ(block["number"], i);
    EXPECT_GT(block["offset"].get<std::uint64_t>(), 0u);
    for (const auto& dependency : block["dependencies"]) {
      EXPECT_GE(dependency["block"].get<int>(), -1);
      EXPECT_LT(dependency["block"].get<int>(), static_cast<int>(blocks.size()));
    }
    if (block["class"] == "Node") {
      ++nodes;
      std::vector<std::string> slots;
      for (const auto& dependency : block["dependencies"]) slots.push_back(dependency["slot"]);
      EXPECT_EQ(slots, (std::vector<std::string>{"data_table", "object", "material", "children",
                                                 "transform"}));
    }
    if (block["class"].is_null()) {
      ++unknown;
      EXPECT_EQ(block["type"],
                nlohmann::json::parse(R"({"class_id": 510, "super_class_id": 300, "sub_id": 1})"));
      // One chunk of two doubles: a 12-byte header and 16 bytes.
      EXPECT_EQ(block["payload_size"], 28);
      EXPECT_EQ(block["dependencies"], nlohmann::json::array());
    }
  }
  EXPECT_EQ(nodes, 4);
  EXPECT_EQ(unknown, 1);
}

TEST_F(BlocksCommandTest, ADamagedFileShowsTheBlocksBeforeTheDamageAndFails) {
  const std::string path = WriteSmallScene("small.orlo", false);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  const ToolRun whole = Run({"blocks", "--json", path}, 0);
  const nlohmann::json blocks = nlohmann::json::parse(whole.out)["blocks"];
  // Cut the file in the middle of the fourth block's chunk: only three are whole.
  bytes.resize(blocks[3]["offset"].get<std::size_t>() + 20);
  WriteBytes(path, bytes);
  const ToolRun run = Run({"blocks", "--json", path}, 2);
  EXPECT_EQ(nlohmann::json::parse(run.out)["blocks"].size(), 3u);
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: " + path + ": not a readable scene file: ", 0), 0u) << run.err;
}

TEST_F(BlocksCommandTest, AMissingFileIsReportedOnOneLine) {
  const ToolRun run = Run({"blocks", Path("nowhere.orlo")}, 2);
  EXPECT_EQ(run.err, "orlo: " + Path("nowhere.orlo") + ": no such file\n");
}

}  // namespace
}  // namespace Orlo::cli::testing
