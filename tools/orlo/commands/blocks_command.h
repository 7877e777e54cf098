// Defines BlocksCommand, `orlo blocks FILE`: every block record of a scene file, read from
// the chunk structure itself, so that blocks of unregistered classes are listed too.
#pragma once

#include "tools/orlo/file_command.h"

namespace Orlo::cli {

class BlocksCommand : public FileCommand {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;
};

}  // namespace Orlo::cli
