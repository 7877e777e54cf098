#include <orlo/support/scene_load.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/filesystem.hpp>

#include <orlo/support/scene_save.h>

// The byte arrays below are laid out by hand, one chunk header or field per line.
// clang-format off
namespace Orlo {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ::testing::ElementsAre;

// A fresh directory for the files of one test, removed with everything in it afterwards.
class SceneLoadFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_dir = boost::filesystem::temp_directory_path() /
            boost::filesystem::unique_path("orlo-scene-load-%%%%-%%%%-%%%%");
    boost::filesystem::create_directories(m_dir);
  }
  void TearDown() override { boost::filesystem::remove_all(m_dir); }

  std::string PathOf(const std::string& name) const { return (m_dir / name).string(); }

  void WriteFile(const std::string& path, const Bytes& bytes) const {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
  }

  boost::filesystem::path m_dir;
};

// ---- A small scene-like file and a reader that walks all of it ----

// | 0x05 scene                                                       |
// |   0x10 header: uint32 block count 3                              |
// |   0x15 block (x3)                                                |
// |     0x05 info: 4 x uint32                                        |
// |     0x20 data: string name, double, then 0x30 { uint64 }         |
// |     0x10 dependencies: int32 n, n x int32                        |
// | 0x06 trailer: string                                             |
Bytes MakeSceneLikeFile() {
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteUInt32(3);
  save.EndChunk();
  for (std::uint32_t block = 0; block < 3; ++block) {
    save.BeginChunk(0x15);
    save.BeginChunk(0x05);
    save.WriteUInt32(100 + block);
    save.WriteUInt32(0);
    save.WriteUInt32(7);
    save.WriteUInt32(block);
    save.EndChunk();
    save.BeginChunk(0x20);
    save.WriteString("block " + std::to_string(block));
    save.WriteDouble(block * 1.5);
    save.BeginChunk(0x30);
    save.WriteUInt64(0x1122334455667788ULL + block);
    save.EndChunk();
    save.EndChunk();
    save.BeginChunk(0x10);
    save.WriteInt32(static_cast<std::int32_t>(block));
    for (std::uint32_t i = 0; i < block; ++i) save.WriteInt32(static_cast<std::int32_t>(i));
    save.EndChunk();
    save.EndChunk();
  }
  save.EndChunk();
  save.BeginChunk(0x06);
  save.WriteString("the end");
  save.EndChunk();
  return save.TakeBytes();
}

// Walks a file shaped like MakeSceneLikeFile the way a scene reader does, reading every
// value, and returns a summary of what it read. Never gives up early: after an error it
// keeps calling, as careless readers do, until the walk reaches the top again.
std::string WalkSceneLikeFile(SceneLoad& load) {
  std::string summary;
  for (int steps = 0; steps < 10000; ++steps) {
    const int result = load.OpenChunk();
    if (result == SceneLoad::kChunkOpened) {
      const unsigned id = load.CurChunkID();
      const int depth = load.Depth();
      summary += "<" + std::to_string(id);
      bool leaf = true;
      if (depth == 1 && id == 0x05) {
        leaf = false;
      } else if (depth == 2 && id == 0x10) {
        std::uint32_t count = 0;
        load.ReadUInt32(count);
        summary += " n" + std::to_string(count);
      } else if (depth == 2 && id == 0x15) {
        leaf = false;
      } else if (depth == 3 && id == 0x05) {
        for (int i = 0; i < 4; ++i) {
          std::uint32_t value = 0;
          load.ReadUInt32(value);
          summary += " " + std::to_string(value);
        }
      } else if (depth == 3 && id == 0x20) {
        std::string name;
        double value = 0;
        load.ReadString(name);
        load.ReadDouble(value);
        summary += " " + name + " " + std::to_string(value);
        leaf = false;
      } else if (depth == 4 && id == 0x30) {
        std::uint64_t value = 0;
        load.ReadUInt64(value);
        summary += " " + std::to_string(value);
      } else if (depth == 3 && id == 0x10) {
        std::int32_t count = 0;
        load.ReadInt32(count);
        if (count < 0 || static_cast<std::uint64_t>(count) * 4 > load.BytesLeftInChunk()) {
          load.ReportCorruption("dependency count " + std::to_string(count) +
                                " does not fit its chunk");
        } else {
          std::vector<std::int32_t> ids(static_cast<std::size_t>(count));
          for (std::int32_t& dependency : ids) load.ReadInt32(dependency);
          summary += " d" + std::to_string(ids.size());
        }
      } else if (depth == 1 && id == 0x06) {
        std::string text;
        load.ReadString(text);
        summary += " " + text;
      }
      if (leaf) {
        load.CloseChunk();
        summary += ">";
      }
    } else if (result == SceneLoad::kEndOfChunk) {
      if (load.Depth() == 0) return summary;
      load.CloseChunk();
      summary += ">";
    } else {
      // Sticky error: every further call must stay harmless.
      std::uint32_t value = 1;
      EXPECT_FALSE(load.ReadUInt32(value));
      EXPECT_EQ(value, 0u);
      while (load.Depth() > 0) load.CloseChunk();
      EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
      return summary + "!";
    }
  }
  ADD_FAILURE() << "the walk did not end";
  return summary;
}

