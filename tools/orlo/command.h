// Defines Command, one subcommand of the orlo tool, the tool's exit statuses, and the helpers
// through which every subcommand reports errors.
//
// main() creates every command, lets each add its subcommand and options to the CLI11 app,
// parses the command line, registers the block classes (base library, the demo's classes,
// plug-ins) and then runs the one command that was chosen.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace Orlo::cli {

// 0 when all went well; 1 when the file has problems (validate) or the files differ (diff);
// 2 for bad usage, an unreadable file, or an operation that failed.
enum ExitStatus { kExitOk = 0, kExitProblems = 1, kExitFailure = 2 };

// What main() has set up by the time a command runs.
struct ToolContext {
  // The plug-in libraries loaded, in load order.
  std::vector<std::string> plugins;
};

class Command {
 public:
  virtual ~Command() = default;
  // Adds the subcommand, with its options and help, to `app`, and returns it.
  virtual CLI::App* Add(CLI::App& app) = 0;
  // Runs the subcommand once the command line is parsed; returns the exit status.
  virtual int Run(const ToolContext& context) = 0;
};

// Writes "orlo: <subject>: <problem>" as one line to stderr and returns kExitFailure.
int ReportError(const std::string& subject, const std::string& problem);

}  // namespace Orlo::cli
