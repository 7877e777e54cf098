#include <gtest/gtest.h>

#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/internal/library_classes.h>
#include <orlo/base/scene/node.h>

#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo::internal {
namespace {

// A host's class derived from one of the library's own: its calls may count.
class HostNode : public Node {
 public:
  HostNode() : Node(false) {}
  int PostLoad() override { return 1; }
};

TEST(LibraryClassesTest, TellsTheLibrarysOwnClassesFromClassesDerivedFromThem) {
  testing::ScopedBlock<Node> node(new Node(false));
  testing::ScopedBlock<BezierController> bezier(new BezierController());
  testing::ScopedBlock<HostNode> host_node(new HostNode());
  testing::ScopedBlock<testing::TestBlock> host_block(new testing::TestBlock("host", 0));
  EXPECT_TRUE(IsOfLibraryClass(*node));
  EXPECT_TRUE(IsOfLibraryClass(*bezier));
  EXPECT_FALSE(IsOfLibraryClass(*host_node));
  EXPECT_FALSE(IsOfLibraryClass(*host_block));
}

TEST(LibraryClassesTest, ListsTheBlocksWhoseRefreshDoesSomethingInTheirOrder) {
  testing::ScopedBlock<Node> node(new Node(false));
  testing::ScopedBlock<DataFloat> value(new DataFloat(0, 0.0, 1));
  testing::ScopedBlock<Transform3Controller> transform(new Transform3Controller(false));
  testing::ScopedBlock<DataTable> table(new DataTable());
  const auto refreshers =
      TableRefreshersIfAllOfLibraryClasses({transform.get(), value.get(), node.get(), table.get()});
  ASSERT_TRUE(refreshers.has_value());
  EXPECT_EQ(*refreshers, (std::vector<Block*>{transform.get(), node.get()}));
}

TEST(LibraryClassesTest, OneHostBlockAnywhereGivesNoList) {
  testing::ScopedBlock<Node> node(new Node(false));
  testing::ScopedBlock<testing::TestBlock> host_block(new testing::TestBlock("host", 0));
  EXPECT_FALSE(TableRefreshersIfAllOfLibraryClasses({node.get(), host_block.get()}).has_value());
  EXPECT_TRUE(TableRefreshersIfAllOfLibraryClasses({}).has_value());
}

}  // namespace
}  // namespace Orlo::internal
