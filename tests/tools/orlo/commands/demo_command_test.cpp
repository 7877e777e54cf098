#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <boost/filesystem.hpp>
#include <nlohmann/json.hpp>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using DemoCommandTest = ToolTest;

TEST_F(DemoCommandTest, WritesDemoOrloInTheCurrentFolderAndPrintsTreeAndPositions) {
  ToolOptions options;
  options.directory = m_folder;
  const ToolRun run = Run({"demo"}, 0, options);
  const std::string path = Path("demo.orlo");
  ASSERT_TRUE(boost::filesystem::exists(path));
  const std::string size = std::to_string(ReadBytes(path).size());
  EXPECT_EQ(run.out, "wrote demo.orlo (" + size +
                         " bytes, 432 blocks)\n"
                         "loaded it back and saved it again: the same " +
                         size +
                         " bytes\n"
                         "node tree:\n"
                         "  MainNode\n"
                         "    turntable\n"
                         "      arm\n"
                         "        box  object: DemoDeformerStack  material: DemoMaterial\n"
                         "          marker\n"
                         "          camera_aim\n"
                         "    camera  object: DemoCamera\n"
                         "world positions (x, y, z):\n"
                         "  time 0:\n"
                         "    turntable    0.000   0.000   0.000\n"
                         "    arm          2.000   0.000   0.000\n"
                         "    box          2.000   0.000   1.000\n"
                         "    marker       2.000   0.000   1.500\n"
                         "    camera_aim   2.000   0.000   1.000\n"
                         "    camera       0.000 -10.000   4.000\n"
                         "  time 50:\n"
                         "    turntable    0.000   0.000   0.000\n"
                         "    arm          0.000   3.000   0.000\n"
                         "    box          0.000   3.000   1.250\n"
                         "    marker       0.625   3.000   1.250\n"
                         "    camera_aim   0.000   3.000   1.250\n"
                         "    camera       0.000 -10.000   4.000\n"
                         "  time 100:\n"
                         "    turntable    0.000   0.000   0.000\n"
                         "    arm         -4.000   0.000   1.000\n"
                         "    box         -4.000   0.000   2.500\n"
                         "    marker      -4.000   0.000   1.750\n"
                         "    camera_aim  -4.000   0.000   2.500\n"
                         "    camera       0.000 -10.000   4.000\n");
  EXPECT_EQ(run.err, "");
  // The check file of the second save is gone.
  EXPECT_FALSE(boost::filesystem::exists(path + ".check"));
}

TEST_F(DemoCommandTest, TwoRunsWriteTheSameBytes) {
  Run({"demo", "--output", Path("first.orlo")}, 0);
  Run({"demo", "-o", Path("second.orlo")}, 0);
  const std::vector<std::uint8_t> first = ReadBytes(Path("first.orlo"));
  EXPECT_FALSE(first.empty());
  EXPECT_EQ(first, ReadBytes(Path("second.orlo")));
}

TEST_F(DemoCommandTest, TheDemoFileUsesEveryKindTheToolKnows) {
  const std::string path = Path("demo.orlo");
  Run({"demo", "--output", path}, 0);
  const ToolRun run = Run({"info", "--json", path}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["missing_factories"], nlohmann::json::array());
  EXPECT_EQ(json["nodes"], 7);
  EXPECT_EQ(json["depth"], 4);
  std::vector<std::string> names;
  for (const auto& entry : json["classes"]) names.push_back(entry["name"]);
  for (const char* name : {"DataBool", "DataInt", "DataFloat", "DataPoint3", "DataColor",
                           "DataString", "FloatController", "LookAtController", "DemoMaterial",
                           "DemoBox", "DemoDeformerStack", "DemoDeformer", "DemoCamera"}) {
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
  }
}

TEST_F(DemoCommandTest, AnOutputThatCannotBeWrittenIsReportedOnOneLine) {
  const std::string path = Path("no/such/folder/demo.orlo");
  const ToolRun run = Run({"demo", "--output", path}, 2);
  EXPECT_EQ(run.out, "");
  ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: " + path + ": ", 0), 0u) << run.err;
}

}  // namespace
}  // namespace Orlo::cli::testing