// Walks any bytes as if every chunk held only chunks, to the bottom, until the reader stops.
// Returns the number of calls made, to show that the walk ends.
int WalkEverythingAsChunks(SceneLoad& load) {
  int calls = 0;
  while (calls < 100000) {
    ++calls;
    const int result = load.OpenChunk();
    if (result == SceneLoad::kChunkOpened) continue;
    if (result == SceneLoad::kEndOfChunk && load.Depth() > 0) {
      load.CloseChunk();
      continue;
    }
    break;
  }
  return calls;
}

// ---- Round trips ----

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
  EXPECT_EQ(load.CurChunkID(), 0u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x05u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x10u);
  EXPECT_EQ(load.Depth(), 2);
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
  EXPECT_EQ(load.CurChunkID(), 0x15u);  // the chunk opened last, even once closed
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  load.CloseChunk();
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
  EXPECT_TRUE(load.GetStatus().IsOk());
}

void WriteEveryNumber(SceneSave& save) {
  save.BeginChunk(0x20);
  save.WriteUInt8(0);
  save.WriteUInt8(255);
  save.WriteInt32(std::numeric_limits<std::int32_t>::min());
  save.WriteInt32(std::numeric_limits<std::int32_t>::max());
  save.WriteInt32(-1);
  save.WriteUInt32(0xFFFFFFFFu);
  save.WriteUInt64(0xFFFFFFFFFFFFFFFFULL);
  save.WriteUInt64(0x8000000000000001ULL);
  save.WriteFloat(-0.0f);
  save.WriteFloat(std::numeric_limits<float>::infinity());
  save.WriteFloat(std::numeric_limits<float>::denorm_min());
  save.WriteFloat(std::numeric_limits<float>::quiet_NaN());
  save.WriteDouble(-std::numeric_limits<double>::infinity());
  save.WriteDouble(std::numeric_limits<double>::denorm_min());
  save.WriteDouble(0.1);
  save.WriteDouble(std::numeric_limits<double>::quiet_NaN());
  save.EndChunk();
}

