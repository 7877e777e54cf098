#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

class ValidateCommandTest : public ToolTest {
 protected:
  // The block records of `path`, as `orlo blocks --json` gives them.
  static nlohmann::json Blocks(const std::string& path) {
    return nlohmann::json::parse(RunTool({"blocks", "--json", path}).out)["blocks"];
  }

  static void PutUInt32(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }

  // Offsets in a block chunk at `offset` whose payload is `payload` bytes:
  // | 0x15 header 12 | 0x05 header 12 | class, super, sub, number | 0x20 header 12 | payload |
  // | 0x10 header 12 | count | slot 0 | slot 1 | ...
  static std::size_t NumberAt(std::size_t offset) { return offset + 12 + 12 + 12; }
  static std::size_t SlotAt(std::size_t offset, std::size_t payload, std::size_t slot) {
    return offset + 12 + 28 + 12 + payload + 12 + 4 + 4 * slot;
  }

  static nlohmann::json Problems(const std::string& path, int expected_exit) {
    const ToolRun run = Run({"validate", "--json", path}, expected_exit);
    return nlohmann::json::parse(run.out);
  }
};

TEST_F(ValidateCommandTest, ASoundFileIsOk) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const std::size_t blocks = Blocks(path).size();
  const ToolRun run = Run({"validate", path}, 0);
  EXPECT_EQ(run.out, path + ": ok (" + std::to_string(blocks) + " blocks)\n");
  EXPECT_EQ(run.err, "");
  const nlohmann::json json = Problems(path, 0);
  EXPECT_EQ(json["file"], path);
  EXPECT_EQ(json["ok"], true);
  EXPECT_EQ(json["problems"], nlohmann::json::array());
}

TEST_F(ValidateCommandTest, AClassWithoutAFactoryIsAProblemUnlessAPluginBringsIt) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const nlohmann::json blocks = Blocks(path);
  std::size_t torus = 0;
  while (blocks[torus]["type"]["class_id"] != 510) ++torus;
  const std::uint64_t offset = blocks[torus]["offset"];
  const ToolRun run = Run({"validate", path}, 1);
  EXPECT_EQ(run.out, path + ": offset " + std::to_string(offset) +
                         ": factory: no factory registered for class (510, 300, 1) (1 block, "
                         "first block " +
                         std::to_string(torus) + " (chunk 0x0015 at offset " +
                         std::to_string(offset) + "))\n" + path +
                         ": offset 0: load: the file does not load: SceneEngine::LoadBlocks : "
                         "Couldn't find a factory for one or more blocks.\n" +
                         path + ": 2 problems\n");
  Run({"validate", "--plugin", ExamplePluginPath(), path}, 0);
}

TEST_F(ValidateCommandTest, EveryProblemIsListedWithItsOffset) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const nlohmann::json blocks = Blocks(path);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  // Block 2 claims the number 9; the main scene's first slot names a block past the end; the
  // header counts one block more than the file holds.
  const std::size_t block2 = blocks[2]["offset"];
  PutUInt32(bytes, NumberAt(block2), 9);
  const std::size_t scene = blocks[0]["offset"];
  PutUInt32(bytes, SlotAt(scene, blocks[0]["payload_size"], 0), 100000);
  PutUInt32(bytes, 24, static_cast<std::uint32_t>(blocks.size() + 1));
  WriteBytes(path, bytes);

  const nlohmann::json json = Problems(path, 1);
  EXPECT_EQ(json["ok"], false);
  const nlohmann::json& problems = json["problems"];
  ASSERT_EQ(problems.size(), 5u) << json.dump(2);
  EXPECT_EQ(problems[0]["check"], "header");
  EXPECT_EQ(problems[0]["offset"], 0);
  EXPECT_EQ(problems[0]["message"], "the header counts " + std::to_string(blocks.size() + 1) +
                                        " blocks but the scene chunk holds " +
                                        std::to_string(blocks.size()));
  EXPECT_EQ(problems[1]["check"], "dependency");
  EXPECT_EQ(problems[1]["offset"], scene);
  EXPECT_EQ(problems[1]["message"],
            "block 0 (chunk 0x0015 at offset 28): slot data_table holds block number 100000, "
            "outside the file's " +
                std::to_string(blocks.size() + 1) + " blocks");
  EXPECT_EQ(problems[2]["check"], "block_number");
  EXPECT_EQ(problems[2]["offset"], block2);
  EXPECT_EQ(problems[2]["message"], "block 2 (chunk 0x0015 at offset " + std::to_string(block2) +
                                        "): holds block number 9; the block at position 2 "
                                        "must be numbered 2");
  EXPECT_EQ(problems[3]["check"], "factory");
  EXPECT_EQ(problems[4]["check"], "load");
  EXPECT_EQ(problems[4]["offset"], 0);
}

