#include "tools/orlo/scene_hierarchy.h"

#include <algorithm>
#include <utility>

#include <orlo/base/scene/node.h>

namespace Orlo::cli {

namespace {

constexpr unsigned kNodeClass = 115;

bool IsNodeRecord(const SceneFile& file, long record) {
  return record >= 0 && static_cast<std::size_t>(record) < file.blocks.size() &&
         file.blocks[static_cast<std::size_t>(record)].has_info &&
         file.blocks[static_cast<std::size_t>(record)].type.class_id == kNodeClass;
}

long SlotTarget(const SceneFile& file, std::size_t record, std::size_t slot) {
  const std::vector<std::int32_t>& numbers = file.blocks[record].dependencies;
  if (slot >= numbers.size()) return -1;
  const std::int32_t target = numbers[slot];
  if (target < 0 || static_cast<std::size_t>(target) >= file.blocks.size()) return -1;
  return target;
}

std::string NodeName(const SceneFile& file, BlockCatalog& catalog, std::size_t record) {
  ScopedBlock block = catalog.Instantiate(file, file.blocks[record]);
  auto* node = dynamic_cast<Node*>(block.get());
  return node != nullptr ? node->GetName() : std::string();
}

}  // namespace

long FindSlotTarget(const SceneFile& file, BlockCatalog& catalog, std::size_t record,
                    const std::string& slot_name) {
  const std::vector<std::string> names = catalog.SlotNames(file, record);
  for (std::size_t slot = 0; slot < names.size(); ++slot) {
    if (names[slot] == slot_name) return SlotTarget(file, record, slot);
  }
  return -1;
}

SceneHierarchy BuildSceneHierarchy(const SceneFile& file, BlockCatalog& catalog) {
  SceneHierarchy hierarchy;
  if (file.blocks.empty()) return hierarchy;
  const long main_node = FindSlotTarget(file, catalog, 0, "main_node");
  if (!IsNodeRecord(file, main_node)) return hierarchy;

  std::vector<bool> visited(file.blocks.size(), false);
  struct Pending {
    long record;
    int parent;
    int depth;
  };
  // Children are pushed in reverse so that they come off the stack in index order.
  std::vector<Pending> stack{{main_node, -1, 0}};
  while (!stack.empty()) {
    const Pending next = stack.back();
    stack.pop_back();
    const auto record = static_cast<std::size_t>(next.record);
    if (visited[record]) continue;
    visited[record] = true;

    HierarchyNode node;
    node.record = record;
    node.parent = next.parent;
    node.depth = next.depth;
    node.name = NodeName(file, catalog, record);
    node.object = FindSlotTarget(file, catalog, record, "object");
    node.material = FindSlotTarget(file, catalog, record, "material");
    const int index = static_cast<int>(hierarchy.nodes.size());
    hierarchy.nodes.push_back(std::move(node));
    hierarchy.depth = std::max(hierarchy.depth, next.depth);

    const long children = FindSlotTarget(file, catalog, record, "children");
    if (children < 0) continue;
    const std::vector<std::int32_t>& entries =
        file.blocks[static_cast<std::size_t>(children)].dependencies;
    for (std::size_t i = entries.size(); i-- > 0;) {
      const long child = SlotTarget(file, static_cast<std::size_t>(children), i);
      if (IsNodeRecord(file, child)) stack.push_back({child, index, next.depth + 1});
    }
  }
  return hierarchy;
}

}  // namespace Orlo::cli
