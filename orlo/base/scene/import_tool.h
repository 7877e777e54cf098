// Defines ImportTool, the abstract tool that reads a foreign file format into a scene.
// Import libraries derive from it and register a factory whose type has class id 100005; the
// engine finds the tool for a file by its extension.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/scene/tool_block.h>
#include <orlo/support/status.h>

namespace Orlo {

class SceneEngine;

class ImportTool : public ToolBlock {
 public:
  // The class id the factory of every import tool reports.
  static constexpr unsigned kClassID = 100005;

  // The extensions the tool reads, each with its leading dot; compared case-insensitively.
  virtual std::vector<std::string> GetExtensions() = 0;
  // Reads the file at `path` into the engine's scene.
  virtual Status Execute(SceneEngine* engine, std::string path) = 0;
};

}  // namespace Orlo