TEST_F(ValidateCommandTest, ALinkThatWouldCloseACycleIsAProblem) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const nlohmann::json blocks = Blocks(path);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  // Block 1, the main scene's parameter table, now holds the main scene in its first slot.
  ASSERT_EQ(blocks[1]["class"], "DataTable");
  PutUInt32(bytes, SlotAt(blocks[1]["offset"], blocks[1]["payload_size"], 0), 0);
  WriteBytes(path, bytes);
  const nlohmann::json json = Problems(path, 1);
  ASSERT_EQ(json["problems"].size(), 2u) << json.dump(2);
  EXPECT_EQ(json["problems"][0]["check"], "cycle");
  EXPECT_EQ(json["problems"][0]["offset"], blocks[1]["offset"]);
  EXPECT_EQ(json["problems"][0]["message"],
            "block 1 (chunk 0x0015 at offset 112): slot MainScene links block 0, which would "
            "close a cycle; a loader refuses the link");
  EXPECT_EQ(json["problems"][1]["check"], "load");
  EXPECT_EQ(json["problems"][1]["message"].get<std::string>().rfind(
                "the file does not load: SceneEngine::", 0),
            0u)
      << json.dump(2);
}

TEST_F(ValidateCommandTest, ACutFileIsAFramingProblemAndTheRestIsStillChecked) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const nlohmann::json blocks = Blocks(path);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  bytes.resize(bytes.size() - 5);
  WriteBytes(path, bytes);
  const nlohmann::json json = Problems(path, 1);
  const nlohmann::json& problems = json["problems"];
  ASSERT_GE(problems.size(), 2u) << json.dump(2);
  EXPECT_EQ(problems[0]["check"], "framing");
  EXPECT_EQ(problems[0]["offset"], 0);
  EXPECT_EQ(problems[0]["message"],
            "chunk 0x0005 at offset 0: length " + std::to_string(bytes.size() + 5 - 12) +
                " exceeds the " + std::to_string(bytes.size() - 12) + " bytes left in the file");
  EXPECT_EQ(problems[1]["check"], "framing");
  bool factory = false;
  for (const auto& problem : problems) factory = factory || problem["check"] == "factory";
  EXPECT_TRUE(factory) << json.dump(2);
  EXPECT_EQ(problems.back()["check"], "load");
}

TEST_F(ValidateCommandTest, AnEmptyFileIsAProblem) {
  const std::string path = Path("empty.orlo");
  WriteBytes(path, {});
  const ToolRun run = Run({"validate", path}, 1);
  EXPECT_EQ(run.out,
            path + ": offset 0: header: file: the file holds no chunk\n" + path +
                ": offset 0: load: the file does not load: SceneEngine::LoadScene : The file is "
                "not a SceneEngine file. Couldn't load any blocks.\n" +
                path + ": 2 problems\n");
}

TEST_F(ValidateCommandTest, AMissingFileIsNotAProblemOfTheFileButAFailure) {
  const ToolRun run = Run({"validate", Path("nowhere.orlo")}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: " + Path("nowhere.orlo") + ": no such file\n");
}

}  // namespace
}  // namespace Orlo::cli::testing
