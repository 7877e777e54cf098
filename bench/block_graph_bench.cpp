// Costs of the block graph: linking and releasing dependencies, posting an event up a chain of
// blocks, the cycle test over shared blocks, and chains of blocks and of tables built, cloned,
// notified and released at 10,000 and 100,000 links.
//
// What to read: every walk must be linear in the graph's size. A ladder (each block held twice
// by the one above) has 2^N paths but only N blocks, so the cycle tests and TestDependant must
// not grow with the paths; and each chain benchmark at 100,000 should take no more than 11
// times its time at 10,000. The small arguments are there to compare with when the large ones
// take too long:
//   block_graph_bench --benchmark_filter='Ladder.*/(16|20)$|Chain.*/1000(/|$)'
#include <benchmark/benchmark.h>

#include <string>
#include <type_traits>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_listener.h>
#include <orlo/base/block/block_table.h>

namespace Orlo {
namespace {

class BenchBlock : public Block {
 public:
  explicit BenchBlock(int num_slots) : m_slots(static_cast<std::size_t>(num_slots), nullptr) {}
  std::string GetClassName() const override { return "BenchBlock"; }
  BlockType GetBlockType() const override { return BlockType(900, 1, 1); }
  int NumDependencies() const override { return static_cast<int>(m_slots.size()); }
  void SetDependency(int index, Block* block) override {
    if (index >= 0 && index < NumDependencies()) m_slots[static_cast<std::size_t>(index)] = block;
  }
  Block* GetDependency(int index) const override {
    return index >= 0 && index < NumDependencies() ? m_slots[static_cast<std::size_t>(index)]
                                                   : nullptr;
  }
  std::string GetDependencyName(int) const override { return "slot"; }
  Block* Clone() override { return new BenchBlock(NumDependencies()); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }
  // Its ProcessEvent is the default relay: an event may stop where nothing above observes it.
  bool RelaysEventsUnchanged() const override { return true; }

 private:
  std::vector<Block*> m_slots;
};

class CountingListener : public BlockListener {
 public:
  void OnBlockEvent(BlockEvent) override { ++heard; }
  long heard = 0;
};

// Links a fresh block into a slot of a parent and releases it again (the block is deleted).
void BM_LinkAndReleaseOneDependency(benchmark::State& state) {
  BenchBlock parent(1);
  for (auto _ : state) {
    auto* child = new BenchBlock(0);
    (void)parent.MakeDependencyByID(0, child);
    parent.DeleteDependency(0);
  }
}
BENCHMARK(BM_LinkAndReleaseOneDependency);

// Links a parent over `range` children, then releases the parent, which deletes them all.
void BM_LinkAndReleaseAFanOut(benchmark::State& state) {
  const int fan_out = static_cast<int>(state.range(0));
  BenchBlock holder(1);
  for (auto _ : state) {
    auto* parent = new BenchBlock(fan_out);
    (void)holder.MakeDependencyByID(0, parent);
    for (int i = 0; i < fan_out; ++i) (void)parent->MakeDependencyByID(i, new BenchBlock(0));
    holder.DeleteDependency(0);
  }
  state.SetItemsProcessed(state.iterations() * fan_out);
}
BENCHMARK(BM_LinkAndReleaseAFanOut)->Arg(10)->Arg(1000);

// Posts an event at the bottom of a chain of `range` blocks; a listener on the top hears it.
void BM_PostEventUpAChain(benchmark::State& state) {
  const int depth = static_cast<int>(state.range(0));
  std::vector<BenchBlock*> chain;
  for (int i = 0; i < depth; ++i) {
    auto* block = new BenchBlock(1);
    if (!chain.empty()) (void)chain.back()->MakeDependencyByID(0, block);
    chain.push_back(block);
  }
  CountingListener listener;
  chain.front()->AddBlockListener(&listener);
  for (auto _ : state) chain.back()->PostEvent(3, 0);
  if (listener.heard != static_cast<long>(state.iterations())) state.SkipWithError("lost events");
  chain.front()->RemoveBlockListener(&listener);
  chain.front()->DeleteThisBlock(true);
  state.SetItemsProcessed(state.iterations() * depth);
}
BENCHMARK(BM_PostEventUpAChain)->Arg(10)->Arg(100)->Arg(1000);

// ---- The cycle test over shared blocks ----

// blocks[0] holds blocks[1] in both of its slots, blocks[1] holds blocks[2] twice, and so on
// down to blocks[depth]: depth + 1 blocks, 2^depth paths from the top to the bottom. A holder
// keeps the top. The blocks are muted while the ladder is built (an event would reach the top
// once per path), and unmuted afterwards.
class Ladder {
 public:
  explicit Ladder(int depth) : m_holder(new BenchBlock(1)) {
    for (int i = 0; i <= depth; ++i) {
      auto* block = new BenchBlock(2);
      block->SetSendEvents(false);
      if (m_blocks.empty()) {
        (void)m_holder->MakeDependencyByID(0, block);
      } else {
        (void)m_blocks.back()->MakeDependencyByID(0, block);
        (void)m_blocks.back()->MakeDependencyByID(1, block);
      }
      m_blocks.push_back(block);
    }
    for (BenchBlock* block : m_blocks) block->SetSendEvents(true);
  }
  Ladder(const Ladder&) = delete;
  Ladder& operator=(const Ladder&) = delete;
  ~Ladder() { m_holder->DeleteThisBlock(true); }

