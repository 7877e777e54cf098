#include "plugins/assimp/asset_export_tool.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>

#include <assimp/scene.h>
#include <assimp/Exporter.hpp>
#include <boost/filesystem.hpp>

#include <orlo/base/engine/scene_engine.h>

#include "plugins/assimp/internal/scene_to_asset.h"

namespace orlo_assimp {

namespace {

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// Extension (with its dot) to format id. Several exporters may share an extension; the
// library's first one wins, except where a newer or fuller one is preferred.
const std::map<std::string, std::string>& Formats() {
  static const std::map<std::string, std::string> formats = [] {
    std::map<std::string, std::string> out;
    Assimp::Exporter exporter;
    for (std::size_t i = 0; i < exporter.GetExportFormatCount(); ++i) {
      const aiExportFormatDesc* format = exporter.GetExportFormatDescription(i);
      if (format == nullptr || format->fileExtension == nullptr || format->id == nullptr) continue;
      out.emplace("." + Lower(format->fileExtension), format->id);
    }
    const std::pair<const char*, const char*> preferred[] = {
        {".gltf", "gltf2"},  {".glb", "glb2"}, {".obj", "obj"},
        {".dae", "collada"}, {".ply", "ply"},  {".stl", "stl"}};
    for (const auto& [extension, id] : preferred) {
      for (std::size_t i = 0; i < exporter.GetExportFormatCount(); ++i) {
        const aiExportFormatDesc* format = exporter.GetExportFormatDescription(i);
        if (format != nullptr && format->id != nullptr && std::string(format->id) == id)
          out[extension] = id;
      }
    }
    return out;
  }();
  return formats;
}

}  // namespace

Orlo::Block* AssetExportTool::Clone() {
  auto* copy = new AssetExportTool;
  copy->SetName(GetName());
  return copy;
}

std::vector<std::string> AssetExportTool::GetExtensions() {
  std::vector<std::string> out;
  for (const auto& entry : Formats()) out.push_back(entry.first);
  return out;
}

std::string AssetExportTool::FormatFor(const std::string& extension) {
  const auto found = Formats().find(Lower(extension));
  return found != Formats().end() ? found->second : std::string();
}

Orlo::Status AssetExportTool::Execute(Orlo::SceneEngine* engine, std::string path) {
  Orlo::Status status;
  const std::string format = FormatFor(boost::filesystem::path(path).extension().string());
  if (engine == nullptr || engine->GetMainNode() == nullptr) {
    status.Set(Orlo::Status::kFailed, "AssetExportTool::Execute : There is no scene to export.");
  } else if (format.empty()) {
    status.Set(Orlo::Status::kFailed,
               "AssetExportTool::Execute : " + path + ": no exporter writes this extension");
  } else {
    std::unique_ptr<aiScene> asset = internal::BuildAsset(engine);
    Assimp::Exporter exporter;
    if (exporter.Export(asset.get(), format, path) != aiReturn_SUCCESS) {
      status.Set(Orlo::Status::kFailed,
                 "AssetExportTool::Execute : " + path + ": " + exporter.GetErrorString());
    }
  }
  if (GetParentBlock() == nullptr) DeleteThisBlock(true);  // nothing keeps this tool
  return status;
}

}  // namespace orlo_assimp
