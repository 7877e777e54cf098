// Defines TreeCommand, `orlo tree FILE`: the node hierarchy with each node's name and the
// class names of its object and material.
#pragma once

#include "tools/orlo/file_command.h"

namespace Orlo::cli {

class TreeCommand : public FileCommand {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;
};

}  // namespace Orlo::cli
