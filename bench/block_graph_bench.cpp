// Costs of the block graph: linking and releasing dependencies, and posting an event up a
// chain of blocks.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_listener.h>

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

}  // namespace
}  // namespace Orlo

BENCHMARK_MAIN();
