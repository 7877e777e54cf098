// Runs the built orlo tool as a child process and collects what it printed.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace Orlo::cli::testing {

struct ToolRun {
  // The exit status, or -1 when the tool did not exit normally (killed by a signal).
  int exit_code = -1;
  std::string out;
  std::string err;
};

struct ToolOptions {
  // The working directory of the child; the test's own when empty.
  std::string directory;
  // Environment variables to set in the child. ORLO_PLUGIN_PATH is always removed from the
  // inherited environment first, so that a developer's setting does not leak into tests.
  std::map<std::string, std::string> environment;
};

// Runs `orlo <arguments...>` and waits for it.
ToolRun RunTool(const std::vector<std::string>& arguments, const ToolOptions& options = {});

// The path of the built tool and of the example plug-in.
std::string ToolPath();
std::string ExamplePluginPath();

}  // namespace Orlo::cli::testing
