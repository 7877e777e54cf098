// Defines PluginsCommand, `orlo plugins`: the registered block factories, the extensions of
// the import and export tools, and the plug-in libraries loaded.
#pragma once

#include "tools/orlo/command.h"

namespace Orlo::cli {

class PluginsCommand : public Command {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;

 private:
  bool m_json = false;
};

}  // namespace Orlo::cli
