// Defines BlockTable, a block whose dependency slots form a growable ordered list, and its
// factory BlockVectorFactory.
//
// Slot i is entry i. Entries are ordinary dependencies, so the table owns them through the
// graph: an entry lives while the table (or another dependant) holds it. Entries may be null
// and the same block may stand in several entries. The bulk edits PushBack and both Erase
// forms mute the table while they work and post one summary event at the end.
//
//   BlockTable* children = new BlockTable(true);
//   children->PushBack(node);        // links node; one event, code 2
//   children->Erase(node);           // releases every entry that holds node
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>

namespace Orlo {

class BlockTable : public Block {
 public:
  static constexpr BlockType m_block_type{105, 32, 16};
  // The position GetBlockId reports for a block that is not in the table.
  static constexpr unsigned kNotFound = 0xFFFFFFFFu;

  // An empty table; the flag is not used.
  explicit BlockTable(bool create_defaults = true);
  // Releases every entry (each is deleted if the table was its last dependant).
  ~BlockTable() override;

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  // The class name of the entry, or "no_dependency" outside the entries.
  std::string GetDependencyName(int index) const override;
  // A deep copy: every entry is cloned and the clones become the new table's entries. An entry
  // that is the table itself, or a table it is nested in, stays null in the copy.
  Block* Clone() override;
  // True for a plain table: its events are relayed unchanged.
  bool RelaysEventsUnchanged() const override;
  // Chunk 0x0005 with the number of entries; the entries travel as the block's dependencies.
  // Requires: save is not null.
  int Save(SceneSave* save) override;
  // Requires: load is not null.
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  unsigned GetNumBlocks() const;
  // Entry `index`, or null when out of range.
  Block* GetBlock(int index) const;
  // The last position that holds `block`, or kNotFound.
  unsigned GetBlockId(Block* block) const;
  bool IsBlock(Block* block) const;

  // Appends `block` and links it. The entry is appended before the link is made, so a block
  // that would close a cycle stays in the table unlinked, and null appends a null entry.
  void PushBack(Block* block);
  // Links `block` into an existing entry, releasing the old one. A null block or an index out
  // of range gives code 2, "BlockTable::SetBlock: The id of the blocks is out of range".
  Status SetBlock(int index, Block* block);
  // Releases entry `index` and removes it; later entries move down. Event code 2 with the
  // position; nothing at all for an index out of range.
  void Erase(int index);
  // Releases and removes every entry equal to `block`; one event (code 2, parameter 0) when
  // any was removed.
  void Erase(Block* block);
  // Exchanges the last positions of `a` and `b` when both are present, then posts code 2.
  void SwapBlocks(Block* a, Block* b);
  // Grows with null entries, or shrinks by destroying the dropped entries outright (even when
  // other blocks still use them: their slots become null). An entry that is the table itself
  // is only dropped. Posts no event of its own and does not mute the table, so a destroyed
  // entry's own slot changes still come through it.
  // Requires: count >= 0.
  void SetNumBlocks(int count);

 private:
  void Append(Block* block);
  void ShrinkTo(std::size_t count);

  // A long table answers IsBlock from a count of its entries, kept beside it, instead of
  // walking them: adding children one by one to one parent would otherwise take quadratic
  // time. The count is made at the first question and kept up by appends and stores; any
  // other change drops it first (while the table is still long, which is what says that it
  // may have one).
  bool MayHaveEntryCounts() const;
  void CountStore(Block* old_entry, Block* new_entry);
  void DropEntryCounts();

  // The entries in order; the table's dependency slots.
  std::vector<Block*> m_blocks;
};

class BlockVectorFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // An empty table, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
