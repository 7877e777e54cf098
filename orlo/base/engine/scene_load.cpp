// Loading a scene file: the reverse of scene_save.cpp, for files that may hold anything.
//
//   0x05 scene
//     0x10 header: the block count
//     0x15 block, once per block in number order (block 0 is the main scene)
//       0x05 block info, 0x20 the block's own payload, 0x10 its dependency numbers
//
// Every number read from the file is checked before it is used: the block count against the
// bytes that follow it, each saved number and each link against the count, and the links as a
// whole for cycles and for the number of per-path visits the post-load passes would make. A
// load that fails frees every block it made, so nothing leaks and the engine keeps no pointer
// into a freed graph.
#include <cassert>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_paths.h>
#include <orlo/base/block/internal/acyclic_links.h>
#include <orlo/base/block/internal/block_index.h>
#include <orlo/base/block/internal/saturating.h>
#include <orlo/base/block/internal/visited_set.h>
#include <orlo/base/engine/internal/block_marking.h>
#include <orlo/base/engine/internal/event_mute.h>
#include <orlo/base/engine/internal/library_classes.h>
#include <orlo/base/engine/internal/numbered_set.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/engine/unknown_modifier.h>
#include <orlo/base/engine/unknown_object.h>
#include <orlo/base/engine/unknown_object_modifier.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/state_recorder.h>

namespace Orlo {

namespace {

constexpr unsigned kSceneChunk = 0x05;
constexpr unsigned kHeaderChunk = 0x10;
constexpr unsigned kBlockChunk = 0x15;
constexpr unsigned kBlockInfoChunk = 0x05;
constexpr unsigned kBlockDataChunk = 0x20;
// The smallest block record a file can hold: an empty chunk is its 12-byte header. A header
// count larger than the bytes left can hold records of that size is refused before anything
// is allocated for it.
constexpr std::uint64_t kMinBlockChunkBytes = 12;

constexpr const char* kFileDoesNotExist = "SceneEngine::LoadScene : File doesn't exist.";
constexpr const char* kNotASceneFile =
    "SceneEngine::LoadScene : The file is not a SceneEngine file. Couldn't load any blocks.";
constexpr const char* kFailedLoadingBlocks = "SceneEngine::LoadScene : Failed loading the blocks\n";
constexpr const char* kNoFactory =
    "SceneEngine::LoadBlocks : Couldn't find a factory for one or more blocks.";

// The registered factories by the two numbers that tell block types apart, for the many
// lookups of one load; the first registered of a type is the one found. Rebuilt when the
// registry grows (a block's reader may register a factory).
class FactoryIndex {
 public:
  BlockFactory* Find(const BlockType& type) {
    if (m_num_indexed != SceneEngine::GetNumBlockFactories()) Rebuild();
    const auto found = m_factories.find(KeyOf(type));
    return found != m_factories.end() ? found->second : nullptr;
  }

 private:
  // Types compare by their last two numbers only.
  static std::uint64_t KeyOf(const BlockType& type) {
    return (std::uint64_t{type.super_class_id} << 32) | type.sub_id;
  }
  void Rebuild() {
    m_num_indexed = SceneEngine::GetNumBlockFactories();
    m_factories.clear();
    for (unsigned i = 0; i < m_num_indexed; ++i) {
      BlockFactory* factory = SceneEngine::GetBlockFactory(i);
      if (factory != nullptr) m_factories.emplace(KeyOf(factory->GetBlockType()), factory);
    }
  }