template <typename T>
bool SameBits(T a, T b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

void ReadEveryNumber(SceneLoad& load) {
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint8_t u8 = 1;
  EXPECT_TRUE(load.ReadUInt8(u8));
  EXPECT_EQ(u8, 0);
  EXPECT_TRUE(load.ReadUInt8(u8));
  EXPECT_EQ(u8, 255);
  std::int32_t i32 = 0;
  EXPECT_TRUE(load.ReadInt32(i32));
  EXPECT_EQ(i32, std::numeric_limits<std::int32_t>::min());
  EXPECT_TRUE(load.ReadInt32(i32));
  EXPECT_EQ(i32, std::numeric_limits<std::int32_t>::max());
  EXPECT_TRUE(load.ReadInt32(i32));
  EXPECT_EQ(i32, -1);
  std::uint32_t u32 = 0;
  EXPECT_TRUE(load.ReadUInt32(u32));
  EXPECT_EQ(u32, 0xFFFFFFFFu);
  std::uint64_t u64 = 0;
  EXPECT_TRUE(load.ReadUInt64(u64));
  EXPECT_EQ(u64, 0xFFFFFFFFFFFFFFFFULL);
  EXPECT_TRUE(load.ReadUInt64(u64));
  EXPECT_EQ(u64, 0x8000000000000001ULL);
  float f = 1;
  EXPECT_TRUE(load.ReadFloat(f));
  EXPECT_TRUE(SameBits(f, -0.0f));
  EXPECT_TRUE(load.ReadFloat(f));
  EXPECT_EQ(f, std::numeric_limits<float>::infinity());
  EXPECT_TRUE(load.ReadFloat(f));
  EXPECT_EQ(f, std::numeric_limits<float>::denorm_min());
  EXPECT_TRUE(load.ReadFloat(f));
  EXPECT_TRUE(SameBits(f, std::numeric_limits<float>::quiet_NaN()));
  double d = 1;
  EXPECT_TRUE(load.ReadDouble(d));
  EXPECT_EQ(d, -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(load.ReadDouble(d));
  EXPECT_EQ(d, std::numeric_limits<double>::denorm_min());
  EXPECT_TRUE(load.ReadDouble(d));
  EXPECT_EQ(d, 0.1);
  EXPECT_TRUE(load.ReadDouble(d));
  EXPECT_TRUE(SameBits(d, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(load.BytesLeftInChunk(), 0u);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  load.CloseChunk();
  EXPECT_FALSE(load.HasError());
}

TEST(SceneLoadTest, EveryNumberTypeComesBackBitForBitFromMemory) {
  SceneSave save;
  WriteEveryNumber(save);
  SceneLoad load(save.TakeBytes());
  ReadEveryNumber(load);
}

TEST_F(SceneLoadFileTest, EveryNumberTypeComesBackBitForBitFromAFile) {
  const std::string path = PathOf("numbers.scene");
  {
    Status status;
    SceneSave save(path.c_str(), &status);
    ASSERT_TRUE(status.IsOk());
    WriteEveryNumber(save);
    ASSERT_TRUE(save.Finish().IsOk());
  }
  Status status;
  SceneLoad load(path.c_str(), &status);
  ASSERT_TRUE(status.IsOk());
  ReadEveryNumber(load);
}

TEST_F(SceneLoadFileTest, EmptyAndLongStringsComeBackWholeFromAFileAndFromMemory) {
  std::string long_text(300000, 'x');
  for (std::size_t i = 0; i < long_text.size(); i += 7) long_text[i] = static_cast<char>(i);
  const std::string path = PathOf("strings.scene");
  {
    Status status;
    SceneSave save(path.c_str(), &status);
    save.BeginChunk(1);
    save.WriteString("");
    save.WriteString(long_text);
    save.WriteString("after");
    save.EndChunk();
  }
  SceneSave memory;
  memory.BeginChunk(1);
  memory.WriteString("");
  memory.WriteString(long_text);
  memory.WriteString("after");
  memory.EndChunk();

  Status status;
  SceneLoad from_file(path.c_str(), &status);
  SceneLoad from_memory(memory.TakeBytes());
  for (SceneLoad* load : {&from_file, &from_memory}) {
    ASSERT_EQ(load->OpenChunk(), SceneLoad::kChunkOpened);
    std::string text = "not empty";
    EXPECT_TRUE(load->ReadString(text));
    EXPECT_EQ(text, "");
    EXPECT_TRUE(load->ReadString(text));
    EXPECT_TRUE(text == long_text);
    EXPECT_TRUE(load->ReadString(text));
    EXPECT_EQ(text, "after");
    load->CloseChunk();
    EXPECT_EQ(load->OpenChunk(), SceneLoad::kEndOfChunk);
    EXPECT_FALSE(load->HasError());
  }
}

TEST_F(SceneLoadFileTest, StringsOfEverySizeReadBackAcrossTheReadWindowEdges) {
  // Sizes from empty to larger than the reader's window, so that strings start, end and
  // lie across the window's edges and the largest go straight to the caller's memory.
  std::vector<std::string> texts;
  for (std::size_t size = 0; size < 200000; size = size * 3 / 2 + 1) {
    texts.emplace_back(size, static_cast<char>('a' + texts.size() % 26));
  }
  const std::string path = PathOf("sizes.scene");
  {
    Status status;
    SceneSave save(path.c_str(), &status);
    for (const std::string& text : texts) {
      save.BeginChunk(0x20);
      save.WriteString(text);
      save.WriteUInt8(0x7E);
      save.EndChunk();
    }
    ASSERT_TRUE(save.Finish().IsOk());
  }
  Status status;
  SceneLoad load(path.c_str(), &status);
  for (const std::string& expected : texts) {
    ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    std::string text;
    EXPECT_TRUE(load.ReadString(text));
    EXPECT_TRUE(text == expected) << "size " << expected.size();
    std::uint8_t mark = 0;
    EXPECT_TRUE(load.ReadUInt8(mark));
    EXPECT_EQ(mark, 0x7E);
    load.CloseChunk();
  }
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
}

TEST(SceneLoadTest, ANullPathFailsLikeAMissingFile) {
  Status status;
  SceneLoad load(nullptr, &status);
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "SceneLoad : Cannot open '' for reading: no path given.");
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
}

TEST_F(SceneLoadFileTest, AFileOfManySmallChunksReadsBackAcrossTheReadWindow) {
  const std::string path = PathOf("many.scene");
  const std::uint32_t count = 20000;  // 20000 x 20 bytes: several 64 KiB windows
  {
    Status status;
    SceneSave save(path.c_str(), &status);
    save.BeginChunk(0x05);
    for (std::uint32_t i = 0; i < count; ++i) {
      save.BeginChunk(0x15);
      save.WriteUInt32(i);
      save.WriteUInt32(~i);
      save.EndChunk();
    }
    save.EndChunk();
    ASSERT_TRUE(save.Finish().IsOk());
  }
  Status status;
  SceneLoad load(path.c_str(), &status);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint32_t seen = 0;
  while (load.OpenChunk() == SceneLoad::kChunkOpened) {
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    load.ReadUInt32(a);
    load.ReadUInt32(b);
    if (a != seen || b != ~seen) break;
    ++seen;
    load.CloseChunk();
  }
  EXPECT_EQ(seen, count);
  EXPECT_FALSE(load.HasError());
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
}

TEST(SceneLoadTest, ReadDeliversRawBytesAsWritten) {
  SceneSave save;
  save.BeginChunk(9);
  unsigned written = 0;
  save.Write("\x01\x02\x03", 3, written);
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint8_t bytes[3] = {};
  unsigned read = 0;
  EXPECT_TRUE(load.Read(bytes, 3, read));
  EXPECT_EQ(read, 3u);
  EXPECT_THAT(bytes, ElementsAre(1, 2, 3));
  EXPECT_TRUE(load.Read(bytes, 0, read));
  EXPECT_EQ(read, 0u);
}

// ---- Skipping ----

TEST(SceneLoadTest, ClosingAChunkSkipsItsUnreadRestAndItsChildren) {
  SceneSave save;
  save.BeginChunk(0x01);
  save.BeginChunk(0x02);
  save.WriteUInt32(1);
  save.WriteUInt32(2);
  save.BeginChunk(0x03);
  save.WriteUInt32(3);
  save.EndChunk();
  save.EndChunk();
  save.BeginChunk(0x04);
  save.WriteUInt32(4);
  save.EndChunk();
  save.EndChunk();
  save.BeginChunk(0x05);
  save.WriteUInt32(5);
  save.EndChunk();

  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint32_t value = 0;
  load.ReadUInt32(value);
  EXPECT_EQ(value, 1u);
  load.CloseChunk();  // skips the second number and chunk 0x03
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x04u);
  load.ReadUInt32(value);
  EXPECT_EQ(value, 4u);
  load.CloseChunk();
  load.CloseChunk();
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x05u);
  load.ReadUInt32(value);
  EXPECT_EQ(value, 5u);
  EXPECT_FALSE(load.HasError());
}

TEST_F(SceneLoadFileTest, ClosingALargeUnreadChunkSkipsItInTheFile) {
  const std::string path = PathOf("skip.scene");
  {
    Status status;
    SceneSave save(path.c_str(), &status);
    save.BeginChunk(0x01);
    const Bytes big(500000, 0xEE);
    unsigned written = 0;
    save.Write(big.data(), static_cast<unsigned>(big.size()), written);
    save.EndChunk();
    save.BeginChunk(0x02);
    save.WriteUInt32(42);
    save.EndChunk();
  }
  Status status;
  SceneLoad load(path.c_str(), &status);
  EXPECT_EQ(load.BytesLeftInFile(), 12u + 500000u + 12u + 4u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint8_t first = 0;
  load.ReadUInt8(first);
  EXPECT_EQ(first, 0xEE);
  load.CloseChunk();
  EXPECT_EQ(load.BytesLeftInFile(), 16u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x02u);
  std::uint32_t value = 0;
  EXPECT_TRUE(load.ReadUInt32(value));
  EXPECT_EQ(value, 42u);
  EXPECT_FALSE(load.HasError());
}

// ---- End of chunk and the top of the file ----

TEST(SceneLoadTest, AnEmptyFileEndsAtOnceWithoutAnError) {
  SceneLoad load(Bytes{});
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_FALSE(load.HasError());
}

TEST(SceneLoadTest, TheEndOfTheFileAtTheTopIsTheEndOfChunkResult) {
  // | id 0x0005 | length 0 |
  const Bytes bytes = {0x05, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);  // the empty chunk has no child
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);  // not 1, not 0
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
}

TEST(SceneLoadTest, CloseAfterAnAttemptThatOpenedNothingClosesTheEnclosingChunk) {
  // | 0x0A { 0x0B { } } | 0x0C { } |
  const Bytes bytes = {0x0A, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0,  // | id 0x0A | length 12 |
                       0x0B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,   // |   id 0x0B | length 0 |
                       0x0C, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // | id 0x0C | length 0 |
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  load.CloseChunk();  // closes 0x0B, which enclosed the attempt
  EXPECT_EQ(load.Depth(), 1);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  load.CloseChunk();  // closes 0x0A
  EXPECT_EQ(load.Depth(), 0);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0Cu);
  EXPECT_FALSE(load.HasError());
}

TEST(SceneLoadTest, CloseChunkWithNoChunkOpenDoesNothing) {
  // | id 0x07 | length 1 | 9 |
  const Bytes bytes = {0x07, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 9};
  SceneLoad load(bytes);
  load.CloseChunk();
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_EQ(load.BytesLeftInChunk(), 13u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint8_t value = 0;
  load.ReadUInt8(value);
  EXPECT_EQ(value, 9);
  EXPECT_FALSE(load.HasError());
}

TEST(SceneLoadTest, BytesLeftCountTheInnermostChunkAndTheFile) {
  // | id 1 | length 20 | 4 bytes | id 2 | length 4 | 4 bytes | 3 bytes after |
  const Bytes bytes = {1, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4,
                       2, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 5, 6, 7, 8, 0xA, 0xB, 0xC};
  SceneLoad load(bytes);
  EXPECT_EQ(load.BytesLeftInChunk(), 35u);
  EXPECT_EQ(load.BytesLeftInFile(), 35u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.BytesLeftInChunk(), 20u);
  EXPECT_EQ(load.BytesLeftInFile(), 23u);
  std::uint32_t value = 0;
  load.ReadUInt32(value);
  EXPECT_EQ(load.BytesLeftInChunk(), 16u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.BytesLeftInChunk(), 4u);
  EXPECT_EQ(load.BytesLeftInFile(), 7u);
  load.CloseChunk();
  load.CloseChunk();
  EXPECT_EQ(load.BytesLeftInChunk(), 3u);
  EXPECT_EQ(load.BytesLeftInFile(), 3u);
}

TEST(SceneLoadTest, AtTheTopOfTheFileReadsTakeTheFileBytes) {
  const Bytes bytes = {1, 2, 3};
  SceneLoad load(bytes);
  std::uint8_t value = 0;
  EXPECT_TRUE(load.ReadUInt8(value));
  EXPECT_EQ(value, 1);
  std::uint32_t number = 7;
  EXPECT_FALSE(load.ReadUInt32(number));
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "file: read of 4 bytes at offset 1 finds only 2 left in the file");
}

// ---- Corrupt framing ----

TEST(SceneLoadTest, ATopLevelChunkLongerThanTheFileIsAnError) {
  // | id 0x0015 | length 0xffffffff | 4 bytes |
  const Bytes bytes = {0x15, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 1, 2, 3, 4};
  SceneLoad load(bytes);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_EQ(load.GetStatus().GetCode(), 2);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0015 at offset 0: length 4294967295 exceeds the 4 bytes left in the file");
}

TEST(SceneLoadTest, AChunkLongerThanItsParentIsAnErrorEvenWhenTheFileHoldsMore) {
  // | id 0x0005 | length 20 | id 0x0015 | length 9 | 8 bytes | 16 more bytes in the file |
  Bytes bytes = {0x05, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0,
                 0x15, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  bytes.resize(bytes.size() + 16, 0);
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.Depth(), 1);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0015 at offset 12: length 9 exceeds the 8 bytes left in its parent");
}

TEST(SceneLoadTest, ALengthThatWouldWrapAroundIsAnError) {
  // | id 0x0001 | length 0xfffffffffffffff4 |   (offset + 12 + length wraps to 0)
  const Bytes bytes = {0x01, 0, 0, 0, 0xF4, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  SceneLoad load(bytes);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0001 at offset 0: length 18446744073709551604 exceeds the 0 bytes left "
            "in the file");
}

TEST(SceneLoadTest, AHeaderCutShortAtTheTopIsAnError) {
  // | id 0x0001 | length 0 | id 0x02 + 1 byte of length |
  const Bytes bytes = {0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x02, 0, 0, 0, 0};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "file: chunk header at offset 12 is cut short: 5 of its 12 bytes are left");
}

