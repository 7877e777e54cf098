#include <orlo/base/block/block.h>

#include <algorithm>
#include <cassert>
#include <limits>
#include <unordered_map>

#include <orlo/base/block/internal/block_watch.h>
#include <orlo/base/block/internal/irregular_links.h>
#include <orlo/base/block/internal/release_guard.h>
#include <orlo/base/block/internal/saturating.h>
#include <orlo/base/block/internal/saved_slots.h>
#include <orlo/base/block/internal/visited_set.h>
#include <orlo/base/block/internal/walk_path.h>
#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

// The host pointers of the blocks that have one.
std::unordered_map<const Block*, void*>& HostData() {
  static std::unordered_map<const Block*, void*> data;
  return data;
}

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

// Blocks that lost their last dependant while guarded, to be released when the outermost graph
// operation ends; and how deep graph operations are nested now.
std::vector<Block*>& AbandonedBlocks() {
  static std::vector<Block*> abandoned;
  return abandoned;
}
int g_operation_depth = 0;

// Blocks that lost a dependant but kept others while irregular links exist: the outermost
// operation checks, when it ends, whether anything outside still owns them.
std::vector<Block*>& CollectCandidates() {
  static std::vector<Block*> candidates;
  return candidates;
}

}  // namespace

void Block::NoteAbandoned(Block* block) {
  if (block->m_noted_abandoned) return;
  block->m_noted_abandoned = 1;
  AbandonedBlocks().push_back(block);
}

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

// ---- Copying and destruction ----

Block::Block(const Block& other) : Block() { *this = other; }

Block& Block::operator=(const Block& other) {
  if (this == &other) return *this;
  SetData(other.GetData());
  m_dependants = other.m_dependants;
  CopyListenersOf(other);
  m_send_events = other.m_send_events;
  m_id = other.m_id;
  m_saved = other.m_saved;
  // The copied dependants hold the copy in no slot: each of them is recorded, so that it never
  // outlives the copy's knowledge of it.
  for (Block* dependant : m_dependants) internal::IrregularLinks::Add(dependant, this);
  // The copy's dependants may change what the blocks below it can observe.
  ForgetQuietAnswers();
  return *this;
}

Block::~Block() {
  // Blocks are destroyed through the release path, which has already made the other blocks of
  // irregular pairs forget this one; this covers a host that calls DeleteThis itself.
  if (!internal::IrregularLinks::Empty()) ForgetIrregularLinks(this, nullptr);
  SetData(nullptr);
  DropListeners();
  // A block still waiting for the end of the operation leaves its list.
  auto leave = [this](std::vector<Block*>& pending) {
    pending.erase(std::remove(pending.begin(), pending.end(), this), pending.end());
  };
  if (m_noted_abandoned) leave(AbandonedBlocks());
  if (m_noted_candidate) leave(CollectCandidates());
  if (m_watched) internal::BlockWatch::Destroyed(this);
  if (m_quiet_known) ForgetQuietAnswerOf(this);
}

void* Block::GetData() const {
  if (!m_has_data) return nullptr;
  return HostData().at(this);
}

void Block::SetData(void* data) {
  if (data == nullptr) {
    if (m_has_data) HostData().erase(this);
    m_has_data = 0;
    return;
  }
  HostData()[this] = data;
  m_has_data = 1;
}

// ---- Reachability ----