  std::unordered_map<std::uint64_t, BlockFactory*> m_factories;
  unsigned m_num_indexed = 0;
};

// The placeholder for a block whose class has no factory, chosen by class id; null for a
// class id that has none (a camera or a light, say).
Block* MakePlaceholder(std::uint32_t class_id) {
  switch (class_id) {
    case 500:
    case 505:
    case 510:
    case 515:
      return new UnknownObject(false);
    case 520:
      return new UnknownObjectModifier(false);
    case 800:
      return new UnknownModifier(false);
    default:
      return nullptr;
  }
}

bool HasOnlyEmptySlots(const Block* block) {
  for (int i = 0; i < block->NumDependencies(); ++i) {
    if (block->GetDependency(i) != nullptr) return false;
  }
  return true;
}

// The links between the records' blocks, record to record, in one flat array: the targets
// of record i are targets[first[i]] .. targets[first[i + 1] - 1]. Record numbers fit 32 bits
// (the header's count does); the count of links is bounded only by the file's size.
struct RecordLinks {
  std::vector<std::size_t> first;
  std::vector<std::uint32_t> targets;
};

// Whether the links form a cycle (a block linked to itself included), by peeling off, again
// and again, the records no remaining record links to.
bool LinksFormCycle(const RecordLinks& links) {
  const std::size_t n = links.first.size() - 1;
  std::vector<std::uint32_t> incoming(n, 0);
  for (std::uint32_t target : links.targets) ++incoming[target];
  std::vector<std::uint32_t> ready;
  for (std::size_t i = 0; i < n; ++i) {
    if (incoming[i] == 0) ready.push_back(static_cast<std::uint32_t>(i));
  }
  std::size_t peeled = 0;
  while (!ready.empty()) {
    const std::uint32_t i = ready.back();
    ready.pop_back();
    ++peeled;
    for (std::size_t e = links.first[i]; e < links.first[i + 1]; ++e) {
      const std::uint32_t target = links.targets[e];
      if (--incoming[target] == 0) ready.push_back(target);
    }
  }
  return peeled != n;
}

// The visits a walk of the node hierarchy below `top` makes when it enters a node once per
// path of children that reaches it, `top` excluded: the walk that sets the parent pointers.
// A scene this library writes gives each node one parent, so the count is the number of
// nodes; a file can list one node as the child of several, and 64 levels of that need 2^64
// visits. Counted in time linear in the hierarchy: nodes in reverse post-order, each passing
// its count to its children. The hierarchy is acyclic here (the links were checked); an edge
// back to a node on the current path would be skipped, as the walk skips it.
std::uint64_t CountNodeWalkVisits(Node* top) {
  struct Frame {
    Node* node;
    std::uint32_t number;
    int next_child;
  };
  // Nodes are numbered as the walk first meets them; `position` is each one's place in
  // `post_order`, kUnfinished while it is on the walk's path.
  constexpr std::size_t kUnfinished = static_cast<std::size_t>(-1);
  internal::BlockIndex index;
  std::vector<Node*> nodes{top};
  std::vector<std::size_t> position{kUnfinished};
  std::vector<std::uint32_t> post_order;
  bool added = false;
  index.Insert(top, added);
  std::vector<Frame> stack{{top, 0, 0}};
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next_child >= frame.node->GetNumChildren()) {
      position[frame.number] = post_order.size();
      post_order.push_back(frame.number);
      stack.pop_back();
      continue;
    }
    Node* child = frame.node->GetChild(frame.next_child++);
    if (child == nullptr) continue;
    const std::uint32_t number = index.Insert(child, added);
    if (!added) continue;
    nodes.push_back(child);
    position.push_back(kUnfinished);
    stack.push_back({child, number, 0});
  }
  std::vector<std::uint64_t> paths(nodes.size(), 0);
  paths[0] = 1;
  std::uint64_t visits = 0;
  for (auto it = post_order.rbegin(); it != post_order.rend(); ++it) {
    Node* node = nodes[*it];
    const std::uint64_t reaching = paths[*it];
    if (node != top) visits = internal::SaturatingAdd(visits, reaching);
    for (int i = 0; i < node->GetNumChildren(); ++i) {
      Node* child = node->GetChild(i);
      if (child == nullptr) continue;
      // A child earlier in post-order than its parent is below it; a later one closes a cycle.
      const std::uint32_t number = index.Find(child);
      if (position[number] >= position[*it]) continue;
      paths[number] = internal::SaturatingAdd(paths[number], reaching);
    }
  }
  return visits;
}

// PostLoad on `root` and every block below it, once each, at its first visit in pre-order.
// `numbered` lists the scene's blocks by number, as the numbering walk left them.
void PostLoadOncePerBlock(Block* root, const std::vector<Block*>& numbered) {
  struct Frame {
    Block* block;
    int next_slot;
  };
  internal::NumberedSet visited(numbered);
  std::vector<Frame> stack;
  root->PostLoad();
  visited.Insert(root);
  stack.push_back({root, 0});
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.block->NumDependencies()) {
      stack.pop_back();
      continue;
    }
    Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr || !visited.Insert(dependency)) continue;
    dependency->PostLoad();
    stack.push_back({dependency, 0});
  }
}

}  // namespace

Status SceneEngine::LoadScene(const std::string& path) { return LoadScene(path.c_str()); }

