// Defines ConvertCommand, `orlo convert IN OUT`: reads IN and writes OUT through the import
// and export tools registered for their extensions; scene files (".orlo") on either side are
// loaded and saved directly.
#pragma once

#include <string>

#include "tools/orlo/command.h"

namespace Orlo::cli {

class ConvertCommand : public Command {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;

 private:
  std::string m_input;
  std::string m_output;
};

}  // namespace Orlo::cli
