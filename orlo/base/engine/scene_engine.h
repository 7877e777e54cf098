// Defines SceneEngine, the object through which a host owns a scene, and the process-wide
// statics every block relies on: the current engine, the undo recorder, the bitmap manager,
// the block-kind predicates and the registry of block factories.
//
// An engine owns its scene through m_main_scene: the whole block graph hangs from that root,
// and deleting the scene is one DeleteThisBlock(true) on it. The engine owns the undo recorder
// too, once StateRecorderInit has made one; its destructor destroys it. The bitmap manager is
// the host's and is never deleted here. The registry owns the factories it holds until
// DestroyFactories.
//
// The statics are plain process-wide state, read and written without locks: use the library
// from one thread at a time.
//
//   SceneEngine engine;
//   SceneEngine::SetScene(&engine);
//   engine.InitScene();                        // a MainScene with its node "MainNode"
//   Status status = engine.SaveScene("a.scene");
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/internal/chunk_arena.h>
#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>
#include <orlo/support/status.h>

namespace Orlo {

class BitmapManager;
class Block;
class BlockFactory;
class BlockListener;
class MainScene;
class Modifier;
class Node;
class Object;
class ObjectModifier;
class SceneLoad;
class SceneSave;
class StateContainer;
class StateRecorder;
struct PathTotals;

namespace internal {
class EventMute;
}

class SceneEngine {
 public:
  // No scene: call InitScene (or load one) before any operation that needs it.
  SceneEngine();
  SceneEngine(const SceneEngine&) = delete;
  SceneEngine& operator=(const SceneEngine&) = delete;
  // Clears the undo history, deletes the scene, then destroys the undo recorder and empties
  // its static. Neither the bitmap manager nor the current-engine static is touched.
  ~SceneEngine();

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

  // ---- Scene lifetime ----

  // Clears the undo history, deletes the current scene if there is one, and makes a new
  // MainScene with its main node, named "MainNode". The selection is emptied first: its
  // nodes go with the old scene.
  void InitScene();
  // Exactly InitScene: the old scene and the undo history are discarded.
  void ResetScene();
  // Clears the undo history, empties the selection and deletes the scene; the engine then has
  // none.
  void DeleteScene();

  // The scene's root block, or null without a scene.
  MainScene* GetMainScene() const { return m_main_scene; }
  // The main scene's main node, or null without a scene.
  Node* GetMainNode() const;

  // The path of the file last saved or loaded ("" before either).
  std::string GetScenePath() const { return m_scene_path; }
  void SetScenePath(std::string path) { m_scene_path = std::move(path); }

  // The undo recorder, or null before StateRecorderInit.
  static StateRecorder* GetStateRecorder();
  // Creates the undo recorder if there is none; a second call keeps the first one. The
  // recorder lives until an engine is destroyed.
  static void StateRecorderInit();

  // The host's bitmap manager, or null. Saving and loading add the scene file's directory to
  // its search directories. Never owned: the host deletes it.
  static BitmapManager* GetBitmapManager();
  static void SetBitmapManager(BitmapManager* manager);

  // ---- Numbering and enumeration ----
  // The walks follow the non-null dependency slots in ascending order, depth first, with
  // explicit work stacks; none descends into a block already on its current path.

  // Gives every block reachable from `block` no number (Block::kNoID) and a saved mark of 0.
  void InitBlocks(Block* block);
  // Numbers the blocks reachable from the main scene in pre-order from 0, each at its first
  // visit, and stores the count in m_num_blocks. Run InitBlocks(GetMainScene()) first: when
  // the main scene has a number already, nothing is numbered and the count is 0.
  // Requires: a main scene.
  void SetBlockIDs();
  // Numbers `block` and, below it, every block that has no number yet, in pre-order from
  // `next_id`, which is left one past the last number given. A block that has a number is
  // left alone, and so is everything below it.
  void SetIDToBlock(Block* block, int& next_id);
  // The count of blocks numbered by the last SetBlockIDs; -1 before any.
  int GetNumBlocks() const { return m_num_blocks; }

