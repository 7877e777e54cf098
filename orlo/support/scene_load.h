// Defines SceneLoad, the reader of a file made of nested chunks, one level at a time.
// The reader treats every byte as hostile: a chunk whose length runs past its parent or the
// file is an error, reads never leave the innermost chunk, and no allocation exceeds what
// the chunk holds or the limits allow. The first error is sticky: from then on OpenChunk
// returns kError and reads return zeros.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <orlo/support/status.h>

namespace Orlo {

struct SceneLoadLimits {
  // Deepest nesting of open chunks.
  int max_depth = 64;
  // Largest single allocation the reader makes for a string, in bytes.
  std::uint64_t max_string_bytes = std::uint64_t{64} << 20;
};

class SceneLoad {
 public:
  // Results of OpenChunk.
  static constexpr int kError = 0;
  static constexpr int kChunkOpened = 1;
  static constexpr int kEndOfChunk = 2;

  // Opens the file at `path`; on failure sets a non-zero code in `status` (when not null).
  SceneLoad(const char* path, Status* status, SceneLoadLimits limits = SceneLoadLimits());
  // Reads the given bytes as a file.
  explicit SceneLoad(std::vector<std::uint8_t> bytes, SceneLoadLimits limits = SceneLoadLimits());
  SceneLoad(const SceneLoad&) = delete;
  SceneLoad& operator=(const SceneLoad&) = delete;
  ~SceneLoad();

  // Opens the next chunk inside the innermost open one (or at the top of the file).
  // Returns kChunkOpened, kEndOfChunk when the enclosing chunk (or the file) has no further
  // chunk, or kError when the framing is corrupt or cut short.
  int OpenChunk();
  // The id of the chunk opened last.
  unsigned CurChunkID() const;
  // Closes the innermost open chunk, skipping what was not read of it, so that the next
  // OpenChunk finds its next sibling. After an OpenChunk that opened nothing this closes the
  // chunk that encloses the attempt.
  void CloseChunk();

  // Reads `size` bytes of the innermost chunk into `data` and sets `read` to the count
  // delivered. When fewer bytes are left, reads those, fills the rest of `data` with zeros,
  // records an error and returns false.
  bool Read(void* data, unsigned size, unsigned& read);
  // Reads a string written by SceneSave::WriteString; on failure `text` is left empty.
  bool ReadString(std::string& text);

  // Numbers, always little-endian; on failure the value is 0.
  bool ReadUInt8(std::uint8_t& value);
  bool ReadInt32(std::int32_t& value);
  bool ReadUInt32(std::uint32_t& value);
  bool ReadUInt64(std::uint64_t& value);
  bool ReadFloat(float& value);
  bool ReadDouble(double& value);

  // Bytes of the innermost open chunk (or of the file at the top) not read yet.
  std::uint64_t BytesLeftInChunk() const;
  // Bytes from the current read position to the end of the file.
  std::uint64_t BytesLeftInFile() const;
  // Depth of nesting: 0 at the top of the file.
  int Depth() const;

  // Lets a block's reader report data that does not fit (a count larger than its chunk can
  // hold, say). The reader records the error at the current place.
  void ReportCorruption(const std::string& what);
  bool HasError() const;
  // Ok, or code 2 with a message that names the chunk and the offset of the first error.
  const Status& GetStatus() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace Orlo
