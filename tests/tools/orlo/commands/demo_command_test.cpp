#include <gtest/gtest.h>

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
  EXPECT_EQ(run.out, "wrote demo.orlo (" + std::to_string(ReadBytes(path).size()) + DEMO_GOLDEN);
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
  EXPECT_EQ(json["nodes"], 6);
  EXPECT_EQ(json["depth"], 4);
  std::vector<std::string> names;
  for (const auto& entry : json["classes"]) names.push_back(entry["name"]);
  for (const char* name : {"DataBool", "DataInt", "DataFloat", "DataPoint3", "DataColor",
                           "DataString", "FloatController", "DemoMaterial", "DemoBox",
                           "DemoDeformerStack", "DemoDeformer", "DemoCamera"}) {
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
