// Defines ExportTool, the abstract tool that writes a scene in a foreign file format.
// Export libraries derive from it and register a factory whose type has class id 100010; the
// engine finds the tool for a file by its extension.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/scene/tool_block.h>
#include <orlo/support/status.h>

namespace Orlo {

class SceneEngine;

class ExportTool : public ToolBlock {
 public:
  // The class id the factory of every export tool reports.
  static constexpr unsigned kClassID = 100010;

  // The extensions the tool writes, each with its leading dot; compared case-insensitively.
  virtual std::vector<std::string> GetExtensions() = 0;
  // Writes the engine's scene to the file at `path`.
  virtual Status Execute(SceneEngine* engine, std::string path) = 0;
};

}  // namespace Orlo
