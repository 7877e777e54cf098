#include <orlo/base/block/block.h>

#include <algorithm>

#include <orlo/base/block/internal/release_guard.h>
#include <orlo/base/block/internal/saved_slots.h>
#include <orlo/base/block/internal/walk_path.h>
#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

constexpr unsigned kBlockInfoChunk = 0x0005;
constexpr unsigned kBlockDependenciesChunk = 0x0010;

constexpr char kCyclicDependency[] = "Block::MakeDependencyByID : Cyclic Dependency.";
constexpr char kIndexOutOfRange[] =
    "Block::MakeDependencyByID : The dependency index is out of range.";

// The guarded blocks, innermost last.
std::vector<const Block*>& GuardedBlocks() {
  static std::vector<const Block*> guarded;
  return guarded;
}

}  // namespace

namespace internal {

ReleaseGuard::ReleaseGuard(const Block* block) { GuardedBlocks().push_back(block); }

ReleaseGuard::~ReleaseGuard() { GuardedBlocks().pop_back(); }

bool IsReleaseGuarded(const Block* block) {
  const std::vector<const Block*>& guarded = GuardedBlocks();
  return std::find(guarded.begin(), guarded.end(), block) != guarded.end();
}

}  // namespace internal

// ---- Defaults of the virtual operations ----

unsigned Block::GetDependencyType(int) const { return 0; }

DataTable* Block::GetDataTable() const { return nullptr; }

Status Block::SetDataTable(DataTable*) {
  return Status(Status::kNotApplicable, "This Block has no DataTables.");
}

void Block::UpdateDataTable(bool) {}

int Block::PostLoad() { return 0; }

void Block::ActionBegin(int, int) {}

void Block::ActionEnd(int, int) {}

void Block::Update(int) {}

// ---- Reachability ----

void Block::TestDependant(Block* target, int& count) const {
  // A block without slots (a fresh one, most often) has no path down: nothing to walk.
  if (target == nullptr || NumDependencies() == 0) return;
  // Depth first in slot order, counting paths rather than blocks. The walk never descends
  // below the target, nor into a block already on the current path, so a cycle left by raw
  // slot stores cannot make it loop; on an acyclic graph neither rule changes the count.
  struct Frame {
    const Block* block;
    int num_slots;
    int next_slot;
  };
  std::vector<Frame> stack;
  internal::WalkPath path;
  stack.push_back({this, NumDependencies(), 0});
  path.Push(this);
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.num_slots) {
      stack.pop_back();
      path.Pop();
      continue;
    }
    Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr) continue;
    if (dependency == target) {
      ++count;
      continue;
    }
    if (path.Contains(dependency)) continue;
    stack.push_back({dependency, dependency->NumDependencies(), 0});
    path.Push(dependency);
  }
}

bool Block::OkToSetAsDependency(Block* block) {
  if (block == this) return false;
  if (block == nullptr) return true;
  int count = 0;
  block->TestDependant(this, count);
  return count == 0;
}

bool Block::MakeDependant(int, Block* dependant) {
  if (dependant != nullptr) {
    int count = 0;
    TestDependant(dependant, count);
    if (count != 0) return false;
  }
  m_dependants.push_back(dependant);
  return true;
}

// ---- Linking and releasing ----

Status Block::MakeDependencyByID(int index, Block* block) {
  Status result;
  if (block == this) {
    result.Set(Status::kInvalidArgument, kCyclicDependency);
    return result;
  }
  if (block == nullptr) {
    DeleteDependency(index);
    return result;
  }
  // A slot the class does not have would ignore the store and leave `block` with a back
  // reference that nothing ever releases.
  if (index < 0 || index >= NumDependencies()) {
    result.Set(Status::kFailed, kIndexOutOfRange);
    return result;
  }
  int count = 0;
  block->TestDependant(this, count);
  if (count != 0) {
    result.Set(Status::kInvalidArgument, kCyclicDependency);
    return result;
  }
  Block* old = GetDependency(index);
  // The cycle test above is the one MakeDependant would repeat; it cannot fail now.
  block->m_dependants.push_back(this);
  // Setting the same block again leaves a second back reference on purpose: existing scenes
  // count on a block surviving the release of one of two identical links.
  if (old != nullptr && old != block) {
    internal::ReleaseGuard running(this);
    old->EraseDependantFromTable(this);
  }
  SetDependency(index, block);
  ProcessEvent(BlockEvent(this, 2, index));
  return result;
}

void Block::DeleteDependency(int index) {
  Block* dependency = GetDependency(index);
  if (dependency == nullptr) return;
  {
    internal::ReleaseGuard running(this);
    dependency->EraseDependantFromTable(this);
  }
  FinishSlotRelease(index);
}

void Block::FinishSlotRelease(int index) {
  SetDependency(index, nullptr);
  ProcessEvent(BlockEvent(this, 2, index));
}

void Block::DeleteAllDependencies() {
  for (int i = 0; i < NumDependencies(); ++i) DeleteDependency(i);
}

bool Block::ReplaceDependency(Block* old_block, Block* new_block) {
  const int num_slots = NumDependencies();
  for (int i = 0; i < num_slots; ++i) {
    if (GetDependency(i) != old_block) continue;
    if (new_block == nullptr) {
      DeleteDependency(i);
    } else {
      // A refused cycle is not reported here: the caller only learns that a slot matched.
      (void)MakeDependencyByID(i, new_block);
    }
    return true;
  }
  return false;
}

