#include <orlo/support/scene_save.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/filesystem.hpp>

#include <orlo/support/scene_load.h>

// The byte arrays below are laid out by hand, one chunk header or field per line.
// clang-format off
namespace Orlo {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ::testing::ElementsAreArray;

// A fresh directory for the files of one test, removed with everything in it afterwards.
class SceneSaveFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_dir = boost::filesystem::temp_directory_path() /
            boost::filesystem::unique_path("orlo-scene-save-%%%%-%%%%-%%%%");
    boost::filesystem::create_directories(m_dir);
  }
  void TearDown() override { boost::filesystem::remove_all(m_dir); }

  std::string PathOf(const std::string& name) const { return (m_dir / name).string(); }

  static Bytes ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  boost::filesystem::path m_dir;
};

// Writes the same mixed content to any writer: nested chunks, numbers, strings and raw
// blocks large enough to cross the file writer's 64 KiB buffer in every way.
void WriteMixedContent(SceneSave& save) {
  save.BeginChunk(0x05);
  for (int block = 0; block < 40; ++block) {
    save.BeginChunk(0x15);
    save.BeginChunk(0x20);
    save.WriteUInt32(static_cast<std::uint32_t>(block));
    save.WriteString(std::string(static_cast<std::size_t>(block) * 97, 'a' + block % 26));
    const Bytes raw(static_cast<std::size_t>(block % 7 == 3 ? 70000 : block * 13),
                    static_cast<std::uint8_t>(block));
    unsigned written = 0;
    save.Write(raw.data(), static_cast<unsigned>(raw.size()), written);
    save.EndChunk();
    for (int i = 0; i < 300; ++i) {
      save.BeginChunk(0x30);
      save.WriteDouble(i * 0.5);
      save.EndChunk();
    }
    save.EndChunk();
  }
  save.EndChunk();
}

TEST(SceneSaveTest, AMemoryWriterWithNothingWrittenGivesNoBytes) {
  SceneSave save;
  EXPECT_TRUE(save.TakeBytes().empty());
}

TEST(SceneSaveTest, AChunkIsItsIdThenItsContentLengthThenItsContent) {
  SceneSave save;
  save.BeginChunk(0x15);
  save.WriteUInt32(0x01020304);
  save.EndChunk();
  const Bytes expected = {
      // | id 0x00000015 | length 4 (8 bytes)      | content    |
      0x15, 0x00, 0x00, 0x00, 0x04, 0, 0, 0, 0, 0, 0, 0, 0x04, 0x03, 0x02, 0x01};
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(expected));
}

TEST(SceneSaveTest, NestedChunksStoreTheLengthOfEverythingInsideThem) {
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteUInt8(7);
  save.EndChunk();
  save.BeginChunk(0x12345678);
  save.EndChunk();
  save.EndChunk();
  const Bytes expected = {
      // | id 0x05 | length 25 |
      0x05, 0, 0, 0, 25, 0, 0, 0, 0, 0, 0, 0,
      // |   id 0x10 | length 1 | 7 |
      0x10, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 7,
      // |   id 0x12345678 | length 0 |
      0x78, 0x56, 0x34, 0x12, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(expected));
}

TEST(SceneSaveTest, NumbersAreWrittenLittleEndian) {
  SceneSave save;
  save.WriteUInt8(0xAB);
  save.WriteInt32(-2);
  save.WriteUInt32(0xDEADBEEF);
  save.WriteUInt64(0x0102030405060708ULL);
  save.WriteFloat(1.0f);
  save.WriteDouble(-2.0);
  const Bytes expected = {
      0xAB,                                            // uint8
      0xFE, 0xFF, 0xFF, 0xFF,                          // int32 -2
      0xEF, 0xBE, 0xAD, 0xDE,                          // uint32
      0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,  // uint64
      0x00, 0x00, 0x80, 0x3F,                          // float 1.0
      0, 0, 0, 0, 0, 0, 0x00, 0xC0};                   // double -2.0
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(expected));
}