namespace {

// Whether one of `holder`'s slots holds `held`.
bool HoldsInSlot(const Block* holder, const Block* held) {
  const int num_slots = holder->NumDependencies();
  for (int i = 0; i < num_slots; ++i) {
    if (holder->GetDependency(i) == held) return true;
  }
  return false;
}

// Lists up to this long are walked whole when a dependant lets go; longer ones take a shortcut
// where the walk's result is known.
constexpr std::size_t kFullScanLimit = 16;

int CountSlotsHolding(const Block* holder, const Block* held) {
  int count = 0;
  const int num_slots = holder->NumDependencies();
  for (int i = 0; i < num_slots; ++i) {
    if (holder->GetDependency(i) == held) ++count;
  }
  return count;
}

// The number of paths from `top` down to `target`, never descending below `target` nor into a
// block already on the current path; saturates at the largest uint64.
std::uint64_t CountPathsDown(const Block* top, const Block* target) {
  // Depth first in slot order with one memo per block: a block's count is the sum of its
  // slots' counts, so every block is expanded once however many paths lead through it. A
  // cycle left by raw slot stores contributes nothing where it closes; on an acyclic graph
  // this is exactly the number of paths.
  struct Frame {
    const Block* block;
    int next_slot;
    std::uint64_t paths;
  };
  std::unordered_map<const Block*, std::uint64_t> memo;
  std::vector<Frame> stack;
  internal::WalkPath path;
  stack.push_back({top, 0, 0});
  path.Push(top);
  std::uint64_t result = 0;
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next_slot >= frame.block->NumDependencies()) {
      const Frame done = frame;
      stack.pop_back();
      path.Pop();
      memo[done.block] = done.paths;
      if (stack.empty()) {
        result = done.paths;
      } else {
        stack.back().paths = internal::SaturatingAdd(stack.back().paths, done.paths);
      }
      continue;
    }
    const Block* dependency = frame.block->GetDependency(frame.next_slot++);
    if (dependency == nullptr) continue;
    if (dependency == target) {
      frame.paths = internal::SaturatingAdd(frame.paths, 1);
      continue;
    }
    auto known = memo.find(dependency);
    if (known != memo.end()) {
      frame.paths = internal::SaturatingAdd(frame.paths, known->second);
      continue;
    }
    if (path.Contains(dependency)) continue;
    stack.push_back({dependency, 0, 0});
    path.Push(dependency);
  }
  return result;
}

}  // namespace

void Block::TestDependant(Block* target, int& count) const {
  // A block without slots (a fresh one, most often) has no path down: nothing to walk.
  if (target == nullptr || NumDependencies() == 0) return;
  const std::uint64_t paths = CountPathsDown(this, target);
  const std::uint64_t room =
      static_cast<std::uint64_t>(std::numeric_limits<int>::max() - std::max(count, 0));
  count += static_cast<int>(std::min(paths, room));
}

bool Block::Reaches(const Block* top, const Block* target) {
  if (top->NumDependencies() == 0) return false;
  if (target->m_dependants.empty() && internal::IrregularLinks::HoldersOf(target) == nullptr) {
    return false;
  }
  // Two searches take turns, one block at a time: down from `top` through the slots, and up
  // from `target` through the blocks that hold it. The first to run out of blocks answers no,
  // so the test costs no more than twice the smaller side of the graph around the link.
  std::vector<const Block*> down{top};
  std::vector<const Block*> up{target};
  internal::VisitedSet seen_down;
  internal::VisitedSet seen_up;
  seen_down.Insert(top);
  seen_up.Insert(target);
  while (!down.empty() && !up.empty()) {
    const Block* lower = down.back();
    down.pop_back();
    const int num_slots = lower->NumDependencies();
    for (int i = 0; i < num_slots; ++i) {
      const Block* dependency = lower->GetDependency(i);
      if (dependency == nullptr) continue;
      if (dependency == target) return true;
      if (seen_down.Insert(dependency)) down.push_back(dependency);
    }

    const Block* upper = up.back();
    up.pop_back();
    // Going up, a back reference counts only where a slot really holds the block: the pairs
    // that deliberate rules made irregular are checked against the holder's slots.
    auto climb = [&](const Block* holder) {
      if (holder == nullptr || seen_up.Contains(holder)) return false;
      if (internal::IrregularLinks::Contains(holder, upper) && !HoldsInSlot(holder, upper)) {
        return false;
      }
      if (holder == top) return true;
      seen_up.Insert(holder);
      up.push_back(holder);
      return false;
    };
    for (const Block* dependant : upper->m_dependants) {
      if (climb(dependant)) return true;
    }
    if (const std::vector<Block*>* holders = internal::IrregularLinks::HoldersOf(upper)) {
      for (const Block* holder : *holders) {
        if (climb(holder)) return true;
      }
    }
  }
  return false;
}

