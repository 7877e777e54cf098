#include <gtest/gtest.h>
#include <orlo/support/state_recorder.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Orlo {
namespace {

using Log = std::vector<std::string>;

// A change that writes every call it receives, and its destruction, into a shared log.
class CountingChange : public StateContainer {
 public:
  CountingChange(std::string name, Log* log) : m_name(std::move(name)), m_log(log) {}
  ~CountingChange() override { m_log->push_back("destroy " + m_name); }

  void Revert() override {
    m_log->push_back("revert " + m_name);
    if (m_on_revert) m_on_revert();
  }
  void Apply() override { m_log->push_back("apply " + m_name); }
  void OnAccept() override { m_log->push_back("accept " + m_name); }

  void SetOnRevert(std::function<void()> action) { m_on_revert = std::move(action); }

 private:
  std::string m_name;
  Log* m_log;
  std::function<void()> m_on_revert;
};

// A change that keeps the default (empty) third operation.
class PlainChange : public StateContainer {
 public:
  explicit PlainChange(int* destroyed) : m_destroyed(destroyed) {}
  ~PlainChange() override { ++*m_destroyed; }
  void Revert() override {}
  void Apply() override {}

 private:
  int* m_destroyed;
};

class StateRecorderTest : public ::testing::Test {
 protected:
  CountingChange* Change(const std::string& name) { return new CountingChange(name, &m_log); }

  // Records one step made of the named changes, then forgets the log so far.
  void RecordStep(const char* step_name, const std::vector<std::string>& changes) {
    m_recorder->Begin();
    for (const std::string& change : changes) m_recorder->Put(Change(change));
    m_recorder->Accept(step_name);
    m_log.clear();
  }

  Log m_log;
  std::unique_ptr<StateRecorder> m_recorder = std::make_unique<StateRecorder>();
};

TEST_F(StateRecorderTest, NewRecorderHoldsNothingAndCanNeitherUndoNorRedo) {
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_FALSE(m_recorder->CanUndo());
  EXPECT_FALSE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 0u);
  EXPECT_EQ(m_recorder->NumRedoSteps(), 0u);
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
  EXPECT_EQ(m_recorder->GetUndoName(), "");
  EXPECT_EQ(m_recorder->GetRedoName(), "");
  EXPECT_EQ(m_recorder->GetMaxSteps(), 0u);
}

TEST_F(StateRecorderTest, UndoAndRedoWithoutHistoryDoNothing) {
  m_recorder->Undo();
  m_recorder->Redo();
  m_recorder->Restore();
  EXPECT_TRUE(m_log.empty());
  EXPECT_FALSE(m_recorder->CanUndo());
}

TEST_F(StateRecorderTest, BeginStartsHoldingAndAcceptEndsIt) {
  m_recorder->Begin();
  EXPECT_TRUE(m_recorder->Holding());
  m_recorder->Put(Change("a"));
  EXPECT_EQ(m_recorder->NumPendingChanges(), 1u);
  m_recorder->Accept("Move");
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
  EXPECT_TRUE(m_recorder->CanUndo());
  EXPECT_FALSE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  EXPECT_EQ(m_recorder->GetUndoName(), "Move");
}

TEST_F(StateRecorderTest, AcceptCallsOnAcceptInPutOrderAndNothingElse) {
  m_recorder->Begin();
  m_recorder->Put(Change("a"));
  m_recorder->Put(Change("b"));
  m_recorder->Put(Change("c"));
  EXPECT_TRUE(m_log.empty());
  m_recorder->Accept("Edit");
  EXPECT_EQ(m_log, (Log{"accept a", "accept b", "accept c"}));
}

TEST_F(StateRecorderTest, UndoRevertsTheChangesNewestFirst) {
  RecordStep("Edit", {"a", "b", "c"});
  m_recorder->Undo();
  EXPECT_EQ(m_log, (Log{"revert c", "revert b", "revert a"}));
  EXPECT_FALSE(m_recorder->CanUndo());
  EXPECT_TRUE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->GetUndoName(), "");
  EXPECT_EQ(m_recorder->GetRedoName(), "Edit");
}

TEST_F(StateRecorderTest, RedoAppliesTheChangesAgainInPutOrder) {
  RecordStep("Edit", {"a", "b", "c"});
  m_recorder->Undo();
  m_log.clear();
  m_recorder->Redo();
  EXPECT_EQ(m_log, (Log{"apply a", "apply b", "apply c"}));
  EXPECT_TRUE(m_recorder->CanUndo());
  EXPECT_FALSE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->GetUndoName(), "Edit");
}

