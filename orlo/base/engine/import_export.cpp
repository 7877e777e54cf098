// The engine's import and export of foreign file formats, through the tool blocks that other
// libraries register, chosen by the file's extension.
#include <cctype>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/export_tool.h>
#include <orlo/base/scene/import_tool.h>

namespace Orlo {

namespace {

std::string ToLower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// The extension of `path` as the file system layer reports it (from the last dot of the file
// name, dot included; "" when there is none), in lower case.
std::string LowerExtension(const std::string& path) {
  return ToLower(boost::filesystem::path(path).extension().string());
}

// Runs the first tool of class id `class_id`, in factory registration order, that lists the
// extension of `path`, and returns its status; `not_found` when none does.
//
// Each candidate is made by its factory just to be asked for its extensions; one that does not
// match is released at once. The tool that matches is not released here, neither before nor
// after its Execute: a tool that keeps itself (MainScene::AddSceneTool) stays with the scene,
// and one that does not releases itself at the end of its own Execute.
template <typename Tool>
Status RunToolFor(SceneEngine* engine, const std::string& path, unsigned class_id,
                  const char* not_found) {
  const std::string extension = LowerExtension(path);
  for (unsigned i = 0; i < SceneEngine::GetNumBlockFactories(); ++i) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(i);
    if (factory == nullptr || factory->GetBlockType().class_id != class_id) continue;
    Block* block = factory->GetBlock(true);
    if (block == nullptr) continue;
    // A factory whose blocks claim the class id without being tools of the kind offers no
    // extensions.
    auto* tool = dynamic_cast<Tool*>(block);
    bool matches = false;
    if (tool != nullptr) {
      for (const std::string& candidate : tool->GetExtensions()) {
        if (ToLower(candidate) == extension) {
          matches = true;
          break;
        }
      }
    }
    if (matches) return tool->Execute(engine, path);
    block->DeleteThisBlock(true);
  }
  return Status(Status::kFailed, not_found);
}

}  // namespace

Status SceneEngine::ImportScene(const std::string& path) {
  return RunToolFor<ImportTool>(this, path, ImportTool::kClassID, "Couldn't find an ImportTool.");
}

Status SceneEngine::ImportScene(const char* path) {
  return ImportScene(std::string(path != nullptr ? path : ""));
}

Status SceneEngine::ExportScene(const std::string& path) {
  return RunToolFor<ExportTool>(this, path, ExportTool::kClassID, "Couldn't find an ExportTool.");
}

Status SceneEngine::ExportScene(const char* path) {
  return ExportScene(std::string(path != nullptr ? path : ""));
}

}  // namespace Orlo
