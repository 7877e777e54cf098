// Defines BlockFactory, the object that creates blocks of one class.
// Every concrete block class has a stateless factory; SceneEngine keeps the process-wide
// registry of them (SceneEngine::AddBlockFactory) and owns the factories registered there.
#pragma once

#include <string>

#include <orlo/base/block/block_type.h>

namespace Orlo {

class Block;

class BlockFactory {
 public:
  BlockFactory() = default;
  BlockFactory(const BlockFactory&) = default;
  BlockFactory& operator=(const BlockFactory&) = default;
  // Virtual so that a host factory that does keep state is destroyed properly by the registry.
  virtual ~BlockFactory() = default;

  // The type of the blocks this factory makes.
  virtual BlockType GetBlockType() const = 0;
  // A new block, owned by the caller. With `create_defaults` true the block builds and links
  // its default sub-blocks; with false it comes up empty, ready to be loaded and linked.
  virtual Block* GetBlock(bool create_defaults) const = 0;
  // The factory's display name.
  virtual std::string GetName() const = 0;
};

}  // namespace Orlo
