// Defines Block, the abstract base of every element of a scene, and its dependency graph.
//
// A block holds numbered dependency slots that point at the blocks it is built from, and keeps
// the reverse relation, its dependants. The graph is also the ownership structure: every link
// made with MakeDependencyByID counts as a reference, and a block that loses its last dependant
// posts event code 1, releases its own dependencies and destroys itself through DeleteThis.
// Blocks are therefore created with `new` (directly or by a factory) and never deleted except
// through that release path, DeleteThisBlock(true) or DeleteThis called by an owner.
//
// Concrete classes store their slots themselves and expose them through NumDependencies,
// GetDependency and SetDependency (a raw store: no bookkeeping, no event). Block implements
// everything else on top of those three: the bookkeeping, the cycle test, the release cascade,
// event delivery and the shared chunks of a block's scene-file record.
//
// Every walk over the graph uses an explicit work stack, so chains of any depth are linked,
// tested, notified and released without deep recursion. The cycle test searches the smaller side
// of the graph, from the would-be dependency down or from the would-be dependant up, and never
// counts paths one by one.
//
// A block is destroyed exactly when the last link that holds it lets go. Deliberate rules can
// leave a back reference without a slot (a block set twice into one slot) or a slot without a
// back reference (a refused BlockTable::PushBack); such a leftover never outlives either block,
// so nothing in the graph ever points at a destroyed block.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <orlo/base/block/block_event.h>
#include <orlo/base/block/block_type.h>
#include <orlo/base/block/internal/block_list.h>
#include <orlo/support/color.h>
#include <orlo/support/point3.h>
#include <orlo/support/status.h>

namespace Orlo {

class BlockListener;
class DataTable;
class SceneLoad;
class SceneSave;

namespace internal {
class BlockWatch;
class AcyclicLinks;
}  // namespace internal
struct BlockLoadData;

class Block {
 public:
  // The number of a block that has none in the current scene.
  static constexpr std::uint32_t kNoID = 0xFFFFFFFFu;

  Block()
      : m_send_events(1),
        m_has_listeners(0),
        m_has_data(0),
        m_noted_abandoned(0),
        m_noted_candidate(0),
        m_watched(0),
        m_quiet_known(0),
        m_saved(0) {}
  // Copies every field as it stands, both lists included: a copy starts with the same
  // dependants and listeners as its source. Callers that clone blocks fix the relations.
  Block(const Block& other);
  Block& operator=(const Block& other);
  // Notifies nobody; detaching is DeleteThisBlock's job. The one exception keeps the graph free
  // of dangling pointers: a block that a deliberate rule left listed without a slot, or held in
  // a slot without being listed, is forgotten by the other block of that pair.
  virtual ~Block();

  // ---- Identity and slots: implemented by every concrete class ----

  virtual std::string GetClassName() const = 0;
  virtual BlockType GetBlockType() const = 0;
  virtual int NumDependencies() const = 0;
  // Raw store into a slot: no bookkeeping, no event. Indices outside the slots are ignored.
  virtual void SetDependency(int index, Block* block) = 0;
  // The block in a slot; null for an empty slot or an index outside the slots.
  virtual Block* GetDependency(int index) const = 0;
  // The slot's name, used as a parameter key ("data_table", ...).
  virtual std::string GetDependencyName(int index) const = 0;
  virtual unsigned GetDependencyType(int index) const;

  // ---- Parameter table ----

  virtual DataTable* GetDataTable() const;
  // The base refuses: code 1, "This Block has no DataTables.".
  virtual Status SetDataTable(DataTable* table);
  virtual void UpdateDataTable(bool create);

  // ---- Copying, files, lifetime ----

  // A new block of the same class.
  virtual Block* Clone() = 0;
  // Writes the block's own payload; returns 1 on success.
  virtual int Save(SceneSave* save) = 0;
  // Reads what Save wrote; returns 0 only when the reader reported an error.
  virtual int Load(SceneLoad* load) = 0;
  // Called once all blocks of a file are loaded and linked.
  virtual int PostLoad();
  // Destroys the object itself: the final delete.
  virtual void DeleteThis() = 0;

  // ---- Host hooks: declared for hosts, never called by the library ----

  virtual void ActionBegin(int, int);
  virtual void ActionEnd(int, int);
  virtual void Update(int);

  // Receives an event from a dependency or from the block itself. The default stamps this
  // block as the sender and posts the event on unchanged.
  virtual void ProcessEvent(BlockEvent event);
  // Whether this block's ProcessEvent is the default relay above. A block that answers true and
  // has no listeners cannot observe an event, so an event climbing the graph may pass over it,
  // and over everything above it, when nothing up there observes events either: building and
  // notifying long chains then stays linear. A class that overrides ProcessEvent must answer
  // false, which is the default; a class answers true only when it knows it relays.
  virtual bool RelaysEventsUnchanged() const;

  // ---- The dependency graph ----

