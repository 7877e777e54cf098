#include "tools/orlo/scene_file.h"

#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

#include <boost/filesystem.hpp>

#include <orlo/support/scene_load.h>

namespace Orlo::cli {

namespace {

constexpr std::uint32_t kSceneChunk = 0x05;
constexpr std::uint32_t kHeaderChunk = 0x10;
constexpr std::uint32_t kBlockChunk = 0x15;
constexpr std::uint32_t kBlockInfoChunk = 0x05;
constexpr std::uint32_t kBlockDataChunk = 0x20;
constexpr std::uint32_t kDependencyChunk = 0x10;
constexpr std::uint64_t kChunkHeaderSize = 12;

// Walks the chunks of one file with SceneLoad, keeping track of file offsets, which the
// reader itself does not report: the read position is the file size less the bytes left.
class Walker {
 public:
  explicit Walker(SceneFile& file) : m_file(file), m_load(file.bytes) {}

  void Run() {
    const std::uint64_t at = Position();
    const int result = m_load.OpenChunk();
    if (result == SceneLoad::kEndOfChunk) {
      Problem(0, kCheckHeader, "file: the file holds no chunk");
      return;
    }
    if (result != SceneLoad::kChunkOpened) return FramingError();
    if (m_load.CurChunkID() != kSceneChunk) {
      Problem(at, kCheckHeader,
              ChunkPlace(m_load.CurChunkID(), at) +
                  ": the file does not start with the scene "
                  "chunk 0x0005");
      m_load.CloseChunk();
      if (m_load.HasError()) FramingError();
      return;
    }
    m_file.has_scene_chunk = true;
    ReadScene(at);
    if (m_load.HasError()) return FramingError();
    m_load.CloseChunk();
    if (m_load.HasError()) FramingError();
  }

 private:
  std::uint64_t Position() const { return m_file.bytes.size() - m_load.BytesLeftInFile(); }

  void Problem(std::uint64_t offset, const char* check, std::string message) {
    m_file.problems.push_back(FileProblem{offset, check, std::move(message)});
  }

  // The reader's first error names the place itself; the offset recorded is that of the
  // chunk the walk was in.
  void FramingError() {
    if (!m_file.framing_intact) return;
    m_file.framing_intact = false;
    Problem(m_last_offset, kCheckFraming, m_load.GetStatus().GetMessage());
  }

  int Open(std::uint64_t& at) {
    at = Position();
    m_last_offset = at;
    return m_load.OpenChunk();
  }

  void ReadScene(std::uint64_t scene_offset) {
    std::uint64_t at = 0;
    int result = Open(at);
    if (result == SceneLoad::kChunkOpened && m_load.CurChunkID() == kHeaderChunk) {
      if (m_load.BytesLeftInChunk() < 4) {
        Problem(at, kCheckHeader,
                ChunkPlace(kHeaderChunk, at) + ": the header holds " +
                    std::to_string(m_load.BytesLeftInChunk()) +
                    " bytes, short of the 4 of the block count");
      } else {
        m_load.ReadUInt32(m_file.header_count);
        m_file.has_header = true;
      }
      m_load.CloseChunk();
      result = Open(at);
    } else if (result != SceneLoad::kError) {
      Problem(result == SceneLoad::kChunkOpened ? at : scene_offset, kCheckHeader,
              ChunkPlace(kSceneChunk, scene_offset) +
                  ": the scene chunk does not start with the header chunk 0x0010");
    }
    while (result == SceneLoad::kChunkOpened) {
      if (m_load.CurChunkID() == kBlockChunk) {
        ReadBlock(at);
      } else {
        Problem(at, kCheckStructure,
                ChunkPlace(m_load.CurChunkID(), at) + ": not a block chunk; a loader skips it");
      }
      if (m_load.HasError()) return;
      m_load.CloseChunk();
      result = Open(at);
    }
  }