  BenchBlock* Top() const { return m_blocks.front(); }
  BenchBlock* Bottom() const { return m_blocks.back(); }

 private:
  BenchBlock* m_holder;
  std::vector<BenchBlock*> m_blocks;
};

// Refused: the top reaches the bottom, through 2^N paths.
void BM_LadderOkToSetAsDependency(benchmark::State& state) {
  Ladder ladder(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const bool ok = ladder.Bottom()->OkToSetAsDependency(ladder.Top());
    if (ok) state.SkipWithError("the ladder's top was accepted under its bottom");
    benchmark::DoNotOptimize(ok);
  }
}
BENCHMARK(BM_LadderOkToSetAsDependency)
    ->Arg(16)
    ->Arg(20)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

// The cycle test of MakeDependencyByID, once refused (the bottom taking the top) and once
// accepted (a new block taking the top, which searches the whole ladder below for it).
void BM_LadderMakeDependencyByID(benchmark::State& state) {
  Ladder ladder(static_cast<int>(state.range(0)));
  BenchBlock outside(1);
  outside.SetSendEvents(false);
  for (auto _ : state) {
    if (ladder.Bottom()->MakeDependencyByID(0, ladder.Top()).IsOk()) {
      state.SkipWithError("a cycle was accepted");
    }
    if (!outside.MakeDependencyByID(0, ladder.Top()).IsOk()) {
      state.SkipWithError("a link without a cycle was refused");
    }
    outside.DeleteDependency(0);
  }
}
BENCHMARK(BM_LadderMakeDependencyByID)
    ->Arg(16)
    ->Arg(20)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

// Counts the paths from the top to the bottom: 2^N, saturating where it does not fit.
void BM_LadderTestDependant(benchmark::State& state) {
  Ladder ladder(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    int count = 0;
    ladder.Top()->TestDependant(ladder.Bottom(), count);
    if (count <= 0) state.SkipWithError("no path counted");
    benchmark::DoNotOptimize(count);
  }
}
BENCHMARK(BM_LadderTestDependant)
    ->Arg(16)
    ->Arg(20)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

// ---- Chains of blocks and of tables ----

// N blocks (or tables), not linked yet, and a holder that takes the top.
template <typename T>
std::vector<T*> NewLinks(int count) {
  std::vector<T*> links;
  links.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    if constexpr (std::is_same_v<T, BlockTable>) {
      links.push_back(new BlockTable(true));
    } else {
      links.push_back(new BenchBlock(1));
    }
  }
  return links;
}

// Links `upper` over `lower`: slot 0 for a block, an appended entry for a table.
void LinkOver(Block* upper, Block* lower) {
  if (auto* table = dynamic_cast<BlockTable*>(upper)) {
    table->PushBack(lower);
  } else {
    (void)upper->MakeDependencyByID(0, lower);
  }
}

// Builds a held chain top-down, each link made under a block that is already held: every
// link's change event climbs to the holder.
template <typename T>
void LinkTopDown(BenchBlock& holder, const std::vector<T*>& links) {
  (void)holder.MakeDependencyByID(0, links.front());
  for (std::size_t i = 1; i < links.size(); ++i) LinkOver(links[i - 1], links[i]);
}

// Builds the chain bottom-up and then holds its top: every cycle test searches the chain
// built so far below the new link.
template <typename T>
void LinkBottomUp(BenchBlock& holder, const std::vector<T*>& links) {
  for (std::size_t i = links.size() - 1; i > 0; --i) LinkOver(links[i - 1], links[i]);
  (void)holder.MakeDependencyByID(0, links.front());
}

template <typename T>
void BM_ChainLinkTopDown(benchmark::State& state) {
  BenchBlock holder(1);
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<T*> links = NewLinks<T>(static_cast<int>(state.range(0)));
    state.ResumeTiming();
    LinkTopDown(holder, links);
    state.PauseTiming();
    holder.DeleteDependency(0);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename T>
void BM_ChainLinkBottomUp(benchmark::State& state) {
  BenchBlock holder(1);
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<T*> links = NewLinks<T>(static_cast<int>(state.range(0)));
    state.ResumeTiming();
    LinkBottomUp(holder, links);
    state.PauseTiming();
    holder.DeleteDependency(0);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// An event posted at the bottom of a held chain climbs to a listener on the holder.
template <typename T>
void BM_ChainPostEvent(benchmark::State& state) {
  BenchBlock holder(1);
  LinkBottomUp(holder, NewLinks<T>(static_cast<int>(state.range(0))));
  Block* bottom = &holder;
  while (bottom->NumDependencies() > 0 && bottom->GetDependency(0) != nullptr) {
    bottom = bottom->GetDependency(0);
  }
  CountingListener listener;
  holder.AddBlockListener(&listener);
  for (auto _ : state) bottom->PostEvent(3, 0);
  if (listener.heard != static_cast<long>(state.iterations())) state.SkipWithError("lost events");
  holder.RemoveBlockListener(&listener);
  holder.DeleteDependency(0);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The holder lets go of the chain's top, which releases the whole chain.
template <typename T>
void BM_ChainRelease(benchmark::State& state) {
  BenchBlock holder(1);
  for (auto _ : state) {
    state.PauseTiming();
    LinkBottomUp(holder, NewLinks<T>(static_cast<int>(state.range(0))));
    state.ResumeTiming();
    holder.DeleteDependency(0);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Clones the top table of a held chain of tables (a deep copy of the whole chain).
void BM_TableChainClone(benchmark::State& state) {
  BenchBlock holder(1);
  std::vector<BlockTable*> links = NewLinks<BlockTable>(static_cast<int>(state.range(0)));
  LinkBottomUp(holder, links);
  BenchBlock copy_holder(1);
  for (auto _ : state) {
    Block* copy = links.front()->Clone();
    state.PauseTiming();
    (void)copy_holder.MakeDependencyByID(0, copy);
    copy_holder.DeleteDependency(0);
    state.ResumeTiming();
  }
  holder.DeleteDependency(0);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The chain benchmarks at 1,000, 10,000 and 100,000 links. Those that build a chain per
// iteration run once: one run of a 100,000-link chain is enough to compare with 10,000.
#define ORLO_CHAIN_BENCHMARK(function, type, name) \
  BENCHMARK_TEMPLATE(function, type)               \
      ->Name(name)                                 \
      ->Arg(1000)                                  \
      ->Arg(10000)                                 \
      ->Arg(100000)                                \
      ->Unit(benchmark::kMillisecond)

ORLO_CHAIN_BENCHMARK(BM_ChainLinkTopDown, BenchBlock, "BM_BlockChainLinkTopDown")->Iterations(1);
ORLO_CHAIN_BENCHMARK(BM_ChainLinkBottomUp, BenchBlock, "BM_BlockChainLinkBottomUp")->Iterations(1);
ORLO_CHAIN_BENCHMARK(BM_ChainPostEvent, BenchBlock, "BM_BlockChainPostEvent");
ORLO_CHAIN_BENCHMARK(BM_ChainRelease, BenchBlock, "BM_BlockChainRelease")->Iterations(1);
ORLO_CHAIN_BENCHMARK(BM_ChainLinkTopDown, BlockTable, "BM_TableChainLinkTopDown")->Iterations(1);
ORLO_CHAIN_BENCHMARK(BM_ChainLinkBottomUp, BlockTable, "BM_TableChainLinkBottomUp")->Iterations(1);
ORLO_CHAIN_BENCHMARK(BM_ChainPostEvent, BlockTable, "BM_TableChainPostEvent");
ORLO_CHAIN_BENCHMARK(BM_ChainRelease, BlockTable, "BM_TableChainRelease")->Iterations(1);
BENCHMARK(BM_TableChainClone)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace
}  // namespace Orlo

BENCHMARK_MAIN();
