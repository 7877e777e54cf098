// Defines InfoCommand, `orlo info FILE`: a scene file's size, blocks per class, node count,
// hierarchy depth and the classes without a registered factory.
#pragma once

#include "tools/orlo/file_command.h"

namespace Orlo::cli {

class InfoCommand : public FileCommand {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;
};

}  // namespace Orlo::cli
