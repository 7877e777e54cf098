#include "tools/orlo/commands/blocks_command.h"

#include <iostream>
#include <string>
#include <vector>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/json_output.h"

namespace Orlo::cli {

CLI::App* BlocksCommand::Add(CLI::App& app) {
  return AddFileCommand(app, "blocks",
                        "Every block record: number, type, class, payload size and the "
                        "dependency numbers by slot name",
                        true);
}

int BlocksCommand::Run(const ToolContext&) {
  SceneFile file;
  // A damaged file still shows the blocks before the damage; the damage is reported after.
  if (!ReadFile(&file, /*allow_damage=*/true)) return kExitFailure;
  BlockCatalog catalog;

  Json json;
  if (m_json) {
    json["file"] = m_path;
    json["header_count"] = file.has_header ? Json(file.header_count) : Json();
    json["blocks"] = Json::array();
  }
  for (std::size_t i = 0; i < file.blocks.size(); ++i) {
    const BlockRecord& record = file.blocks[i];
    const std::vector<std::string> slots = catalog.SlotNames(file, i);
    const std::string name = record.has_info ? catalog.ClassName(record.type) : "";
    if (m_json) {
      Json item;
      item["index"] = i;
      item["number"] = record.has_info ? Json(record.number) : Json();
      item["offset"] = record.offset;
      item["type"] = record.has_info ? TypeJson(record.type) : Json();
      item["class"] = name.empty() ? Json() : Json(name);
      item["payload_size"] = record.data_size;
      item["dependencies"] = Json::array();
      for (std::size_t slot = 0; slot < slots.size(); ++slot) {
        Json dependency;
        dependency["slot"] = slots[slot];
        dependency["block"] = record.dependencies[slot];
        item["dependencies"].push_back(dependency);
      }
      json["blocks"].push_back(item);
      continue;
    }
    std::string line = "block " + std::to_string(i);
    if (record.has_info && record.number != i) {
      line += " (numbered " + std::to_string(record.number) + ")";
    }
    line += ": " + (record.has_info
                        ? (name.empty() ? "(no factory)" : name) + " " + TypeText(record.type)
                        : std::string("(no block info)"));
    line += ", payload " + std::to_string(record.data_size) + " bytes, offset " +
            std::to_string(record.offset);
    std::cout << line << '\n';
    if (!slots.empty()) {
      std::string dependencies = "  ";
      for (std::size_t slot = 0; slot < slots.size(); ++slot) {
        if (slot != 0) dependencies += ", ";
        const std::int32_t target = record.dependencies[slot];
        dependencies +=
            slots[slot] + " " + (target == -1 ? std::string("-") : std::to_string(target));
      }
      std::cout << dependencies << '\n';
    }
  }
  if (m_json) std::cout << json.dump(2) << '\n';
  if (!file.framing_intact || !file.has_scene_chunk) {
    return ReportError(m_path, "not a readable scene file: " + file.problems.front().message);
  }
  return kExitOk;
}

}  // namespace Orlo::cli
