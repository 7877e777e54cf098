#include "tools/orlo/commands/info_command.h"

#include <cstdio>
#include <iostream>
#include <map>
#include <tuple>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/json_output.h"
#include "tools/orlo/scene_hierarchy.h"

namespace Orlo::cli {

namespace {

constexpr unsigned kNodeClass = 115;

struct ClassCount {
  BlockType type;
  std::string name;
  bool registered = false;
  int count = 0;
};

}  // namespace

CLI::App* InfoCommand::Add(CLI::App& app) {
  return AddFileCommand(app, "info",
                        "File size, blocks per class, node count, hierarchy depth and the "
                        "classes without a registered factory",
                        true);
}

int InfoCommand::Run(const ToolContext&) {
  SceneFile file;
  if (!ReadFile(&file)) return kExitFailure;
  BlockCatalog catalog;

  // Sorted by type, so that the listing does not depend on the order of blocks in the file.
  std::map<std::tuple<unsigned, unsigned, unsigned>, ClassCount> classes;
  int node_blocks = 0;
  for (const BlockRecord& record : file.blocks) {
    if (!record.has_info) continue;
    const BlockType type = record.type;
    ClassCount& entry = classes[std::make_tuple(type.class_id, type.super_class_id, type.sub_id)];
    if (entry.count == 0) {
      entry.type = type;
      entry.name = catalog.ClassName(type);
      entry.registered = BlockCatalog::FindFactory(type) != nullptr;
    }
    ++entry.count;
    if (type.class_id == kNodeClass) ++node_blocks;
  }
  const SceneHierarchy hierarchy = BuildSceneHierarchy(file, catalog);

  if (m_json) {
    Json json;
    json["file"] = m_path;
    json["size"] = file.bytes.size();
    json["header_count"] = file.has_header ? Json(file.header_count) : Json();
    json["blocks"] = file.blocks.size();
    json["nodes"] = node_blocks;
    json["depth"] = hierarchy.depth;
    json["classes"] = Json::array();
    json["missing_factories"] = Json::array();
    for (const auto& [key, entry] : classes) {
      Json item;
      item["name"] = entry.name.empty() ? Json() : Json(entry.name);
      item["type"] = TypeJson(entry.type);
      item["count"] = entry.count;
      item["registered"] = entry.registered;
      json["classes"].push_back(item);
      if (!entry.registered) json["missing_factories"].push_back(TypeJson(entry.type));
    }
    std::cout << json.dump(2) << '\n';
    return kExitOk;
  }

  std::cout << "file:    " << m_path << '\n';
  std::cout << "size:    " << file.bytes.size() << " bytes\n";
  std::cout << "blocks:  " << file.blocks.size();
  if (file.has_header && file.header_count != file.blocks.size()) {
    std::cout << " (the header counts " << file.header_count << ")";
  }
  std::cout << '\n';
  std::cout << "nodes:   " << node_blocks << '\n';
  std::cout << "depth:   " << hierarchy.depth << '\n';
  std::cout << "classes:\n";
  std::string missing;
  for (const auto& [key, entry] : classes) {
    char line[160];
    std::snprintf(line, sizeof(line), "  %6d  %-24s %s\n", entry.count,
                  entry.name.empty() ? "(no factory)" : entry.name.c_str(),
                  TypeText(entry.type).c_str());
    std::cout << line;
    if (!entry.registered) missing += (missing.empty() ? "" : ", ") + TypeText(entry.type);
  }
  std::cout << "missing factories: " << (missing.empty() ? "none" : missing) << '\n';
  return kExitOk;
}

}  // namespace Orlo::cli
