#include "tools/orlo/commands/convert_command.h"

#include <algorithm>
#include <cctype>

#include <boost/filesystem.hpp>

#include <orlo/base/engine/scene_engine.h>

#include "tools/orlo/current_engine.h"

namespace Orlo::cli {

namespace {

// The extension of the tool's own scene files.
constexpr const char* kSceneExtension = ".orlo";

// Whether `path` names a scene file: its extension, in lower case as the engine compares
// extensions, is ".orlo".
bool IsSceneFile(const std::string& path) {
  std::string extension = boost::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension == kSceneExtension;
}

}  // namespace

CLI::App* ConvertCommand::Add(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "convert",
      "Read IN and write OUT through the import and export tools registered for their "
      "extensions; .orlo scene files are loaded and saved directly");
  command->add_option("IN", m_input, "File to read")->required();
  command->add_option("OUT", m_output, "File to write")->required();
  return command;
}

int ConvertCommand::Run(const ToolContext&) {
  SceneEngine engine;
  CurrentEngine current(&engine);
  Status status;
  if (IsSceneFile(m_input)) {
    status = engine.LoadScene(m_input);
  } else {
    // An import tool reads into the scene it is given.
    engine.InitScene();
    status = engine.ImportScene(m_input);
  }
  if (!status.IsOk()) return ReportError(m_input, "cannot read: " + status.GetMessage());
  status = IsSceneFile(m_output) ? engine.SaveScene(m_output) : engine.ExportScene(m_output);
  if (!status.IsOk()) return ReportError(m_output, "cannot write: " + status.GetMessage());
  return kExitOk;
}

}  // namespace Orlo::cli
