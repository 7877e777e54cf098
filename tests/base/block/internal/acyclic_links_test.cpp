// Linking through AcyclicLinks does what MakeDependencyByID does after its cycle test: the
// store, the back reference, the code-2 event and the release of what the slot held.
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/internal/acyclic_links.h>

#include "tests/testing/test_blocks.h"

namespace Orlo::internal {
namespace {

using testing::Holder;
using testing::Journal;
using testing::RecordingListener;
using testing::TestBlock;

TEST(AcyclicLinksTest, LinksAsMakeDependencyByIDDoesAfterItsCycleTest) {
  Journal journal;
  auto* holder = new TestBlock("holder", 2, &journal);
  Holder scene(holder);
  auto* first = new TestBlock("first", 0, &journal);
  auto* second = new TestBlock("second", 0, &journal);
  RecordingListener listener;
  holder->AddBlockListener(&listener);

  AcyclicLinks::Link(holder, 1, first);
  EXPECT_EQ(holder->GetDependency(1), first);
  EXPECT_EQ(first->GetParentBlock(), holder);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 1);

  // Replacing releases the block the slot held, which nothing else holds.
  AcyclicLinks::Link(holder, 1, second);
  EXPECT_EQ(holder->GetDependency(1), second);
  EXPECT_EQ(journal.entries, std::vector<std::string>{"delete first"});
  holder->RemoveBlockListener(&listener);
}

}  // namespace
}  // namespace Orlo::internal
