#include "tools/orlo/commands/diff_command.h"

#include <iostream>
#include <vector>

#include <boost/filesystem.hpp>

#include <orlo/base/engine/scene_engine.h>

#include "tools/orlo/current_engine.h"
#include "tools/orlo/json_output.h"
#include "tools/orlo/scene_diff.h"

namespace Orlo::cli {

namespace {

Json TextOrNull(const std::string& text, bool present) { return present ? Json(text) : Json(); }

}  // namespace

CLI::App* DiffCommand::Add(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "diff",
      "What differs between two scene files: nodes added or removed, and below each node the "
      "blocks, parameter values, controller keys and classes that changed, one line each. "
      "Exit status 0 when the scenes are the same, 1 when they differ");
  command->add_option("A", m_first, "First scene file")->required();
  command->add_option("B", m_second, "Second scene file")->required();
  command->add_flag("--json", m_json, "Print JSON instead of text");
  return command;
}

bool DiffCommand::Describe(const std::string& path, SceneDescription* out) {
  boost::system::error_code error;
  const boost::filesystem::file_status status = boost::filesystem::status(path, error);
  if (!boost::filesystem::exists(status)) {
    ReportError(path, "no such file");
    return false;
  }
  if (!boost::filesystem::is_regular_file(status)) {
    ReportError(path, "not a regular file");
    return false;
  }
  SceneEngine engine;
  CurrentEngine current(&engine);
  const Status loaded = engine.LoadScene(path);
  if (!loaded.IsOk()) {
    ReportError(path, "cannot load: " + loaded.GetMessage());
    return false;
  }
  *out = DescribeScene(engine);
  // The scene goes while its engine is still the current one, as its blocks expect.
  engine.DeleteScene();
  return true;
}

int DiffCommand::Run(const ToolContext&) {
  // One scene at a time: the first is described and let go before the second loads.
  SceneDescription first;
  if (!Describe(m_first, &first)) return kExitFailure;
  SceneDescription second;
  if (!Describe(m_second, &second)) return kExitFailure;
  const std::vector<Difference> differences = DiffScenes(first, second);

  if (m_json) {
    Json json;
    json["a"] = m_first;
    json["b"] = m_second;
    json["identical"] = differences.empty();
    json["differences"] = Json::array();
    for (const Difference& difference : differences) {
      const bool node_kind =
          difference.kind == Difference::kNodeAdded || difference.kind == Difference::kNodeRemoved;
      const bool has_before = difference.kind == Difference::kBlockRemoved ||
                              difference.kind == Difference::kClassChanged ||
                              difference.kind == Difference::kChanged ||
                              difference.kind == Difference::kRemoved;
      const bool has_after = difference.kind == Difference::kBlockAdded ||
                             difference.kind == Difference::kClassChanged ||
                             difference.kind == Difference::kChanged ||
                             difference.kind == Difference::kAdded;
      const bool has_field = difference.kind == Difference::kChanged ||
                             difference.kind == Difference::kAdded ||
                             difference.kind == Difference::kRemoved;
      Json item;
      item["kind"] = KindName(difference.kind);
      item["node"] = difference.node;
      item["block"] = TextOrNull(difference.block, !difference.block.empty());
      item["field"] = TextOrNull(difference.field, has_field);
      item["a"] = TextOrNull(difference.before, has_before);
      item["b"] = TextOrNull(difference.after, has_after);
      item["nodes_below"] = node_kind ? Json(difference.nodes_below) : Json();
      item["text"] = FormatDifference(difference);
      json["differences"].push_back(item);
    }
    std::cout << json.dump(2) << '\n';
  } else {
    for (const Difference& difference : differences) {
      std::cout << FormatDifference(difference) << '\n';
    }
  }
  return differences.empty() ? kExitOk : kExitProblems;
}

}  // namespace Orlo::cli
