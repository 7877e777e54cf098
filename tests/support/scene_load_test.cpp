#include <orlo/support/scene_load.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/support/scene_save.h>

namespace Orlo {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(SceneLoadTest, NestedChunksNumbersAndStringsComeBackAsWritten) {
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteUInt32(3);
  save.WriteString("hello");
  save.EndChunk();
  save.BeginChunk(0x15);
  save.WriteDouble(2.5);
  save.EndChunk();
  save.EndChunk();

  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x05u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x10u);
  std::uint32_t count = 0;
  EXPECT_TRUE(load.ReadUInt32(count));
  EXPECT_EQ(count, 3u);
  std::string text;
  EXPECT_TRUE(load.ReadString(text));
  EXPECT_EQ(text, "hello");
  load.CloseChunk();
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x15u);
  double value = 0;
  EXPECT_TRUE(load.ReadDouble(value));
  EXPECT_EQ(value, 2.5);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
  EXPECT_TRUE(load.GetStatus().IsOk());
}

}  // namespace
}  // namespace Orlo
