// Defines StateContainer, the base class of one recorded change of the undo history.
// A StateRecorder owns every container put into it and destroys each exactly once, through
// the virtual destructor; a container never outlives its recorder.
#pragma once

namespace Orlo {

// One undoable change. A derived class captures what it needs to move the scene between
// the state before the change and the state after it, and the recorder calls:
//   Revert()    when the step holding the change is undone (or the pending step restored),
//               bringing back the state before the change;
//   Apply()     when the step is redone, bringing back the state after the change;
//   OnAccept()  once, when the pending step holding the change is accepted into the
//               history; a change that must capture its final state late can do it here.
//               Most changes leave it empty.
// Within a step, changes are reverted newest first and applied, accepted and recorded in
// the order they were put.
class StateContainer {
 public:
  StateContainer() = default;
  virtual ~StateContainer();

  virtual void Revert() = 0;
  virtual void Apply() = 0;
  virtual void OnAccept();

  StateContainer(const StateContainer&) = delete;
  StateContainer& operator=(const StateContainer&) = delete;
};

}  // namespace Orlo
