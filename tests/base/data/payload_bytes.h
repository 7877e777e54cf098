// Helpers for the payload tests of the parameter blocks: a little-endian byte builder, the
// scene writer's wrapping of a block payload (chunk 0x20), and a reader that lists the
// sub-chunks of a payload with their raw bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/block.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo::testing::data {

// The chunk the scene writer puts a block's own payload in.
inline constexpr unsigned kPayloadChunk = 0x20;

// Little-endian bytes, built in the order they are appended.
class Bytes {
 public:
  Bytes& U8(std::uint8_t value) {
    m_bytes.push_back(value);
    return *this;
  }
  Bytes& U32(std::uint32_t value) { return Raw(value, 4); }
  Bytes& I32(std::int32_t value) { return Raw(static_cast<std::uint32_t>(value), 4); }
  Bytes& U64(std::uint64_t value) { return Raw(value, 8); }
  Bytes& F32(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, 4);
    return Raw(bits, 4);
  }
  Bytes& F64(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, 8);
    return Raw(bits, 8);
  }
  Bytes& Text(const std::string& text) {
    m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    return *this;
  }
  Bytes& Zeros(std::size_t count) {
    m_bytes.insert(m_bytes.end(), count, 0);
    return *this;
  }
  Bytes& Append(const std::vector<std::uint8_t>& bytes) {
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
  }
  const std::vector<std::uint8_t>& Get() const { return m_bytes; }

 private:
  Bytes& Raw(std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    return *this;
  }
  std::vector<std::uint8_t> m_bytes;
};

// The file that holds `block`'s payload the way the scene writer wraps it.
inline std::vector<std::uint8_t> SavePayload(Block& block) {
  SceneSave save;
  save.BeginChunk(kPayloadChunk);
  EXPECT_EQ(block.Save(&save), 1);
  save.EndChunk();
  return save.TakeBytes();
}

struct RawChunk {
  unsigned id = 0;
  std::vector<std::uint8_t> bytes;
};

// The sub-chunks of the payload chunk of `file`, each with the bytes it holds.
inline std::vector<RawChunk> PayloadChunks(std::vector<std::uint8_t> file) {
  std::vector<RawChunk> chunks;
  SceneLoad load(std::move(file));
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), kPayloadChunk);
  while (load.OpenChunk() == SceneLoad::kChunkOpened) {
    RawChunk chunk;
    chunk.id = load.CurChunkID();
    chunk.bytes.resize(static_cast<std::size_t>(load.BytesLeftInChunk()));
    unsigned read = 0;
    load.Read(chunk.bytes.data(), static_cast<unsigned>(chunk.bytes.size()), read);
    load.CloseChunk();
    chunks.push_back(std::move(chunk));
  }
  load.CloseChunk();
  EXPECT_FALSE(load.HasError()) << load.GetStatus().GetMessage();
  return chunks;
}

// What SceneSave::WriteString puts in a chunk for `text`.
inline std::vector<std::uint8_t> StringBytes(const std::string& text) {
  SceneSave save;
  save.BeginChunk(1);
  save.WriteString(text);
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(load.BytesLeftInChunk()));
  unsigned read = 0;
  load.Read(bytes.data(), static_cast<unsigned>(bytes.size()), read);
  return bytes;
}

// A payload chunk holding the given sub-chunks, as a file.
inline std::vector<std::uint8_t> PayloadFile(
    const std::vector<std::pair<unsigned, std::vector<std::uint8_t>>>& chunks) {
  SceneSave save;
  save.BeginChunk(kPayloadChunk);
  for (const auto& [id, bytes] : chunks) {
    save.BeginChunk(id);
    unsigned written = 0;
    save.Write(bytes.data(), static_cast<unsigned>(bytes.size()), written);
    save.EndChunk();
  }
  save.EndChunk();
  return save.TakeBytes();
}

struct LoadOutcome {
  int result = 0;
  // Whether the reader recorded an error, and its message.
  bool reader_error = false;
  std::string message;
};

// Runs `block`'s Load inside the payload chunk of `file`, as the scene reader does.
inline LoadOutcome LoadPayload(Block& block, std::vector<std::uint8_t> file) {
  SceneLoad load(std::move(file));
  LoadOutcome outcome;
  if (load.OpenChunk() == SceneLoad::kChunkOpened) {
    outcome.result = block.Load(&load);
    load.CloseChunk();
  }
  outcome.reader_error = load.HasError();
  outcome.message = load.GetStatus().GetMessage();
  return outcome;
}

}  // namespace Orlo::testing::data