Status SceneEngine::LoadScene(const char* path) {
  Status status;
  if (path == nullptr) path = "";
  boost::system::error_code error;
  if (!boost::filesystem::exists(path, error) || error) {
    status.Set(Status::kFailed, kFileDoesNotExist);
    return status;
  }

  // The history goes before the scene: its records may point into it.
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Clear();
  m_selected_nodes.clear();
  if (m_main_scene != nullptr) {
    m_main_scene->DeleteThisBlock(true);
    m_main_scene = nullptr;
  }

  SceneLoad load(path, &status);
  if (status.GetCode() != 0) return status;

  const boost::filesystem::path file_path(path);
  m_scene_path = file_path.string();
  if (BitmapManager* manager = GetBitmapManager()) {
    const std::string parent = file_path.parent_path().string();
    (void)manager->AddDirectory(parent.empty() ? "." : parent.c_str());
  }

  // The file's blocks are silenced from when each is read until the scene is installed and
  // its post-load passes have run.
  internal::EventMute mute;
  // A failed load gives the blocks their events back, then frees them as any block is freed.
  auto free_loaded_blocks = [&]() {
    mute.RestoreAll();
    FreeLoadedBlocks();
  };
  bool blocks_read = false;
  if (load.OpenChunk() == SceneLoad::kChunkOpened && load.CurChunkID() == kSceneChunk &&
      load.OpenChunk() == SceneLoad::kChunkOpened && load.CurChunkID() == kHeaderChunk) {
    (void)load.ReadInt32(m_num_file_blocks);
    load.CloseChunk();
    const std::uint64_t room = load.BytesLeftInChunk() / kMinBlockChunkBytes;
    if (load.HasError()) {
      status.Set(Status::kFailed, "SceneEngine::LoadScene : " + load.GetStatus().GetMessage());
    } else if (m_num_file_blocks < 0 || static_cast<std::uint64_t>(m_num_file_blocks) > room) {
      // Checked before anything is sized by it: 4 billion blocks would not fit in the file.
      status.Set(Status::kFailed,
                 "SceneEngine::LoadScene : The header declares " +
                     std::to_string(static_cast<std::uint32_t>(m_num_file_blocks)) +
                     " blocks, but the scene chunk has room for at most " + std::to_string(room) +
                     ".");
    } else {
      m_blocks_by_id.assign(static_cast<std::size_t>(m_num_file_blocks), nullptr);
      if (m_num_file_blocks != 0) {
        m_block_load_data.resize(static_cast<std::size_t>(m_num_file_blocks));
        try {
          status = LoadBlocks(&load, mute);
        } catch (const std::length_error& error) {
          // A block's own reader may size a container by a number of the file that no
          // container can hold (a negative count, say): the file is broken, not the host.
          status.Set(Status::kFailed, std::string("SceneEngine::LoadScene : A block's data "
                                                  "asks for an impossible size (") +
                                          error.what() + ").");
        }
        blocks_read = true;
      }
    }
  }
  load.CloseChunk();
  // A chunk that ran past its parent or a file cut short fails the load, wherever it was met.
  if (status.GetCode() == 0 && load.HasError()) {
    status.Set(Status::kFailed, "SceneEngine::LoadScene : " + load.GetStatus().GetMessage());
  }
  m_num_file_blocks = -1;
  m_blocks_by_id.clear();

  if (status.GetCode() != 0) {
    free_loaded_blocks();
    return status;
  }
  if (m_block_load_data.empty()) {
    status.Set(Status::kFailed, kNotASceneFile);
    return status;
  }

  if (!blocks_read) {
    // Records left from an earlier LoadBlocks while none were read now: they are dropped and
    // nothing of them is installed. Their blocks were not made by this load and are left to
    // whoever made them.
    status.Set(Status::kFailed, kFailedLoadingBlocks);
    DestroyBlockLoadData();
    return status;
  }
  // Record 0 is the first block chunk of the file, which the writer makes the main scene.
  Block* root = m_block_load_data[0] != nullptr ? m_block_load_data[0]->block : nullptr;
  MainScene* main_scene = dynamic_cast<MainScene*>(root);
  if (main_scene == nullptr) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadScene : The first block of the file is not a scene.");
    free_loaded_blocks();
    return status;
  }
  // The engine owns the scene; a block of the file that holds it would take it along when
  // it goes (as the blocks that nothing links to do below).
  std::vector<Block*> holders;
  main_scene->GetDependants(holders);
  if (!holders.empty()) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadScene : The first block of the file is held by another "
               "block; the file is refused.");
    free_loaded_blocks();
    return status;
  }
  // A walk that enters every block once per path would make this many visits. The passes
  // below fall back to one visit per block well before that matters, but the host's own
  // per-path walks of the scene would not: a graph past the bound is refused.
  // The scene is numbered here, as InitBlocks and then SetBlockIDs would number it (saving
  // numbers with the same walk), so that the count needs no index of its own; a refused
  // file's numbers go with its blocks.
  const std::vector<Block*> numbered =
      internal::MarkReachableInPreOrder(main_scene, m_block_load_data.size());
  const std::size_t num_reached = numbered.size();
  const PathTotals totals = CountPathTotalsOfNumbered(main_scene, num_reached);
  const std::uint64_t visits = totals.visits;
  if (visits > kMaxLoadPathVisits) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadScene : The scene's blocks are shared along "
               "more than " +
                   std::to_string(kMaxLoadPathVisits) + " paths; the file is refused.");
    free_loaded_blocks();
    return status;
  }
  // The parent pointers are set by a walk that enters a node once per path: a hierarchy that
  // lists nodes under several parents could make it walk far more than the file holds.
  const std::uint64_t num_records = static_cast<std::uint64_t>(m_block_load_data.size());
  const std::uint64_t node_visits =
      main_scene->GetMainNode() != nullptr ? CountNodeWalkVisits(main_scene->GetMainNode()) : 0;
  if (node_visits > kMaxLoadVisitsPerBlock * num_records) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadScene : The node hierarchy reaches its nodes "
               "along " +
                   std::to_string(node_visits) + " paths, more than " +
                   std::to_string(kMaxLoadVisitsPerBlock) +
                   " per block of the file; the file is refused.");
    free_loaded_blocks();
    return status;
  }
  mute.NoteNumbers(numbered);
  // Blocks of the file that nothing links to and that are not the scene would be owned by
  // nobody once installed: they go now.
  // They are gathered first, as each release may free blocks further down the records.
  std::vector<Block*> orphans;
  for (const auto& record : m_block_load_data) {
    if (record == nullptr || record->block == nullptr || record->block == root) continue;
    if (record->block->GetParentBlock() == nullptr) orphans.push_back(record->block);
  }
  DestroyBlockLoadData();
  for (Block* orphan : orphans) orphan->DeleteThisBlock(true);

  m_main_scene = main_scene;
  // Numbered above; releasing the orphans took nothing the scene reaches.
  m_num_blocks = static_cast<std::int32_t>(num_reached);
  SetParentPointer(GetMainNode());

  if (RefreshAndPostLoad(numbered, totals)) {
    mute.RestoreNumbered();
  } else {
    // A post-load step of a host's class may have released blocks of the numbering.
    mute.RestoreReachable(m_main_scene);
  }
  return status;
}

