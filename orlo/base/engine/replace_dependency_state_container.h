// Defines ReplaceDependencyStateContainer, the undo record of one dependency slot of a block
// changing from one block to another.
//
// The record keeps alive, through a list block it owns, every block that a revert or an apply
// can take out of the graph: the old dependency from the moment the record is made, and the
// new one from its first revert on. So a block unlinked by the change (or by its undo) is
// not deleted while the change can still be undone or redone; destroying the record releases
// them. The block whose slot changes is not kept alive by the record: when the scene lets it
// go first (its node deleted, say), the record forgets it, and undoing or redoing the change
// does nothing.
//
// Make the record before changing the slot, since it reads the old dependency then:
//   SceneEngine::StateRecorderPut(
//       new ReplaceDependencyStateContainer(node, Node::kObjectSlot, object_modifier));
//   (void)node->SetObject(object_modifier);
#pragma once

#include <cstdint>

#include <orlo/support/state_container.h>

namespace Orlo {

class Block;
class BlockTable;

class ReplaceDependencyStateContainer : public StateContainer {
 public:
  // Requires: block is not null.
  ReplaceDependencyStateContainer(Block* block, int slot, Block* new_dependency);
  ReplaceDependencyStateContainer(const ReplaceDependencyStateContainer&) = delete;
  ReplaceDependencyStateContainer& operator=(const ReplaceDependencyStateContainer&) = delete;
  // Releases every block the record kept alive (each is deleted if nothing else holds it).
  ~ReplaceDependencyStateContainer() override;

  // Links the old dependency back into the slot, after adding the new one to the keep-alive
  // list (again on every revert), so a redo finds it alive.
  void Revert() override;
  // Links the new dependency into the slot again.
  void Apply() override;
  // Nothing to capture at accept time.
  void OnAccept() override;

  // The block whose slot changes, or null once it was destroyed.
  Block* GetBlock() const { return m_block; }
  int GetSlot() const { return m_slot; }
  Block* GetOldDependency() const { return m_old_dependency; }
  Block* GetNewDependency() const { return m_new_dependency; }
  // The list of blocks the record keeps alive; owned by the record.
  BlockTable* GetKeepAlive() const { return m_keep_alive; }

 private:
  // Moves the slot to `dependency`, keeping both directions of the link, so the blocks that
  // leave the slot lose their back reference and the graph stays releasable as a whole.
  void Relink(Block* dependency);

  // The block whose slot changes; not owned, and watched so that it becomes null when the
  // block is destroyed.
  Block* m_block;
  std::int32_t m_slot;
  // What the slot held when the record was made, and what the change sets it to; kept alive
  // through m_keep_alive while the record can bring them back.
  Block* m_old_dependency;
  Block* m_new_dependency;
  // Owned by the record, released by its destructor with DeleteThisBlock(true).
  BlockTable* m_keep_alive;
};

}  // namespace Orlo