  // Resets the numbers, then appends to `out` (not cleared) every block reachable from the
  // main scene in pre-order, once per path that reaches it. Requires: a main scene.
  void EnumBlocks(std::vector<Block*>& out);
  // Appends `block` and the blocks below it, once per path, as long as they have no number.
  // `counter` is not used.
  void EnumBlock(Block* block, int& counter, std::vector<Block*>& out);

  // Calls PostLoad on `block`, then on the blocks below it in pre-order, once per path; the
  // slot count is read again after each slot, so slots a PostLoad adds are visited too.
  void CallPostLoad(Block* block);

  // Appends every node below the main node in pre-order, the main node itself excluded.
  // Requires: a main scene.
  void GetAllSceneNodes(std::vector<Node*>& out);

  // ---- Names across block kinds ----
  // Nodes (115), modifiers (800), materials (405) and textures (410) have names; every other
  // block, and null, has none: GetName gives "" and SetName does nothing.

  static std::string GetName(Block* block);
  static void SetName(Block* block, std::string name);
  static bool HasName(Block* block);

  // ---- Saving ----

  // Numbers the scene and writes every block reachable from the main scene to `path` as one
  // scene chunk: the block count, then one record per block in number order. Code 0 on
  // success; the writer's status when the file cannot be opened (nothing else changes then);
  // code 2, "SceneEngine::SaveScene : Failed saving the m_main_scene block." when the main
  // scene's own Save fails. Records the path and adds its directory to the bitmap manager.
  // Requires: a main scene.
  [[nodiscard]] Status SaveScene(const char* path);
  [[nodiscard]] Status SaveScene(const std::string& path);
  // Writes `block`'s record and then, in slot order, those of the blocks below it that are not
  // written yet. False only when `block`'s own Save fails; its record is then left open.
  bool SaveBlock(Block* block, SceneSave* save);

  // ---- Node editing ----
  // New and duplicated nodes always go directly under the main node; searches cover only the
  // nodes below it. Every walk of the hierarchy keeps an explicit stack. The operations that
  // add nodes require a main scene.

  // A new node named `name` (null reads as ""), with its parameter table, children table and
  // transform, placed by `matrix` (or moved to `position`) at time 0, added under the main
  // node. The object forms also attach `object` when it is not null.
  Node* CreateEmptyNode(Matrix3<double> matrix, const char* name);
  Node* CreateEmptyNode(Point3<double> position, const char* name);
  Node* CreateObjectNode(Object* object, Matrix3<double> matrix, const char* name);
  Node* CreateObjectNode(Object* object, Point3<double> position, const char* name);

  // Detaches `node` from its parent and deletes it with everything only it held. False, and
  // nothing changes, for null, for the main node and for a node that is not below the main
  // node.
  bool DeleteNode(Node* node);
  // The status of parent->AddChild(child). A null parent gives code 3, "SceneEngine::SetParent
  // : parent_node parameter is not valid.".
  Status SetParent(Node* parent, Node* child);
  // Sets the parent pointer of every node below `node` to the node whose children table holds
  // it (a scene file keeps only the children tables).
  void SetParentPointer(Node* node);
  // Whether `node` is below the main node. False for null and, deliberately, for the main
  // node itself.
  bool DoesNodeExistsInScene(Node* node);
  // Appends every node below `node` in pre-order (each child, then its descendants, children in
  // index order), `node` itself excluded; `out` is not cleared. Nothing for a null node.
  void GetAllChildrenNodes(Node* node, std::vector<Node*>& out);
  // The first node below the main node, in pre-order, whose name equals `name` byte for byte;
  // null when none does.
  Node* GetNodeByName(std::string name);
  // A copy of `source` under the main node (not beside its source), with the same name, a
  // clone of its transform and parameter table and, when `instance` is true, the same object
  // and material as the source (clones of them otherwise). The source's children are not
  // copied. Null for a null source.
  Node* DuplicateNode(Node* source, bool instance);
  // Resizes `out` to the number of `nodes` and sets entry i to the duplicate of entry i.
  // Always code 0.
  Status DuplicateNodes(std::vector<Node*> nodes, std::vector<Node*>& out, bool instance);

  // ---- Selection and evaluation ----