TEST_F(StateRecorderTest, StepsAreUndoneLastFirstAndRedoneFirstFirst) {
  RecordStep("one", {"1"});
  RecordStep("two", {"2"});
  RecordStep("three", {"3"});
  EXPECT_EQ(m_recorder->NumUndoSteps(), 3u);
  m_recorder->Undo();
  m_recorder->Undo();
  EXPECT_EQ(m_log, (Log{"revert 3", "revert 2"}));
  EXPECT_EQ(m_recorder->GetUndoName(), "one");
  EXPECT_EQ(m_recorder->GetRedoName(), "two");
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  EXPECT_EQ(m_recorder->NumRedoSteps(), 2u);
  m_log.clear();
  m_recorder->Redo();
  m_recorder->Redo();
  m_recorder->Redo();  // nothing left to redo
  EXPECT_EQ(m_log, (Log{"apply 2", "apply 3"}));
  EXPECT_EQ(m_recorder->NumUndoSteps(), 3u);
}

TEST_F(StateRecorderTest, AcceptingAnEmptyStepRecordsNothing) {
  m_recorder->Begin();
  m_recorder->Accept("Nothing");
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_FALSE(m_recorder->CanUndo());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 0u);
  EXPECT_EQ(m_recorder->GetUndoName(), "");
}

TEST_F(StateRecorderTest, AcceptingAnEmptyStepAfterAnUndoKeepsTheRedoSteps) {
  RecordStep("Edit", {"a"});
  m_recorder->Undo();
  m_log.clear();
  m_recorder->Begin();
  m_recorder->Accept("Nothing");
  EXPECT_TRUE(m_log.empty());
  EXPECT_TRUE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->GetRedoName(), "Edit");
}

TEST_F(StateRecorderTest, AcceptAfterAnUndoDestroysTheRedoableSteps) {
  RecordStep("one", {"1a", "1b"});
  RecordStep("two", {"2"});
  m_recorder->Undo();
  m_recorder->Undo();
  m_log.clear();
  m_recorder->Begin();
  m_recorder->Put(Change("new"));
  m_recorder->Accept("fresh");
  // The new step is accepted, then the future that was undone is destroyed, the step
  // furthest ahead first and each change once.
  EXPECT_EQ(m_log, (Log{"accept new", "destroy 2", "destroy 1b", "destroy 1a"}));
  EXPECT_FALSE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  EXPECT_EQ(m_recorder->GetUndoName(), "fresh");
}

TEST_F(StateRecorderTest, AcceptWithoutBeginDoesNothing) {
  RecordStep("Edit", {"a"});
  m_recorder->Accept("stray");
  EXPECT_TRUE(m_log.empty());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  EXPECT_EQ(m_recorder->GetUndoName(), "Edit");
}

TEST_F(StateRecorderTest, AcceptWithANullNameNamesTheStepEmpty) {
  m_recorder->Begin();
  m_recorder->Put(Change("a"));
  m_recorder->Accept(nullptr);
  EXPECT_TRUE(m_recorder->CanUndo());
  EXPECT_EQ(m_recorder->GetUndoName(), "");
}

TEST_F(StateRecorderTest, CancelDestroysThePendingChangesWithoutRevertingThem) {
  RecordStep("kept", {"old"});
  m_recorder->Begin();
  m_recorder->Put(Change("a"));
  m_recorder->Put(Change("b"));
  m_recorder->Cancel();
  EXPECT_EQ(m_log, (Log{"destroy b", "destroy a"}));
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
  // The history before the bracket is untouched.
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  EXPECT_EQ(m_recorder->GetUndoName(), "kept");
}

TEST_F(StateRecorderTest, PutWhileNotHoldingDestroysTheChangeAtOnce) {
  m_recorder->Put(Change("loose"));
  EXPECT_EQ(m_log, (Log{"destroy loose"}));
  EXPECT_FALSE(m_recorder->CanUndo());
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
}

TEST_F(StateRecorderTest, PutOfNullIsIgnored) {
  m_recorder->Put(nullptr);
  m_recorder->Begin();
  m_recorder->Put(nullptr);
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
  m_recorder->Accept("Nothing");
  EXPECT_FALSE(m_recorder->CanUndo());
}

