// Defines StateRecorder, the undo history: a list of named steps, each a list of changes
// (StateContainer) that can be reverted and applied again.
// The recorder owns every change put into it, from Put until it destroys it: Cancel and
// Restore destroy the pending changes, Accept after an undo destroys the steps that could
// have been redone, a step limit destroys the oldest steps, and Clear and the destructor
// destroy everything. Each change is destroyed exactly once, newest first.
//
// Usage, bracketing one edit:
//   recorder.Begin();
//   recorder.Put(new MyChange(...));   // one record per elementary change
//   recorder.Accept("Move");           // or Cancel() to drop the records
//   recorder.Undo();                   // reverts the changes, newest first
//   recorder.Redo();                   // applies them again, oldest first
#pragma once

#include <orlo/support/state_container.h>

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace Orlo {

class StateRecorder {
 public:
  StateRecorder();
  virtual ~StateRecorder();

  StateRecorder(const StateRecorder&) = delete;
  StateRecorder& operator=(const StateRecorder&) = delete;

  // Starts holding: changes put from now on belong to one pending step. Calling it again
  // while holding keeps the pending changes and the one step (brackets do not nest).
  void Begin();

  // Takes ownership of change. While holding it joins the pending step; otherwise nothing
  // is being recorded and the change is destroyed at once, unapplied and unreverted (so the
  // caller never keeps ownership). A null change is ignored.
  void Put(StateContainer* change);

  // Closes the pending step as one undoable step named name (null reads as ""), calls
  // OnAccept on its changes in put order, destroys the steps that could have been redone
  // and stops holding. A pending step without changes records nothing and leaves the redo
  // steps in place, since nothing changed. Does nothing when not holding.
  void Accept(const char* name);

  // Destroys the pending changes without reverting them and stops holding.
  void Cancel();

  // Reverts the pending changes, newest first, and destroys them; the recorder keeps
  // holding, so the edit can be recorded afresh or closed. Does nothing when not holding.
  void Restore();

  // Whether a step is pending (between Begin and Accept or Cancel).
  bool Holding() const;

  // Whether Undo or Redo would do something. Both are false while holding: the pending
  // changes sit on top of the history and must be accepted or cancelled first.
  bool CanUndo() const;
  bool CanRedo() const;

  // Reverts the changes of the last accepted step, newest first, and makes it redoable.
  // Does nothing while holding or without a step. Changes put while it runs are not
  // recorded (the recorder is not holding).
  void Undo();
  // Applies the changes of the last undone step again, in put order.
  void Redo();

  // Destroys the whole history: undoable, redoable and pending changes. Whether the
  // recorder is holding is left as it was, so the host's bracket stays balanced.
  void Clear();

  // Keeps at most max_steps undoable steps, destroying the oldest ones beyond that, now and
  // after each Accept or Redo. 0, the default, keeps every step.
  void SetMaxSteps(size_t max_steps);
  size_t GetMaxSteps() const;

  size_t NumUndoSteps() const;
  size_t NumRedoSteps() const;
  size_t NumPendingChanges() const;
  // The name of the step that Undo (Redo) would revert (apply), or "" when there is none.
  std::string GetUndoName() const;
  std::string GetRedoName() const;

 private:
  // One accepted step; destroying it destroys its changes newest first.
  struct Step {
    std::string name;
    std::vector<std::unique_ptr<StateContainer>> changes;

    Step() = default;
    Step(Step&&) = default;
    Step& operator=(Step&&) = delete;
    ~Step();
  };

  void DropOldestBeyondLimit();

  // Oldest step at the front; Undo takes the back.
  std::deque<Step> m_undo;
  // The step Redo applies next is at the back; the front lies furthest in the future.
  std::deque<Step> m_redo;
  // Changes of the pending step, in put order; empty when not holding.
  std::vector<std::unique_ptr<StateContainer>> m_pending;
  bool m_holding = false;
  size_t m_max_steps = 0;
};

}  // namespace Orlo
