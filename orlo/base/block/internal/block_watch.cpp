#include <orlo/base/block/internal/block_watch.h>

#include <algorithm>
#include <cassert>
#include <unordered_map>
#include <vector>

#include <orlo/base/block/block.h>

namespace Orlo::internal {

namespace {

// The watched references of each watched block.
std::unordered_map<const Block*, std::vector<Block**>>& References() {
  static std::unordered_map<const Block*, std::vector<Block**>> references;
  return references;
}

}  // namespace

void BlockWatch::Watch(Block** reference) {
  assert(reference != nullptr);
  Block* block = *reference;
  if (block == nullptr) return;
  std::vector<Block**>& watching = References()[block];
  assert(std::find(watching.begin(), watching.end(), reference) == watching.end());
  watching.push_back(reference);
  block->m_watched = 1;
}

void BlockWatch::Unwatch(Block** reference) {
  assert(reference != nullptr);
  Block* block = *reference;
  if (block == nullptr) return;
  auto found = References().find(block);
  if (found == References().end()) return;
  std::vector<Block**>& watching = found->second;
  watching.erase(std::remove(watching.begin(), watching.end(), reference), watching.end());
  if (!watching.empty()) return;
  References().erase(found);
  block->m_watched = 0;
}

void BlockWatch::Destroyed(Block* block) {
  auto found = References().find(block);
  if (found == References().end()) return;
  for (Block** reference : found->second) *reference = nullptr;
  References().erase(found);
  block->m_watched = 0;
}

}  // namespace Orlo::internal
