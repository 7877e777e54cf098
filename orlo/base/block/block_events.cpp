// Block's events and listeners.
//
// An event climbs the graph depth first: a block's listeners hear it, then each dependant's
// ProcessEvent gets it, and a dependant that posts it on (the default ProcessEvent does) has
// its whole upward chain notified before the next dependant hears anything. The climb is
// driven by an explicit stack of pending deliveries, so a graph of any height is notified
// without deep recursion: while the stack hands an event to a dependant, that dependant's own
// PostEvent is queued on the stack instead of running nested, and runs right after its
// ProcessEvent returns. Any other PostEvent (from a listener, say) is delivered at once.
//
// The price of not recursing: what a dependant's ProcessEvent does after posting on itself
// happens before that post climbs. An event it then posts on another block is heard first,
// and a change it makes is already visible to the blocks above. Delivering that other post
// later instead is not safe: a block that announces its release (code 1) is deleted right
// after it posts.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <unordered_map>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_listener.h>
#include <orlo/base/block/internal/irregular_links.h>
#include <orlo/base/block/internal/quiet_answers.h>
#include <orlo/base/block/internal/walk_path.h>

namespace Orlo {

namespace {

struct Delivery {
  Block* sender;
  BlockEvent event;
  std::size_t next_listener;
  std::size_t next_dependant;
};

// Pending deliveries, innermost last. Each running delivery loop owns the entries above the
// size it found when it started.
std::vector<Delivery>& PendingDeliveries() {
  static std::vector<Delivery> pending;
  return pending;
}

// The senders of the pending deliveries of the innermost delivery loop, in the same order: the
// blocks its event is climbing through. Back references that deliberate rules left over can
// close a cycle, which an event would otherwise climb forever; a dependant already on this path
// does not get the event again. One path per nesting level, kept for reuse.
std::deque<internal::WalkPath>& DeliveryPaths() {
  static std::deque<internal::WalkPath> paths;
  return paths;
}
std::size_t g_delivery_depth = 0;

internal::WalkPath& DeliveryPath() { return DeliveryPaths()[g_delivery_depth - 1]; }

void PushDelivery(const Delivery& delivery) {
  PendingDeliveries().push_back(delivery);
  DeliveryPath().Push(delivery.sender);
}

void PopDelivery() {
  PendingDeliveries().pop_back();
  DeliveryPath().Pop();
}

// The dependant whose ProcessEvent the innermost delivery loop is calling, or null.
Block* g_queueing_block = nullptr;

// The listeners of the blocks that have some, in the order they were added.
std::unordered_map<const Block*, std::vector<BlockListener*>>& ListenerLists() {
  static std::unordered_map<const Block*, std::vector<BlockListener*>> lists;
  return lists;
}

// The answers of IsQuiet, kept until a block may have gained an observer above it.
internal::QuietAnswers& KeptQuietAnswers() {
  static internal::QuietAnswers answers;
  return answers;
}

// Whether back references may close a cycle. Links never do; only the irregular pairs that
// deliberate rules leave behind can, so while there are none the walks up the dependants need
// not ask whether a block is already on their path.
bool MayCycle() { return !internal::IrregularLinks::Empty(); }

// Restores the delivery state when a loop ends, also when a listener throws.
class DeliveryScope {
 public:
  DeliveryScope() : m_base(PendingDeliveries().size()), m_saved_queueing(g_queueing_block) {
    g_queueing_block = nullptr;
    if (DeliveryPaths().size() == g_delivery_depth) DeliveryPaths().emplace_back();
    ++g_delivery_depth;
  }
  DeliveryScope(const DeliveryScope&) = delete;
  DeliveryScope& operator=(const DeliveryScope&) = delete;
  ~DeliveryScope() {
    while (PendingDeliveries().size() > m_base) PopDelivery();
    --g_delivery_depth;
    g_queueing_block = m_saved_queueing;
  }
  std::size_t Base() const { return m_base; }