TEST(SceneLoadTest, AHeaderCutShortInsideAChunkIsAnError) {
  // | id 0x0005 | length 5 | 5 bytes: too few for a header |
  const Bytes bytes = {0x05, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0x10, 0, 0, 0, 1};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0005 at offset 0: chunk header at offset 12 is cut short: 5 of its 12 "
            "bytes are left");
}

TEST(SceneLoadTest, NestingDeeperThanTheLimitIsAnError) {
  // | id 1 | length 36 | id 2 | length 24 | id 3 | length 12 | id 4 | length 0 |
  const Bytes bytes = {1, 0, 0, 0, 36, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 24, 0, 0, 0, 0, 0, 0, 0,
                       3, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0};
  SceneLoadLimits limits;
  limits.max_depth = 3;
  SceneLoad load(bytes, limits);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.Depth(), 3);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0004 at offset 36: nesting depth 4 exceeds the limit of 3");
}

TEST(SceneLoadTest, TheDefaultLimitAllowsSixtyFourLevelsAndNoMore) {
  SceneSave save;
  for (int level = 0; level < 65; ++level) save.BeginChunk(static_cast<unsigned>(level));
  const Bytes bytes = save.TakeBytes();
  SceneLoad load(bytes);
  for (int level = 0; level < 64; ++level) {
    ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened) << "level " << level;
  }
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0040 at offset 768: nesting depth 65 exceeds the limit of 64");
}

