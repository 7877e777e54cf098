// Defines FileCommand, the base of the subcommands that read one scene file: the FILE
// argument, the --json flag, and the reading of the file with its errors reported.
#pragma once

#include <string>

#include "tools/orlo/command.h"
#include "tools/orlo/scene_file.h"

namespace Orlo::cli {

class FileCommand : public Command {
 protected:
  // Adds the subcommand `name` with a FILE argument and, when `json` is true, --json.
  CLI::App* AddFileCommand(CLI::App& app, const std::string& name, const std::string& help,
                           bool json);
  // Reads m_path into `file`. False, after one error line, when the file cannot be read or
  // its chunk framing is damaged (when `allow_damage` is false).
  bool ReadFile(SceneFile* file, bool allow_damage = false);

  std::string m_path;
  bool m_json = false;
};

}  // namespace Orlo::cli
