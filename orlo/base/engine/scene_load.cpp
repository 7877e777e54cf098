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
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_paths.h>
#include <orlo/base/block/internal/block_index.h>
#include <orlo/base/block/internal/saturating.h>
#include <orlo/base/block/internal/visited_set.h>
#include <orlo/base/engine/internal/block_marking.h>
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

BlockFactory* FindFactory(const BlockType& type) {
  const unsigned count = SceneEngine::GetNumBlockFactories();
  for (unsigned i = 0; i < count; ++i) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(i);
    if (factory != nullptr && factory->GetBlockType() == type) return factory;
  }
  return nullptr;
}

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

// Whether the links the records name form a cycle (a block linked to itself included), by
// peeling off, again and again, the records no remaining record links to.
bool LinksFormCycle(const std::vector<std::unique_ptr<BlockLoadData>>& records,
                    const std::vector<int>& record_of_id) {
  const std::size_t n = records.size();
  std::vector<std::uint32_t> incoming(n, 0);
  auto targets = [&](std::size_t i, auto&& visit) {
    const BlockLoadData* record = records[i].get();
    if (record == nullptr || record->block == nullptr) return;
    for (std::int32_t k : record->dependency_ids) {
      if (k < 0) continue;
      const int target = record_of_id[static_cast<std::size_t>(k)];
      if (target >= 0 && records[static_cast<std::size_t>(target)]->block != nullptr) {
        visit(static_cast<std::size_t>(target));
      }
    }
  };
  for (std::size_t i = 0; i < n; ++i) targets(i, [&](std::size_t t) { ++incoming[t]; });
  std::vector<std::size_t> ready;
  for (std::size_t i = 0; i < n; ++i) {
    if (incoming[i] == 0) ready.push_back(i);
  }
  std::size_t peeled = 0;
  while (!ready.empty()) {
    const std::size_t i = ready.back();
    ready.pop_back();
    ++peeled;
    targets(i, [&](std::size_t t) {
      if (--incoming[t] == 0) ready.push_back(t);
    });
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

// Silences blocks for a while and lets them post again afterwards. A loaded graph has no
// listener yet and its blocks hold no cache worth telling about, but a file can share blocks
// along exponentially many paths, and every event a link or a post-load step posts would
// climb each of them: while the file's blocks are linked and the post-load passes run, they
// post nothing. Only blocks that were posting are silenced, and only they are given it back.
class EventMute {
 public:
  EventMute() = default;
  EventMute(const EventMute&) = delete;
  EventMute& operator=(const EventMute&) = delete;

  void Add(Block* block) {
    if (block == nullptr || !block->GetSendEvents()) return;
    block->SetSendEvents(false);
    m_muted.push_back(block);
  }
  // Lets every silenced block post again. Requires: none of them was destroyed.
  void RestoreAll() {
    for (Block* block : m_muted) block->SetSendEvents(true);
    m_muted.clear();
  }
  // Lets the silenced blocks still reachable from `root` post again; the others may have been
  // released meanwhile and are not touched.
  void RestoreReachable(Block* root) {
    internal::VisitedSet is_muted;
    for (Block* block : m_muted) is_muted.Insert(block);  // not read: some may be gone
    internal::VisitedSet seen;
    seen.Insert(root);
    std::vector<Block*> stack{root};
    std::size_t restored = 0;
    while (!stack.empty() && restored < m_muted.size()) {
      Block* block = stack.back();
      stack.pop_back();
      if (is_muted.Contains(block)) {
        block->SetSendEvents(true);
        ++restored;
      }
      for (int i = 0; i < block->NumDependencies(); ++i) {
        Block* dependency = block->GetDependency(i);
        if (dependency != nullptr && seen.Insert(dependency)) stack.push_back(dependency);
      }
    }
    m_muted.clear();
  }

 private:
  std::vector<Block*> m_muted;  // each once: a block is silenced only while it posts
};

// PostLoad on `root` and every block below it, once each, at its first visit in pre-order.
void PostLoadOncePerBlock(Block* root) {
  struct Frame {
    Block* block;
    int next_slot;
  };
  internal::VisitedSet visited;
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
          status = LoadBlocks(&load);
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
    FreeLoadedBlocks();
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
    FreeLoadedBlocks();
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
    FreeLoadedBlocks();
    return status;
  }
  // A walk that enters every block once per path would make this many visits. The passes
  // below fall back to one visit per block well before that matters, but the host's own
  // per-path walks of the scene would not: a graph past the bound is refused.
  // The scene is numbered here, as InitBlocks and then SetBlockIDs would number it (saving
  // numbers with the same walk), so that the count needs no index of its own; a refused
  // file's numbers go with its blocks.
  const std::size_t num_reached = internal::MarkReachableInPreOrder(main_scene).size();
  const PathTotals totals = CountPathTotalsOfNumbered(main_scene, num_reached);
  const std::uint64_t visits = totals.visits;
  if (visits > kMaxLoadPathVisits) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadScene : The scene's blocks are shared along "
               "more than " +
                   std::to_string(kMaxLoadPathVisits) + " paths; the file is refused.");
    FreeLoadedBlocks();
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
    FreeLoadedBlocks();
    return status;
  }
  EventMute mute;
  for (const auto& record : m_block_load_data) {
    if (record != nullptr) mute.Add(record->block);
  }
  // Blocks of the file that nothing links to and that are not the scene would be owned by
  // nobody once installed: they go now.
  // They are gathered first, as each release may free blocks further down the records.
  std::vector<Block*> orphans;
  for (const auto& record : m_block_load_data) {
    if (record == nullptr || record->block == nullptr || record->block == root) continue;
    std::vector<Block*> dependants;
    record->block->GetDependants(dependants);
    if (dependants.empty()) orphans.push_back(record->block);
  }
  DestroyBlockLoadData();
  for (Block* orphan : orphans) orphan->DeleteThisBlock(true);

  m_main_scene = main_scene;
  // Numbered above; releasing the orphans took nothing the scene reaches.
  m_num_blocks = static_cast<std::int32_t>(num_reached);
  SetParentPointer(GetMainNode());

  // Each part of the scene is refreshed as UpdateDataTables would, once per path unless the
  // paths outnumber the blocks; the whole scene's counts decide for every part (a refresh
  // repeats without effect, so the tables end the same either way), sparing a count per part.
  m_main_scene->UpdateDataTable(false);
  const bool once_per_path = totals.visits / kMaxLoadVisitsPerBlock <= totals.blocks;
  for (int i = 0; i < m_main_scene->NumDependencies(); ++i) {
    if (Block* dependency = m_main_scene->GetDependency(i)) {
      RefreshDataTables(dependency, once_per_path);
    }
  }
  const std::uint64_t num_blocks = static_cast<std::uint64_t>(m_num_blocks > 0 ? m_num_blocks : 1);
  if (visits <= kMaxLoadVisitsPerBlock * num_blocks) {
    m_main_scene->PostLoad();
    for (int i = 0; i < m_main_scene->NumDependencies(); ++i) {
      if (Block* dependency = m_main_scene->GetDependency(i)) CallPostLoad(dependency);
    }
  } else {
    PostLoadOncePerBlock(m_main_scene);
  }
  mute.RestoreReachable(m_main_scene);
  return status;
}

