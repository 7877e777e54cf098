#include <orlo/base/block/internal/irregular_links.h>

#include <algorithm>

namespace Orlo::internal {

namespace {

using Index = std::unordered_map<const Block*, std::vector<Block*>>;

const std::vector<Block*>* Find(const Index& index, const Block* key) {
  auto found = index.find(key);
  return found != index.end() ? &found->second : nullptr;
}

void Erase(Index& index, const Block* key, const Block* value) {
  auto found = index.find(key);
  if (found == index.end()) return;
  std::vector<Block*>& values = found->second;
  values.erase(std::remove(values.begin(), values.end(), value), values.end());
  if (values.empty()) index.erase(found);
}

// Moves the values recorded under `key` out of `index` into `out`.
void Take(Index& index, const Block* key, std::vector<Block*>& out) {
  auto found = index.find(key);
  if (found == index.end()) return;
  out.insert(out.end(), found->second.begin(), found->second.end());
  index.erase(found);
}

}  // namespace

IrregularLinks::Index& IrregularLinks::HeldByHolder() {
  static Index index;
  return index;
}

IrregularLinks::Index& IrregularLinks::HoldersByHeld() {
  static Index index;
  return index;
}

void IrregularLinks::Add(Block* holder, Block* held) {
  if (holder == nullptr || held == nullptr || Contains(holder, held)) return;
  HeldByHolder()[holder].push_back(held);
  HoldersByHeld()[held].push_back(holder);
}

bool IrregularLinks::Contains(const Block* holder, const Block* held) {
  const std::vector<Block*>* held_blocks = Find(HeldByHolder(), holder);
  return held_blocks != nullptr &&
         std::find(held_blocks->begin(), held_blocks->end(), held) != held_blocks->end();
}

const std::vector<Block*>* IrregularLinks::HeldBy(const Block* holder) {
  return Find(HeldByHolder(), holder);
}

const std::vector<Block*>* IrregularLinks::HoldersOf(const Block* held) {
  return Find(HoldersByHeld(), held);
}

void IrregularLinks::Forget(const Block* block, std::vector<Block*>& held,
                            std::vector<Block*>& holders) {
  const std::size_t first_held = held.size();
  const std::size_t first_holder = holders.size();
  Take(HeldByHolder(), block, held);
  Take(HoldersByHeld(), block, holders);
  for (std::size_t i = first_held; i < held.size(); ++i) Erase(HoldersByHeld(), held[i], block);
  for (std::size_t i = first_holder; i < holders.size(); ++i) {
    Erase(HeldByHolder(), holders[i], block);
  }
}

}  // namespace Orlo::internal