  // Makes `block` the dependency in slot `index`, keeping both directions, and delivers event
  // code 2 with the index. A block that would close a cycle (itself included) is refused with
  // code 3, "Block::MakeDependencyByID : Cyclic Dependency.", and nothing changes. A null
  // block empties the slot.
  Status MakeDependencyByID(int index, Block* block);
  // Empties slot `index`, releases the old dependency (which may delete itself) and delivers
  // event code 2 with the index. An empty slot is left alone, without an event.
  void DeleteDependency(int index);
  // DeleteDependency(i) for every slot, the count read again after every step.
  void DeleteAllDependencies();
  // Replaces the first slot that holds `old_block`: with null the slot is emptied, otherwise
  // `new_block` is linked there. True when a slot matched, even when the link was refused.
  bool ReplaceDependency(Block* old_block, Block* new_block);
  // Whether this block may take `block` as a dependency without closing a cycle.
  bool OkToSetAsDependency(Block* block);
  // Detaches the block from the graph in both directions: releases its dependencies, then
  // empties (raw stores, no events) every dependant slot that holds it. With `delete_block`
  // true it then tells the current engine and destroys itself.
  void DeleteThisBlock(bool delete_block);
  // Appends `dependant` to the dependants unless that would close a cycle; `index` is unused.
  bool MakeDependant(int index, Block* dependant);
  // Removes `dependant` from the dependants. When none is left, the block posts code 1,
  // releases its dependencies and destroys itself; returns true in that case, after which the
  // block no longer exists. A block that is itself letting go of one of its dependencies (and
  // is reached again through a raw slot) only loses the entries: it is never destroyed there.
  bool EraseDependantFromTable(Block* dependant);
  // Empties, in every dependant, each slot that holds this block (raw stores), then clears
  // the dependants.
  void RemoveFromDependants();
  // Appends the dependants in list order, duplicates included; `out` is not cleared.
  void GetDependants(std::vector<Block*>& out) const;
  // Adds to `count` the number of paths from this block down to `target`, counted without
  // walking the paths one by one; `count` saturates at the largest int instead of overflowing.
  void TestDependant(Block* target, int& count) const;
  // The oldest dependant, or null.
  Block* GetParentBlock() const;

  void* GetData() const;
  void SetData(void* data);

  // The block's number in the scene (kNoID when it has none) and its saved mark; assigned
  // and reset by the engine when it numbers, saves and loads a scene. Only whether the mark
  // is zero has a meaning, so it is kept as one bit: any non-zero mark reads back as 1.
  std::uint32_t GetID() const { return m_id; }
  void SetID(std::uint32_t id) { m_id = id; }
  int GetSaved() const { return m_saved; }
  void SetSaved(int saved) { m_saved = saved != 0 ? 1 : 0; }

  // ---- The block's scene-file record ----

  // Chunk 0x0005: class id, super class id, sub id, number. Returns 0.
  // Requires: save is not null.
  int SaveBlockInfo(SceneSave* save);
  // Chunk 0x0010: the slot count, then the number of the block in each slot (-1 when
  // empty). Returns 0.
  // Requires: save is not null.
  int SaveBlockDependencies(SceneSave* save);
  // Reads chunk 0x0010 into the record's dependency numbers; skips a chunk of another id.
  // Returns 0.
  // Requires: load and record are not null.
  int LoadBlockDependencies(SceneLoad* load, BlockLoadData* record);

  // ---- Events and listeners ----

  // Appends the listener unless it is attached already.
  void AddBlockListener(BlockListener* listener);
  // Detaches the listener; an absent one is ignored.
  void RemoveBlockListener(BlockListener* listener);
  // Delivers the event as it is: to the listeners first, then to every dependant's
  // ProcessEvent, depth first. Nothing is delivered while the block is muted.
  void PostEvent(BlockEvent event);
  void PostEvent(int code, int param);
  void ProcessEvent(int code, int param);
  bool GetSendEvents() const { return m_send_events != 0; }
  void SetSendEvents(bool send_events) { m_send_events = send_events ? 1 : 0; }

  // ---- Attribute access through the block's parameter table ----
  // The status forms report code 2 when the block has no table; with a table they report
  // success whatever the table answered.

  Status GetAttribute(int id, int& out, int time, int index);
  Status GetAttribute(int id, double& out, int time, int index);
  Status GetAttribute(int id, Point3<double>& out, int time, int index);
  Status GetAttribute(int id, std::string& out, int time, int index);
  Status GetAttribute(int id, Color& out, int time, int index);
  Status GetAttribute(int id, bool& out, int time, int index);

  Status SetAttribute(int id, int value, int time, int index);
  Status SetAttribute(int id, double value, int time, int index);
  // Taken as const char* so that a string literal does not fall through to the bool form.
  Status SetAttribute(int id, const char* value, int time, int index);
  Status SetAttribute(int id, Point3<double> value, int time, int index);
  Status SetAttribute(int id, const std::string& value, int time, int index);
  Status SetAttribute(int id, Color value, int time, int index);
  Status SetAttribute(int id, bool value, int time, int index);

