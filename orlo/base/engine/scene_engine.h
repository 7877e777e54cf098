// Defines SceneEngine, the object through which a host owns a scene, and the process-wide
// statics every block relies on: the current engine, the block-kind predicates and the
// registry of block factories.
//
// The statics are plain process-wide state, read and written without locks: use the library
// from one thread at a time. The registry owns the factories it holds until DestroyFactories.
#pragma once

#include <vector>

namespace Orlo {

class Block;
class BlockFactory;
class BlockListener;

class SceneEngine {
 public:
  SceneEngine() = default;
  SceneEngine(const SceneEngine&) = delete;
  SceneEngine& operator=(const SceneEngine&) = delete;
  ~SceneEngine() = default;

  // ---- The current engine ----

  // The current engine, or null. The engine is not owned through this pointer.
  static SceneEngine* GetScene();
  // Replaces the current engine (null allowed); the previous one is neither deleted nor told.
  static void SetScene(SceneEngine* engine);

  // Called on the current engine when a block destroys itself through
  // Block::DeleteThisBlock(true), and when a listener is destroyed. They do nothing here; they
  // are the places where an engine would drop references of its own.
  void BlockIsBeingDeleted(Block* block);
  void ListenerIsBeingDeleted(BlockListener* listener);

  // ---- Block kinds, by class id alone; false for a null block ----

  static bool IsNode(Block* block);              // 115
  static bool IsNodeTransform(Block* block);     // 110
  static bool IsDataTable(Block* block);         // 205
  static bool IsControl(Block* block);           // 300
  static bool IsMaterial(Block* block);          // 405
  static bool IsTexture(Block* block);           // 410
  static bool IsTextureTransform(Block* block);  // 415
  // Deliberately the whole range 500 to 799: object modifiers, cameras and lights are objects.
  static bool IsObject(Block* block);
  static bool IsBaseObject(Block* block);       // 505
  static bool IsPrimitiveObject(Block* block);  // 510
  static bool IsRawObject(Block* block);        // 515
  static bool IsObjectModifier(Block* block);   // 520
  static bool IsCamera(Block* block);           // 600
  static bool IsLight(Block* block);            // 700
  static bool IsModifier(Block* block);         // 800

  // ---- The factory registry ----

  // Registers `factory` unless one with an equal type (BlockType::operator==) is registered
  // already. The first registration of a type wins; a refused factory is neither stored nor
  // deleted, so it stays the caller's.
  static void AddBlockFactory(BlockFactory* factory);
  // The factory at `index` in registration order; null when `index` is not below the count.
  static BlockFactory* GetBlockFactory(unsigned index);
  static unsigned GetNumBlockFactories();
  // Deletes every registered factory and empties the registry, which may then be refilled.
  static void DestroyFactories();
};

}  // namespace Orlo