// ---- Strings ----

TEST(SceneLoadTest, AStringLengthOfFourGigabytesIsRefusedWithoutAllocating) {
  // | id 0x0020 | length 7 | string length 0xffffffff | "abc" |
  const Bytes bytes = {0x20, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c'};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::string text = "previous";
  EXPECT_FALSE(load.ReadString(text));
  EXPECT_EQ(text, "");
  EXPECT_EQ(text.capacity() < 1000u, true);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0020 at offset 0: string of 4294967295 bytes at offset 12 exceeds the 3 "
            "bytes left in the chunk");
}

TEST(SceneLoadTest, AStringLongerThanTheLimitIsRefusedAndOneAtTheLimitIsRead) {
  // | id 0x0020 | length 17 | "abcd" | "hello" |
  const Bytes bytes = {0x20, 0, 0, 0, 17, 0, 0, 0, 0, 0, 0, 0, 4,   0,   0,   0,   'a',
                       'b',  'c', 'd', 5, 0, 0, 0, 'h', 'e', 'l', 'l', 'o'};
  SceneLoadLimits limits;
  limits.max_string_bytes = 4;
  SceneLoad load(bytes, limits);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::string text;
  EXPECT_TRUE(load.ReadString(text));
  EXPECT_EQ(text, "abcd");
  EXPECT_FALSE(load.ReadString(text));
  EXPECT_EQ(text, "");
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0020 at offset 0: string of 5 bytes at offset 20 exceeds the limit of 4 "
            "bytes");
}

