// Defines EvalCommand, `orlo eval FILE [--time T ...] [--json|--csv]`: the absolute matrix of
// every node at each time, through the engine's whole-scene evaluation.
#pragma once

#include <string>
#include <vector>

#include "tools/orlo/command.h"

namespace Orlo::cli {

class EvalCommand : public Command {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;

 private:
  std::string m_path;
  std::vector<int> m_times;
  bool m_json = false;
  bool m_csv = false;
};

}  // namespace Orlo::cli