  // Clears the selected flag of the selected nodes, changes the selection by `mode` and sets
  // the flag of the nodes selected then. Mode 0 replaces the selection by `nodes`, 1 appends
  // them (a node given again is selected twice), 2 removes every entry equal to one of them
  // (the order of the rest is kept); any other mode keeps the selection.
  void SelectNodes(std::vector<Node*>& nodes, int mode);
  unsigned GetNumSelectedNodes() const;
  // Entry `index` of the selection, or null when `index` is not below the count.
  Node* GetSelectedNode(unsigned index) const;

  // Builds the object of `node`, then of each node below it in pre-order; a node's child count
  // is read again after each child. Nothing for a null node.
  void EvaluateNode(Node* node, int time);
  // EvaluateNode of the main node (nothing without a scene); the flag is not used.
  void EvaluateScene(int time, bool unused);
  // Lists the nodes below the main node first, then builds each listed node's object in list
  // order.
  void ReevaluateAllNodes(int time);

  // A node of the scene and its absolute matrix at a time.
  struct NodeMatrix {
    Node* node;
    Matrix3<double> matrix;
  };
  // Appends the main node and then every node below it in pre-order, each with its absolute
  // matrix at `time`, equal bit for bit to the node's GetAbsoluteTM(time). One top-down pass:
  // each node's own matrix is evaluated once and multiplied by its parent's entry, so the
  // whole scene costs one evaluation per node, where GetAbsoluteTM per node climbs to the root
  // each time. `out` is not cleared; nothing is appended without a scene.
  void GetAbsoluteTMs(int time, std::vector<NodeMatrix>& out);

  // Refreshes every parameter table of the scene: UpdateDataTables(GetMainScene()), nothing
  // without a scene.
  void UpdateDataTables();
  // Calls UpdateDataTable(false) on `block` and then, in pre-order, on every block below it
  // (the slots below the count read before each block's own refresh). A block reached along
  // several paths is refreshed once per path, unless the paths outnumber the blocks sixteen
  // times over (a deep chain of nodes, whose transforms each hold their parent's): each block
  // is then refreshed once, at its first visit. Nothing for a null block.
  void UpdateDataTables(Block* block);

  // ---- Import and export ----
  // The tool is the first registered one, in factory registration order, whose factory
  // reports class id 100005 (import) or 100010 (export) and which lists the extension of
  // `path` (from the last dot of the file name, compared in lower case). The engine runs its
  // Execute and returns that status; it never deletes the tool it ran: a tool that is not kept
  // in the scene (MainScene::AddSceneTool) releases itself at the end of its own Execute.
  // Candidates that do not match are released at once. Without a match: code 2, "Couldn't find
  // an ImportTool." or "Couldn't find an ExportTool.". A null path reads as "".

  [[nodiscard]] Status ImportScene(const char* path);
  [[nodiscard]] Status ImportScene(const std::string& path);
  [[nodiscard]] Status ExportScene(const char* path);
  [[nodiscard]] Status ExportScene(const std::string& path);

  // ---- Undo and redo ----
  // Bridges from the host and the blocks to the process-wide recorder. Each does nothing (or
  // answers false) until StateRecorderInit has made one. The host brackets an edit with
  // StateRecorderBegin and StateRecorderAccept (or StateRecorderCancel); the engine's own
  // edits only put records.

  // Kept as a no-op on purpose: the recorder outlives this call and is destroyed only by an
  // engine's destructor, so hosts that call it between edits keep their history.
  static void StateRecorderDelete();
  static void StateRecorderBegin();
  // Hands `container` to the recorder. Without a recorder the container is destroyed at once
  // (null is ignored): the caller never keeps ownership.
  static void StateRecorderPut(StateContainer* container);
  // Closes the pending step under `name` (null reads as "").
  static void StateRecorderAccept(const char* name);
  static void StateRecorderCancel();
  static bool StateRecorderIsHolding();
  static bool StateRecorderCanUndo();
  static bool StateRecorderCanRedo();
  static void StateRecorderUndo();
  static void StateRecorderRedo();
  static void StateRecorderRestore();
  static void StateRecorderClear();

