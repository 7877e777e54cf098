#include "tools/orlo/commands/plugins_command.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/export_tool.h>
#include <orlo/base/scene/import_tool.h>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/json_output.h"

namespace Orlo::cli {

namespace {

constexpr unsigned kImportToolClass = 100005;
constexpr unsigned kExportToolClass = 100010;

// The extensions of the tool a factory makes, as ImportScene and ExportScene ask for them.
template <typename Tool>
std::vector<std::string> ToolExtensions(BlockFactory* factory) {
  ScopedBlock block(factory->GetBlock(true));
  auto* tool = dynamic_cast<Tool*>(block.get());
  return tool != nullptr ? tool->GetExtensions() : std::vector<std::string>();
}

std::string JoinOrNone(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text += (text.empty() ? "" : " ") + item;
  return text.empty() ? "none" : text;
}

}  // namespace

CLI::App* PluginsCommand::Add(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "plugins",
      "The registered block factories, the import and export extensions, and the plug-ins "
      "loaded");
  command->add_flag("--json", m_json, "Print JSON instead of text");
  return command;
}

int PluginsCommand::Run(const ToolContext& context) {
  std::vector<std::string> imports;
  std::vector<std::string> exports;
  Json factories = Json::array();
  std::string lines;
  for (unsigned i = 0; i < SceneEngine::GetNumBlockFactories(); ++i) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(i);
    const BlockType type = factory->GetBlockType();
    Json item;
    item["name"] = factory->GetName();
    item["type"] = TypeJson(type);
    factories.push_back(item);
    char line[160];
    std::snprintf(line, sizeof(line), "  %-28s %s\n", factory->GetName().c_str(),
                  TypeText(type).c_str());
    lines += line;
    if (type.class_id == kImportToolClass) {
      for (const std::string& extension : ToolExtensions<ImportTool>(factory)) {
        imports.push_back(extension);
      }
    } else if (type.class_id == kExportToolClass) {
      for (const std::string& extension : ToolExtensions<ExportTool>(factory)) {
        exports.push_back(extension);
      }
    }
  }

  if (m_json) {
    Json json;
    json["factories"] = factories;
    json["import_extensions"] = imports;
    json["export_extensions"] = exports;
    json["plugins"] = context.plugins;
    std::cout << json.dump(2) << '\n';
    return kExitOk;
  }
  std::cout << "factories (" << SceneEngine::GetNumBlockFactories() << "):\n" << lines;
  std::cout << "import extensions: " << JoinOrNone(imports) << '\n';
  std::cout << "export extensions: " << JoinOrNone(exports) << '\n';
  std::cout << "plug-ins:" << (context.plugins.empty() ? " none" : "") << '\n';
  for (const std::string& plugin : context.plugins) std::cout << "  " << plugin << '\n';
  return kExitOk;
}

}  // namespace Orlo::cli
