#include <orlo/base/block/block_table.h>

#include <cassert>
#include <cstdint>
#include <typeinfo>
#include <unordered_map>
#include <vector>

#include <orlo/base/block/internal/irregular_links.h>
#include <orlo/base/block/internal/release_guard.h>
#include <orlo/base/block/internal/saved_slots.h>
#include <orlo/base/block/internal/walk_path.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

constexpr unsigned kCountChunk = 0x0005;

constexpr char kSetBlockOutOfRange[] = "BlockTable::SetBlock: The id of the blocks is out of range";

// Mutes a table for a bulk edit and unmutes it when the edit is done, so the individual
// dependency changes stay quiet and only the edit's summary event is delivered.
class MuteScope {
 public:
  explicit MuteScope(Block* block) : m_block(block) { m_block->SetSendEvents(false); }
  MuteScope(const MuteScope&) = delete;
  MuteScope& operator=(const MuteScope&) = delete;
  ~MuteScope() { m_block->SetSendEvents(true); }

 private:
  Block* m_block;
};

// Tables longer than this answer IsBlock from a count of their entries.
constexpr std::size_t kCountedLength = 64;

using EntryCounts = std::unordered_map<const Block*, std::uint32_t>;

std::unordered_map<const BlockTable*, EntryCounts>& CountsOfLongTables() {
  static std::unordered_map<const BlockTable*, EntryCounts> counts;
  return counts;
}

// The counts kept for `table`, or null while none were made.
EntryCounts* KeptCountsOf(const BlockTable* table) {
  auto found = CountsOfLongTables().find(table);
  return found != CountsOfLongTables().end() ? &found->second : nullptr;
}

}  // namespace

BlockTable::BlockTable(bool) {}

BlockTable::~BlockTable() {
  DeleteAllDependencies();
  DropEntryCounts();
}

bool BlockTable::MayHaveEntryCounts() const {
  // A class derived from the table may keep its entries its own way.
  return m_blocks.size() > kCountedLength && typeid(*this) == typeid(BlockTable);
}

void BlockTable::CountStore(Block* old_entry, Block* new_entry) {
  if (!MayHaveEntryCounts()) return;
  EntryCounts* counts = KeptCountsOf(this);
  if (counts == nullptr) return;
  auto old_count = counts->find(old_entry);
  if (old_count != counts->end() && --old_count->second == 0) counts->erase(old_count);
  ++(*counts)[new_entry];
}

void BlockTable::DropEntryCounts() {
  if (MayHaveEntryCounts()) CountsOfLongTables().erase(this);
}

std::string BlockTable::GetClassName() const { return "BlockTable"; }

BlockType BlockTable::GetBlockType() const { return m_block_type; }

int BlockTable::NumDependencies() const { return static_cast<int>(m_blocks.size()); }

void BlockTable::SetDependency(int index, Block* block) {
  if (index < 0 || index >= NumDependencies()) return;
  Block*& entry = m_blocks[static_cast<std::size_t>(index)];
  CountStore(entry, block);
  entry = block;
}

Block* BlockTable::GetDependency(int index) const { return GetBlock(index); }

std::string BlockTable::GetDependencyName(int index) const {
  const Block* entry = GetBlock(index);
  return entry != nullptr ? entry->GetClassName() : "no_dependency";
}

void BlockTable::DeleteThis() { delete this; }

unsigned BlockTable::GetNumBlocks() const { return static_cast<unsigned>(m_blocks.size()); }

Block* BlockTable::GetBlock(int index) const {
  if (index < 0 || index >= NumDependencies()) return nullptr;
  return m_blocks[static_cast<std::size_t>(index)];
}

unsigned BlockTable::GetBlockId(Block* block) const {
  if (MayHaveEntryCounts() && !IsBlock(block)) return kNotFound;
  for (std::size_t i = m_blocks.size(); i > 0; --i) {
    if (m_blocks[i - 1] == block) return static_cast<unsigned>(i - 1);
  }
  return kNotFound;
}

bool BlockTable::IsBlock(Block* block) const {
  if (!MayHaveEntryCounts()) return GetBlockId(block) != kNotFound;
  auto [found, made] = CountsOfLongTables().try_emplace(this);
  EntryCounts& counts = found->second;
  if (made) {
    for (const Block* entry : m_blocks) ++counts[entry];
  }
  return counts.count(block) != 0;
}

