#include <orlo/base/block/block_type.h>

#include <gtest/gtest.h>

namespace Orlo {
namespace {

TEST(BlockTypeTest, DefaultIsAllZero) {
  const BlockType type;
  EXPECT_EQ(type.class_id, 0u);
  EXPECT_EQ(type.super_class_id, 0u);
  EXPECT_EQ(type.sub_id, 0u);
}

TEST(BlockTypeTest, ConstructorStoresTheNumbersInOrder) {
  const BlockType type(300, 48, 16);
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 16u);
  BlockType assigned;
  assigned = type;
  EXPECT_EQ(assigned.class_id, 300u);
  EXPECT_EQ(assigned.super_class_id, 48u);
  EXPECT_EQ(assigned.sub_id, 16u);
}

TEST(BlockTypeTest, EqualityIgnoresTheClassId) {
  EXPECT_EQ(BlockType(105, 32, 16) == BlockType(999, 32, 16), 1);
  EXPECT_EQ(BlockType(105, 32, 16) != BlockType(999, 32, 16), 0);
  EXPECT_EQ(BlockType(105, 32, 16) == BlockType(105, 33, 16), 0);
  EXPECT_EQ(BlockType(105, 32, 16) == BlockType(105, 32, 17), 0);
  EXPECT_EQ(BlockType(105, 32, 16) != BlockType(105, 32, 17), 1);
}

}  // namespace
}  // namespace Orlo
