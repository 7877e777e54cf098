#include "plugins/assimp/asset_import_tool.h"

#include <algorithm>
#include <cctype>

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <orlo/base/engine/scene_engine.h>

#include "plugins/assimp/internal/asset_to_scene.h"

namespace orlo_assimp {

namespace {

// "*.3ds;*.obj;..." as {".3ds", ".obj", ...}.
std::vector<std::string> SplitExtensionList(const std::string& list) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start <= list.size()) {
    std::size_t end = list.find(';', start);
    if (end == std::string::npos) end = list.size();
    std::string item = list.substr(start, end - start);
    if (item.rfind("*.", 0) == 0) item.erase(0, 1);
    std::transform(item.begin(), item.end(), item.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (item.size() > 1 && item[0] == '.' && std::find(out.begin(), out.end(), item) == out.end()) {
      out.push_back(item);
    }
    start = end + 1;
  }
  return out;
}

}  // namespace

Orlo::Block* AssetImportTool::Clone() {
  auto* copy = new AssetImportTool;
  copy->SetName(GetName());
  return copy;
}

std::vector<std::string> AssetImportTool::GetExtensions() {
  // The engine asks every import tool on every import; the list never changes in a process.
  static const std::vector<std::string> extensions = [] {
    Assimp::Importer importer;
    std::string list;
    importer.GetExtensionList(list);
    return SplitExtensionList(list);
  }();
  return extensions;
}

Orlo::Status AssetImportTool::Execute(Orlo::SceneEngine* engine, std::string path) {
  Orlo::Status status;
  if (engine == nullptr || engine->GetMainNode() == nullptr) {
    status.Set(Orlo::Status::kFailed,
               "AssetImportTool::Execute : There is no scene to import into.");
  } else {
    Assimp::Importer importer;
    const aiScene* scene =
        importer.ReadFile(path, aiProcess_Triangulate | aiProcess_ValidateDataStructure);
    if (scene == nullptr || scene->mRootNode == nullptr) {
      status.Set(Orlo::Status::kFailed,
                 "AssetImportTool::Execute : " + path + ": " + importer.GetErrorString());
    } else {
      const int approximated = internal::ImportAsset(*scene, engine);
      if (approximated > 0) {
        status.Set(Orlo::Status::kOk, "AssetImportTool::Execute : " + std::to_string(approximated) +
                                          " transforms were not position, rotation and scale; "
                                          "they were approximated.");
      }
    }
  }
  if (GetParentBlock() == nullptr) DeleteThisBlock(true);  // nothing keeps this tool
  return status;
}

}  // namespace orlo_assimp