bool Block::RemoveDependantEntries(Block* dependant) {
  // Kept as is: after removing an entry the walk steps over the entry that followed it, so of
  // two adjacent equal entries only the first goes in one call. A block linked twice through
  // the same slot survives the release of that slot, and existing scenes rely on it.
  for (std::size_t i = 0; i < m_dependants.size();) {
    if (m_dependants[i] == dependant) {
      m_dependants.erase(m_dependants.begin() + static_cast<std::ptrdiff_t>(i));
      i += 1;
    } else {
      ++i;
    }
  }
  return m_dependants.empty();
}

bool Block::EraseDependantFromTable(Block* dependant) {
  if (!RemoveDependantEntries(dependant)) return false;
  // A block whose own release of a slot led back to it is not destroyed there.
  if (internal::IsReleaseGuarded(this)) return false;
  ReleaseUnreferenced(this);
  return true;
}

void Block::ReleaseUnreferenced(Block* block) {
  // The release cascade, with an explicit stack. For each block: post code 1, release every
  // slot in order (the dependency first, then the raw store of null and the code-2 event),
  // then DeleteThis. A dependency whose last dependant goes is released completely before the
  // next slot of its owner: the order a recursive release would follow.
  struct Frame {
    Block* block;
    int next_slot;
    bool finishing_slot;
  };
  std::vector<Frame> stack;
  internal::WalkPath releasing;
  block->PostEvent(BlockEvent(block, 1, 0));
  if (block->NumDependencies() == 0) {  // a leaf: nothing to release below it
    block->DeleteThis();
    return;
  }
  stack.push_back({block, 0, false});
  releasing.Push(block);
  while (!stack.empty()) {
    Frame& top = stack.back();
    Block* owner = top.block;
    if (top.finishing_slot) {
      top.finishing_slot = false;
      owner->FinishSlotRelease(top.next_slot++);
      continue;
    }
    if (top.next_slot >= owner->NumDependencies()) {
      stack.pop_back();
      releasing.Pop();
      owner->DeleteThis();
      continue;
    }
    Block* dependency = owner->GetDependency(top.next_slot);
    if (dependency == nullptr) {
      ++top.next_slot;
      continue;
    }
    top.finishing_slot = true;
    // A block already being released (reached again through a raw slot) is not released twice.
    if (releasing.Contains(dependency)) continue;
    if (dependency->RemoveDependantEntries(owner) && !internal::IsReleaseGuarded(dependency)) {
      dependency->PostEvent(BlockEvent(dependency, 1, 0));
      stack.push_back({dependency, 0, false});
      releasing.Push(dependency);
    }
  }
}

void Block::RemoveFromDependants() {
  for (std::size_t d = 0; d < m_dependants.size(); ++d) {
    Block* dependant = m_dependants[d];
    if (dependant == nullptr) continue;
    for (int i = 0; i < dependant->NumDependencies(); ++i) {
      if (dependant->GetDependency(i) == this) dependant->SetDependency(i, nullptr);
    }
  }
  m_dependants.clear();
}

void Block::DeleteThisBlock(bool delete_block) {
  for (int i = 0; i < NumDependencies(); ++i) DeleteDependency(i);
  RemoveFromDependants();
  if (!delete_block) return;
  if (SceneEngine* engine = SceneEngine::GetScene()) engine->BlockIsBeingDeleted(this);
  DeleteThis();
}

void Block::GetDependants(std::vector<Block*>& out) const {
  out.insert(out.end(), m_dependants.begin(), m_dependants.end());
}

Block* Block::GetParentBlock() const {
  return m_dependants.empty() ? nullptr : m_dependants.front();
}

// ---- The block's scene-file record ----

int Block::SaveBlockInfo(SceneSave* save) {
  const BlockType type = GetBlockType();
  save->BeginChunk(kBlockInfoChunk);
  save->WriteUInt32(type.class_id);
  save->WriteUInt32(type.super_class_id);
  save->WriteUInt32(type.sub_id);
  save->WriteUInt32(m_id);
  save->EndChunk();
  return 0;
}

int Block::SaveBlockDependencies(SceneSave* save) {
  const int num_slots = NumDependencies();
  save->BeginChunk(kBlockDependenciesChunk);
  save->WriteInt32(num_slots);
  for (int i = 0; i < num_slots; ++i) {
    const Block* dependency = GetDependency(i);
    save->WriteUInt32(dependency != nullptr ? dependency->m_id : kNoID);
  }
  save->EndChunk();
  return 0;
}

int Block::LoadBlockDependencies(SceneLoad* load, BlockLoadData* record) {
  if (load->OpenChunk() != SceneLoad::kChunkOpened) return 0;
  if (load->CurChunkID() == kBlockDependenciesChunk) {
    std::int32_t count = 0;
    load->ReadInt32(count);
    if (count < 0 ||
        static_cast<std::uint64_t>(count) * internal::kSavedSlotBytes > load->BytesLeftInChunk()) {
      load->ReportCorruption("dependency count " + std::to_string(count) +
                             " does not fit its chunk");
    } else {
      record->dependency_ids.resize(static_cast<std::size_t>(count));
      for (std::int32_t& id : record->dependency_ids) load->ReadInt32(id);
    }
  }
  load->CloseChunk();
  return 0;
}

}  // namespace Orlo
