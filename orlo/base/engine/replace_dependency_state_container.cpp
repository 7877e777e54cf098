// The undo record of one replaced dependency link.
#include <orlo/base/engine/replace_dependency_state_container.h>

#include <cassert>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_table.h>
#include <orlo/base/block/internal/block_watch.h>

namespace Orlo {

ReplaceDependencyStateContainer::ReplaceDependencyStateContainer(Block* block, int slot,
                                                                 Block* new_dependency)
    : m_block(block),
      m_slot(slot),
      m_old_dependency(nullptr),
      m_new_dependency(new_dependency),
      m_keep_alive(new BlockTable(true)) {
  assert(block != nullptr);
  internal::BlockWatch::Watch(&m_block);
  m_old_dependency = m_block->GetDependency(slot);
  // The change is about to take the old dependency out of the slot: the record holds it so
  // that an undo can bring it back.
  if (m_old_dependency != nullptr) m_keep_alive->PushBack(m_old_dependency);
}

ReplaceDependencyStateContainer::~ReplaceDependencyStateContainer() {
  internal::BlockWatch::Unwatch(&m_block);
  m_keep_alive->DeleteThisBlock(true);
}

void ReplaceDependencyStateContainer::Revert() {
  if (m_block == nullptr) return;  // the block went with its scene: nothing to put back
  // Appended on every revert: each undo takes the new dependency out of the slot once more,
  // and a later redo must find it alive.
  if (m_new_dependency != nullptr) m_keep_alive->PushBack(m_new_dependency);
  Relink(m_old_dependency);
}

void ReplaceDependencyStateContainer::Apply() {
  if (m_block != nullptr) Relink(m_new_dependency);
}

void ReplaceDependencyStateContainer::OnAccept() {}

void ReplaceDependencyStateContainer::Relink(Block* dependency) {
  // A linked store rather than the raw SetDependency: a raw store would leave the block that
  // leaves the slot listing m_block as a dependant and the block that enters it not listing
  // m_block, so neither would ever be released with the scene. The keep-alive list holds both
  // blocks across the relink, so the release of the old link never deletes them.
  if (dependency == nullptr) {
    m_block->DeleteDependency(m_slot);
  } else {
    (void)m_block->MakeDependencyByID(m_slot, dependency);
  }
}

}  // namespace Orlo
