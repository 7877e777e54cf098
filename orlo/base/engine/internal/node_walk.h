// Defines ForEachNodeBelow, the pre-order walk of a node hierarchy that the engine's editing,
// selection and evaluation operations share.
// The walk keeps an explicit stack, so a hierarchy of any depth is walked with the default
// call stack, and it never enters a node that is already on its current path: a children
// table can hold one of its own dependants as a raw, unlinked entry, and the walk must not
// loop on it.
#pragma once

#include <vector>

#include <orlo/base/block/internal/walk_path.h>
#include <orlo/base/scene/node.h>

namespace Orlo::internal {

// Calls `visit(parent, child)` for every node below `top` in pre-order (each child, then its
// own descendants, children in index order), `parent` being the node whose children table
// holds `child`; `top` itself is not visited. A node's child count is
// read again after each of its children has been walked, so children that a visit adds are
// walked too. Nothing happens for a null `top`.
template <typename Visit>
void ForEachNodeBelow(Node* top, Visit&& visit) {
  if (top == nullptr) return;
  struct Frame {
    Node* node;
    int next_child;
  };
  std::vector<Frame> stack;
  WalkPath path;
  stack.push_back({top, 0});
  path.Push(top);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next_child >= frame.node->GetNumChildren()) {
      stack.pop_back();
      path.Pop();
      continue;
    }
    Node* child = frame.node->GetChild(frame.next_child++);
    if (child == nullptr || path.Contains(child)) continue;
    // `frame` may dangle once the stack grows: nothing below reads it.
    visit(frame.node, child);
    stack.push_back({child, 0});
    path.Push(child);
  }
}

}  // namespace Orlo::internal