  void ReadBlock(std::uint64_t block_offset) {
    BlockRecord record;
    record.offset = block_offset;
    record.content_begin = Position();
    record.content_end = record.content_begin + m_load.BytesLeftInChunk();
    const std::string place = ChunkPlace(kBlockChunk, block_offset);
    int position = 0;
    std::uint64_t at = 0;
    int result;
    while ((result = Open(at)) == SceneLoad::kChunkOpened) {
      const std::uint32_t id = m_load.CurChunkID();
      // A loader takes the info, the data and the dependencies in this order, one chunk
      // each, and looks no further.
      if (id == kBlockInfoChunk && !record.has_info) {
        if (position != 0) {
          Problem(at, kCheckStructure, place + ": the block-info chunk is not the block's first");
        }
        std::uint32_t values[4] = {0, 0, 0, 0};
        for (std::uint32_t& value : values) m_load.ReadUInt32(value);
        if (m_load.HasError()) return;
        record.has_info = true;
        record.type = BlockType(values[0], values[1], values[2]);
        record.number = values[3];
      } else if (id == kBlockDataChunk && !record.has_data) {
        record.has_data = true;
        record.data_begin = Position();
        record.data_size = m_load.BytesLeftInChunk();
      } else if (id == kDependencyChunk && !record.has_dependencies) {
        std::int32_t count = 0;
        m_load.ReadInt32(count);
        if (m_load.HasError()) return;
        if (count < 0 || static_cast<std::uint64_t>(count) > m_load.BytesLeftInChunk() / 4) {
          Problem(at, kCheckDependency,
                  place + ": the dependency chunk counts " + std::to_string(count) +
                      " slots but holds room for " + std::to_string(m_load.BytesLeftInChunk() / 4));
        } else {
          record.has_dependencies = true;
          record.dependencies.resize(static_cast<std::size_t>(count));
          for (std::int32_t& number : record.dependencies) m_load.ReadInt32(number);
          if (m_load.HasError()) return;
        }
      }
      m_load.CloseChunk();
      if (m_load.HasError()) return;
      ++position;
    }
    if (result == SceneLoad::kError) return;
    if (!record.has_info) Problem(block_offset, kCheckStructure, place + ": no block-info chunk");
    if (!record.has_data) Problem(block_offset, kCheckStructure, place + ": no block-data chunk");
    if (!record.has_dependencies) {
      Problem(block_offset, kCheckStructure, place + ": no dependency chunk");
    }
    m_file.blocks.push_back(std::move(record));
  }

  SceneFile& m_file;
  SceneLoad m_load;
  std::uint64_t m_last_offset = 0;
};

}  // namespace

std::string ChunkPlace(std::uint32_t id, std::uint64_t offset) {
  char text[64];
  std::snprintf(text, sizeof(text), "chunk 0x%04" PRIx32 " at offset %" PRIu64, id, offset);
  return text;
}

SceneFile ParseSceneFile(std::string path, std::vector<std::uint8_t> bytes) {
  SceneFile file;
  file.path = std::move(path);
  file.bytes = std::move(bytes);
  Walker(file).Run();
  if (file.framing_intact || file.has_scene_chunk || file.bytes.size() < kChunkHeaderSize) {
    return file;
  }
  // A file cut short fails at once: the scene chunk claims more bytes than are left. The
  // blocks before the cut are still worth showing, so the walk is repeated on a copy whose
  // scene chunk ends with the file; the first problem stays the real one.
  std::uint32_t id = 0;
  for (int i = 3; i >= 0; --i) id = (id << 8) | file.bytes[static_cast<std::size_t>(i)];
  if (id != kSceneChunk) return file;
  SceneFile shortened;
  shortened.path = file.path;
  shortened.bytes = file.bytes;
  std::uint64_t length = shortened.bytes.size() - kChunkHeaderSize;
  for (std::size_t i = 4; i < kChunkHeaderSize; ++i, length >>= 8) {
    shortened.bytes[i] = static_cast<std::uint8_t>(length & 0xff);
  }
  Walker(shortened).Run();
  file.has_scene_chunk = shortened.has_scene_chunk;
  file.has_header = shortened.has_header;
  file.header_count = shortened.header_count;
  file.blocks = std::move(shortened.blocks);
  file.problems.insert(file.problems.end(), shortened.problems.begin(), shortened.problems.end());
  return file;
}

Status ReadSceneFile(const std::string& path, SceneFile* out) {
  boost::system::error_code error;
  const boost::filesystem::file_status status = boost::filesystem::status(path, error);
  if (!boost::filesystem::exists(status)) return Status(Status::kFailed, "no such file");
  if (!boost::filesystem::is_regular_file(status)) {
    return Status(Status::kFailed, "not a regular file");
  }
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return Status(Status::kFailed, "cannot open the file for reading");
  std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                  std::istreambuf_iterator<char>());
  if (stream.bad()) return Status(Status::kFailed, "cannot read the file: read error");
  *out = ParseSceneFile(path, std::move(bytes));
  return Status();
}

}  // namespace Orlo::cli
