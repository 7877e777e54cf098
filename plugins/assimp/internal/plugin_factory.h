// Defines PluginFactory, the factory the plug-in registers for each of its block classes,
// RegisterFactory, which hands one to the engine's registry, and ReadPayload, the loop every
// block of the plug-in reads its payload chunks with.
// The registry owns a factory it accepts; one it refuses (its type is there already) is
// destroyed here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>

namespace orlo_assimp::internal {

template <typename BlockClass>
class PluginFactory : public Orlo::BlockFactory {
 public:
  explicit PluginFactory(std::string name) : m_name(std::move(name)) {}
  Orlo::BlockType GetBlockType() const override { return BlockClass::m_block_type; }
  Orlo::Block* GetBlock(bool create_defaults) const override {
    if constexpr (std::is_constructible_v<BlockClass, bool>) {
      return new BlockClass(create_defaults);
    } else {
      (void)create_defaults;
      return new BlockClass;
    }
  }
  std::string GetName() const override { return m_name; }

 private:
  std::string m_name;
};

template <typename BlockClass>
void RegisterFactory(const char* name) {
  auto factory = std::make_unique<PluginFactory<BlockClass>>(name);
  const unsigned before = Orlo::SceneEngine::GetNumBlockFactories();
  Orlo::SceneEngine::AddBlockFactory(factory.get());
  if (Orlo::SceneEngine::GetNumBlockFactories() != before) (void)factory.release();
}

// Opens the payload's chunks one by one and hands each id to `read`; closing skips whatever
// `read` left. Returns what Load returns: 0 only when the reader met an error.
template <typename ReadChunk>
int ReadPayload(Orlo::SceneLoad* load, ReadChunk read) {
  int result;
  while ((result = load->OpenChunk()) == Orlo::SceneLoad::kChunkOpened) {
    read(load->CurChunkID());
    load->CloseChunk();
  }
  return result == Orlo::SceneLoad::kError || load->HasError() ? 0 : 1;
}

}  // namespace orlo_assimp::internal
