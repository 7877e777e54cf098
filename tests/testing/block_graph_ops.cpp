#include "tests/testing/block_graph_ops.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_listener.h>
#include <orlo/base/block/block_table.h>

namespace Orlo::testing {

namespace {

// The most blocks the pool grows to, the most entries an operation gives a table, and the
// most blocks a clone may add (sharing makes a clone a tree, which can grow fast).
constexpr std::size_t kMaxLive = 24;
constexpr std::size_t kMaxEntries = 8;
constexpr std::size_t kMaxCloneSize = 32;

class Tracker;

// The tracker of the running harness; blocks created by the harness report to it.
Tracker* g_tracker = nullptr;

// One entry of a table as the harness expects it: the block and whether it was linked.
struct Entry {
  Block* block;
  bool linked;
};

struct Tracked {
  Block* block;
  int serial;
  bool table;
  // The expected entries, for a table.
  std::vector<Entry> entries;
};

// Which blocks the harness created are alive, which have been destroyed, and the first
// broken check.
class Tracker {
 public:
  void Created(Block* block, bool table) {
    m_live.push_back({block, m_next_serial++, table, {}});
    m_dead.erase(block);
    m_untracked.erase(block);
  }

  void Destroyed(Block* block) {
    auto found = Find(block);
    if (found == m_live.end()) {
      Fail("a block was destroyed twice");
      return;
    }
    m_live.erase(found);
    m_dead.insert(block);
    m_roots.erase(std::remove(m_roots.begin(), m_roots.end(), block), m_roots.end());
  }

  std::vector<Tracked>::iterator Find(const Block* block) {
    return std::find_if(m_live.begin(), m_live.end(),
                        [block](const Tracked& t) { return t.block == block; });
  }
  Tracked* Get(const Block* block) {
    auto found = Find(block);
    return found == m_live.end() ? nullptr : &*found;
  }
  bool IsLive(const Block* block) { return Find(block) != m_live.end(); }
  bool IsDead(const Block* block) const { return m_dead.count(block) != 0; }
  bool IsUntracked(const Block* block) const { return m_untracked.count(block) != 0; }
  void AddUntracked(const Block* block) { m_untracked.insert(block); }

  bool IsRoot(const Block* block) const {
    return std::find(m_roots.begin(), m_roots.end(), block) != m_roots.end();
  }
  void AddRoot(Block* block) {
    if (!IsRoot(block)) m_roots.push_back(block);
  }

  std::vector<Tracked>& Live() { return m_live; }
  std::vector<Block*>& Roots() { return m_roots; }

  void Fail(const std::string& message) {
    if (m_failure.empty()) m_failure = message;
  }
  const std::string& Failure() const { return m_failure; }

 private:
  std::vector<Tracked> m_live;  // in creation order
  std::unordered_set<const Block*> m_dead;
  // Blocks made by BlockTable::Clone inside a copy: plain tables the harness cannot hook.
  // Their destruction is not seen here; AddressSanitizer and the leak checker watch them.
  std::unordered_set<const Block*> m_untracked;
  std::vector<Block*> m_roots;
  int m_next_serial = 0;
  std::string m_failure;
};

// A block with a fixed number of plain slots that reports its creation and destruction.
class FuzzBlock : public Block {
 public:
  explicit FuzzBlock(int num_slots) : m_slots(static_cast<std::size_t>(num_slots), nullptr) {
    g_tracker->Created(this, false);
  }
  FuzzBlock(const FuzzBlock&) = delete;
  FuzzBlock& operator=(const FuzzBlock&) = delete;
  ~FuzzBlock() override { g_tracker->Destroyed(this); }

  std::string GetClassName() const override { return "FuzzBlock"; }
  BlockType GetBlockType() const override { return BlockType(900, 9, 1); }
  int NumDependencies() const override { return static_cast<int>(m_slots.size()); }
  void SetDependency(int index, Block* block) override {
    if (index >= 0 && index < NumDependencies()) m_slots[static_cast<std::size_t>(index)] = block;
  }
  Block* GetDependency(int index) const override {
    if (index < 0 || index >= NumDependencies()) return nullptr;
    return m_slots[static_cast<std::size_t>(index)];
  }
  std::string GetDependencyName(int) const override { return "slot"; }
  Block* Clone() override { return new FuzzBlock(NumDependencies()); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }

 private:
  std::vector<Block*> m_slots;
};

// A table that reports its creation and destruction. Its destructor reports before
// BlockTable's releases the entries; no check runs in between.
class FuzzTable : public BlockTable {
 public:
  FuzzTable() : BlockTable(true) { g_tracker->Created(this, true); }
  FuzzTable(const FuzzTable&) = delete;
  FuzzTable& operator=(const FuzzTable&) = delete;
  ~FuzzTable() override { g_tracker->Destroyed(this); }
};

class CountingListener : public BlockListener {
 public:
  void OnBlockEvent(BlockEvent) override { ++heard; }
  long heard = 0;
};

std::string Describe(Tracker& tracker, const Block* block) {
  if (block == nullptr) return "null";
  if (const Tracked* tracked = tracker.Get(block)) {
    return std::string(tracked->table ? "table #" : "block #") + std::to_string(tracked->serial);
  }
  if (tracker.IsDead(block)) return "a destroyed block";
  if (tracker.IsUntracked(block)) return "an untracked copy";
  return "an unknown block";
}

// One run: the byte reader, the pool and the checks.
class Session {
 public:
  Session(const std::uint8_t* data, std::size_t size, std::array<long, BlockGraphOps::kNumOps>& ops)
      : m_data(data), m_size(size), m_ops_run(ops) {
    g_tracker = &m_tracker;
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { g_tracker = nullptr; }

  std::string Run() {
    int step = 0;
    while (m_pos < m_size && m_tracker.Failure().empty()) {
      const int op = Next() % BlockGraphOps::kNumOps;
      const bool ran = Do(op);
      if (ran) ++m_ops_run[static_cast<std::size_t>(op)];
      if (m_tracker.Failure().empty()) Check();
      if (!m_tracker.Failure().empty()) {
        return "step " + std::to_string(step) + " (operation " + std::to_string(op) +
               "): " + m_tracker.Failure();
      }
      ++step;
    }
    ReleaseEverything();
    if (!m_tracker.Failure().empty()) return "releasing everything: " + m_tracker.Failure();
    return std::string();
  }

 private:
  // ---- Reading the bytes ----

  int Next() { return m_pos < m_size ? m_data[m_pos++] : 0; }

  Block* Pick() {
    const int byte = Next();
    auto& live = m_tracker.Live();
    if (live.empty()) return nullptr;
    return live[static_cast<std::size_t>(byte) % live.size()].block;
  }
  Block* PickOrNull() {
    const int byte = Next();
    auto& live = m_tracker.Live();
    if (live.empty() || byte % 8 == 0) return nullptr;
    return live[static_cast<std::size_t>(byte / 8) % live.size()].block;
  }
  FuzzTable* PickTable() {
    const int byte = Next();
    std::vector<Block*> tables;
    for (const Tracked& t : m_tracker.Live()) {
      if (t.table) tables.push_back(t.block);
    }
    if (tables.empty()) return nullptr;
    return static_cast<FuzzTable*>(tables[static_cast<std::size_t>(byte) % tables.size()]);
  }
  // A block that `owner` holds already, or null when it holds none.
  Block* PickHeldBy(Block* owner) {
    const int byte = Next();
    std::vector<Block*> held;
    for (int i = 0; i < owner->NumDependencies(); ++i) {
      if (Block* d = owner->GetDependency(i)) held.push_back(d);
    }
    if (held.empty()) return nullptr;
    return held[static_cast<std::size_t>(byte) % held.size()];
  }
  // A slot index from -1 to NumDependencies(): the two ends are outside the slots.
  int PickSlot(Block* block) { return Next() % (block->NumDependencies() + 2) - 1; }

  std::vector<Entry>& EntriesOf(Block* table) { return m_tracker.Get(table)->entries; }

  // ---- The operations ----

  bool Do(int op) {
    switch (op) {
      case BlockGraphOps::kNewBlock: {
        const int num_slots = 1 + Next() % 3;
        if (m_tracker.Live().size() >= kMaxLive) return false;
        Place(new FuzzBlock(num_slots));
        return true;
      }
      case BlockGraphOps::kNewTable: {
        if (m_tracker.Live().size() >= kMaxLive) return false;
        Place(new FuzzTable());
        return true;
      }
      case BlockGraphOps::kLink: {
        Block* owner = Pick();
        if (owner == nullptr) return false;
        const int slot = PickSlot(owner);
        Link(owner, slot, PickOrNull());
        return true;
      }
      case BlockGraphOps::kLinkAgain: {
        // Links a block the owner holds already: the duplicates that three slots, or one
        // slot set twice, give.
        Block* owner = Pick();
        if (owner == nullptr) return false;
        Block* held = PickHeldBy(owner);
        const int slot = PickSlot(owner);
        if (held == nullptr) return false;
        Link(owner, slot, held);
        return true;
      }
      case BlockGraphOps::kDeleteDependency: {
        Block* owner = Pick();
        if (owner == nullptr) return false;
        const int slot = PickSlot(owner);
        if (m_tracker.Get(owner)->table && slot >= 0 && slot < owner->NumDependencies()) {
          EntriesOf(owner)[static_cast<std::size_t>(slot)] = {nullptr, false};
        }
        owner->DeleteDependency(slot);
        return true;
      }
      case BlockGraphOps::kReplaceDependency: {
        Block* owner = Pick();
        if (owner == nullptr) return false;
        Block* old_block = Next() % 2 ? PickHeldBy(owner) : PickOrNull();
        Block* new_block = PickOrNull();
        if (m_tracker.Get(owner)->table) {
          std::vector<Entry>& entries = EntriesOf(owner);
          for (Entry& entry : entries) {
            if (entry.block != old_block) continue;
            if (new_block == nullptr) {
              entry = {nullptr, false};
            } else if (owner->OkToSetAsDependency(new_block)) {
              entry = {new_block, true};
            }
            break;
          }
        }
        (void)owner->ReplaceDependency(old_block, new_block);
        return true;
      }
      case BlockGraphOps::kDeleteAllDependencies: {
        Block* owner = Pick();
        if (owner == nullptr) return false;
        if (m_tracker.Get(owner)->table) {
          for (Entry& entry : EntriesOf(owner)) entry = {nullptr, false};
        }
        owner->DeleteAllDependencies();
        return true;
      }
      case BlockGraphOps::kPushBack:
      case BlockGraphOps::kPushBackAgain: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        Block* block = op == BlockGraphOps::kPushBack ? PickOrNull() : PickHeldBy(table);
        if (table->GetNumBlocks() >= kMaxEntries) return false;
        PushBack(table, block);
        return true;
      }
      case BlockGraphOps::kEraseIndex: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        const int index = Next() % (static_cast<int>(table->GetNumBlocks()) + 2) - 1;
        std::vector<Entry>& entries = EntriesOf(table);
        if (index >= 0 && index < static_cast<int>(entries.size())) {
          entries.erase(entries.begin() + index);
        }
        table->Erase(index);
        return true;
      }
      case BlockGraphOps::kEraseBlock: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        Block* block = Next() % 4 ? PickHeldBy(table) : PickOrNull();
        std::vector<Entry>& entries = EntriesOf(table);
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [block](const Entry& e) { return e.block == block; }),
                      entries.end());
        table->Erase(block);
        return true;
      }
      case BlockGraphOps::kSetNumBlocks: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        const std::size_t count = static_cast<std::size_t>(Next()) % (kMaxEntries + 1);
        EntriesOf(table).resize(count, Entry{nullptr, false});
        table->SetNumBlocks(static_cast<int>(count));
        return true;
      }
      case BlockGraphOps::kSwapBlocks: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        Block* a = PickHeldBy(table);
        Block* b = Next() % 4 ? PickHeldBy(table) : PickOrNull();
        std::vector<Entry>& entries = EntriesOf(table);
        std::size_t position_a = entries.size();
        std::size_t position_b = entries.size();
        for (std::size_t i = 0; i < entries.size(); ++i) {
          if (entries[i].block == a) position_a = i;
          if (entries[i].block == b) position_b = i;
        }
        if (a != nullptr && b != nullptr && position_a < entries.size() &&
            position_b < entries.size()) {
          std::swap(entries[position_a], entries[position_b]);
        }
        table->SwapBlocks(a, b);
        return true;
      }
      case BlockGraphOps::kSetBlock: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        const int index = Next() % (static_cast<int>(table->GetNumBlocks()) + 2) - 1;
        Block* block = PickOrNull();
        std::vector<Entry>& entries = EntriesOf(table);
        const bool in_range = index >= 0 && index < static_cast<int>(entries.size());
        const bool accepted = block != nullptr && in_range && table->OkToSetAsDependency(block);
        const Status status = table->SetBlock(index, block);
        if (status.IsOk() != accepted) {
          m_tracker.Fail("SetBlock answered " + std::to_string(status.GetCode()) +
                         " against the cycle test");
        }
        if (accepted && m_tracker.IsLive(table)) {
          EntriesOf(table)[static_cast<std::size_t>(index)] = {block, true};
        }
        return true;
      }
      case BlockGraphOps::kClone: {
        FuzzTable* table = PickTable();
        if (table == nullptr) return false;
        // A clone copies shared entries once per path, so its size can grow with each clone of
        // a clone; one larger than allowed is skipped, whatever the pool holds.
        const std::size_t size = CloneSize(table);
        if (size > kMaxCloneSize || m_tracker.Live().size() + size > kMaxLive + kMaxCloneSize) {
          return false;
        }
        Block* copy = table->Clone();
        if (copy == nullptr) {
          m_tracker.Fail("Clone returned null");
          return true;
        }
        Place(Adopt(copy));
        return true;
      }
      case BlockGraphOps::kMute: {
        Block* block = Pick();
        const bool on = Next() % 2 == 0;
        if (block == nullptr) return false;
        block->SetSendEvents(on);
        return true;
      }
      case BlockGraphOps::kPostEvent: {
        Block* block = Pick();
        const int code = Next() % 8;
        const int param = Next();
        if (block == nullptr) return false;
        block->PostEvent(code, param);
        return true;
      }
      case BlockGraphOps::kListen: {
        Block* block = Pick();
        const int byte = Next();
        if (block == nullptr) return false;
        CountingListener& listener = m_listeners[static_cast<std::size_t>(byte) % 2];
        if (byte & 2) {
          block->AddBlockListener(&listener);
        } else {
          block->RemoveBlockListener(&listener);
        }
        return true;
      }
      case BlockGraphOps::kDeleteThisBlock: {
        Block* block = Pick();
        const bool destroy = Next() % 2 == 0;
        if (block == nullptr) return false;
        if (!destroy && m_tracker.Get(block)->table) {
          for (Entry& entry : EntriesOf(block)) entry = {nullptr, false};
        }
        block->DeleteThisBlock(destroy);
        // Detached but alive: nothing holds it now, so the harness keeps it.
        if (!destroy) m_tracker.AddRoot(block);
        return true;
      }
      default:
        return false;
    }
  }

  void Link(Block* owner, int slot, Block* block) {
    const bool is_table = m_tracker.Get(owner)->table;
    const bool in_range = slot >= 0 && slot < owner->NumDependencies();
    const bool no_cycle = owner->OkToSetAsDependency(block);
    const bool accepted = block == nullptr || (in_range && no_cycle);
    if (block != nullptr && block != owner) {
      // The path count and the yes-or-no test agree on whether the owner is below the block.
      int paths = 0;
      block->TestDependant(owner, paths);
      if ((paths == 0) != no_cycle) {
        m_tracker.Fail("TestDependant counted " + std::to_string(paths) +
                       " paths against the cycle test");
      }
    }
    const Status status = owner->MakeDependencyByID(slot, block);
    if (block != nullptr && status.IsOk() != accepted) {
      m_tracker.Fail("MakeDependencyByID answered " + std::to_string(status.GetCode()) +
                     " against the cycle test");
    }
    if (is_table && in_range && accepted && m_tracker.IsLive(owner)) {
      EntriesOf(owner)[static_cast<std::size_t>(slot)] = {block, block != nullptr};
    }
  }

  void PushBack(FuzzTable* table, Block* block) {
    // A block that reaches the table is appended unlinked.
    const bool linked = block != nullptr && table->OkToSetAsDependency(block);
    EntriesOf(table).push_back({block, linked});
    table->PushBack(block);
  }

  // Links a new block under a block of the pool, or keeps it as a root.
  void Place(Block* block) {
    const int byte = Next();
    if (byte % 4 != 0) {
      Block* owner = Pick();
      if (owner != nullptr && owner != block) {
        if (m_tracker.Get(owner)->table) {
          if (static_cast<FuzzTable*>(owner)->GetNumBlocks() < kMaxEntries) {
            PushBack(static_cast<FuzzTable*>(owner), block);
          }
        } else {
          Link(owner, Next() % owner->NumDependencies(), block);
        }
      }
    }
    if (m_tracker.IsLive(block)) {
      std::vector<Block*> dependants;
      block->GetDependants(dependants);
      if (dependants.empty()) m_tracker.AddRoot(block);
    }
  }

  // The number of blocks a clone of `table` makes, walking as Clone does (an entry already on
  // the path is not followed), counted up to a little over the largest clone allowed.
  std::size_t CloneSize(Block* table) {
    std::size_t count = 0;
    struct Frame {
      Block* block;
      int next_slot;
    };
    std::vector<Frame> stack{{table, 0}};
    while (!stack.empty() && count <= kMaxCloneSize) {
      Frame& top = stack.back();
      if (top.next_slot >= top.block->NumDependencies()) {
        stack.pop_back();
        ++count;
        continue;
      }
      Block* d = top.block->GetDependency(top.next_slot++);
      if (d == nullptr) continue;
      const bool on_path =
          std::any_of(stack.begin(), stack.end(), [d](const Frame& f) { return f.block == d; });
      if (!on_path) stack.push_back({d, 0});
    }
    return count;
  }

  // A clone is a plain BlockTable, which cannot report its destruction. Its entries move to a
  // new tracked table and the plain copy is deleted. Tables below the top of the copy stay
  // plain: they are recorded as untracked blocks, whose slots the checks do not follow.
  Block* Adopt(Block* copy) {
    std::vector<Block*> stack{copy};
    std::vector<Block*> seen;
    while (!stack.empty()) {
      Block* block = stack.back();
      stack.pop_back();
      if (std::find(seen.begin(), seen.end(), block) != seen.end()) continue;
      seen.push_back(block);
      if (block != copy && !m_tracker.IsLive(block)) m_tracker.AddUntracked(block);
      for (int i = 0; i < block->NumDependencies(); ++i) {
        if (Block* d = block->GetDependency(i)) stack.push_back(d);
      }
    }
    auto* adopted = new FuzzTable();
    const int count = copy->NumDependencies();
    adopted->SetNumBlocks(count);
    std::vector<Entry>& entries = EntriesOf(adopted);
    entries.assign(static_cast<std::size_t>(count), Entry{nullptr, false});
    for (int i = 0; i < count; ++i) {
      Block* entry = copy->GetDependency(i);
      if (entry == nullptr) continue;
      if (adopted->SetBlock(i, entry).IsOk()) {
        entries[static_cast<std::size_t>(i)] = {entry, true};
      } else {
        m_tracker.Fail("an entry of a clone could not be linked into a new table");
      }
    }
    copy->DeleteThisBlock(true);
    return adopted;
  }

  // ---- The checks ----

  // `what` names the place: "slot" with its index, or "dependant" with its position.
  void CheckPointer(const Tracked& owner, const Block* block, const char* what, std::size_t i) {
    if (m_tracker.IsLive(block) || m_tracker.IsUntracked(block)) return;
    m_tracker.Fail(std::string(what) + " " + std::to_string(i) + " of " +
                   Describe(m_tracker, owner.block) + " is " + Describe(m_tracker, block));
  }

  void Check() {
    // Entries of tables: the expected ones, with the slots that became null.
    for (Tracked& t : m_tracker.Live()) {
      if (!t.table) continue;
      const int count = t.block->NumDependencies();
      if (static_cast<std::size_t>(count) != t.entries.size()) {
        m_tracker.Fail(Describe(m_tracker, t.block) + " has " + std::to_string(count) +
                       " entries instead of " + std::to_string(t.entries.size()));
        return;
      }
      for (int i = 0; i < count; ++i) {
        Entry& entry = t.entries[static_cast<std::size_t>(i)];
        Block* actual = t.block->GetDependency(i);
        if (actual == nullptr) {
          entry = {nullptr, false};
        } else if (actual != entry.block) {
          m_tracker.Fail("entry " + std::to_string(i) + " of " + Describe(m_tracker, t.block) +
                         " is " + Describe(m_tracker, actual) + " instead of " +
                         Describe(m_tracker, entry.block));
          return;
        }
      }
    }
    std::vector<Block*>& dependants = m_dependants;
    std::vector<Block*>& linked = m_linked;
    for (const Tracked& t : m_tracker.Live()) {
      Block* owner = t.block;
      linked.clear();
      for (int i = 0; i < owner->NumDependencies(); ++i) {
        Block* d = owner->GetDependency(i);
        if (d == nullptr) continue;
        CheckPointer(t, d, "slot", static_cast<std::size_t>(i));
        if (!t.table || t.entries[static_cast<std::size_t>(i)].linked) linked.push_back(d);
      }
      dependants.clear();
      owner->GetDependants(dependants);
      for (std::size_t i = 0; i < dependants.size(); ++i) {
        if (dependants[i] == nullptr) {
          m_tracker.Fail("dependant " + std::to_string(i) + " of " + Describe(m_tracker, owner) +
                         " is null");
        } else {
          CheckPointer(t, dependants[i], "dependant", i);
        }
      }
      if (!m_tracker.Failure().empty()) return;
      if (dependants.empty() && !m_tracker.IsRoot(owner)) {
        m_tracker.Fail(Describe(m_tracker, owner) + " is alive with nothing holding it");
        return;
      }
      // Each block held in linked slots lists the owner at least once per such slot.
      std::sort(linked.begin(), linked.end());
      for (std::size_t i = 0; i < linked.size();) {
        std::size_t j = i;
        while (j < linked.size() && linked[j] == linked[i]) ++j;
        Block* held = linked[i];
        if (m_tracker.IsLive(held)) {
          m_back.clear();
          held->GetDependants(m_back);
          const auto entries = std::count(m_back.begin(), m_back.end(), owner);
          if (static_cast<std::size_t>(entries) < j - i) {
            m_tracker.Fail(Describe(m_tracker, held) + " lists " + Describe(m_tracker, owner) +
                           " " + std::to_string(entries) + " times but is linked into " +
                           std::to_string(j - i) + " of its slots");
            return;
          }
        }
        i = j;
      }
    }
  }

  // Deletes the roots, oldest first; nothing may be left alive afterwards.
  void ReleaseEverything() {
    const std::vector<Block*> roots = m_tracker.Roots();
    for (Block* root : roots) {
      if (m_tracker.IsLive(root)) root->DeleteThisBlock(true);
    }
    for (const Tracked& t : m_tracker.Live()) {
      m_tracker.Fail(Describe(m_tracker, t.block) + " is still alive");
      break;
    }
  }

  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_pos = 0;
  std::array<long, BlockGraphOps::kNumOps>& m_ops_run;
  Tracker m_tracker;
  // Blocks left alive by a failed run may keep pointers to these; nothing posts after a run.
  std::array<CountingListener, 2> m_listeners;
  // Scratch lists of the checks, kept to spare an allocation per block and step.
  std::vector<Block*> m_dependants;
  std::vector<Block*> m_linked;
  std::vector<Block*> m_back;
};

}  // namespace

std::string BlockGraphOps::Run(const std::uint8_t* data, std::size_t size) {
  Session session(data, size, m_ops_run);
  return session.Run();
}

}  // namespace Orlo::testing
