#include "tools/orlo/commands/eval_command.h"

#include <cstdio>
#include <iostream>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>

#include "tools/orlo/current_engine.h"
#include "tools/orlo/json_output.h"

namespace Orlo::cli {

namespace {

// Shortest text that reads back as the same double.
std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.17g", value);
  return text;
}

}  // namespace

CLI::App* EvalCommand::Add(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "eval",
      "The absolute matrix of every node at each time, from the whole-scene evaluation (rows "
      "0 to 2 the axes, row 3 the position)");
  command->add_option("FILE", m_path, "Scene file to load")->required();
  command->add_option("-t,--time", m_times, "Time to evaluate at (repeatable; default 0)")
      ->allow_extra_args(false);
  CLI::Option* json = command->add_flag("--json", m_json, "Print JSON");
  CLI::Option* csv = command->add_flag("--csv", m_csv, "Print CSV, one row per node and time");
  json->excludes(csv);
  return command;
}

int EvalCommand::Run(const ToolContext&) {
  if (m_times.empty()) m_times.push_back(0);
  SceneEngine engine;
  CurrentEngine current(&engine);
  const Status status = engine.LoadScene(m_path);
  if (!status.IsOk()) return ReportError(m_path, "cannot load: " + status.GetMessage());

  Json json;
  if (m_json) {
    json["file"] = m_path;
    json["times"] = Json::array();
  }
  if (m_csv) {
    std::cout << "time,node,name";
    for (int row = 0; row < 4; ++row) {
      for (int column = 0; column < 3; ++column) std::cout << ",m" << row << column;
    }
    std::cout << '\n';
  }
  for (int time : m_times) {
    std::vector<SceneEngine::NodeMatrix> nodes;
    engine.GetAbsoluteTMs(time, nodes);
    Json entry;
    entry["time"] = time;
    entry["nodes"] = Json::array();
    if (!m_json && !m_csv) std::cout << "time " << time << ":\n";
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      const auto& m = nodes[i].matrix.m;
      const std::string name = nodes[i].node->GetName();
      if (m_json) {
        Json item;
        item["node"] = i;
        item["name"] = name;
        item["matrix"] = Json::array();
        for (int row = 0; row < 4; ++row) {
          item["matrix"].push_back(Json::array({m[row][0], m[row][1], m[row][2]}));
        }
        entry["nodes"].push_back(item);
      } else if (m_csv) {
        // Names are quoted, quotes doubled, so that any name is one field.
        std::string quoted = "\"";
        for (char c : name) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
        std::cout << time << ',' << i << ',' << quoted << '"';
        for (int row = 0; row < 4; ++row) {
          for (int column = 0; column < 3; ++column) std::cout << ',' << Number(m[row][column]);
        }
        std::cout << '\n';
      } else {
        std::cout << "  " << i << ' ' << name << ":";
        for (int row = 0; row < 4; ++row) {
          std::cout << (row == 0 ? " [" : " [");
          for (int column = 0; column < 3; ++column) {
            std::cout << (column == 0 ? "" : " ") << Number(m[row][column]);
          }
          std::cout << ']';
        }
        std::cout << '\n';
      }
    }
    if (m_json) json["times"].push_back(entry);
  }
  if (m_json) std::cout << json.dump(2) << '\n';
  return kExitOk;
}

}  // namespace Orlo::cli