bool Block::OkToSetAsDependency(Block* block) {
  if (block == this) return false;
  if (block == nullptr) return true;
  return !Reaches(block, this);
}

bool Block::MakeDependant(int, Block* dependant) {
  if (dependant != nullptr && Reaches(this, dependant)) return false;
  m_dependants.push_back(dependant);
  // A back reference made on its own has no slot behind it.
  internal::IrregularLinks::Add(dependant, this);
  NoteNewDependant(this, dependant);
  return true;
}

// ---- Linking and releasing ----

Status Block::MakeDependencyByID(int index, Block* block) {
  OperationScope operation;
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
  if (Reaches(block, this)) {
    result.Set(Status::kInvalidArgument, kCyclicDependency);
    return result;
  }
  LinkAcyclic(index, block);
  return result;
}

void Block::LinkAcyclic(int index, Block* block) {
  OperationScope operation;
  Block* old = GetDependency(index);
  // The caller's cycle test is the one MakeDependant would repeat; it cannot fail now.
  block->m_dependants.push_back(this);
  NoteNewDependant(block, this);
  if (old == block) {
    // Kept as is: setting the same block again leaves a second back reference, and existing
    // scenes count on a block surviving the release of one of two identical links. The extra
    // reference is recorded so that it goes when this block does.
    internal::IrregularLinks::Add(this, block);
  } else if (old != nullptr) {
    internal::ReleaseGuard running(this);
    old->EraseDependantFromTable(this);
  }
  SetDependency(index, block);
  ProcessEvent(BlockEvent(this, 2, index));
}

void Block::DeleteDependency(int index) {
  OperationScope operation;
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
  OperationScope operation;
  for (int i = 0; i < NumDependencies(); ++i) DeleteDependency(i);
}