Status SceneEngine::LoadBlocks(SceneLoad* load) {
  assert(load != nullptr && "LoadBlocks requires a reader");
  Status status;
  const std::size_t n = m_block_load_data.size();
  if (n == 0) return status;
  const std::size_t num_ids = m_blocks_by_id.size();
  // Which record holds each saved number; -1 for none.
  std::vector<int> record_of_id(num_ids, -1);

  for (std::size_t i = 0; i < n; ++i) {
    m_block_load_data[i].reset();
    if (load->OpenChunk() != SceneLoad::kChunkOpened) {
      // Nothing left, or broken framing: the caller reports the reader's error.
      load->CloseChunk();
      break;
    }
    if (load->CurChunkID() != kBlockChunk) {
      load->CloseChunk();
      continue;
    }
    auto record = std::make_unique<BlockLoadData>();
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
      m_block_load_data[i] = std::move(record);
      return status;
    }
    if (record_of_id[static_cast<std::size_t>(id)] >= 0) {
      status.Set(Status::kFailed, "SceneEngine::LoadBlocks : Block chunk " + std::to_string(i) +
                                      " repeats the number " + std::to_string(id) + ".");
      m_block_load_data[i] = std::move(record);
      return status;
    }

    Block* block = nullptr;
    if (BlockFactory* factory = FindFactory(record->block_type)) {
      block = factory->GetBlock(false);
    } else {
      // Only the first missing factory sets the message.
      if (status.GetCode() == 0) status.Set(Status::kFailed, kNoFactory);
      block = MakePlaceholder(record->block_type.class_id);
    }
    record->block = block;
    BlockLoadData* raw_record = record.get();
    m_block_load_data[i] = std::move(record);
    if (block != nullptr) {
      if (load->OpenChunk() == SceneLoad::kChunkOpened) {
        // The block's own result is deliberately not examined: blocks written for this
        // library report their own troubles through the reader.
        if (load->CurChunkID() == kBlockDataChunk) (void)block->Load(load);
        load->CloseChunk();
      }
      (void)block->LoadBlockDependencies(load, raw_record);
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
  // half linked.
  for (std::size_t i = 0; i < n; ++i) {
    const BlockLoadData* record = m_block_load_data[i].get();
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
    }
  }
  if (LinksFormCycle(m_block_load_data, record_of_id)) {
    status.Set(Status::kFailed,
               "SceneEngine::LoadBlocks : The blocks' links form a cycle (a block reaches "
               "itself).");
    return status;
  }
  EventMute mute;
  for (const auto& record : m_block_load_data) {
    if (record != nullptr) mute.Add(record->block);
  }
  for (std::size_t i = 0; i < n; ++i) {
    const BlockLoadData* record = m_block_load_data[i].get();
    if (record == nullptr || record->block == nullptr) continue;
    for (std::size_t j = 0; j < record->dependency_ids.size(); ++j) {
      const std::int32_t k = record->dependency_ids[j];
      if (k == -1) continue;
      Block* target = m_blocks_by_id[static_cast<std::size_t>(k)];
      if (target == nullptr) continue;
      const Status linked = record->block->MakeDependencyByID(static_cast<int>(j), target);
      // The checks above leave nothing for the link to refuse.
      assert(linked.GetCode() == 0);
      (void)linked;
    }
  }
  // Linking fresh slots releases nothing, so every record's block is still there.
  mute.RestoreAll();
  return status;
}

void SceneEngine::DestroyBlockLoadData() { m_block_load_data.clear(); }

void SceneEngine::FreeLoadedBlocks() {
  // The records' blocks form an acyclic graph (links are made only after the cycle check), so
  // every block hangs below one that nothing links to: releasing those frees them all. They
  // are gathered first, as each release may free blocks further down the list.
  std::vector<Block*> tops;
  internal::VisitedSet seen;
  for (const auto& record : m_block_load_data) {
    if (record == nullptr || record->block == nullptr) continue;
    if (!seen.Insert(record->block)) continue;
    std::vector<Block*> dependants;
    record->block->GetDependants(dependants);
    if (dependants.empty()) tops.push_back(record->block);
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