bool SceneEngine::RefreshAndPostLoad(const std::vector<Block*>& numbered,
                                     const PathTotals& totals) {
  m_main_scene->UpdateDataTable(false);
  if (const auto refreshers = internal::TableRefreshersIfAllOfLibraryClasses(numbered)) {
    // The library's own classes only: a repeated refresh adds nothing and PostLoad is
    // Block's, which does nothing, so one refresh per block ends as the passes below would.
    for (Block* block : *refreshers) {
      if (block != m_main_scene) block->UpdateDataTable(false);
    }
    return true;
  }
  // Each part of the scene is refreshed as UpdateDataTables would, once per path unless the
  // paths outnumber the blocks; the whole scene's counts decide for every part (a refresh
  // repeats without effect, so the tables end the same either way), sparing a count per part.
  const bool once_per_path = totals.visits / kMaxLoadVisitsPerBlock <= totals.blocks;
  for (int i = 0; i < m_main_scene->NumDependencies(); ++i) {
    if (Block* dependency = m_main_scene->GetDependency(i)) {
      RefreshDataTables(dependency, once_per_path, &numbered);
    }
  }
  const std::uint64_t num_blocks = static_cast<std::uint64_t>(m_num_blocks > 0 ? m_num_blocks : 1);
  if (totals.visits <= kMaxLoadVisitsPerBlock * num_blocks) {
    m_main_scene->PostLoad();
    for (int i = 0; i < m_main_scene->NumDependencies(); ++i) {
      if (Block* dependency = m_main_scene->GetDependency(i)) CallPostLoad(dependency);
    }
  } else {
    PostLoadOncePerBlock(m_main_scene, numbered);
  }
  return false;
}

