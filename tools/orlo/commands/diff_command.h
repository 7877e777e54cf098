// Defines DiffCommand, `orlo diff A B [--json]`: what differs between two scene files, one
// line per difference, as paths of node names and slot names down to the block and field.
// Exit status 0 when the scenes are the same, 1 when they differ, 2 when either file cannot be
// read or loaded.
#pragma once

#include <string>

#include "tools/orlo/command.h"
#include "tools/orlo/scene_description.h"

namespace Orlo::cli {

class DiffCommand : public Command {
 public:
  CLI::App* Add(CLI::App& app) override;
  int Run(const ToolContext& context) override;

 private:
  // Loads `path` into an engine of its own, made current for the load, and describes its
  // scene; the engine and its scene are gone when this returns. False, after one error line,
  // when the file cannot be read or does not load.
  static bool Describe(const std::string& path, SceneDescription* out);

  std::string m_first;
  std::string m_second;
  bool m_json = false;
};

}  // namespace Orlo::cli
