// Saving a scene: the file-level chunk structure around the blocks' own records.
//
//   0x05 scene
//     0x10 header: the block count
//     0x15 block, once per block in number order (block 0 is the main scene)
//       0x05 block info, 0x20 the block's own payload, 0x10 its dependency numbers
//
// The records are written in the pre-order in which SetBlockIDs numbers the blocks, with the
// same first-visit rule, so the k-th record holds the block numbered k: the reader relies on it.
#include <cassert>
#include <cstdint>
#include <vector>

#include <boost/filesystem/path.hpp>

#include <orlo/base/block/block.h>
#include <orlo/base/engine/internal/block_marking.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

constexpr unsigned kSceneChunk = 0x05;
constexpr unsigned kHeaderChunk = 0x10;
constexpr unsigned kBlockChunk = 0x15;
constexpr unsigned kBlockDataChunk = 0x20;

// Writes one block's record and marks the block saved. When the block's own Save fails the
// record's data and block chunks are left open and false is returned.
bool WriteBlockRecord(Block* block, SceneSave* save) {
  block->SetSaved(1);
  save->BeginChunk(kBlockChunk);
  (void)block->SaveBlockInfo(save);
  save->BeginChunk(kBlockDataChunk);
  if (block->Save(save) != 1) return false;
  save->EndChunk();
  (void)block->SaveBlockDependencies(save);
  save->EndChunk();
  return true;
}

// Does in one walk what InitBlocks(root) followed by SetBlockIDs() does in two, and returns
// the count. InitBlocks' walk marks each block with its position in the walk; that walk visits
// the blocks in the pre-order, with the first-visit rule, in which SetBlockIDs then numbers
// them, so the marks are the numbers: only the saved marks remain to be reset.
int NumberForSaving(Block* root) {
  return static_cast<int>(internal::MarkReachableInPreOrder(root).size());
}

}  // namespace

Status SceneEngine::SaveScene(const std::string& path) { return SaveScene(path.c_str()); }

Status SceneEngine::SaveScene(const char* path) {
  assert(m_main_scene != nullptr && "SaveScene requires a main scene");
  Status status;
  SceneSave save(path, &status);
  // Nothing else happens when the file cannot be opened: the path stays as it was.
  if (status.GetCode() != 0) return status;

  const boost::filesystem::path file_path(path);
  m_scene_path = file_path.string();
  if (BitmapManager* manager = GetBitmapManager()) {
    // Saving, like loading, makes the scene's directory a search directory for its bitmaps.
    const std::string parent = file_path.parent_path().string();
    (void)manager->AddDirectory(parent.empty() ? "." : parent.c_str());
  }

  // Every block reachable from the main scene gets its pre-order number, and no saved mark.
  m_num_blocks = NumberForSaving(m_main_scene);

  save.BeginChunk(kSceneChunk);
  save.BeginChunk(kHeaderChunk);
  save.WriteUInt32(static_cast<std::uint32_t>(m_num_blocks));
  save.EndChunk();
  if (SaveBlock(m_main_scene, &save)) {
    save.EndChunk();
  } else {
    // Kept as is: the scene chunk and the chunks the failing block opened stay open, and
    // nothing is rolled back; the path, the bitmap directory, the numbers and the saved marks
    // stay as set. The writer closes the open chunks when it finishes the file.
    status.Set(Status::kFailed, "SceneEngine::SaveScene : Failed saving the m_main_scene block.");
    return status;
  }
  // A write that failed (a full disk) is reported rather than lost in the writer's destructor.
  return save.Finish();
}

bool SceneEngine::SaveBlock(Block* block, SceneSave* save) {
  if (block == nullptr || block->GetSaved() != 0) return true;
  if (!WriteBlockRecord(block, save)) return false;
  // The blocks below, in slot order, each written once at its first visit. Their failures are
  // deliberately not reported: only the first block's own Save reaches the caller. A block
  // whose Save failed is not walked below, and the walk goes on with its next sibling.
  struct Frame {
    Block* block;
    int next_slot;
  };
  std::vector<Frame> stack;
  stack.push_back({block, 0});
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.block->NumDependencies()) {
      stack.pop_back();
      continue;
    }
    Block* dependency = top.block->GetDependency(top.next_slot++);
    // A block on the current path is marked saved already, so the walk never enters a cycle.
    if (dependency == nullptr || dependency->GetSaved() != 0) continue;
    if (WriteBlockRecord(dependency, save)) stack.push_back({dependency, 0});
  }
  return true;
}

}  // namespace Orlo