  bool GetBooleanAttribute(int id, int time, int index, Status* status);
  int GetIntegerAttribute(int id, int time, int index, Status* status);
  double GetFloatAttribute(int id, int time, int index, Status* status);
  Point3<double> GetPoint3Attribute(int id, int time, int index, Status* status);
  Color GetColorAttribute(int id, int time, int index, Status* status);
  std::string GetStringAttribute(int id, int time, int index, Status* status);

 protected:
  // Marks a graph operation for as long as it lives. An operation may let go of the last block
  // holding the very block it works on (through a table entry that holds an ancestor, say);
  // that block is kept alive while operations run and released when the outermost one ends,
  // if nothing holds it then. Compound operations of subclasses that release several slots
  // hold one for their whole length.
  class OperationScope {
   public:
    OperationScope();
    OperationScope(const OperationScope&) = delete;
    OperationScope& operator=(const OperationScope&) = delete;
    ~OperationScope();
  };

 private:
  friend class internal::BlockWatch;
  friend class internal::AcyclicLinks;

  enum class Removal {
    kStillHeld,  // dependants remain
    kLostLast,   // the last back reference went
    kNeverHeld,  // the slot letting go had no back reference, and no dependant remains
  };
  // Removes `dependant`'s back references as one of its slots lets go of this block.
  Removal RemoveDependantEntries(Block* dependant);
  // After a release that left this block with dependants: when the outermost operation ends,
  // checks whether they hold it only through a cycle of leftover references.
  void CollectIfUnowned();
  // Releases `block` and the blocks above it when no owner of the graph is among them; whether
  // it did.
  static bool ReleaseIfUnowned(Block* block);
  // Adds `block` once to the blocks the outermost operation releases when it ends if they
  // still have no dependant.
  static void NoteAbandoned(Block* block);
  // Whether a block that `dependant` let go of, with that result, is released now.
  bool ShouldRelease(Block* dependant, Removal removal);
  // Whether `target` can be reached from `top` going down through the slots.
  static bool Reaches(const Block* top, const Block* target);
  // MakeDependencyByID past its checks: `index` is one of the slots, `block` is neither null
  // nor this block, and the link closes no cycle.
  void LinkAcyclic(int index, Block* block);
  // Releases a block that has just lost its last dependant, and everything only it kept.
  static void ReleaseUnreferenced(Block* block);
  // Makes the other block of every irregular pair forget `dying`, which is about to be
  // destroyed. Blocks that this leaves without a dependant go into `orphans` when it is given.
  static void ForgetIrregularLinks(Block* dying, std::vector<Block*>* orphans);
  // The end of releasing slot `index`: the raw store of null and the code-2 event.
  void FinishSlotRelease(int index);
  // Delivers `event` from `sender` to its listeners and up through its dependants.
  static void DeliverEvent(Block* sender, BlockEvent event);
  // Whether nothing above `block` can observe an event: every block up there relays events
  // unchanged and has no listener. Answers are kept until the graph may have changed that.
  static bool IsQuiet(Block* block);
  // Whether an event reaching this block can be seen: it has listeners or translates events.
  bool ObservesEvents() const;
  // The block's listeners, or null when it has none.
  const std::vector<BlockListener*>* Listeners() const;
  void DropListeners();
  void CopyListenersOf(const Block& other);
  // Called when `dependant` has become one of `held`'s dependants.
  static void NoteNewDependant(Block* held, Block* dependant);
  // Drops every kept answer of IsQuiet.
  static void ForgetQuietAnswers();
  // Drops the kept answers when one of them is about `block`, which is being destroyed.
  static void ForgetQuietAnswerOf(const Block* block);

  // Every scene is made of many thousands of blocks, so a block keeps only what most blocks
  // use: one back reference lives inside the list, and the host pointer, the listeners and
  // the event walk's answers, which few blocks have, are kept beside the blocks (a flag says
  // whether there are any).

  // One entry per link made to this block, duplicates included; not owning.
  internal::BlockList m_dependants;
  std::uint32_t m_id = kNoID;
  std::uint32_t m_send_events : 1;
  // Whether the block has an entry among the listener lists / the host pointers.
  std::uint32_t m_has_listeners : 1;
  std::uint32_t m_has_data : 1;
  // Whether the block waits in the list of abandoned blocks / of collect candidates that the
  // outermost operation goes through when it ends.
  std::uint32_t m_noted_abandoned : 1;
  std::uint32_t m_noted_candidate : 1;
  // Whether weak references to the block wait to be nulled when it is destroyed.
  std::uint32_t m_watched : 1;
  // Whether IsQuiet has kept an answer for the block (perhaps one forgotten since), which
  // its destruction must drop: another block may get its address.
  std::uint32_t m_quiet_known : 1;
  std::uint32_t m_saved : 1;
};

}  // namespace Orlo