TEST_F(StateRecorderTest, BeginWhileHoldingKeepsOneStep) {
  m_recorder->Begin();
  m_recorder->Put(Change("a"));
  m_recorder->Begin();
  m_recorder->Put(Change("b"));
  EXPECT_EQ(m_recorder->NumPendingChanges(), 2u);
  m_recorder->Accept("Both");
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  m_log.clear();
  m_recorder->Undo();
  EXPECT_EQ(m_log, (Log{"revert b", "revert a"}));
}

TEST_F(StateRecorderTest, UndoAndRedoAreRefusedWhileHolding) {
  RecordStep("one", {"1"});
  RecordStep("two", {"2"});
  m_recorder->Undo();
  m_log.clear();
  m_recorder->Begin();
  EXPECT_FALSE(m_recorder->CanUndo());
  EXPECT_FALSE(m_recorder->CanRedo());
  m_recorder->Undo();
  m_recorder->Redo();
  EXPECT_TRUE(m_log.empty());
  m_recorder->Cancel();
  EXPECT_TRUE(m_recorder->CanUndo());
  EXPECT_TRUE(m_recorder->CanRedo());
}

TEST_F(StateRecorderTest, RestoreRevertsAndDestroysThePendingChangesAndKeepsHolding) {
  RecordStep("kept", {"old"});
  m_recorder->Begin();
  m_recorder->Put(Change("a"));
  m_recorder->Put(Change("b"));
  m_recorder->Restore();
  EXPECT_EQ(m_log, (Log{"revert b", "revert a", "destroy b", "destroy a"}));
  EXPECT_TRUE(m_recorder->Holding());
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);

  // The edit can be recorded afresh inside the same bracket.
  m_log.clear();
  m_recorder->Put(Change("c"));
  m_recorder->Accept("redone edit");
  EXPECT_EQ(m_log, (Log{"accept c"}));
  EXPECT_EQ(m_recorder->NumUndoSteps(), 2u);
  EXPECT_EQ(m_recorder->GetUndoName(), "redone edit");
}

TEST_F(StateRecorderTest, RestoreWhileNotHoldingDoesNothing) {
  RecordStep("Edit", {"a"});
  m_recorder->Restore();
  EXPECT_TRUE(m_log.empty());
  EXPECT_TRUE(m_recorder->CanUndo());
  EXPECT_FALSE(m_recorder->Holding());
}

TEST_F(StateRecorderTest, ClearDestroysTheWholeHistoryEachChangeOnce) {
  RecordStep("one", {"1"});
  RecordStep("two", {"2"});
  RecordStep("three", {"3"});
  m_recorder->Undo();
  m_recorder->Begin();
  m_recorder->Put(Change("pending"));
  m_log.clear();
  m_recorder->Clear();
  EXPECT_EQ(m_log, (Log{"destroy pending", "destroy 3", "destroy 2", "destroy 1"}));
  EXPECT_FALSE(m_recorder->CanUndo());
  EXPECT_FALSE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 0u);
  EXPECT_EQ(m_recorder->NumRedoSteps(), 0u);
  EXPECT_EQ(m_recorder->NumPendingChanges(), 0u);
  // The host's bracket stays open and still closes normally.
  EXPECT_TRUE(m_recorder->Holding());
  m_recorder->Accept("after clear");
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_FALSE(m_recorder->CanUndo());
}

TEST_F(StateRecorderTest, ClearWhileNotHoldingLeavesItNotHolding) {
  RecordStep("one", {"1"});
  m_recorder->Clear();
  EXPECT_FALSE(m_recorder->Holding());
  EXPECT_EQ(m_log, (Log{"destroy 1"}));
}

TEST_F(StateRecorderTest, DestructorDestroysEveryChangeExactlyOnce) {
  RecordStep("one", {"1a", "1b"});
  RecordStep("two", {"2"});
  m_recorder->Undo();
  m_recorder->Begin();
  m_recorder->Put(Change("p"));
  m_log.clear();
  m_recorder.reset();
  EXPECT_EQ(m_log, (Log{"destroy p", "destroy 2", "destroy 1b", "destroy 1a"}));
}