  // ---- Modifier application ----
  // A node's object chain runs from the node's object down through each object modifier's
  // object-to-modify to a plain object. Each relinking is recorded with a
  // ReplaceDependencyStateContainer put into the recorder before the change is made; the
  // operations never open or accept a step themselves.

  // Inserts an object modifier of `modifier` into the chain of the one node in `nodes`, above
  // objects[0] when that is in the chain, on top of the chain otherwise. The node's object is
  // built at `time` first (the modifiers above the insertion point switched off meanwhile)
  // and the insertion happens only when the built object's flags have bit 22 or 23 set.
  // Code 0, doing nothing, unless `nodes` holds exactly one entry; code 2 for a null node
  // ("There should be at least one valid node.") or a null modifier ("Modifier can't be
  // NULL.").
  Status AddModifierToNodes(std::vector<Node*> nodes, std::vector<Object*> objects,
                            Modifier* modifier, int time);
  // Inserts an object modifier of `modifier` directly under each node of `nodes`, with the
  // nodes' built objects' bounding boxes gathered in world space as the modifier's box. False
  // when some node's built object has neither bit 22 nor bit 23 set (that node is skipped),
  // or when the modifier is null; true otherwise.
  bool AddModifierToNodes(std::vector<Node*> nodes, Modifier* modifier, int time);
  // The object modifier of `modifier` in `node`'s chain, or null.
  ObjectModifier* GetObjectModifier(Node* node, Modifier* modifier);

  // ---- Look-at cameras ----

  // A camera node named `name` at `position`, turned by a LookAtController towards a new
  // empty node `name` + "_aim" at `target`; both nodes go under the main node. The camera
  // object comes from the last registered factory of type (600, 128, 784), the camera class
  // of the host's object library; without one the node has no object. The controller wraps
  // the node's own transform controller, which keeps giving the position.
  // Requires: a main scene.
  Node* CreateLookAtCamera(Point3<double> position, Point3<double> target, std::string name);

 private:
  // The selected nodes, in selection order; not owning.
  std::vector<Node*> m_selected_nodes;
  // The scene's root; owns the graph. Null without a scene.
  MainScene* m_main_scene = nullptr;
  // The path of the file last saved or loaded.
  std::string m_scene_path;
  // One record per block chunk while a file loads (null for a chunk that made none); empty
  // otherwise. The records are the engine's, made in m_block_load_arena; the blocks they name
  // belong to the graph.
  std::vector<BlockLoadData*> m_block_load_data;
  internal::ChunkArena<BlockLoadData> m_block_load_arena;
  // The count of blocks numbered by the last SetBlockIDs; -1 before any.
  std::int32_t m_num_blocks = -1;
  // The block count read from the header of the file being loaded; -1 outside a load.
  std::int32_t m_num_file_blocks = -1;
  // While a file loads, the block created for each saved number; not owning.
  std::vector<Block*> m_blocks_by_id;

 public:
  // ---- Loading and merging ----
  // A scene file enters through LoadScene and may hold anything: every failure is a Status
  // with code 2 and a message, and a load that fails frees every block it made and installs
  // nothing (the engine then has no scene).

  // The most visits a once-per-path walk over a loaded scene may make; a file whose graph
  // needs more is refused with code 2 before any pass runs. The post-load pass and the table
  // refresh enter a shared block once per path that reaches it, and so do the host's own
  // per-path walks (EnumBlocks, events climbing through shared blocks) later: 64 levels of
  // blocks each held twice by the one above need 2^64 visits. Scenes this library writes stay
  // far below the bound: a chain of a million nodes, each transform holding its parent's,
  // needs about 10^13.
  static constexpr std::uint64_t kMaxLoadPathVisits = std::uint64_t{1} << 48;
  // Up to this many per-path visits per block, the post-load pass enters a shared block once
  // per path; past it (a deep chain of nodes, whose transforms each hold their parent's) each
  // block gets PostLoad once, at its first visit, as the table refresh does, so that loading
  // stays linear in the file. These passes only matter to blocks of host classes: a scene
  // made of the library's own classes alone gets one table refresh per block, and no
  // PostLoad call, since theirs do nothing.
  static constexpr std::uint64_t kMaxLoadVisitsPerBlock = 16;