void BlockTable::Append(Block* block) {
  // The list grows by half its capacity, at least to the size it needs.
  if (m_blocks.size() == m_blocks.capacity()) {
    m_blocks.reserve(m_blocks.capacity() + m_blocks.capacity() / 2 + 1);
  }
  m_blocks.push_back(block);
  if (!MayHaveEntryCounts()) return;
  if (EntryCounts* counts = KeptCountsOf(this)) ++(*counts)[block];
}

void BlockTable::PushBack(Block* block) {
  OperationScope operation;
  {
    MuteScope mute(this);
    const int index = NumDependencies();
    // Kept as is: the entry is appended before the link is made, so a block refused by the
    // cycle test stays in the list unlinked. The refusal is not reported. The unlinked entry
    // does not own its block; it is recorded so that it becomes null if the block goes.
    // (The entry is linked from empty, so that a linked entry is an ordinary link rather than
    // the same block set twice into one slot.)
    Append(nullptr);
    if (!MakeDependencyByID(index, block).IsOk()) {
      SetDependency(index, block);
      internal::IrregularLinks::Add(this, block);
    }
  }
  PostEvent(2, 0);
}

Status BlockTable::SetBlock(int index, Block* block) {
  if (block != nullptr && index >= 0 && index < NumDependencies()) {
    return MakeDependencyByID(index, block);
  }
  // A null block deliberately gets the out-of-range message too.
  return Status(Status::kFailed, kSetBlockOutOfRange);
}

void BlockTable::Erase(int index) {
  OperationScope operation;
  {
    MuteScope mute(this);
    if (index < 0 || index >= NumDependencies()) return;
    DeleteDependency(index);
    // Releasing the entry may have run code that reshaped the list.
    if (index < NumDependencies()) {
      DropEntryCounts();
      m_blocks.erase(m_blocks.begin() + index);
    }
  }
  PostEvent(2, index);
}

void BlockTable::Erase(Block* block) {
  OperationScope operation;
  bool removed = false;
  {
    MuteScope mute(this);
    // The positions are taken first: releasing one entry may destroy the block, and the
    // table's other entries that held it then read null. They are removed all the same.
    std::vector<std::size_t> positions;
    for (std::size_t i = m_blocks.size(); i > 0; --i) {
      if (m_blocks[i - 1] == block) positions.push_back(i - 1);
    }
    for (std::size_t position : positions) {
      if (position >= m_blocks.size()) continue;
      Block* entry = m_blocks[position];
      if (entry != block && entry != nullptr) continue;
      DeleteDependency(static_cast<int>(position));
      if (position < m_blocks.size()) {
        DropEntryCounts();
        m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(position));
      }
      removed = true;
    }
  }
  if (removed) PostEvent(2, 0);
}

void BlockTable::SwapBlocks(Block* a, Block* b) {
  OperationScope operation;
  if (a == nullptr || b == nullptr || m_blocks.empty()) return;
  std::size_t position_a = m_blocks.size();
  std::size_t position_b = m_blocks.size();
  for (std::size_t i = 0; i < m_blocks.size(); ++i) {
    if (m_blocks[i] == a) position_a = i;
    if (m_blocks[i] == b) position_b = i;
  }
  if (position_a == m_blocks.size() || position_b == m_blocks.size()) return;
  // Raw stores: both stay dependencies of the table, so no bookkeeping is needed.
  m_blocks[position_a] = b;
  m_blocks[position_b] = a;
  PostEvent(2, 0);
}

void BlockTable::ShrinkTo(std::size_t count) {
  while (m_blocks.size() > count) {
    Block* last = m_blocks.back();
    // Destroyed outright, even when other blocks still use it: their slots become null. The
    // raw store of null also reaches this table's own entries that held the block. An entry
    // that is this table itself (a refused PushBack of itself) is only dropped, and the
    // destruction of one of its own dependants left as an entry the same way must not
    // destroy the table while it shrinks.
    if (last != nullptr && last != this) {
      internal::ReleaseGuard running(this);
      last->DeleteThisBlock(true);
    }
    if (m_blocks.size() > count) {
      DropEntryCounts();
      m_blocks.pop_back();
    }
  }
}

