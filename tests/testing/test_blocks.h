// Test doubles for the block framework: a block with a fixed number of plain slots that logs
// its deletion and the events it processes, and a listener that records what it hears.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_listener.h>

namespace Orlo::testing {

// What happened, in order, across every block and listener that shares the log.
struct Journal {
  std::vector<std::string> entries;
  void Add(std::string entry) { entries.push_back(std::move(entry)); }
};

class TestBlock : public Block {
 public:
  static constexpr BlockType kType{900, 7, 7};

  explicit TestBlock(std::string name, int num_slots = 3, Journal* journal = nullptr)
      : m_name(std::move(name)), m_slots(static_cast<std::size_t>(num_slots)), m_journal(journal) {}

  const std::string& Name() const { return m_name; }

  std::string GetClassName() const override { return "TestBlock"; }
  BlockType GetBlockType() const override { return m_type; }
  void SetType(BlockType type) { m_type = type; }
  int NumDependencies() const override { return static_cast<int>(m_slots.size()); }
  void SetDependency(int index, Block* block) override {
    if (index >= 0 && index < NumDependencies()) m_slots[static_cast<std::size_t>(index)] = block;
  }
  Block* GetDependency(int index) const override {
    if (index < 0 || index >= NumDependencies()) return nullptr;
    return m_slots[static_cast<std::size_t>(index)];
  }
  std::string GetDependencyName(int index) const override {
    if (index < 0 || index >= NumDependencies()) return "no_dependency";
    return "slot_" + std::to_string(index);
  }
  Block* Clone() override { return new TestBlock(m_name + "_clone", NumDependencies(), m_journal); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override {
    if (m_journal != nullptr) m_journal->Add("delete " + m_name);
    delete this;
  }
  using Block::ProcessEvent;
  void ProcessEvent(BlockEvent event) override {
    if (m_journal != nullptr && m_log_process) {
      m_journal->Add("process " + m_name + " " + std::to_string(event.code) + "/" +
                     std::to_string(event.param));
    }
    Block::ProcessEvent(event);
  }
  void LogProcessedEvents(bool on) { m_log_process = on; }

 private:
  std::string m_name;
  BlockType m_type = kType;
  std::vector<Block*> m_slots;
  Journal* m_journal;
  bool m_log_process = false;
};

class RecordingListener : public BlockListener {
 public:
  explicit RecordingListener(std::string name = "listener", Journal* journal = nullptr)
      : m_name(std::move(name)), m_journal(journal) {}

  void OnBlockEvent(BlockEvent event) override {
    events.push_back(event);
    if (m_journal != nullptr) {
      const auto* sender = dynamic_cast<const TestBlock*>(event.block);
      m_journal->Add("hear " + m_name + " " + std::to_string(event.code) + "/" +
                     std::to_string(event.param) + (sender ? " from " + sender->Name() : ""));
    }
  }

  std::vector<BlockEvent> events;

 private:
  std::string m_name;
  Journal* m_journal;
};

// A factory for TestBlock with a type of the caller's choice.
class TestBlockFactory : public BlockFactory {
 public:
  explicit TestBlockFactory(BlockType type, std::string name = "TestBlockFactory")
      : m_type(type), m_name(std::move(name)) {}
  BlockType GetBlockType() const override { return m_type; }
  Block* GetBlock(bool) const override {
    auto* block = new TestBlock("made");
    block->SetType(m_type);
    return block;
  }
  std::string GetName() const override { return m_name; }

 private:
  BlockType m_type;
  std::string m_name;
};

// Holds a block the way a scene would: as the only dependency of a root block, and releases
// the whole graph when it goes out of scope.
class Holder {
 public:
  Holder() : m_root(new TestBlock("holder", 1)) {}
  explicit Holder(Block* block) : Holder() { Hold(block); }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { m_root->DeleteThisBlock(true); }
  void Hold(Block* block) { (void)m_root->MakeDependencyByID(0, block); }
  TestBlock* Root() { return m_root; }

 private:
  TestBlock* m_root;
};

}  // namespace Orlo::testing