bool Block::ReplaceDependency(Block* old_block, Block* new_block) {
  OperationScope operation;
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

Block::Removal Block::RemoveDependantEntries(Block* dependant) {
  // Kept as is: after removing an entry the walk steps over the entry that followed it, so of
  // two adjacent equal entries only the first goes in one call. A block linked twice through
  // the same slot survives the release of that slot, and existing scenes rely on it.
  // Stepping over can also take more entries than the dependant lets go of (three slots
  // holding one block would lose two entries at the first release), so the walk never leaves
  // fewer entries than the dependant's other slots still holding this block. That also covers
  // a slot that never had an entry (an unlinked table entry): releasing it takes none of the
  // entries that the linked slots still need.
  // A regular pair has one entry per slot, so taking one entry is right; only the slots of an
  // irregular pair or a walk that would take several entries need counting.
  const bool irregular =
      !internal::IrregularLinks::Empty() && internal::IrregularLinks::Contains(dependant, this);
  if (!irregular && m_dependants.size() > kFullScanLimit &&
      CountSlotsHolding(dependant, this) == 1) {
    // A block held by many (a parent's transform, a shared material): the dependant's one slot
    // has the one entry, so the walk would take the first match and nothing else. Finding it
    // is enough, which keeps releasing all of them in link order linear.
    Block* const* first = std::find(m_dependants.begin(), m_dependants.end(), dependant);
    if (first != m_dependants.end()) {
      m_dependants.erase(static_cast<std::size_t>(first - m_dependants.begin()));
      return m_dependants.empty() ? Removal::kLostLast : Removal::kStillHeld;
    }
  }
  std::vector<std::size_t> taken;
  std::size_t matching = 0;
  Block* const* entries = m_dependants.begin();
  const std::size_t num_entries = m_dependants.size();
  for (std::size_t i = 0; i < num_entries; ++i) {
    if (entries[i] != dependant) continue;
    ++matching;
    if (taken.empty() || taken.back() + 1 != i) taken.push_back(i);
  }
  if (taken.empty()) return m_dependants.empty() ? Removal::kNeverHeld : Removal::kStillHeld;
  if (taken.size() > 1 || irregular) {
    const std::size_t still_held =
        static_cast<std::size_t>(std::max(CountSlotsHolding(dependant, this) - 1, 0));
    const std::size_t may_take = matching > still_held ? matching - still_held : 0;
    if (taken.size() > may_take) taken.resize(may_take);
  }
  for (std::size_t i = taken.size(); i > 0; --i) {
    m_dependants.erase(taken[i - 1]);
  }
  return m_dependants.empty() ? Removal::kLostLast : Removal::kStillHeld;
}

void Block::CollectIfUnowned() {
  // Links never close a cycle, but leftover references can: a block set twice into a slot of
  // one of its own dependencies and released once keeps that dependency alive, which keeps it
  // alive in turn. Whether that is all that keeps them is decided once the outermost
  // operation is done, when no half-made link can change the answer.
  if (m_noted_candidate) return;
  m_noted_candidate = 1;
  CollectCandidates().push_back(this);
}

bool Block::ReleaseIfUnowned(Block* block) {
  // The blocks above `block`, following back references. Nothing outside owns them when none
  // of them lacks a dependant (an owner of the graph: the scene root or a block the host
  // keeps); links alone never make such a closed set, so only leftover references, unlinked
  // table entries and back references without slots hold it together.
  std::vector<Block*> above{block};
  internal::VisitedSet seen;
  seen.Insert(block);
  for (std::size_t i = 0; i < above.size(); ++i) {
    bool has_dependant = false;
    for (Block* dependant : above[i]->m_dependants) {
      if (dependant == nullptr) continue;
      has_dependant = true;
      if (seen.Insert(dependant)) above.push_back(dependant);
    }
    if (!has_dependant) return false;  // owned from outside
  }
  // None of them is reachable from an owner. Every link among them goes, as raw stores (the
  // blocks are going, nobody listens for the slot changes), and each is released on its own,
  // taking along what only it kept below.
  for (Block* member : above) {
    const int num_slots = member->NumDependencies();
    for (int i = 0; i < num_slots; ++i) {
      if (seen.Contains(member->GetDependency(i))) member->SetDependency(i, nullptr);
    }
  }
  for (Block* member : above) member->m_dependants.clear();
  for (Block* member : above) NoteAbandoned(member);
  return true;
}

bool Block::ShouldRelease(Block* dependant, Removal removal) {
  if (removal == Removal::kStillHeld) {
    if (!internal::IrregularLinks::Empty()) CollectIfUnowned();
    return false;
  }
  // A slot that held this block without a back reference releases it as the last link would,
  // but an entry left unlinked by a refused PushBack never owned its block: that block reaches
  // the table, so letting the entry own it would also let it outlive everything.
  if (removal == Removal::kNeverHeld && internal::IrregularLinks::Contains(dependant, this)) {
    return false;
  }
  // A block whose own operation led back to it is not destroyed there; the operation may
  // release it once it is done.
  if (internal::IsReleaseGuarded(this)) {
    if (removal == Removal::kLostLast) NoteAbandoned(this);
    return false;
  }
  return true;
}

bool Block::EraseDependantFromTable(Block* dependant) {
  OperationScope operation;
  if (!ShouldRelease(dependant, RemoveDependantEntries(dependant))) return false;
  ReleaseUnreferenced(this);
  return true;
}

void Block::ReleaseUnreferenced(Block* block) {
  // The release cascade, with an explicit stack. For each block: post code 1, release every
  // slot in order (the dependency first, then the raw store of null and the code-2 event),
  // then DeleteThis. A dependency whose last dependant goes is released completely before the
  // next slot of its owner: the order a recursive release would follow. A block that loses its
  // last dependant only because a destroyed block's leftover reference goes is released after
  // it, in the same loop.
  struct Frame {
    Block* block;
    int next_slot;
    bool finishing_slot;
  };
  std::vector<Frame> stack;
  std::vector<Block*> orphans;
  internal::WalkPath releasing;
  auto start = [&](Block* unreferenced) {
    unreferenced->PostEvent(BlockEvent(unreferenced, 1, 0));
    stack.push_back({unreferenced, 0, false});
    releasing.Push(unreferenced);
  };
  start(block);
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
      ForgetIrregularLinks(owner, &orphans);
      owner->DeleteThis();
      while (!orphans.empty()) {
        Block* orphan = orphans.back();
        orphans.pop_back();
        start(orphan);
      }
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
    if (dependency->ShouldRelease(owner, dependency->RemoveDependantEntries(owner))) {
      start(dependency);
    }
  }
}

