// The orlo tool's command line as a whole: help, subcommand choice, usage errors.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using ToolCommandLineTest = ToolTest;

TEST_F(ToolCommandLineTest, HelpListsEverySubcommandAndExitsZero) {
  const ToolRun run = Run({"--help"}, 0);
  for (const char* name : {"demo", "info", "tree", "blocks", "validate", "eval", "graph", "convert",
                           "diff", "plugins"}) {
    EXPECT_NE(run.out.find(std::string("  ") + name), std::string::npos) << name;
  }
  EXPECT_EQ(run.err, "");
}

TEST_F(ToolCommandLineTest, EverySubcommandHasHelp) {
  for (const char* name : {"demo", "info", "tree", "blocks", "validate", "eval", "graph", "convert",
                           "diff", "plugins"}) {
    const ToolRun run = Run({name, "--help"}, 0);
    EXPECT_NE(run.out.find("Usage:"), std::string::npos) << name;
  }
}

TEST_F(ToolCommandLineTest, NoSubcommandIsAUsageErrorOnOneLine) {
  const ToolRun run = Run({}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: usage: A subcommand is required (see orlo --help)\n");
}

TEST_F(ToolCommandLineTest, AnUnknownOptionIsAUsageError) {
  const ToolRun run = Run({"info", "--frobnicate", WriteSmallScene("a.orlo", false)}, 2);
  EXPECT_EQ(Lines(run.err).size(), 1u);
  EXPECT_EQ(run.err.rfind("orlo: usage: ", 0), 0u) << run.err;
  EXPECT_NE(run.err.find("--frobnicate"), std::string::npos) << run.err;
}

TEST_F(ToolCommandLineTest, AMissingFileArgumentIsAUsageError) {
  const ToolRun run = Run({"tree"}, 2);
  EXPECT_EQ(run.err, "orlo: usage: FILE is required (see orlo --help)\n");
}

TEST_F(ToolCommandLineTest, TwoFilesWhereOneIsExpectedIsAUsageError) {
  const std::string path = WriteSmallScene("a.orlo", false);
  const ToolRun run = Run({"info", path, path}, 2);
  EXPECT_EQ(Lines(run.err).size(), 1u) << run.err;
  EXPECT_EQ(run.err.rfind("orlo: usage: ", 0), 0u) << run.err;
}

TEST_F(ToolCommandLineTest, EveryFileCommandRefusesAnUnknownOptionAsAUsageError) {
  const std::string path = WriteSmallScene("a.orlo", false);
  for (const char* name : {"info", "tree", "blocks", "validate", "eval", "graph", "convert"}) {
    std::vector<std::string> arguments{name, "--no-such-option", path};
    if (std::string(name) == "convert") arguments.push_back(Path("b.orlo"));
    const ToolRun run = Run(arguments, 2);
    EXPECT_EQ(run.out, "") << name;
    ASSERT_EQ(Lines(run.err).size(), 1u) << name << ": " << run.err;
    EXPECT_EQ(run.err.rfind("orlo: usage: ", 0), 0u) << name << ": " << run.err;
  }
  const ToolRun demo = Run({"demo", "--output"}, 2);
  EXPECT_EQ(demo.err.rfind("orlo: usage: ", 0), 0u) << demo.err;
}

TEST_F(ToolCommandLineTest, EveryFileCommandReportsACorruptFileOnOneLine) {
  const std::string path = WriteSmallScene("a.orlo", false);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  bytes[4] ^= 0x40;  // the scene chunk's length no longer matches the file
  WriteBytes(path, bytes);
  for (const char* name : {"info", "tree", "blocks", "eval", "graph", "convert"}) {
    std::vector<std::string> arguments{name, path};
    if (std::string(name) == "convert") arguments.push_back(Path("b.orlo"));
    const ToolRun run = Run(arguments, 2);
    ASSERT_EQ(Lines(run.err).size(), 1u) << name << ": " << run.err;
    EXPECT_EQ(run.err.rfind("orlo: " + path + ": ", 0), 0u) << name << ": " << run.err;
  }
  // validate reports the damage as the file's problem.
  const ToolRun validate = Run({"validate", path}, 1);
  EXPECT_EQ(validate.err, "");
  EXPECT_NE(validate.out.find(": framing: chunk 0x"), std::string::npos) << validate.out;
}

}  // namespace
}  // namespace Orlo::cli::testing