Status SceneEngine::LoadBlocks(SceneLoad* load) {
  internal::EventMute mute;
  Status status;
  try {
    status = LoadBlocks(load, mute);
  } catch (...) {
    // A block's reader that throws leaves the blocks read so far alive and posting.
    mute.RestoreAll();
    throw;
  }
  mute.RestoreAll();
  return status;
}

Status SceneEngine::LoadBlocks(SceneLoad* load, internal::EventMute& mute) {
  assert(load != nullptr && "LoadBlocks requires a reader");
  Status status;
  const std::size_t n = m_block_load_data.size();
  if (n == 0) return status;
  const std::size_t num_ids = m_blocks_by_id.size();
  // Which record holds each saved number; -1 for none.
  std::vector<int> record_of_id(num_ids, -1);
  mute.Reserve(n);
  FactoryIndex factories;
  // The slots the records name, an upper bound on the links between them.
  std::size_t num_linked_slots = 0;
  // The records whose block filled a slot in its own Load, told while the block is at hand.
  std::vector<bool> filled_own_slots(n, false);

  for (std::size_t i = 0; i < n; ++i) {
    m_block_load_data[i] = nullptr;
    if (load->OpenChunk() != SceneLoad::kChunkOpened) {
      // Nothing left, or broken framing: the caller reports the reader's error.
      load->CloseChunk();
      break;
    }
    if (load->CurChunkID() != kBlockChunk) {
      load->CloseChunk();
      continue;
    }
    BlockLoadData* record = m_block_load_arena.New();
    if (load->OpenChunk() == SceneLoad::kChunkOpened) {
      if (load->CurChunkID() == kBlockInfoChunk) {
        std::uint32_t class_id = 0, super_class_id = 0, sub_id = 0;
        (void)load->ReadUInt32(class_id);
        (void)load->ReadUInt32(super_class_id);
        (void)load->ReadUInt32(sub_id);
        (void)load->ReadInt32(record->id);
        record->block_type = BlockType(class_id, super_class_id, sub_id);
      }
      load->CloseChunk();
    }
    const std::int32_t id = record->id;
    if (id < 0 || static_cast<std::size_t>(id) >= num_ids) {
      status.Set(Status::kFailed, "SceneEngine::LoadBlocks : Block chunk " + std::to_string(i) +
                                      " has the number " + std::to_string(id) + ", outside 0 to " +
                                      std::to_string(num_ids - 1) + ".");
      m_block_load_data[i] = record;
      return status;
    }
    if (record_of_id[static_cast<std::size_t>(id)] >= 0) {
      status.Set(Status::kFailed, "SceneEngine::LoadBlocks : Block chunk " + std::to_string(i) +
                                      " repeats the number " + std::to_string(id) + ".");
      m_block_load_data[i] = record;
      return status;
    }

    Block* block = nullptr;
    if (BlockFactory* factory = factories.Find(record->block_type)) {
      block = factory->GetBlock(false);
    } else {
      // Only the first missing factory sets the message.
      if (status.GetCode() == 0) status.Set(Status::kFailed, kNoFactory);
      block = MakePlaceholder(record->block_type.class_id);
    }
    record->block = block;
    m_block_load_data[i] = record;
    if (block != nullptr) {
      if (load->OpenChunk() == SceneLoad::kChunkOpened) {
        // The block's own result is deliberately not examined: blocks written for this
        // library report their own troubles through the reader.
        if (load->CurChunkID() == kBlockDataChunk) (void)block->Load(load);
        load->CloseChunk();
      }
      filled_own_slots[i] = !HasOnlyEmptySlots(block);
      (void)block->LoadBlockDependencies(load, record);
      num_linked_slots += record->dependency_ids.size();
      // Silenced as soon as it is read, while it is at hand.
      mute.Add(block);
    }
    // A class without a placeholder gives no block: its data and links are skipped unread.
    record_of_id[static_cast<std::size_t>(id)] = static_cast<int>(i);
    m_blocks_by_id[static_cast<std::size_t>(id)] = block;
    load->CloseChunk();
    if (load->HasError()) return status;
  }
  // A missing factory does not stop the reading: the placeholders are linked like any other
  // block, and the caller, seeing the code, frees them with the rest.
  if (load->HasError()) return status;

  // Every link is checked before the first is made, so that a refused file leaves no block
  // half linked; the links between blocks are gathered for the cycle test on the way.
  RecordLinks links;
  links.first.reserve(n + 1);
  links.targets.reserve(num_linked_slots);
  for (std::size_t i = 0; i < n; ++i) {
    links.first.push_back(links.targets.size());
    const BlockLoadData* record = m_block_load_data[i];
    if (record == nullptr || record->block == nullptr) continue;
    const std::size_t slots = static_cast<std::size_t>(record->block->NumDependencies());
    for (std::size_t j = 0; j < record->dependency_ids.size(); ++j) {
      const std::int32_t k = record->dependency_ids[j];
      if (k == -1) continue;
      std::string problem;
      if (k < 0 || static_cast<std::size_t>(k) >= num_ids) {
        problem = "links slot " + std::to_string(j) + " to the number " + std::to_string(k) +
                  ", outside 0 to " + std::to_string(num_ids - 1);
      } else if (j >= slots) {
        problem = "links slot " + std::to_string(j) + " of a block with " + std::to_string(slots) +
                  " slots";
      }
      if (!problem.empty()) {
        status.Set(Status::kFailed, "SceneEngine::LoadBlocks : Block " +
                                        std::to_string(record->id) + " " + problem + ".");
        return status;
      }
      const int target = record_of_id[static_cast<std::size_t>(k)];
      if (target >= 0 && m_blocks_by_id[static_cast<std::size_t>(k)] != nullptr) {
        links.targets.push_back(static_cast<std::uint32_t>(target));
      }
    }
  }
  links.first.push_back(links.targets.size());
  if (LinksFormCycle(links)) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadBlocks : The blocks' links form a cycle (a block reaches "
               "itself).");
    return status;
  }
  // The test above covers every link between the file's blocks, so the links are made
  // without MakeDependencyByID's own search for a cycle around each, which grows with the
  // depth of the graph. A block whose own Load filled a slot holds something the test did
  // not see: its links take the searching way.
  for (std::size_t i = 0; i < n; ++i) {
    const BlockLoadData* record = m_block_load_data[i];
    if (record == nullptr || record->block == nullptr) continue;
    Block* holder = record->block;
    for (std::size_t j = 0; j < record->dependency_ids.size(); ++j) {
      const std::int32_t k = record->dependency_ids[j];
      if (k == -1) continue;
      Block* target = m_blocks_by_id[static_cast<std::size_t>(k)];
      if (target == nullptr) continue;
      if (!filled_own_slots[i]) {
        internal::AcyclicLinks::Link(holder, static_cast<int>(j), target);
        continue;
      }
      const Status linked = holder->MakeDependencyByID(static_cast<int>(j), target);
      // The checks above leave nothing for the link to refuse.
      assert(linked.GetCode() == 0);
      (void)linked;
    }
  }
  return status;
}

