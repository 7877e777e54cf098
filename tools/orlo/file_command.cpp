#include "tools/orlo/file_command.h"

namespace Orlo::cli {

CLI::App* FileCommand::AddFileCommand(CLI::App& app, const std::string& name,
                                      const std::string& help, bool json) {
  CLI::App* command = app.add_subcommand(name, help);
  command->add_option("FILE", m_path, "Scene file to read")->required();
  if (json) command->add_flag("--json", m_json, "Print JSON instead of text");
  return command;
}

bool FileCommand::ReadFile(SceneFile* file, bool allow_damage) {
  Status status = ReadSceneFile(m_path, file);
  if (!status.IsOk()) {
    ReportError(m_path, status.GetMessage());
    return false;
  }
  if (allow_damage) return true;
  if (!file->framing_intact || !file->has_scene_chunk) {
    ReportError(m_path, "not a readable scene file: " + file->problems.front().message);
    return false;
  }
  return true;
}

}  // namespace Orlo::cli
