#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using InfoCommandTest = ToolTest;

TEST_F(InfoCommandTest, ReportsSizeBlocksPerClassNodesAndDepth) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const ToolRun run = Run({"info", path}, 0);
  EXPECT_EQ(run.out, "file:    " + path + "\n" +
                         "size:    " + std::to_string(ReadBytes(path).size()) + " bytes\n" +
                         "blocks:  239\n"
                         "nodes:   4\n"
                         "depth:   2\n"
                         "classes:\n"
                         "       1  MainScene                (100, 16, 16)\n"
                         "       6  BlockTable               (105, 32, 16)\n"
                         "       4  NodeTransform            (110, 16, 48)\n"
                         "       4  Node                     (115, 16, 32)\n"
                         "      56  DataBool                 (200, 64, 32)\n"
                         "       5  DataInt                  (200, 64, 48)\n"
                         "      76  DataFloat                (200, 64, 64)\n"
                         "       8  DataPoint3               (200, 64, 80)\n"
                         "       2  DataColor                (200, 64, 96)\n"
                         "       9  DataTable                (205, 64, 16)\n"
                         "      48  FloatController          (300, 48, 16)\n"
                         "      16  Point3Controller         (300, 48, 32)\n"
                         "       4  Transform3Controller     (300, 48, 48)\n"
                         "missing factories: none\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(InfoCommandTest, JsonGivesTheDocumentedShape) {
  const std::string path = WriteSmallScene("small.orlo", true);
  const ToolRun run = Run({"info", "--json", "--plugin", ExamplePluginPath(), path}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["file"], path);
  EXPECT_EQ(json["size"], ReadBytes(path).size());
  EXPECT_EQ(json["header_count"], json["blocks"]);
  EXPECT_EQ(json["nodes"], 4);
  EXPECT_EQ(json["depth"], 2);
  int counted = 0;
  bool torus = false;
  for (const auto& entry : json["classes"]) {
    counted += entry["count"].get<int>();
    EXPECT_TRUE(entry["registered"].get<bool>());
    if (entry["name"] == "Torus") {
      torus = true;
      EXPECT_EQ(entry["type"],
                nlohmann::json::parse(R"({"class_id": 510, "super_class_id": 300, "sub_id": 1})"));
      EXPECT_EQ(entry["count"], 1);
    }
  }
  EXPECT_TRUE(torus);
  EXPECT_EQ(counted, json["blocks"].get<int>());
  EXPECT_EQ(json["missing_factories"], nlohmann::json::array());
}

TEST_F(InfoCommandTest, NamesTheClassesWithoutAFactory) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun text = Run({"info", path}, 0);
  EXPECT_NE(text.out.find("       1  (no factory)             (510, 300, 1)\n"), std::string::npos)
      << text.out;
  EXPECT_NE(text.out.find("missing factories: (510, 300, 1)\n"), std::string::npos) << text.out;

  const ToolRun json_run = Run({"info", "--json", path}, 0);
  const nlohmann::json json = nlohmann::json::parse(json_run.out);
  EXPECT_EQ(json["missing_factories"],
            nlohmann::json::parse(R"([{"class_id": 510, "super_class_id": 300, "sub_id": 1}])"));
}

TEST_F(InfoCommandTest, AMissingFileIsReportedOnOneLine) {
  const ToolRun run = Run({"info", Path("nowhere.orlo")}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: " + Path("nowhere.orlo") + ": no such file\n");
}

TEST_F(InfoCommandTest, ACutFileIsReportedOnOneLineWithThePlaceOfTheDamage) {
  const std::string path = WriteSmallScene("small.orlo", false);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  bytes.resize(100);
  WriteBytes(path, bytes);
  const ToolRun run = Run({"info", path}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "orlo: " + path + ": not a readable scene file: chunk 0x0005 at offset 0: length " +
                std::to_string(ReadBytes(WriteSmallScene("whole.orlo", false)).size() - 12) +
                " exceeds the 88 bytes left in the file\n");
}

TEST_F(InfoCommandTest, AFileThatIsNotASceneIsReported) {
  const std::string path = Path("notes.txt");
  WriteBytes(path, {'h', 'e', 'l', 'l', 'o', '\n'});
  const ToolRun run = Run({"info", path}, 2);
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: " + path + ": not a readable scene file: ", 0), 0u) << run.err;
}

TEST_F(InfoCommandTest, AFolderIsNotAFile) {
  const ToolRun run = Run({"info", m_folder}, 2);
  EXPECT_EQ(run.err, "orlo: " + m_folder + ": not a regular file\n");
}

}  // namespace
}  // namespace Orlo::cli::testing
