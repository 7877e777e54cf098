#include "tools/orlo/commands/tree_command.h"

#include <iostream>
#include <string>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/json_output.h"
#include "tools/orlo/scene_hierarchy.h"

namespace Orlo::cli {

namespace {

std::string ClassOf(const SceneFile& file, BlockCatalog& catalog, long record) {
  if (record < 0 || !file.blocks[static_cast<std::size_t>(record)].has_info) return "";
  return catalog.DisplayName(file.blocks[static_cast<std::size_t>(record)].type);
}

}  // namespace

CLI::App* TreeCommand::Add(CLI::App& app) {
  return AddFileCommand(app, "tree",
                        "The node hierarchy, with each node's object and material classes", true);
}

int TreeCommand::Run(const ToolContext&) {
  SceneFile file;
  if (!ReadFile(&file)) return kExitFailure;
  BlockCatalog catalog;
  const SceneHierarchy hierarchy = BuildSceneHierarchy(file, catalog);
  if (hierarchy.nodes.empty()) return ReportError(m_path, "the scene has no main node");

  if (m_json) {
    Json json;
    json["file"] = m_path;
    json["nodes"] = Json::array();
    for (const HierarchyNode& node : hierarchy.nodes) {
      Json item;
      item["name"] = node.name;
      item["block"] = node.record;
      item["parent"] = node.parent;
      item["depth"] = node.depth;
      const std::string object = ClassOf(file, catalog, node.object);
      const std::string material = ClassOf(file, catalog, node.material);
      item["object"] = object.empty() ? Json() : Json(object);
      item["material"] = material.empty() ? Json() : Json(material);
      json["nodes"].push_back(item);
    }
    std::cout << json.dump(2) << '\n';
    return kExitOk;
  }

  for (const HierarchyNode& node : hierarchy.nodes) {
    std::string line(static_cast<std::size_t>(node.depth) * 2, ' ');
    line += node.name.empty() ? "(unnamed)" : node.name;
    const std::string object = ClassOf(file, catalog, node.object);
    const std::string material = ClassOf(file, catalog, node.material);
    if (!object.empty()) line += "  object: " + object;
    if (!material.empty()) line += "  material: " + material;
    std::cout << line << '\n';
  }
  return kExitOk;
}

}  // namespace Orlo::cli