TEST(SceneLoadTest, AStringWhoseLengthIsCutShortIsAnError) {
  // | id 0x0020 | length 2 | 2 bytes of a string length |
  const Bytes bytes = {0x20, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 1, 0};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::string text = "x";
  EXPECT_FALSE(load.ReadString(text));
  EXPECT_EQ(text, "");
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0020 at offset 0: read of 4 bytes at offset 12 finds only 2 left in the "
            "chunk");
}

// ---- Reads past the end ----

TEST(SceneLoadTest, AShortReadDeliversWhatThereIsAndFillsTheRestWithZeros) {
  // | id 0x0001 | length 2 | 0x11 0x22 | 0x33 (outside the chunk) |
  const Bytes bytes = {0x01, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0x11, 0x22, 0x33};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint8_t buffer[8];
  std::memset(buffer, 0xAA, sizeof(buffer));
  unsigned read = 99;
  EXPECT_FALSE(load.Read(buffer, 8, read));
  EXPECT_EQ(read, 2u);
  EXPECT_THAT(buffer, ElementsAre(0x11, 0x22, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(load.GetStatus().GetCode(), 2);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0001 at offset 0: read of 8 bytes at offset 12 finds only 2 left in the "
            "chunk");
  std::memset(buffer, 0xAA, sizeof(buffer));
  EXPECT_FALSE(load.Read(buffer, 4, read));
  EXPECT_EQ(read, 0u);
  EXPECT_THAT(buffer, ElementsAre(0, 0, 0, 0, 0xAA, 0xAA, 0xAA, 0xAA));
}

TEST(SceneLoadTest, ANumberReadPastTheChunkIsZero) {
  // | id 0x0001 | length 3 | 3 bytes |
  const Bytes bytes = {0x01, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0x7F, 0x7F, 0x7F};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint32_t u32 = 77;
  EXPECT_FALSE(load.ReadUInt32(u32));
  EXPECT_EQ(u32, 0u);
  std::uint8_t u8 = 1;
  std::int32_t i32 = 1;
  std::uint64_t u64 = 1;
  float f = 1;
  double d = 1;
  EXPECT_FALSE(load.ReadUInt8(u8));
  EXPECT_FALSE(load.ReadInt32(i32));
  EXPECT_FALSE(load.ReadUInt64(u64));
  EXPECT_FALSE(load.ReadFloat(f));
  EXPECT_FALSE(load.ReadDouble(d));
  EXPECT_EQ(u8, 0);
  EXPECT_EQ(i32, 0);
  EXPECT_EQ(u64, 0u);
  EXPECT_EQ(f, 0.0f);
  EXPECT_EQ(d, 0.0);
}

TEST(SceneLoadTest, ReadsNeverLeaveTheInnermostChunk) {
  // | id 1 | length 13 | id 2 | length 1 | 0x01 | then 0x02 in chunk 1 only |
  const Bytes bytes = {1, 0, 0, 0, 14, 0, 0, 0, 0, 0, 0, 0,
                       2, 0, 0, 0, 1,  0, 0, 0, 0, 0, 0, 0, 0x01, 0x02};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::uint8_t buffer[2] = {0xAA, 0xAA};
  unsigned read = 0;
  EXPECT_FALSE(load.Read(buffer, 2, read));
  EXPECT_EQ(read, 1u);
  EXPECT_THAT(buffer, ElementsAre(0x01, 0));
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0002 at offset 12: read of 2 bytes at offset 24 finds only 1 left in the "
            "chunk");
}

// ---- Sticky errors and reported corruption ----

TEST(SceneLoadTest, TheFirstErrorIsStickyAndLaterCallsAreHarmless) {
  // | id 1 | length 0xff (too long) |  followed by a valid | id 2 | length 4 | 4 bytes |
  const Bytes bytes = {1, 0, 0, 0, 0xFF, 0, 0, 0, 0, 0, 0, 0,
                       2, 0, 0, 0, 4,    0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kError);
  const std::string first = load.GetStatus().GetMessage();
  EXPECT_EQ(first, "chunk 0x0001 at offset 0: length 255 exceeds the 16 bytes left in the file");
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.BytesLeftInChunk(), 0u);
  EXPECT_EQ(load.BytesLeftInFile(), 0u);
  std::uint32_t value = 5;
  EXPECT_FALSE(load.ReadUInt32(value));
  EXPECT_EQ(value, 0u);
  std::string text = "x";
  EXPECT_FALSE(load.ReadString(text));
  EXPECT_EQ(text, "");
  load.ReportCorruption("something else");
  load.CloseChunk();
  EXPECT_EQ(load.GetStatus().GetMessage(), first);
  EXPECT_TRUE(load.HasError());
}

