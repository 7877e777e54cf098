// Defines GraphCommand, `orlo graph FILE [--nodes-only]`: the block graph of a scene file, or
// only its node hierarchy, in Graphviz dot, so that `orlo graph x.orlo | dot -Tsvg > x.svg`
// draws it.
#pragma once

#include "tools/orlo/file_command.h"

namespace Orlo::cli {

class GraphCommand : public FileCommand {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;

 private:
  bool m_nodes_only = false;
};

}  // namespace Orlo::cli
