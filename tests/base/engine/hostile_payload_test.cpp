// Every block class of the base library reads its payload from untrusted bytes: a payload cut
// short at any byte, or with any byte changed, gives a result (or the container length error
// that a negative key count is allowed to raise), never a crash, a read out of bounds or a
// huge allocation. The sanitized build checks the "never".
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_string.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {
namespace {

class HostilePayloadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

// A block of the factory's class with some state worth writing.
Block* FilledBlock(BlockFactory* factory) {
  Block* block = factory->GetBlock(true);
  if (auto* keys = dynamic_cast<BezierController*>(block)) {
    keys->SetFloat(10, 2.0);
    keys->SetFloat(20, -1.5);
  } else if (auto* table = dynamic_cast<DataTable*>(block)) {
    table->AddDataString(0, "text", 2);
    table->AddDataFloat(1, 0.5, 3);
  } else if (auto* text = dynamic_cast<DataString*>(block)) {
    text->SetSize(3);
    text->SetValue(std::string("a longer string value"), 0, 2);
  } else if (auto* value = dynamic_cast<DataFloat*>(block)) {
    value->SetSize(4);
    value->SetValue(3.25, 0, 3);
  } else if (auto* node = dynamic_cast<Node*>(block)) {
    node->SetName("a node with a name");
    node->SetNodeColor(Color(0.5f, 0.25f, 0.125f));
  }
  return block;
}

// The block's payload followed by a dependency chunk, as a scene file stores them.
std::vector<std::uint8_t> PayloadOf(Block* block) {
  SceneSave save;
  EXPECT_EQ(block->Save(&save), 1) << block->GetClassName();
  block->SaveBlockDependencies(&save);
  return save.TakeBytes();
}

// Loads `bytes` into a fresh block of the factory's class and destroys it again.
void LoadInto(BlockFactory* factory, std::vector<std::uint8_t> bytes) {
  SceneLoad load(std::move(bytes));
  Block* block = factory->GetBlock(false);
  try {
    const int result = block->Load(&load);
    EXPECT_TRUE(result == 0 || result == 1);
    if (result == 1) {
      EXPECT_FALSE(load.HasError()) << block->GetClassName();
    }
  } catch (const std::length_error&) {
    // A negative key count asks the key list for an impossible size, by design.
    EXPECT_EQ(block->GetClassName(), "FloatController");
  }
  block->DeleteThisBlock(true);
}

TEST_F(HostilePayloadTest, EveryBasePayloadCutShortAtAnyByteLoadsSafely) {
  std::size_t loads = 0;
  for (unsigned f = 0; f < SceneEngine::GetNumBlockFactories(); ++f) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(f);
    SCOPED_TRACE(factory->GetName());
    Block* source = FilledBlock(factory);
    const std::vector<std::uint8_t> payload = PayloadOf(source);
    source->DeleteThisBlock(true);
    for (std::size_t size = 0; size <= payload.size(); ++size) {
      LoadInto(factory, std::vector<std::uint8_t>(payload.begin(), payload.begin() + size));
      ++loads;
    }
  }
  // Every class was tried, each with a payload of some substance.
  EXPECT_GE(SceneEngine::GetNumBlockFactories(), 14u);
  EXPECT_GT(loads, 14u * 28u);
}

TEST_F(HostilePayloadTest, EveryBasePayloadWithAnyByteChangedLoadsSafely) {
  for (unsigned f = 0; f < SceneEngine::GetNumBlockFactories(); ++f) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(f);
    SCOPED_TRACE(factory->GetName());
    Block* source = FilledBlock(factory);
    const std::vector<std::uint8_t> payload = PayloadOf(source);
    source->DeleteThisBlock(true);
    for (std::size_t at = 0; at < payload.size(); ++at) {
      for (std::uint8_t value :
           {std::uint8_t{0x00}, std::uint8_t{0x7F}, std::uint8_t{0x80}, std::uint8_t{0xFF}}) {
        std::vector<std::uint8_t> damaged = payload;
        damaged[at] = value;
        LoadInto(factory, std::move(damaged));
      }
    }
  }
}

}  // namespace
}  // namespace Orlo
