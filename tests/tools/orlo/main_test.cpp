// The orlo tool's command line as a whole: help, subcommand choice, usage errors.
#include <gtest/gtest.h>

#include <string>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using ToolCommandLineTest = ToolTest;

TEST_F(ToolCommandLineTest, HelpListsEverySubcommandAndExitsZero) {
  const ToolRun run = Run({"--help"}, 0);
  for (const char* name :
       {"demo", "info", "tree", "blocks", "validate", "eval", "graph", "convert", "plugins"}) {
    EXPECT_NE(run.out.find(std::string("  ") + name), std::string::npos) << name;
  }
  EXPECT_EQ(run.err, "");
}

TEST_F(ToolCommandLineTest, EverySubcommandHasHelp) {
  for (const char* name :
       {"demo", "info", "tree", "blocks", "validate", "eval", "graph", "convert", "plugins"}) {
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

}  // namespace
}  // namespace Orlo::cli::testing