TEST(SceneSaveTest, AStringIsItsByteCountThenItsBytesWithNoTerminator) {
  SceneSave save;
  save.WriteString("abc");
  save.WriteString("");
  save.WriteString(std::string("a\0b", 3));
  const Bytes expected = {3, 0, 0, 0, 'a', 'b', 'c',  // "abc"
                          0, 0, 0, 0,                 // ""
                          3, 0, 0, 0, 'a', 0, 'b'};   // embedded zero kept
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(expected));
}

TEST(SceneSaveTest, WriteAppendsRawBytesAndReportsTheCountStored) {
  SceneSave save;
  const std::uint8_t raw[] = {1, 2, 3, 4, 5};
  unsigned written = 99;
  EXPECT_TRUE(save.Write(raw, 5, written));
  EXPECT_EQ(written, 5u);
  EXPECT_TRUE(save.Write(raw, 0, written));
  EXPECT_EQ(written, 0u);
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(raw));
}

TEST(SceneSaveTest, EndChunkWithNoChunkOpenDoesNothing) {
  SceneSave save;
  save.EndChunk();
  save.BeginChunk(1);
  save.EndChunk();
  save.EndChunk();
  save.WriteUInt8(9);
  const Bytes expected = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9};
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(expected));
}

TEST(SceneSaveTest, FinishClosesTheChunksLeftOpen) {
  SceneSave save;
  save.BeginChunk(1);
  save.BeginChunk(2);
  save.WriteUInt8(3);
  EXPECT_TRUE(save.Finish().IsOk());
  const Bytes expected = {1, 0, 0, 0, 13, 0, 0, 0, 0, 0, 0, 0,  // | id 1 | length 13 |
                          2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0,   // | id 2 | length 1 |
                          3};
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(expected));
}

TEST(SceneSaveTest, WritingAfterFinishDoesNothing) {
  SceneSave save;
  save.WriteUInt8(1);
  EXPECT_TRUE(save.Finish().IsOk());
  save.WriteUInt8(2);
  save.BeginChunk(3);
  unsigned written = 99;
  EXPECT_FALSE(save.Write("x", 1, written));
  EXPECT_EQ(written, 0u);
  EXPECT_TRUE(save.Finish().IsOk());
  EXPECT_THAT(save.TakeBytes(), ElementsAreArray(Bytes{1}));
}

TEST(SceneSaveTest, TakeBytesHandsTheBytesOutOnce) {
  SceneSave save;
  save.WriteUInt8(1);
  EXPECT_EQ(save.TakeBytes().size(), 1u);
  EXPECT_TRUE(save.TakeBytes().empty());
}

TEST(SceneSaveTest, AMemoryWriterGrowsPastItsFirstBuffer) {
  SceneSave save;
  save.BeginChunk(1);
  for (std::uint32_t i = 0; i < 100000; ++i) save.WriteUInt32(i);
  save.EndChunk();
  const Bytes bytes = save.TakeBytes();
  ASSERT_EQ(bytes.size(), 12u + 400000u);
  EXPECT_EQ(bytes[4] | (bytes[5] << 8) | (bytes[6] << 16), 400000);
  EXPECT_EQ(bytes[12 + 4 * 99999], 99999 & 0xFF);
  EXPECT_EQ(bytes[12 + 4 * 99999 + 1], (99999 >> 8) & 0xFF);
}

TEST_F(SceneSaveFileTest, AFileWriterWritesTheSameBytesAsTheMemoryWriter) {
  SceneSave memory;
  WriteMixedContent(memory);
  const Bytes expected = memory.TakeBytes();
  ASSERT_GT(expected.size(), 4u * 65536u);

  Status status;
  SceneSave file(PathOf("mixed.scene").c_str(), &status);
  ASSERT_TRUE(status.IsOk());
  WriteMixedContent(file);
  EXPECT_TRUE(file.Finish().IsOk());
  const Bytes written = ReadFile(PathOf("mixed.scene"));
  ASSERT_EQ(written.size(), expected.size());
  EXPECT_TRUE(written == expected);
}

TEST_F(SceneSaveFileTest, TheDestructorFinishesTheFileAndClosesOpenChunks) {
  {
    Status status;
    SceneSave save(PathOf("open.scene").c_str(), &status);
    ASSERT_TRUE(status.IsOk());
    save.BeginChunk(1);
    save.BeginChunk(2);
    save.WriteUInt8(3);
  }
  const Bytes expected = {1, 0, 0, 0, 13, 0, 0, 0, 0, 0, 0, 0,
                          2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 3};
  EXPECT_THAT(ReadFile(PathOf("open.scene")), ElementsAreArray(expected));
}

