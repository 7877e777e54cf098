// Costs of parameter access: reading and writing a value through a table by id, and one
// parameter change travelling from its data value up to the root of a chain of blocks.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_listener.h>
#include <orlo/base/data/data.h>
#include <orlo/base/data/data_table.h>

namespace Orlo {
namespace {

// A block with one slot; the bottom one of a chain holds the table there, like an owner's
// "data_table" slot.
class ChainBlock : public Block {
 public:
  std::string GetClassName() const override { return "ChainBlock"; }
  BlockType GetBlockType() const override { return BlockType(900, 2, 1); }
  int NumDependencies() const override { return 1; }
  void SetDependency(int index, Block* block) override {
    if (index == 0) m_slot = block;
  }
  Block* GetDependency(int index) const override { return index == 0 ? m_slot : nullptr; }
  std::string GetDependencyName(int) const override { return "slot"; }
  DataTable* GetDataTable() const override { return dynamic_cast<DataTable*>(m_slot); }
  Block* Clone() override { return new ChainBlock; }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }

 private:
  Block* m_slot = nullptr;
};

class CountingListener : public BlockListener {
 public:
  void OnBlockEvent(BlockEvent) override { ++heard; }
  long heard = 0;
};

// A table of `count` one-element float parameters with ids 0 .. count-1, held by one block.
DataTable* MakeTable(ChainBlock* owner, int count) {
  auto* table = new DataTable(true);
  (void)owner->MakeDependencyByID(0, table);
  for (int id = 0; id < count; ++id) table->AddDataFloat(id, 0.5 * id, 1);
  return table;
}

void BM_TableGetFloatById(benchmark::State& state) {
  auto* owner = new ChainBlock;
  DataTable* table = MakeTable(owner, 16);
  int id = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table->GetFloat(id, 0, 0));
    id = (id + 5) & 15;
  }
  owner->DeleteThisBlock(true);
}
BENCHMARK(BM_TableGetFloatById);

// Stores and posts the change: data value, then the table's code 3. Nothing listens above.
void BM_TableSetValueById(benchmark::State& state) {
  auto* owner = new ChainBlock;
  DataTable* table = MakeTable(owner, 16);
  int id = 0;
  double value = 0.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table->SetValue(id, value, 0, 0));
    id = (id + 5) & 15;
    value += 1.0;
  }
  owner->DeleteThisBlock(true);
}
BENCHMARK(BM_TableSetValueById);

// One SetValue on a data value whose table is owned by the bottom block of a chain of
// `range` blocks; a listener on the root counts the arrivals.
void BM_ParameterChangeToTheRootOfAChain(benchmark::State& state) {
  const int depth = static_cast<int>(state.range(0));
  std::vector<ChainBlock*> chain;
  for (int i = 0; i < depth; ++i) {
    auto* block = new ChainBlock;
    if (!chain.empty()) (void)chain.back()->MakeDependencyByID(0, block);
    chain.push_back(block);
  }
  DataTable* table = MakeTable(chain.back(), 16);
  Data* data = table->GetData(7);
  CountingListener listener;
  chain.front()->AddBlockListener(&listener);
  double value = 0.0;
  for (auto _ : state) {
    data->SetValue(value, 0, 0);
    value += 1.0;
  }
  if (listener.heard != static_cast<long>(state.iterations())) state.SkipWithError("lost events");
  chain.front()->RemoveBlockListener(&listener);
  chain.front()->DeleteThisBlock(true);
}
BENCHMARK(BM_ParameterChangeToTheRootOfAChain)->Arg(10);

}  // namespace
}  // namespace Orlo

BENCHMARK_MAIN();