TEST_F(StateRecorderTest, DestroysThroughTheBaseClassAndKeepsTheEmptyThirdOperation) {
  int destroyed = 0;
  m_recorder->Begin();
  m_recorder->Put(new PlainChange(&destroyed));
  m_recorder->Put(new PlainChange(&destroyed));
  m_recorder->Accept("plain");  // the default OnAccept does nothing
  m_recorder->Undo();
  m_recorder->Redo();
  EXPECT_EQ(destroyed, 0);
  m_recorder.reset();
  EXPECT_EQ(destroyed, 2);
}

TEST_F(StateRecorderTest, KeepsEveryStepByDefault) {
  for (int i = 0; i < 1000; ++i) RecordStep("step", {std::to_string(i)});
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1000u);
  EXPECT_TRUE(m_log.empty());
}

TEST_F(StateRecorderTest, StepLimitDestroysTheOldestSteps) {
  m_recorder->SetMaxSteps(2);
  EXPECT_EQ(m_recorder->GetMaxSteps(), 2u);
  RecordStep("one", {"1"});
  RecordStep("two", {"2"});
  EXPECT_TRUE(m_log.empty());
  m_recorder->Begin();
  m_recorder->Put(Change("3"));
  m_recorder->Accept("three");
  EXPECT_EQ(m_log, (Log{"accept 3", "destroy 1"}));
  EXPECT_EQ(m_recorder->NumUndoSteps(), 2u);
  m_log.clear();
  m_recorder->Undo();
  m_recorder->Undo();
  m_recorder->Undo();  // the oldest step is gone
  EXPECT_EQ(m_log, (Log{"revert 3", "revert 2"}));
}

TEST_F(StateRecorderTest, LoweringTheLimitDropsOldestStepsAtOnce) {
  RecordStep("one", {"1"});
  RecordStep("two", {"2"});
  RecordStep("three", {"3"});
  m_recorder->SetMaxSteps(1);
  EXPECT_EQ(m_log, (Log{"destroy 1", "destroy 2"}));
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
  EXPECT_EQ(m_recorder->GetUndoName(), "three");
  m_log.clear();
  m_recorder->SetMaxSteps(0);  // unlimited again; nothing comes back
  EXPECT_TRUE(m_log.empty());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 1u);
}

TEST_F(StateRecorderTest, LimitAlsoHoldsWhenRedoRefillsTheHistory) {
  RecordStep("one", {"1"});
  RecordStep("two", {"2"});
  RecordStep("three", {"3"});
  m_recorder->Undo();
  m_recorder->Undo();
  m_recorder->SetMaxSteps(2);  // one undoable step, two redoable: nothing dropped yet
  m_log.clear();
  m_recorder->Redo();
  EXPECT_EQ(m_log, (Log{"apply 2"}));
  m_log.clear();
  m_recorder->Redo();
  EXPECT_EQ(m_log, (Log{"apply 3", "destroy 1"}));
  EXPECT_EQ(m_recorder->NumUndoSteps(), 2u);
}

TEST_F(StateRecorderTest, ChangesPutWhileUndoingAreNotRecorded) {
  m_recorder->Begin();
  CountingChange* change = Change("a");
  StateRecorder* recorder = m_recorder.get();
  Log* log = &m_log;
  change->SetOnRevert([recorder, log] { recorder->Put(new CountingChange("echo", log)); });
  m_recorder->Put(change);
  m_recorder->Accept("Edit");
  m_log.clear();
  m_recorder->Undo();
  EXPECT_EQ(m_log, (Log{"revert a", "destroy echo"}));
  EXPECT_TRUE(m_recorder->CanRedo());
  EXPECT_EQ(m_recorder->NumUndoSteps(), 0u);
}

TEST_F(StateRecorderTest, ClearFromInsideAnUndoDestroysEachChangeOnce) {
  RecordStep("one", {"1"});
  m_recorder->Begin();
  CountingChange* change = Change("a");
  StateRecorder* recorder = m_recorder.get();
  change->SetOnRevert([recorder] { recorder->Clear(); });
  m_recorder->Put(change);
  m_recorder->Accept("Edit");
  m_log.clear();
  m_recorder->Undo();
  // The step being undone survives the clear and becomes redoable; the rest is gone.
  EXPECT_EQ(m_log, (Log{"revert a", "destroy 1"}));
  EXPECT_EQ(m_recorder->NumUndoSteps(), 0u);
  EXPECT_EQ(m_recorder->NumRedoSteps(), 1u);
  m_log.clear();
  m_recorder.reset();
  EXPECT_EQ(m_log, (Log{"destroy a"}));
}

}  // namespace
}  // namespace Orlo