void SceneEngine::DestroyBlockLoadData() {
  m_block_load_data.clear();
  m_block_load_arena.Clear();
}

void SceneEngine::FreeLoadedBlocks() {
  // The records' blocks form an acyclic graph (links are made only after the cycle check), so
  // every block hangs below one that nothing links to: releasing those frees them all. They
  // are gathered first, as each release may free blocks further down the list.
  std::vector<Block*> tops;
  internal::VisitedSet seen;
  for (const auto& record : m_block_load_data) {
    if (record == nullptr || record->block == nullptr) continue;
    if (!seen.Insert(record->block)) continue;
    if (record->block->GetParentBlock() == nullptr) tops.push_back(record->block);
  }
  for (Block* top : tops) top->DeleteThisBlock(true);
  DestroyBlockLoadData();
  m_blocks_by_id.clear();
  m_num_file_blocks = -1;
}

int SceneEngine::MergeScene(SceneEngine* other, bool names_only) {
  assert(other != nullptr && other->GetMainNode() != nullptr && GetMainNode() != nullptr &&
         "MergeScene requires two scenes");
  Node* other_main = other->GetMainNode();
  Node* main_node = GetMainNode();
  if (names_only) {
    for (int i = 0; i < other_main->GetNumChildren(); ++i) {
      Node* child = other_main->GetChild(i);
      if (child != nullptr) (void)GetNodeByName(child->GetName());
    }
    return 0;
  }
  // Kept as is: the count and the child are asked afresh and the index is never adjusted,
  // so every move shifts the next node into the index just passed.
  for (int i = 0; i < other_main->GetNumChildren(); ++i) {
    (void)main_node->AddChild(other_main->GetChild(i));
  }
  return 0;
}

int SceneEngine::MergeScene(const char* /*path*/) { return 0; }

}  // namespace Orlo