TEST(SceneLoadTest, CloseChunkStillUnwindsAfterAnError) {
  // | id 1 | length 24 | id 2 | length 12 | id 3 | length 0xff |
  const Bytes bytes = {1, 0, 0, 0, 24, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 12,   0, 0, 0,
                       0, 0, 0, 0, 3,  0, 0, 0, 0xFF, 0, 0, 0, 0, 0, 0, 0};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_EQ(load.Depth(), 2);
  load.CloseChunk();
  EXPECT_EQ(load.Depth(), 1);
  load.CloseChunk();
  EXPECT_EQ(load.Depth(), 0);
  load.CloseChunk();
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
}

TEST(SceneLoadTest, ReportCorruptionRecordsAnErrorAtTheCurrentPlace) {
  // | id 0x0010 | length 8 | count 9 | 4 bytes |
  const Bytes bytes = {0x10, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 9, 0, 0, 0, 1, 2, 3, 4};
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::int32_t count = 0;
  load.ReadInt32(count);
  EXPECT_FALSE(load.HasError());
  load.ReportCorruption("dependency count 9 does not fit its chunk");
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(load.GetStatus().GetCode(), 2);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0010 at offset 0: dependency count 9 does not fit its chunk (reported at "
            "offset 16)");
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
}

TEST(SceneLoadTest, ReportCorruptionAtTheTopNamesTheFile) {
  SceneLoad load(Bytes{1, 2});
  load.ReportCorruption("no scene here");
  EXPECT_EQ(load.GetStatus().GetMessage(), "file: no scene here (reported at offset 0)");
}

// ---- Truncated and damaged files ----

TEST(SceneLoadTest, EveryTruncationOfAValidFileIsWalkedSafelyAndReportedWhenInsideAChunk) {
  const Bytes whole = MakeSceneLikeFile();
  SceneLoad full_load(whole);
  const std::string full = WalkSceneLikeFile(full_load);
  ASSERT_FALSE(full_load.HasError()) << full_load.GetStatus().GetMessage();
  ASSERT_NE(full.find("<6 the end>"), std::string::npos) << full;
  ASSERT_NE(full.find("block 2"), std::string::npos) << full;

  // Cuts at a boundary between top-level chunks leave a shorter but valid file.
  const std::size_t scene_end = whole.size() - (12 + 4 + 7);
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    SceneLoad load(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)));
    const std::string summary = WalkSceneLikeFile(load);
    const bool clean = cut == 0 || cut == scene_end || cut == whole.size();
    EXPECT_EQ(load.HasError(), !clean) << "cut at " << cut << ": " << summary;
    EXPECT_EQ(load.GetStatus().GetCode(), clean ? 0 : 2) << "cut at " << cut;
    EXPECT_EQ(full.compare(0, summary.size() - (clean ? 0 : 1), summary, 0,
                           summary.size() - (clean ? 0 : 1)),
              0)
        << "cut at " << cut << " read something the whole file does not hold: " << summary;
  }
}

TEST(SceneLoadTest, EveryCutInsideTheSceneChunkIsFoundByTheChunkThatCrossesIt) {
  // The scene chunk is cut short and its length made to match the cut, as a writer that
  // stopped early and fixed up only the outer chunk would leave it: the chunks inside now
  // run past their parent, at every depth.
  const Bytes whole = MakeSceneLikeFile();
  SceneLoad full_load(whole);
  const std::string full = WalkSceneLikeFile(full_load);

  // Offsets where a child of the scene chunk starts or ends: cuts there leave valid files.
  std::vector<std::size_t> boundaries = {12};
  SceneLoad probe(whole);
  ASSERT_EQ(probe.OpenChunk(), SceneLoad::kChunkOpened);
  while (probe.OpenChunk() == SceneLoad::kChunkOpened) {
    probe.CloseChunk();
    boundaries.push_back(whole.size() - static_cast<std::size_t>(probe.BytesLeftInFile()));
  }
  ASSERT_EQ(boundaries.size(), 5u);  // the header and three blocks

  const std::size_t scene_end = boundaries.back();
  for (std::size_t cut = 12; cut <= scene_end; ++cut) {
    Bytes bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
    const std::uint64_t length = cut - 12;
    for (int i = 0; i < 8; ++i) bytes[4 + i] = static_cast<std::uint8_t>(length >> (8 * i));
    SceneLoad load(bytes);
    const std::string summary = WalkSceneLikeFile(load);
    const bool clean =
        std::find(boundaries.begin(), boundaries.end(), cut) != boundaries.end();
    EXPECT_EQ(load.HasError(), !clean) << "cut at " << cut << ": " << summary;
    const std::size_t compared = summary.size() - (clean ? 1 : 2);  // without "!" and ">"
    EXPECT_EQ(full.compare(0, compared, summary, 0, compared), 0)
        << "cut at " << cut << " read something the whole file does not hold: " << summary;
  }
}