void BlockTable::SetNumBlocks(int count) {
  assert(count >= 0 && "BlockTable::SetNumBlocks: negative count");
  // An entry destroyed outright may have been the last block holding this table (an unlinked
  // entry that the table sits below): the table then goes too, once it has shrunk.
  OperationScope operation;
  const std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
  if (wanted < m_blocks.size()) {
    ShrinkTo(wanted);
  } else {
    DropEntryCounts();
    m_blocks.resize(wanted, nullptr);
  }
}

bool BlockTable::RelaysEventsUnchanged() const { return typeid(*this) == typeid(BlockTable); }

namespace {

// Links a cloned entry into its copy's slot. A clone that the copy cannot take has no other
// owner: it is released rather than leaked.
void TakeClone(BlockTable* copy, int index, Block* clone) {
  if (clone == nullptr || copy->SetBlock(index, clone).IsOk()) return;
  std::vector<Block*> dependants;
  clone->GetDependants(dependants);
  if (dependants.empty()) clone->DeleteThisBlock(true);
}

// The tables a running Clone still has to fill, innermost last, and the tables being copied.
struct CloneWork {
  struct Frame {
    const BlockTable* source;
    BlockTable* copy;
    int next_entry;
  };
  std::vector<Frame> stack;
  internal::WalkPath path;

  BlockTable* Begin(const BlockTable* source) {
    auto* copy = new BlockTable(true);
    copy->SetNumBlocks(source->NumDependencies());
    stack.push_back({source, copy, 0});
    path.Push(source);
    return copy;
  }
};

// The work of the outermost Clone of a table, while it runs.
CloneWork* g_clone_work = nullptr;

}  // namespace

Block* BlockTable::Clone() {
  // The deep copy clones every entry in order. A table nested in the table is copied by the
  // same loop rather than by a recursive call: its Clone, reached through the entry, only makes
  // the empty copy and leaves it to the loop of the outermost Clone, which links it into its
  // slot and fills it next. A chain of tables of any depth is so copied without deep recursion,
  // and the entries are cloned in the order a recursive copy would clone them. A table that
  // holds itself, or a table it is nested in, as an unlinked entry would be copied forever:
  // that entry stays null in the copy.
  if (g_clone_work != nullptr) return g_clone_work->Begin(this);
  OperationScope operation;
  CloneWork work;
  g_clone_work = &work;
  struct Finish {
    ~Finish() { g_clone_work = nullptr; }
  } finish;
  BlockTable* root = work.Begin(this);
  while (!work.stack.empty()) {
    CloneWork::Frame& top = work.stack.back();
    if (top.next_entry >= top.source->NumDependencies() ||
        top.next_entry >= top.copy->NumDependencies()) {
      work.stack.pop_back();
      work.path.Pop();
      continue;
    }
    const int index = top.next_entry++;
    BlockTable* copy = top.copy;
    // Every entry should be present when a table is cloned; a null one stays null.
    Block* entry = top.source->GetBlock(index);
    if (entry == nullptr || work.path.Contains(entry)) continue;
    TakeClone(copy, index, entry->Clone());  // may push a nested table onto the work
  }
  return root;
}

int BlockTable::Save(SceneSave* save) {
  assert(save != nullptr);
  save->BeginChunk(kCountChunk);
  save->WriteInt32(NumDependencies());
  save->EndChunk();
  return 1;
}

int BlockTable::Load(SceneLoad* load) {
  assert(load != nullptr);
  OperationScope operation;  // as in SetNumBlocks
  int result = SceneLoad::kError;
  while ((result = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    std::size_t count = 0;
    if (load->CurChunkID() == kCountChunk &&
        internal::ReadListSlotCount(load, "BlockTable entry", count)) {
      if (count < m_blocks.size()) {
        ShrinkTo(count);
      } else {
        DropEntryCounts();
        m_blocks.resize(count, nullptr);
      }
    }
    load->CloseChunk();
  }
  return result == SceneLoad::kError ? 0 : 1;
}

BlockType BlockVectorFactory::GetBlockType() const { return BlockTable::m_block_type; }

Block* BlockVectorFactory::GetBlock(bool) const { return new BlockTable(true); }

std::string BlockVectorFactory::GetName() const { return "BlockTable"; }

}  // namespace Orlo
