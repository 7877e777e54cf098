// The file payload of the six data values, byte for byte, and how their Load treats both
// good and hostile bytes.
#include <orlo/base/data/internal/data_array.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>

#include "tests/base/data/data_test_blocks.h"
#include "tests/base/data/payload_bytes.h"

namespace Orlo {
namespace {

using testing::data::Bytes;
using testing::data::LoadOutcome;
using testing::data::LoadPayload;
using testing::data::PayloadChunks;
using testing::data::PayloadFile;
using testing::data::RawChunk;
using testing::data::Release;
using testing::data::SavePayload;
using testing::data::StringBytes;
using testing::data::TestController;

using Chunks = std::vector<std::pair<unsigned, std::vector<std::uint8_t>>>;

void ExpectPayload(Block& block, const Chunks& expected) {
  const std::vector<RawChunk> chunks = PayloadChunks(SavePayload(block));
  ASSERT_EQ(chunks.size(), expected.size());
  for (std::size_t i = 0; i < chunks.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(chunks[i].id, expected[i].first);
    EXPECT_EQ(chunks[i].bytes, expected[i].second);
  }
}

// ---- Save ----

TEST(DataPayloadTest, DataBoolWritesItsIdADefaultByteAndFourBytesPerElement) {
  auto* data = new DataBool(6, true, 3);
  data->SetValue(false, 0, 1);
  data->SetName("not saved");
  ExpectPayload(*data, {{0x05, Bytes().I32(6).Get()},
                        {0x10, Bytes().U8(1).Get()},
                        {0x15, Bytes().I32(3).I32(1).I32(0).I32(1).Get()}});
  Release(data);
}

TEST(DataPayloadTest, DataIntWritesFourByteIntegers) {
  auto* data = new DataInt(-1, -2, 2);
  data->SetValue(0x12345678, 0, 0);
  ExpectPayload(*data, {{0x05, Bytes().I32(-1).Get()},
                        {0x10, Bytes().I32(-2).Get()},
                        {0x15, Bytes().I32(2).I32(0x12345678).I32(-2).Get()}});
  Release(data);
}

TEST(DataPayloadTest, DataFloatWritesEightByteDoublesAndNoControllers) {
  TestController::live = 0;
  auto* data = new DataFloat(2, 0.5, 2);
  data->SetValue(-3.25, 0, 1);
  data->SetController(new TestController(9.0), 0);
  ExpectPayload(*data, {{0x05, Bytes().I32(2).Get()},
                        {0x10, Bytes().F64(0.5).Get()},
                        {0x15, Bytes().I32(2).F64(0.5).F64(-3.25).Get()}});
  Release(data);
  EXPECT_EQ(TestController::live, 0);
}

TEST(DataPayloadTest, DataPoint3WritesThreeDoublesPerPoint) {
  auto* data = new DataPoint3(1, {1.0, 2.0, 3.0}, 1);
  data->SetValue(Point3<double>(-4.0, 0.5, 1e300), 0, 0);
  ExpectPayload(*data, {{0x05, Bytes().I32(1).Get()},
                        {0x10, Bytes().F64(1.0).F64(2.0).F64(3.0).Get()},
                        {0x15, Bytes().I32(1).F64(-4.0).F64(0.5).F64(1e300).Get()}});
  Release(data);
}

TEST(DataPayloadTest, DataColorWritesThreeFloatsPerColour) {
  auto* data = new DataColor(0, {0.25f, 0.5f, 1.0f}, 2);
  data->SetValue(Color(0.125f, -1.0f, 3.0f), 0, 1);
  ExpectPayload(
      *data,
      {{0x05, Bytes().I32(0).Get()},
       {0x10, Bytes().F32(0.25f).F32(0.5f).F32(1.0f).Get()},
       {0x15,
        Bytes().I32(2).F32(0.25f).F32(0.5f).F32(1.0f).F32(0.125f).F32(-1.0f).F32(3.0f).Get()}});
  Release(data);
}

TEST(DataPayloadTest, DataStringWritesA32ByteDefaultRecordAndOneStringPerElement) {
  auto* data = new DataString(5, "abc", 2);
  data->SetValue(std::string("a longer element than fifteen"), 0, 1);
  ExpectPayload(*data, {{0x05, Bytes().I32(5).Get()},
                        // | text and zero, 16 bytes | length, 8 | capacity 15, 8 |
                        {0x10, Bytes().Text("abc").Zeros(13).U64(3).U64(15).Get()},
                        {0x15, Bytes()
                                   .I32(2)
                                   .Append(StringBytes("abc"))
                                   .Append(StringBytes("a longer element than fifteen"))
                                   .Get()}});
  Release(data);
}

TEST(DataPayloadTest, DataStringWritesAtMostFifteenCharactersOfItsDefault) {
  auto* data = new DataString(0, "0123456789abcdefXYZ", 1);
  const std::vector<RawChunk> chunks = PayloadChunks(SavePayload(*data));
  ASSERT_EQ(chunks.size(), 3u);
  EXPECT_EQ(chunks[1].bytes, Bytes().Text("0123456789abcde").Zeros(1).U64(15).U64(15).Get());
  // The elements are whole: only the default record is limited.
  EXPECT_EQ(chunks[2].bytes, Bytes().I32(1).Append(StringBytes("0123456789abcdefXYZ")).Get());
  Release(data);
}

TEST(DataPayloadTest, DataStringWithAnEmptyDefaultWritesAZeroRecord) {
  auto* data = new DataString(0, "", 1);
  const std::vector<RawChunk> chunks = PayloadChunks(SavePayload(*data));
  ASSERT_EQ(chunks.size(), 3u);
  EXPECT_EQ(chunks[1].bytes, Bytes().Zeros(16).U64(0).U64(15).Get());
  Release(data);
}

// ---- Load ----

TEST(DataPayloadTest, EachMemberReadsBackWhatItWrote) {
  auto* flags = new DataBool(1, true, 3);
  flags->SetValue(false, 0, 2);
  auto* numbers = new DataInt(2, 7, 2);
  numbers->SetValue(-40, 0, 0);
  auto* reals = new DataFloat(3, 0.25, 2);
  reals->SetValue(1e-300, 0, 1);
  auto* points = new DataPoint3(4, {1.0, 2.0, 3.0}, 2);
  points->SetValue(Point3<double>(5.0, 6.0, 7.0), 0, 1);
  auto* colors = new DataColor(5, {0.5f, 0.25f, 0.125f}, 1);
  auto* texts = new DataString(6, "dflt", 2);
  texts->SetValue(std::string("second\0with zero", 16), 0, 1);

  const std::vector<Data*> sources = {flags, numbers, reals, points, colors, texts};
  const std::vector<BlockFactory*> factories = {new DataBoolFactory,  new DataIntFactory,
                                                new DataFloatFactory, new DataPoint3Factory,
                                                new DataColorFactory, new DataStringFactory};
  for (std::size_t i = 0; i < sources.size(); ++i) {
    Data* source = sources[i];
    SCOPED_TRACE(source->GetClassName());
    auto* loaded = dynamic_cast<Data*>(factories[i]->GetBlock(false));
    ASSERT_NE(loaded, nullptr);
    const LoadOutcome outcome = LoadPayload(*loaded, SavePayload(*source));
    EXPECT_EQ(outcome.result, 1);
    EXPECT_FALSE(outcome.reader_error) << outcome.message;
    EXPECT_EQ(loaded->GetParameterID(), source->GetParameterID());
    ASSERT_EQ(loaded->GetSize(), source->GetSize());
    for (int e = 0; e < source->GetSize(); ++e) {
      EXPECT_EQ(loaded->GetBool(0, e), source->GetBool(0, e));
      EXPECT_EQ(loaded->GetInt(0, e), source->GetInt(0, e));
      EXPECT_EQ(loaded->GetFloat(0, e), source->GetFloat(0, e));
      EXPECT_EQ(loaded->GetPoint3F(0, e), source->GetPoint3F(0, e));
      EXPECT_EQ(loaded->GetColor(0, e), source->GetColor(0, e));
      EXPECT_EQ(loaded->GetString(0, e), source->GetString(0, e));
    }
    // The default came back: a grown value fills like its source.
    loaded->SetSize(source->GetSize() + 1);
    source->SetSize(source->GetSize() + 1);
    const int last = source->GetSize() - 1;
    EXPECT_EQ(loaded->GetFloat(0, last), source->GetFloat(0, last));
    EXPECT_EQ(loaded->GetString(0, last), source->GetString(0, last));
    EXPECT_EQ(loaded->GetBool(0, last), source->GetBool(0, last));
    EXPECT_EQ(loaded->GetPoint3F(0, last), source->GetPoint3F(0, last));
    EXPECT_EQ(loaded->GetColor(0, last), source->GetColor(0, last));
    // The name is not part of the payload.
    EXPECT_EQ(loaded->GetName(), "");
    Release(loaded);
    Release(source);
    delete factories[i];
  }
}

TEST(DataPayloadTest, LoadingACountThatDiffersFromTheSizeReplacesTheWholeArray) {
  auto* data = new DataInt(0, 9, 5);
  const LoadOutcome outcome =
      LoadPayload(*data, PayloadFile({{0x15, Bytes().I32(2).I32(10).I32(20).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  ASSERT_EQ(data->GetSize(), 2);
  EXPECT_EQ(data->GetInt(0, 0), 10);
  EXPECT_EQ(data->GetInt(0, 1), 20);
  Release(data);
}

TEST(DataPayloadTest, LoadingAnEmptyElementChunkLeavesNoElements) {
  auto* data = new DataColor(0, {}, 3);
  EXPECT_EQ(LoadPayload(*data, PayloadFile({{0x15, Bytes().I32(0).Get()}})).result, 1);
  EXPECT_EQ(data->GetSize(), 0);
  Release(data);
}

TEST(DataPayloadTest, DataBoolReadsAnyNonZeroElementOrDefaultByteAsTrue) {
  auto* data = new DataBool(0, false, 1);
  const LoadOutcome outcome =
      LoadPayload(*data, PayloadFile({{0x10, Bytes().U8(2).Get()},
                                      {0x15, Bytes().I32(3).I32(7).I32(0).I32(-1).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  ASSERT_EQ(data->GetSize(), 3);
  EXPECT_TRUE(data->GetBool(0, 0));
  EXPECT_FALSE(data->GetBool(0, 1));
  EXPECT_TRUE(data->GetBool(0, 2));
  data->SetSize(4);
  EXPECT_TRUE(data->GetBool(0, 3));
  Release(data);
}

TEST(DataPayloadTest, DataStringReadsTheDefaultTextUpToTheStoredLength) {
  auto* data = new DataString(0, "", 1);
  // | "abcdef" and garbage after the length | length 4 | capacity 31 (ignored) |
  const LoadOutcome outcome = LoadPayload(
      *data,
      PayloadFile({{0x10, Bytes().Text("abcdef").U8(0).Text("garbage!!").U64(4).U64(31).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(data->GetSize(), 1);
  data->SetSize(2);
  EXPECT_EQ(data->GetString(0, 1), "abcd");
  Release(data);
}

TEST(DataPayloadTest, DataStringReadsADefaultLongerThanFifteenAsItsFirstFifteenBytes) {
  auto* data = new DataString(0, "", 1);
  // | 16 bytes of a longer text | length 40 | capacity 47 |
  const LoadOutcome outcome = LoadPayload(
      *data, PayloadFile({{0x10, Bytes().Text("0123456789abcdef").U64(40).U64(47).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  data->SetSize(2);
  EXPECT_EQ(data->GetString(0, 1), "0123456789abcde");
  Release(data);
}

TEST(DataPayloadTest, LoadSkipsChunksItDoesNotKnow) {
  auto* data = new DataFloat(0, 0.0, 1);
  const LoadOutcome outcome =
      LoadPayload(*data, PayloadFile({{0x99, Bytes().U32(0xDEADBEEF).Get()},
                                      {0x05, Bytes().I32(12).Get()},
                                      {0x0A, {}},
                                      {0x15, Bytes().I32(1).F64(2.5).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(data->GetParameterID(), 12);
  EXPECT_EQ(data->GetFloat(0, 0), 2.5);
  Release(data);
}

TEST(DataPayloadTest, DataFloatLoadFixesItsControllerSlotsToTheLoadedCount) {
  TestController::live = 0;
  auto* grown = new DataFloat(0, 0.0, 1);
  EXPECT_EQ(
      LoadPayload(*grown, PayloadFile({{0x15, Bytes().I32(3).F64(1).F64(2).F64(3).Get()}})).result,
      1);
  EXPECT_EQ(grown->NumDependencies(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(grown->GetDependency(i), nullptr);

  auto* shrunk = new DataFloat(0, 0.0, 3);
  shrunk->SetController(new TestController(1.0), 0);
  shrunk->SetController(new TestController(2.0), 2);
  EXPECT_EQ(LoadPayload(*shrunk, PayloadFile({{0x15, Bytes().I32(1).F64(7).Get()}})).result, 1);
  EXPECT_EQ(shrunk->NumDependencies(), 1);
  EXPECT_NE(shrunk->GetController(0), nullptr);
  // The controller of the dropped slot was released with it.
  EXPECT_EQ(TestController::live, 1);
  Release(grown);
  Release(shrunk);
  EXPECT_EQ(TestController::live, 0);
}

// ---- Hostile bytes ----

TEST(DataPayloadTest, ACountLargerThanTheChunkHoldsIsAnErrorAndAllocatesNothing) {
  struct Case {
    const char* label;
    Data* data;
    std::vector<std::uint8_t> values;
  };
  const std::vector<Case> cases = {
      // | count 0x7fffffff | one element |
      {"DataBool", new DataBool(0, false, 2), Bytes().I32(0x7fffffff).I32(1).Get()},
      {"DataInt", new DataInt(0, 0, 2), Bytes().I32(3).I32(1).I32(2).Get()},
      {"DataFloat", new DataFloat(0, 0.0, 2), Bytes().I32(2).F64(1.0).I32(0).Get()},
      {"DataPoint3", new DataPoint3(0, {}, 2), Bytes().I32(2).F64(1).F64(2).F64(3).Get()},
      {"DataColor", new DataColor(0, {}, 2), Bytes().I32(1).F32(1).F32(2).Get()},
      // Every string takes at least its length prefix.
      {"DataString", new DataString(0, "", 2), Bytes().I32(1000000).Zeros(8).Get()},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const LoadOutcome outcome = LoadPayload(*c.data, PayloadFile({{0x15, c.values}}));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.reader_error);
    EXPECT_EQ(c.data->GetSize(), 2) << "the value must be left as it was";
    Release(c.data);
  }
}

TEST(DataPayloadTest, ANegativeCountIsAnError) {
  auto* data = new DataInt(0, 0, 1);
  const LoadOutcome outcome = LoadPayload(*data, PayloadFile({{0x15, Bytes().I32(-1).Get()}}));
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.reader_error);
  EXPECT_EQ(data->GetSize(), 1);
  Release(data);
}

TEST(DataPayloadTest, AStringWhoseLengthRunsPastItsChunkIsAnError) {
  auto* data = new DataString(0, "", 1);
  // | count 1 | a string claiming far more bytes than follow |
  std::vector<std::uint8_t> text = StringBytes("abcdefgh");
  text.resize(text.size() - 4);
  const LoadOutcome outcome =
      LoadPayload(*data, PayloadFile({{0x15, Bytes().I32(1).Append(text).Get()}}));
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.reader_error);
  Release(data);
}

TEST(DataPayloadTest, AParameterIdTooLargeForAnyTableIsAnError) {
  auto* data = new DataInt(0, 0, 1);
  LoadOutcome outcome = LoadPayload(
      *data, PayloadFile({{0x05, Bytes().I32(internal::kMaxLoadedParameterID + 1).Get()}}));
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.reader_error);
  outcome =
      LoadPayload(*data, PayloadFile({{0x05, Bytes().I32(internal::kMaxLoadedParameterID).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(data->GetParameterID(), internal::kMaxLoadedParameterID);
  outcome = LoadPayload(*data, PayloadFile({{0x05, Bytes().I32(-1).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(data->GetParameterID(), -1);
  Release(data);
}

TEST(DataPayloadTest, ChunksCutShortAreErrorsNotCrashes) {
  auto* data = new DataPoint3(0, {}, 1);
  // | id: 2 of 4 bytes |
  EXPECT_EQ(LoadPayload(*data, PayloadFile({{0x05, Bytes().U8(1).U8(0).Get()}})).result, 0);
  // | default: 20 of 24 bytes |
  EXPECT_EQ(LoadPayload(*data, PayloadFile({{0x10, Bytes().F64(1).F64(2).U32(0).Get()}})).result,
            0);
  auto* text = new DataString(0, "", 1);
  // | default record: 16 of 32 bytes |
  EXPECT_EQ(LoadPayload(*text, PayloadFile({{0x10, Bytes().Zeros(16).Get()}})).result, 0);
  Release(data);
  Release(text);
}

TEST(DataPayloadTest, EveryChunkCutShortAtEveryByteFailsTheLoadWithoutCrashing) {
  auto* texts = new DataString(3, "dflt", 3);
  texts->SetValue(std::string("one"), 0, 0);
  texts->SetValue(std::string("three"), 0, 2);
  auto* reals = new DataFloat(3, 1.0, 4);
  auto* colors = new DataColor(3, {0.5f, 0.5f, 0.5f}, 2);
  for (Data* source : std::vector<Data*>{texts, reals, colors}) {
    SCOPED_TRACE(source->GetClassName());
    const std::vector<RawChunk> chunks = PayloadChunks(SavePayload(*source));
    for (std::size_t cut_chunk = 0; cut_chunk < chunks.size(); ++cut_chunk) {
      for (std::size_t length = 0; length < chunks[cut_chunk].bytes.size(); ++length) {
        SCOPED_TRACE("chunk " + std::to_string(cut_chunk) + " cut to " + std::to_string(length));
        Chunks file;
        for (std::size_t c = 0; c < chunks.size(); ++c) {
          std::vector<std::uint8_t> bytes = chunks[c].bytes;
          if (c == cut_chunk) bytes.resize(length);
          file.emplace_back(chunks[c].id, bytes);
        }
        Data* target = dynamic_cast<Data*>(source->Clone());
        const LoadOutcome outcome = LoadPayload(*target, PayloadFile(file));
        EXPECT_EQ(outcome.result, 0);
        EXPECT_TRUE(outcome.reader_error);
        Release(target);
      }
    }
    Release(source);
  }
}

}  // namespace
}  // namespace Orlo