  // Replaces the scene by the one stored at `path`. A missing file gives code 2,
  // "SceneEngine::LoadScene : File doesn't exist." and leaves the scene as it was. Otherwise
  // the undo history is cleared, then the old scene deleted, before the file is read. Code 0
  // with the file's scene installed, renumbered from 0, its parent pointers set, its tables
  // refreshed and PostLoad run. Every other outcome is code 2 with no scene, no block of the
  // file left alive and no load record or number table kept:
  //   - the reader's own message (naming the chunk and the offset, prefixed with
  //     "SceneEngine::LoadScene : ") when the file cannot be opened or its chunks run past
  //     their parent or the file;
  //   - "SceneEngine::LoadScene : The file is not a SceneEngine file. Couldn't load any
  //     blocks." without a scene chunk, a header or any block record;
  //   - "SceneEngine::LoadScene : The header declares N blocks, but the scene chunk has room
  //     for at most M." when the count could not fit in the bytes that follow it;
  //   - "SceneEngine::LoadBlocks : Couldn't find a factory for one or more blocks." when a
  //     block's class is not registered (placeholders stand in while the file is read);
  //   - a message naming the block chunk for a saved number outside 0 .. count - 1 (-1 when
  //     the info chunk is missing) or repeated, a link to such a number or to a slot the
  //     block does not have, links that form a cycle, a first block that is not a scene,
  //     a block's data asking for an impossible size, a graph past kMaxLoadPathVisits, or a
  //     node hierarchy whose walk would pass kMaxLoadVisitsPerBlock visits per block;
  //   - "SceneEngine::LoadScene : Failed loading the blocks\n" when no block was read but
  //     records of an earlier LoadBlocks were left: they are dropped, their blocks untouched.
  // A block's own Load result is not examined; a chunk of another id where a block record
  // should be is skipped.
  [[nodiscard]] Status LoadScene(const char* path);
  [[nodiscard]] Status LoadScene(const std::string& path);
  // Reads the block chunks of the open scene chunk into m_block_load_data (already sized to
  // the header's count), creates the blocks and links them by number. Used by LoadScene.
  [[nodiscard]] Status LoadBlocks(SceneLoad* load);
  // Frees every load record and empties m_block_load_data; the blocks are not touched.
  void DestroyBlockLoadData();

  // Moves the nodes under `other`'s main node to this engine's main node; always 0. Kept as
  // is: the index is never adjusted while AddChild takes each moved node out of `other`, so
  // only the nodes at even positions of the original order move, and the rest stay in
  // `other`. With `names_only` each node's name is only looked up here; nothing moves.
  // Requires: both engines have a scene.
  int MergeScene(SceneEngine* other, bool names_only);
  // Does nothing and returns 0: merging from a file goes through a second engine.
  int MergeScene(const char* path);

 private:
  // Lets the loader's tests drive LoadBlocks on records they size themselves.
  friend class SceneLoadTestPeer;

  // LoadBlocks, leaving every block it reads silenced in `mute` (LoadScene keeps them so
  // until the scene is installed).
  [[nodiscard]] Status LoadBlocks(SceneLoad* load, internal::EventMute& mute);
  // Frees the blocks of the current load records and forgets them: the load failed.
  void FreeLoadedBlocks();
  // The walk of UpdateDataTables(block), refreshing each block once per path or, when
  // `once_per_path` is false, once at its first visit.
  // `numbered`, when given, lists the blocks of the scene by number as the numbering walk
  // left them, which spares the once-per-block walk a hash set.
  void RefreshDataTables(Block* block, bool once_per_path,
                         const std::vector<Block*>* numbered = nullptr);
  // The table refresh and post-load passes over a freshly installed scene whose blocks
  // `numbered` lists by number; `totals` are its per-path counts. True when the scene holds
  // only the library's own classes, whose passes release no block.
  bool RefreshAndPostLoad(const std::vector<Block*>& numbered, const PathTotals& totals);
};

}  // namespace Orlo