TEST_F(SceneSaveFileTest, AnExistingFileIsTruncated) {
  { std::ofstream(PathOf("old.scene"), std::ios::binary) << std::string(1000, 'x'); }
  Status status;
  {
    SceneSave save(PathOf("old.scene").c_str(), &status);
    save.WriteUInt8(5);
  }
  EXPECT_TRUE(status.IsOk());
  EXPECT_THAT(ReadFile(PathOf("old.scene")), ElementsAreArray(Bytes{5}));
}

TEST_F(SceneSaveFileTest, AFileThatCannotBeCreatedFailsWithCodeTwoAndEveryCallDoesNothing) {
  const std::string path = PathOf("missing/x.scene");
  Status status;
  SceneSave save(path.c_str(), &status);
  const std::string message =
      "SceneSave : Cannot open '" + path + "' for writing: No such file or directory.";
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), message);
  save.BeginChunk(5);
  save.WriteUInt32(1);
  unsigned written = 7;
  EXPECT_FALSE(save.Write("abc", 3, written));
  EXPECT_EQ(written, 0u);
  save.EndChunk();
  EXPECT_TRUE(save.TakeBytes().empty());
  const Status finished = save.Finish();
  EXPECT_EQ(finished.GetCode(), 2);
  EXPECT_EQ(finished.GetMessage(), message);
  EXPECT_FALSE(boost::filesystem::exists(path));
}

TEST_F(SceneSaveFileTest, ADirectoryCannotBeOpenedForWriting) {
  Status status;
  SceneSave save(m_dir.string().c_str(), &status);
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneSave : Cannot open '" + m_dir.string() + "' for writing: Is a directory.");
}

TEST_F(SceneSaveFileTest, AFailedOpenWithoutAStatusIsStillReportedByFinish) {
  SceneSave save(PathOf("missing/y.scene").c_str(), nullptr);
  EXPECT_EQ(save.Finish().GetCode(), 2);
}

TEST_F(SceneSaveFileTest, ASuccessfulOpenLeavesTheStatusAsItWas) {
  Status status(Status::kNotApplicable, "kept");
  SceneSave save(PathOf("ok.scene").c_str(), &status);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "kept");
  EXPECT_TRUE(save.Finish().IsOk());
}

TEST_F(SceneSaveFileTest, AFileWriterHandsOutNoBytes) {
  Status status;
  SceneSave save(PathOf("f.scene").c_str(), &status);
  save.WriteUInt8(4);
  EXPECT_TRUE(save.TakeBytes().empty());
  EXPECT_TRUE(save.Finish().IsOk());
  EXPECT_THAT(ReadFile(PathOf("f.scene")), ElementsAreArray(Bytes{4}));
}

TEST(SceneSaveTest, ANullPathFailsWithCodeTwo) {
  Status status;
  SceneSave save(nullptr, &status);
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "SceneSave : Cannot open '' for writing: no path given.");
  save.WriteUInt32(1);
  EXPECT_EQ(save.Finish().GetCode(), 2);
}

TEST(SceneSaveDeviceTest, AWriteErrorIsReportedByFinishAndStopsTheWriter) {
  if (!boost::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full on this host";
  Status status;
  SceneSave save("/dev/full", &status);
  ASSERT_TRUE(status.IsOk());
  save.BeginChunk(1);
  const Bytes block(200000, 1);
  unsigned written = 0;
  // More than the buffer holds: the writer has to hand bytes to the device, which refuses.
  EXPECT_FALSE(save.Write(block.data(), static_cast<unsigned>(block.size()), written));
  EXPECT_EQ(written, 0u);
  EXPECT_FALSE(save.Write(block.data(), 1, written));
  const Status finished = save.Finish();
  EXPECT_EQ(finished.GetCode(), 2);
  EXPECT_EQ(finished.GetMessage(), "SceneSave : Cannot write '/dev/full': No space left on device.");
  EXPECT_EQ(save.Finish().GetMessage(), finished.GetMessage());
}

}  // namespace
}  // namespace Orlo
// clang-format on
