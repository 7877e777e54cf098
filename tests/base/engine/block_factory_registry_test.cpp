#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::TestBlockFactory;

class BlockFactoryRegistryTest : public ::testing::Test {
 protected:
  void SetUp() override { SceneEngine::DestroyFactories(); }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(BlockFactoryRegistryTest, RegistryStartsEmpty) {
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 0u);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0), nullptr);
}

TEST_F(BlockFactoryRegistryTest, FactoriesKeepTheirRegistrationOrder) {
  auto* first = new TestBlockFactory(BlockType(900, 1, 1), "first");
  auto* second = new TestBlockFactory(BlockType(900, 1, 2), "second");
  SceneEngine::AddBlockFactory(first);
  SceneEngine::AddBlockFactory(second);
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 2u);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0), first);
  EXPECT_EQ(SceneEngine::GetBlockFactory(1), second);
  EXPECT_EQ(SceneEngine::GetBlockFactory(2), nullptr);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0xFFFFFFFFu), nullptr);
}

TEST_F(BlockFactoryRegistryTest, FactoryDifferingOnlyInClassIdIsRefusedAndStaysTheCallers) {
  auto* registered = new TestBlockFactory(BlockType(900, 1, 1), "registered");
  TestBlockFactory refused(BlockType(901, 1, 1), "refused");
  SceneEngine::AddBlockFactory(registered);
  SceneEngine::AddBlockFactory(&refused);  // not stored, not deleted
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 1u);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0)->GetName(), "registered");
}

TEST_F(BlockFactoryRegistryTest, NewFactoryIsComparedWithEveryRegisteredOne) {
  SceneEngine::AddBlockFactory(new TestBlockFactory(BlockType(900, 1, 1), "first"));
  SceneEngine::AddBlockFactory(new TestBlockFactory(BlockType(900, 1, 2), "second"));
  SceneEngine::AddBlockFactory(new TestBlockFactory(BlockType(900, 2, 1), "third"));
  TestBlockFactory same_as_third(BlockType(7, 2, 1), "same as third");
  SceneEngine::AddBlockFactory(&same_as_third);
  // Equal in only one of the two compared numbers is a different type.
  SceneEngine::AddBlockFactory(new TestBlockFactory(BlockType(900, 2, 2), "fourth"));
  ASSERT_EQ(SceneEngine::GetNumBlockFactories(), 4u);
  EXPECT_EQ(SceneEngine::GetBlockFactory(2)->GetName(), "third");
  EXPECT_EQ(SceneEngine::GetBlockFactory(3)->GetName(), "fourth");
}

// A factory that notes its destruction, as a host factory with state of its own might.
class NotingFactory : public TestBlockFactory {
 public:
  NotingFactory(BlockType type, std::string name, std::vector<std::string>* log)
      : TestBlockFactory(type, name), m_log(log) {}
  ~NotingFactory() override { m_log->push_back(GetName()); }

 private:
  std::vector<std::string>* m_log;
};

TEST_F(BlockFactoryRegistryTest, DestroyFactoriesDestroysEachFactoryInRegistrationOrder) {
  std::vector<std::string> destroyed;
  SceneEngine::AddBlockFactory(new NotingFactory(BlockType(900, 1, 3), "c", &destroyed));
  SceneEngine::AddBlockFactory(new NotingFactory(BlockType(900, 1, 1), "a", &destroyed));
  SceneEngine::AddBlockFactory(new NotingFactory(BlockType(900, 1, 2), "b", &destroyed));
  SceneEngine::DestroyFactories();
  EXPECT_EQ(destroyed, (std::vector<std::string>{"c", "a", "b"}));
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 0u);
}

TEST_F(BlockFactoryRegistryTest, NullFactoryIsIgnored) {
  SceneEngine::AddBlockFactory(nullptr);
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 0u);
}

TEST_F(BlockFactoryRegistryTest, DestroyFactoriesEmptiesTheRegistryWhichCanBeRefilled) {
  SceneEngine::AddBlockFactory(new TestBlockFactory(BlockType(900, 1, 1)));
  SceneEngine::DestroyFactories();
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 0u);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0), nullptr);
  SceneEngine::AddBlockFactory(new TestBlockFactory(BlockType(900, 1, 1)));
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), 1u);
}

TEST_F(BlockFactoryRegistryTest, FactoryMakesBlocksOfItsType) {
  auto* factory = new TestBlockFactory(BlockType(900, 3, 4));
  SceneEngine::AddBlockFactory(factory);
  Block* block = SceneEngine::GetBlockFactory(0)->GetBlock(true);
  EXPECT_EQ(block->GetBlockType().super_class_id, 3u);
  EXPECT_EQ(block->GetBlockType().sub_id, 4u);
  block->DeleteThis();
}

TEST_F(BlockFactoryRegistryTest, RegisteringTheBaseLibraryTwiceAddsNothingTheSecondTime) {
  RegisterBaseLibrary();
  const unsigned count = SceneEngine::GetNumBlockFactories();
  EXPECT_GT(count, 0u);
  BlockFactory* first = SceneEngine::GetBlockFactory(0);
  RegisterBaseLibrary();  // the refused factories are destroyed, not leaked
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), count);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0), first);
}

}  // namespace
}  // namespace Orlo
