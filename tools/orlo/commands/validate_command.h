// Defines ValidateCommand, `orlo validate FILE`: every check a loader makes of a scene file,
// with every problem listed, not only the first, and then whether the file loads.
#pragma once

#include "tools/orlo/file_command.h"

namespace Orlo::cli {

class ValidateCommand : public FileCommand {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;
};

}  // namespace Orlo::cli