 private:
  std::size_t m_base;
  Block* m_saved_queueing;
};

}  // namespace

const std::vector<BlockListener*>* Block::Listeners() const {
  if (!m_has_listeners) return nullptr;
  return &ListenerLists().at(this);
}

void Block::AddBlockListener(BlockListener* listener) {
  if (const std::vector<BlockListener*>* listeners = Listeners()) {
    if (std::find(listeners->begin(), listeners->end(), listener) != listeners->end()) return;
  }
  if (!ObservesEvents()) ForgetQuietAnswers();
  ListenerLists()[this].push_back(listener);
  m_has_listeners = 1;
}

void Block::RemoveBlockListener(BlockListener* listener) {
  if (!m_has_listeners) return;
  std::vector<BlockListener*>& listeners = ListenerLists().at(this);
  auto found = std::find(listeners.begin(), listeners.end(), listener);
  if (found == listeners.end()) return;
  listeners.erase(found);
  if (listeners.empty()) DropListeners();
}

void Block::DropListeners() {
  if (m_has_listeners) ListenerLists().erase(this);
  m_has_listeners = 0;
}

void Block::CopyListenersOf(const Block& other) {
  DropListeners();
  if (const std::vector<BlockListener*>* listeners = other.Listeners()) {
    if (!ObservesEvents()) ForgetQuietAnswers();
    std::vector<BlockListener*> copy = *listeners;  // the table may grow while inserting
    ListenerLists()[this] = std::move(copy);
    m_has_listeners = 1;
  }
}

void Block::PostEvent(int code, int param) { PostEvent(BlockEvent(this, code, param)); }

void Block::ProcessEvent(int code, int param) { ProcessEvent(BlockEvent(this, code, param)); }

void Block::ProcessEvent(BlockEvent event) {
  event.block = this;
  PostEvent(event);
}

bool Block::RelaysEventsUnchanged() const { return false; }

bool Block::ObservesEvents() const { return m_has_listeners || !RelaysEventsUnchanged(); }

void Block::ForgetQuietAnswers() { KeptQuietAnswers().Forget(); }

void Block::ForgetQuietAnswerOf(const Block* block) {
  // Its answer would otherwise pass to the next block given the same address.
  if (KeptQuietAnswers().Find(block) != internal::QuietAnswers::Answer::kUnknown) {
    ForgetQuietAnswers();
  }
}

void Block::NoteNewDependant(Block* held, Block* dependant) {
  if (dependant == nullptr) return;
  if (!dependant->ObservesEvents() && IsQuiet(dependant)) return;  // still nothing to observe
  // `held` and everything below it may now have an observer above. Nothing below a block known
  // to have one can have been found quiet, so that case needs no fresh answers.
  if (KeptQuietAnswers().Find(held) == internal::QuietAnswers::Answer::kObserved) return;
  ForgetQuietAnswers();
}

bool Block::IsQuiet(Block* block) {
  using Answer = internal::QuietAnswers::Answer;
  internal::QuietAnswers& answers = KeptQuietAnswers();
  auto record = [&answers](Block* b, bool quiet) {
    answers.Record(b, quiet);
    b->m_quiet_known = 1;
  };
  const Answer kept = answers.Find(block);
  if (kept != Answer::kUnknown) return kept == Answer::kQuiet;
  // Up through the dependants, depth first. The first block found to observe (or to close a
  // cycle of back references, taken as observing to be safe) makes every block on the current
  // path not quiet; a block whose dependants are all quiet is quiet.
  struct Frame {
    Block* block;
    std::size_t next_dependant;
  };
  std::vector<Frame> stack{{block, 0}};
  internal::WalkPath path;
  path.Push(block);
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_dependant >= top.block->m_dependants.size()) {
      record(top.block, true);
      stack.pop_back();
      path.Pop();
      continue;
    }
    Block* dependant = top.block->m_dependants[top.next_dependant++];
    if (dependant == nullptr) continue;
    const Answer known = answers.Find(dependant);
    const bool observed = known == Answer::kObserved || dependant->ObservesEvents() ||
                          (MayCycle() && path.Contains(dependant));
    if (observed) {
      for (const Frame& frame : stack) record(frame.block, false);
      return false;
    }
    if (known == Answer::kQuiet) continue;
    stack.push_back({dependant, 0});
    path.Push(dependant);
  }
  return true;
}

void Block::PostEvent(BlockEvent event) {
  if (!m_send_events) return;
  if (this == g_queueing_block) {
    PushDelivery({this, event, 0, 0});
    return;
  }
  DeliverEvent(this, event);
}

void Block::DeliverEvent(Block* sender, BlockEvent event) {
  std::vector<Delivery>& pending = PendingDeliveries();
  DeliveryScope scope;
  PushDelivery({sender, event, 0, 0});
  while (pending.size() > scope.Base()) {
    // Copies, not references: a listener or a dependant may grow the stack.
    const Delivery top = pending.back();
    Block* block = top.sender;
    // The lists are read again at every step: a listener that removes itself shifts the later
    // ones forward, so the one after it misses this event.
    const std::vector<BlockListener*>* listeners = block->Listeners();
    if (listeners != nullptr && top.next_listener < listeners->size()) {
      ++pending.back().next_listener;
      (*listeners)[top.next_listener]->OnBlockEvent(top.event);
      continue;
    }
    // Nothing above a quiet block can tell whether the event climbed: it stops here.
    if (top.next_dependant == 0 && !block->m_dependants.empty() && IsQuiet(block)) {
      PopDelivery();
      continue;
    }
    if (top.next_dependant < block->m_dependants.size()) {
      ++pending.back().next_dependant;
      Block* dependant = block->m_dependants[top.next_dependant];
      if (dependant == nullptr || (MayCycle() && DeliveryPath().Contains(dependant))) continue;
      const std::size_t queued_before = pending.size();
      g_queueing_block = dependant;
      dependant->ProcessEvent(top.event);
      g_queueing_block = nullptr;
      // A dependant that posted several events delivers them in the order it posted them.
      std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(queued_before), pending.end());
      continue;
    }
    PopDelivery();
  }
}

}  // namespace Orlo
