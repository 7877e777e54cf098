// orlo: looks into, checks and builds scene files from the command line.
//
// The command line is parsed first; then the block classes are registered (the base library,
// the example scene's classes, then the plug-ins) and the chosen subcommand runs. Every
// factory is destroyed before the process ends.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>

#include "tools/orlo/command.h"
#include "tools/orlo/commands/blocks_command.h"
#include "tools/orlo/commands/convert_command.h"
#include "tools/orlo/commands/demo_command.h"
#include "tools/orlo/commands/diff_command.h"
#include "tools/orlo/commands/eval_command.h"
#include "tools/orlo/commands/graph_command.h"
#include "tools/orlo/commands/info_command.h"
#include "tools/orlo/commands/plugins_command.h"
#include "tools/orlo/commands/tree_command.h"
#include "tools/orlo/commands/validate_command.h"
#include "tools/orlo/demo/demo_library.h"
#include "tools/orlo/plugin_loader.h"

namespace Orlo::cli {
namespace {

// Destroys the registered factories when main() returns, whatever way it does.
struct FactoryRegistry {
  FactoryRegistry() {
    RegisterBaseLibrary();
    RegisterDemoLibrary();
  }
  ~FactoryRegistry() { SceneEngine::DestroyFactories(); }
  FactoryRegistry(const FactoryRegistry&) = delete;
  FactoryRegistry& operator=(const FactoryRegistry&) = delete;
};

// Loads the plug-ins of ORLO_PLUGIN_PATH's folders, then those named on the command line. A
// plug-in of the folders that fails is reported and skipped; one named with --plugin that
// fails ends the run, as any bad argument does.
bool LoadPlugins(PluginLoader& loader, const std::vector<std::string>& named) {
  if (const char* folders = std::getenv(kPluginPathVariable)) {
    for (const std::string& folder : PluginLoader::SplitPath(folders)) {
      for (const std::string& library : PluginLoader::ListFolder(folder)) {
        Status status = loader.Load(library);
        if (!status.IsOk()) ReportError("plug-in " + library, status.GetMessage());
      }
    }
  }
  for (const std::string& library : named) {
    Status status = loader.Load(library);
    if (!status.IsOk()) {
      ReportError("plug-in " + library, status.GetMessage());
      return false;
    }
  }
  return true;
}

int Main(int argc, char** argv) {
  CLI::App app("Looks into, checks and builds Orlo scene files.", "orlo");
  app.require_subcommand(1);
  app.fallthrough();
  std::vector<std::string> plugins;
  app.add_option("--plugin", plugins,
                 "Shared library that registers block classes (repeatable); the folders of "
                 "ORLO_PLUGIN_PATH are loaded first")
      // One library per --plugin, so that `info --plugin x.so FILE` leaves FILE alone.
      ->allow_extra_args(false);

  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<DemoCommand>());
  commands.push_back(std::make_unique<InfoCommand>());
  commands.push_back(std::make_unique<TreeCommand>());
  commands.push_back(std::make_unique<BlocksCommand>());
  commands.push_back(std::make_unique<ValidateCommand>());
  commands.push_back(std::make_unique<EvalCommand>());
  commands.push_back(std::make_unique<GraphCommand>());
  commands.push_back(std::make_unique<ConvertCommand>());
  commands.push_back(std::make_unique<DiffCommand>());
  commands.push_back(std::make_unique<PluginsCommand>());
  std::vector<CLI::App*> subcommands;
  for (const auto& command : commands) subcommands.push_back(command->Add(app));

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
      return app.exit(error);  // --help
    }
    std::string message = error.what();
    return ReportError("usage", message + " (see orlo --help)");
  }

  FactoryRegistry registry;
  PluginLoader loader;
  if (!LoadPlugins(loader, plugins)) return kExitFailure;
  ToolContext context;
  context.plugins = loader.Loaded();
  for (std::size_t i = 0; i < commands.size(); ++i) {
    if (subcommands[i]->parsed()) return commands[i]->Run(context);
  }
  return kExitFailure;  // not reached: exactly one subcommand is required
}

}  // namespace
}  // namespace Orlo::cli

int main(int argc, char** argv) { return Orlo::cli::Main(argc, argv); }
