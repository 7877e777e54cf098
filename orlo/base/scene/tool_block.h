// Defines ToolBlock, the abstract base of the tool blocks (scene tools, importers, exporters)
// that host libraries implement and register through the factory registry.
// A scene keeps its tools in a list; like every block a tool is owned through the graph.
#pragma once

#include <string>
#include <utility>

#include <orlo/base/block/block.h>

namespace Orlo {

class ToolBlock : public Block {
 public:
  // The class id of the blocks a scene's tool list holds (its dependency type).
  static constexpr unsigned kClassID = 100000;

  std::string GetName() const { return m_name; }
  void SetName(std::string name) { m_name = std::move(name); }

 protected:
  ToolBlock() = default;
  ToolBlock(const ToolBlock&) = default;
  ToolBlock& operator=(const ToolBlock&) = default;

 private:
  std::string m_name;
};

}  // namespace Orlo
