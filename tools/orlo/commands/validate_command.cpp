#include "tools/orlo/commands/validate_command.h"

#include <iostream>
#include <vector>

#include <orlo/base/engine/scene_engine.h>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/current_engine.h"
#include "tools/orlo/json_output.h"
#include "tools/orlo/scene_checks.h"

namespace Orlo::cli {

CLI::App* ValidateCommand::Add(CLI::App& app) {
  return AddFileCommand(app, "validate",
                        "Check framing, header count, block numbers, dependency numbers, "
                        "cycles, factories and whether the file loads; list every problem",
                        true);
}

int ValidateCommand::Run(const ToolContext&) {
  SceneFile file;
  // Damage is what this command reports: the file only has to exist and be readable.
  if (!ReadFile(&file, /*allow_damage=*/true)) return kExitFailure;
  BlockCatalog catalog;
  std::vector<FileProblem> problems = CheckSceneFile(file, catalog);
  // Last, the loader itself: it may refuse what the checks above cannot see (a block's own
  // payload, say), and a file with problems is expected to fail here too.
  {
    SceneEngine engine;
    CurrentEngine current(&engine);
    const Status status = engine.LoadScene(m_path);
    if (!status.IsOk()) {
      problems.push_back(
          FileProblem{0, kCheckLoad, "the file does not load: " + status.GetMessage()});
    }
  }

  if (m_json) {
    Json json;
    json["file"] = m_path;
    json["ok"] = problems.empty();
    json["problems"] = Json::array();
    for (const FileProblem& problem : problems) {
      Json item;
      item["offset"] = problem.offset;
      item["check"] = problem.check;
      item["message"] = problem.message;
      json["problems"].push_back(item);
    }
    std::cout << json.dump(2) << '\n';
  } else {
    for (const FileProblem& problem : problems) {
      std::cout << m_path << ": offset " << problem.offset << ": " << problem.check << ": "
                << problem.message << '\n';
    }
    if (problems.empty()) {
      std::cout << m_path << ": ok (" << file.blocks.size() << " blocks)\n";
    } else {
      std::cout << m_path << ": " << problems.size()
                << (problems.size() == 1 ? " problem\n" : " problems\n");
    }
  }
  return problems.empty() ? kExitOk : kExitProblems;
}

}  // namespace Orlo::cli