TEST_F(SceneLoadFileTest, EveryTruncationOfAValidFileOnDiskIsWalkedSafely) {
  const Bytes whole = MakeSceneLikeFile();
  const std::size_t scene_end = whole.size() - (12 + 4 + 7);
  const std::string path = PathOf("cut.scene");
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    WriteFile(path, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)));
    Status status;
    SceneLoad load(path.c_str(), &status);
    ASSERT_TRUE(status.IsOk());
    WalkSceneLikeFile(load);
    const bool clean = cut == 0 || cut == scene_end || cut == whole.size();
    EXPECT_EQ(load.HasError(), !clean) << "cut at " << cut;
  }
}

TEST(SceneLoadTest, EveryDamagedByteOfAValidFileIsWalkedSafely) {
  const Bytes whole = MakeSceneLikeFile();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (std::uint8_t damage : {std::uint8_t{0x00}, std::uint8_t{0xFF}, std::uint8_t{0x80}}) {
      Bytes bytes = whole;
      bytes[at] = damage;
      SceneLoad structured(bytes);
      WalkSceneLikeFile(structured);
      SceneLoad blind(bytes);
      EXPECT_LT(WalkEverythingAsChunks(blind), 100000) << "damage at " << at;
    }
  }
}

TEST(SceneLoadTest, RandomBytesAreWalkedSafely) {
  std::mt19937 random(12345);
  for (int round = 0; round < 2000; ++round) {
    Bytes bytes(random() % 200);
    for (std::uint8_t& byte : bytes) {
      // Mostly small values, so that plausible lengths and nesting occur.
      byte = static_cast<std::uint8_t>(random() % 4 == 0 ? random() : random() % 24);
    }
    SceneLoad load(bytes);
    EXPECT_LT(WalkEverythingAsChunks(load), 100000);
    if (load.HasError()) {
      EXPECT_EQ(load.GetStatus().GetCode(), 2);
      EXPECT_FALSE(load.GetStatus().GetMessage().empty());
    }
  }
}

// ---- Opening files ----

TEST_F(SceneLoadFileTest, AMissingFileFailsWithCodeTwoAndActsAsAnError) {
  const std::string path = PathOf("missing.scene");
  Status status;
  SceneLoad load(path.c_str(), &status);
  const std::string message =
      "SceneLoad : Cannot open '" + path + "' for reading: No such file or directory.";
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), message);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kError);
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(load.GetStatus().GetMessage(), message);
  std::uint32_t value = 3;
  EXPECT_FALSE(load.ReadUInt32(value));
  EXPECT_EQ(value, 0u);
}

TEST_F(SceneLoadFileTest, ADirectoryCannotBeOpenedForReading) {
  Status status;
  SceneLoad load(m_dir.string().c_str(), &status);
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneLoad : Cannot open '" + m_dir.string() + "' for reading: Is a directory.");
}

TEST_F(SceneLoadFileTest, AFailedOpenWithoutAStatusIsStillRecorded) {
  SceneLoad load(PathOf("missing.scene").c_str(), nullptr);
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(load.GetStatus().GetCode(), 2);
}

TEST_F(SceneLoadFileTest, ASuccessfulOpenLeavesTheStatusAsItWas) {
  WriteFile(PathOf("empty.scene"), Bytes{});
  Status status(Status::kNotApplicable, "kept");
  SceneLoad load(PathOf("empty.scene").c_str(), &status);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "kept");
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
}

TEST_F(SceneLoadFileTest, AFileThatShrinksAfterOpeningIsAnError) {
  const std::string path = PathOf("shrinks.scene");
  SceneSave save;
  save.BeginChunk(0x01);
  save.BeginChunk(0x02);
  const Bytes content(200000, 0x5A);
  unsigned written = 0;
  save.Write(content.data(), static_cast<unsigned>(content.size()), written);
  save.EndChunk();
  save.EndChunk();
  const Bytes bytes = save.TakeBytes();
  WriteFile(path, bytes);

  Status status;
  SceneLoad load(path.c_str(), &status);
  ASSERT_TRUE(status.IsOk());
  boost::filesystem::resize_file(path, 100);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  Bytes buffer(1000, 0xAA);
  unsigned read = 0;
  EXPECT_FALSE(load.Read(buffer.data(), 1000, read));
  EXPECT_EQ(read, 76u);
  EXPECT_EQ(buffer[75], 0x5A);
  EXPECT_EQ(buffer[76], 0);
  EXPECT_EQ(buffer[999], 0);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0002 at offset 12: the file ends at offset 100, short of the 200024 bytes "
            "it had when opened");
}

}  // namespace
}  // namespace Orlo
// clang-format on
