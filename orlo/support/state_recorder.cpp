#include <orlo/support/state_recorder.h>

#include <utility>

namespace Orlo {
namespace {

using ChangeList = std::vector<std::unique_ptr<StateContainer>>;

// Destroys the changes newest first. Each one is taken out of the list before it is
// destroyed, so a destructor that reaches back into the recorder never finds it half
// removed.
void DestroyNewestFirst(ChangeList& changes) {
  while (!changes.empty()) {
    std::unique_ptr<StateContainer> change = std::move(changes.back());
    changes.pop_back();
    change.reset();
  }
}

}  // namespace

StateRecorder::Step::~Step() { DestroyNewestFirst(changes); }

StateRecorder::StateRecorder() = default;

StateRecorder::~StateRecorder() { Clear(); }

void StateRecorder::Begin() { m_holding = true; }

void StateRecorder::Put(StateContainer* change) {
  std::unique_ptr<StateContainer> owned(change);
  if (owned == nullptr) return;
  if (!m_holding) return;  // nothing is being recorded: the change dies here
  m_pending.push_back(std::move(owned));
}

void StateRecorder::Accept(const char* name) {
  if (!m_holding) return;
  m_holding = false;
  if (m_pending.empty()) return;

  Step step;
  step.name = name != nullptr ? name : "";
  step.changes = std::move(m_pending);
  m_pending.clear();
  for (const auto& change : step.changes) change->OnAccept();

  // The new step replaces the future that had been undone.
  while (!m_redo.empty()) {
    Step dropped = std::move(m_redo.front());
    m_redo.pop_front();
  }
  m_undo.push_back(std::move(step));
  DropOldestBeyondLimit();
}

void StateRecorder::Cancel() {
  DestroyNewestFirst(m_pending);
  m_holding = false;
}

void StateRecorder::Restore() {
  if (!m_holding) return;
  ChangeList changes = std::move(m_pending);
  m_pending.clear();
  for (auto it = changes.rbegin(); it != changes.rend(); ++it) (*it)->Revert();
  DestroyNewestFirst(changes);
}

bool StateRecorder::Holding() const { return m_holding; }

bool StateRecorder::CanUndo() const { return !m_holding && !m_undo.empty(); }

bool StateRecorder::CanRedo() const { return !m_holding && !m_redo.empty(); }

void StateRecorder::Undo() {
  if (!CanUndo()) return;
  // Taken out of the history while it runs, so a change that edits the recorder cannot
  // pull the step from under the loop.
  Step step = std::move(m_undo.back());
  m_undo.pop_back();
  for (auto it = step.changes.rbegin(); it != step.changes.rend(); ++it) (*it)->Revert();
  m_redo.push_back(std::move(step));
}

void StateRecorder::Redo() {
  if (!CanRedo()) return;
  Step step = std::move(m_redo.back());
  m_redo.pop_back();
  for (const auto& change : step.changes) change->Apply();
  m_undo.push_back(std::move(step));
  DropOldestBeyondLimit();
}

void StateRecorder::Clear() {
  DestroyNewestFirst(m_pending);
  // The redo steps lie after the undo steps in time: the furthest one goes first.
  while (!m_redo.empty()) {
    Step dropped = std::move(m_redo.front());
    m_redo.pop_front();
  }
  while (!m_undo.empty()) {
    Step dropped = std::move(m_undo.back());
    m_undo.pop_back();
  }
}

void StateRecorder::SetMaxSteps(size_t max_steps) {
  m_max_steps = max_steps;
  DropOldestBeyondLimit();
}

size_t StateRecorder::GetMaxSteps() const { return m_max_steps; }

size_t StateRecorder::NumUndoSteps() const { return m_undo.size(); }

size_t StateRecorder::NumRedoSteps() const { return m_redo.size(); }

size_t StateRecorder::NumPendingChanges() const { return m_pending.size(); }

std::string StateRecorder::GetUndoName() const {
  return m_undo.empty() ? std::string() : m_undo.back().name;
}

std::string StateRecorder::GetRedoName() const {
  return m_redo.empty() ? std::string() : m_redo.back().name;
}

void StateRecorder::DropOldestBeyondLimit() {
  while (m_max_steps != 0 && m_undo.size() > m_max_steps) {
    Step dropped = std::move(m_undo.front());
    m_undo.pop_front();
  }
}

}  // namespace Orlo