Block::OperationScope::OperationScope() { ++g_operation_depth; }

Block::OperationScope::~OperationScope() {
  if (--g_operation_depth != 0) return;
  // The outermost operation is done with every block it was working on: a block that lost its
  // last dependant meanwhile, while one of its own operations ran, and still has none, is
  // released now. Releasing runs operations of its own; the depth keeps them from draining.
  ++g_operation_depth;
  std::vector<Block*>& abandoned = AbandonedBlocks();
  std::vector<Block*>& candidates = CollectCandidates();
  while (!abandoned.empty() || !candidates.empty()) {
    if (!abandoned.empty()) {
      Block* block = abandoned.back();
      abandoned.pop_back();
      block->m_noted_abandoned = 0;
      if (block->m_dependants.empty()) ReleaseUnreferenced(block);
      continue;
    }
    Block* candidate = candidates.back();
    candidates.pop_back();
    candidate->m_noted_candidate = 0;
    (void)ReleaseIfUnowned(candidate);
  }
  --g_operation_depth;
}

void Block::ForgetIrregularLinks(Block* dying, std::vector<Block*>* orphans) {
  if (internal::IrregularLinks::Empty()) return;
  std::vector<Block*> held;
  std::vector<Block*> holders;
  internal::IrregularLinks::Forget(dying, held, holders);
  for (Block* block : held) {
    if (block == dying) continue;
    // Every back reference to a block that is going dangles: drop them all.
    if (block->m_dependants.erase_all(dying) == 0 || orphans == nullptr) continue;
    if (!block->m_dependants.empty()) {
      // What is left may be a cycle of leftover references that only the dying block owned.
      block->CollectIfUnowned();
      continue;
    }
    if (internal::IsReleaseGuarded(block)) {
      NoteAbandoned(block);
    } else {
      orphans->push_back(block);
    }
  }
  for (Block* holder : holders) {
    if (holder == dying) continue;
    // Raw stores, as when a block is detached: the holder hears nothing.
    const int num_slots = holder->NumDependencies();
    for (int i = 0; i < num_slots; ++i) {
      if (holder->GetDependency(i) == dying) holder->SetDependency(i, nullptr);
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
  OperationScope operation;
  for (int i = 0; i < NumDependencies(); ++i) DeleteDependency(i);
  RemoveFromDependants();
  if (!delete_block) return;
  if (SceneEngine* engine = SceneEngine::GetScene()) engine->BlockIsBeingDeleted(this);
  std::vector<Block*> orphans;
  ForgetIrregularLinks(this, &orphans);
  DeleteThis();
  for (Block* orphan : orphans) ReleaseUnreferenced(orphan);
}

void Block::GetDependants(std::vector<Block*>& out) const {
  out.insert(out.end(), m_dependants.begin(), m_dependants.end());
}

Block* Block::GetParentBlock() const {
  return m_dependants.empty() ? nullptr : m_dependants.front();
}

// ---- The block's scene-file record ----

int Block::SaveBlockInfo(SceneSave* save) {
  assert(save != nullptr);
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
  assert(save != nullptr);
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
  assert(load != nullptr && record != nullptr);
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
