// Defines DemoCommand, `orlo demo [--output FILE]`: builds the example scene, saves it, loads
// it back, checks that saving it again gives the same bytes, and prints its node tree and the
// world positions of its nodes at a few times.
#pragma once

#include <string>

#include "tools/orlo/command.h"

namespace Orlo::cli {

class DemoCommand : public Command {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;

 private:
  std::string m_output = "demo.orlo";
};

}  // namespace Orlo::cli
