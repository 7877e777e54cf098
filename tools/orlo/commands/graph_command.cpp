#include "tools/orlo/commands/graph_command.h"

#include <iostream>
#include <string>
#include <vector>

#include <orlo/base/engine/scene_engine.h>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/scene_hierarchy.h"

namespace Orlo::cli {

namespace {

// A dot string literal: quotes and backslashes escaped, control characters dropped.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (c == '\n') {
      quoted += "\\n";
    } else if (static_cast<unsigned char>(c) >= 0x20) {
      quoted += c;
    }
  }
  return quoted + "\"";
}

// "Class" or "Class\nname" for the blocks that have names (nodes, modifiers, materials,
// textures).
std::string Label(const SceneFile& file, BlockCatalog& catalog, std::size_t index) {
  const BlockRecord& record = file.blocks[index];
  if (!record.has_info) return "(no block info)";
  std::string label = catalog.DisplayName(record.type);
  ScopedBlock block = catalog.Instantiate(file, record);
  if (block && SceneEngine::HasName(block.get())) {
    label += "\n" + SceneEngine::GetName(block.get());
  }
  return label;
}

}  // namespace

CLI::App* GraphCommand::Add(CLI::App& app) {
  CLI::App* command =
      AddFileCommand(app, "graph",
                     "The block graph (or the node hierarchy) in Graphviz dot: blocks labelled "
                     "by class and name, links by slot name",
                     false);
  command->add_flag("--nodes-only", m_nodes_only, "Only the node hierarchy");
  return command;
}

int GraphCommand::Run(const ToolContext&) {
  SceneFile file;
  if (!ReadFile(&file)) return kExitFailure;
  BlockCatalog catalog;

  std::cout << "digraph scene {\n  node [shape=box, fontname=\"Helvetica\"];\n"
               "  edge [fontname=\"Helvetica\", fontsize=10];\n";
  if (m_nodes_only) {
    const SceneHierarchy hierarchy = BuildSceneHierarchy(file, catalog);
    for (const HierarchyNode& node : hierarchy.nodes) {
      std::cout << "  b" << node.record << " [label=" << Quoted(Label(file, catalog, node.record))
                << "];\n";
    }
    for (const HierarchyNode& node : hierarchy.nodes) {
      if (node.parent < 0) continue;
      std::cout << "  b" << hierarchy.nodes[static_cast<std::size_t>(node.parent)].record << " -> b"
                << node.record << ";\n";
    }
  } else {
    for (std::size_t i = 0; i < file.blocks.size(); ++i) {
      std::cout << "  b" << i << " [label=" << Quoted(Label(file, catalog, i)) << "];\n";
    }
    for (std::size_t i = 0; i < file.blocks.size(); ++i) {
      const std::vector<std::string> slots = catalog.SlotNames(file, i);
      const std::vector<std::int32_t>& targets = file.blocks[i].dependencies;
      for (std::size_t slot = 0; slot < targets.size(); ++slot) {
        const std::int32_t target = targets[slot];
        if (target < 0 || static_cast<std::size_t>(target) >= file.blocks.size()) continue;
        std::cout << "  b" << i << " -> b" << target << " [label=" << Quoted(slots[slot]) << "];\n";
      }
    }
  }
  std::cout << "}\n";
  return kExitOk;
}

}  // namespace Orlo::cli
