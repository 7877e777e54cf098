// Defines SceneHierarchy, the node hierarchy of a scene file read from its block records, so
// that it can be shown even when the file would not load (unknown classes, damage further on).
// It holds indices into the SceneFile it was built from and copies of the node names; it does
// not keep any block.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/scene_file.h"

namespace Orlo::cli {

struct HierarchyNode {
  // The node's block record, and its parent's entry in SceneHierarchy::nodes (-1 for the main
  // node).
  std::size_t record = 0;
  int parent = -1;
  // 0 for the main node, 1 for its children, and so on.
  int depth = 0;
  std::string name;
  // The records of the node's object and material; -1 when the slot is empty.
  long object = -1;
  long material = -1;
};

struct SceneHierarchy {
  // The main node first, then every node below it in pre-order (children in index order).
  // A node reached a second time (a damaged file can link one twice) is listed once.
  std::vector<HierarchyNode> nodes;
  // The greatest depth of a node; 0 when the main node has no child, -1 without a main node.
  int depth = -1;
};

SceneHierarchy BuildSceneHierarchy(const SceneFile& file, BlockCatalog& catalog);

// The record held in the slot of block `record` named `slot_name`, or -1.
long FindSlotTarget(const SceneFile& file, BlockCatalog& catalog, std::size_t record,
                    const std::string& slot_name);

}  // namespace Orlo::cli
