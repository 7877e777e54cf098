// Defines SceneLoad, the reader of a file made of nested chunks, one level at a time.
// The reader owns its file handle and its buffer (or its copy of the bytes) for its whole
// life; nothing it returns outlives it. The byte layout is in docs/scene-file-format.md.
//
// It treats every byte as hostile: a chunk whose length runs past its parent or the file is
// an error, reads never leave the innermost chunk, and no allocation exceeds what the chunk
// holds or the limits allow. The first error is sticky: from then on OpenChunk returns
// kError, reads return false and zeros, and GetStatus names the chunk and the offset where
// it happened. A file is read through a 64 KiB window, so its size does not matter.
//
//   SceneLoad load(bytes);
//   while (load.OpenChunk() == SceneLoad::kChunkOpened) {
//     if (load.CurChunkID() == 0x10) load.ReadUInt32(count);
//     load.CloseChunk();  // skips what was not read
//   }
//   if (load.HasError()) return load.GetStatus();
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <orlo/support/status.h>

namespace Orlo {

struct SceneLoadLimits {
  // Deepest nesting of open chunks; opening one more is an error.
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

  // Opens the file at `path`. On failure sets code 2 in `status` (when not null) with the
  // message "SceneLoad : Cannot open '<path>' for reading: <reason>.", and the reader behaves
  // as if it had met an error. On success `status` is left as it is.
  SceneLoad(const char* path, Status* status, SceneLoadLimits limits = SceneLoadLimits());
  // Reads the given bytes as a file.
  explicit SceneLoad(std::vector<std::uint8_t> bytes, SceneLoadLimits limits = SceneLoadLimits());
  SceneLoad(const SceneLoad&) = delete;
  SceneLoad& operator=(const SceneLoad&) = delete;
  ~SceneLoad();

  // Opens the next chunk inside the innermost open one (or at the top of the file).
  // Returns kChunkOpened; kEndOfChunk when the enclosing chunk, or at the top the file, has
  // no byte left; kError when the framing is corrupt or cut short (a header with fewer than
  // 12 bytes left, a length past the enclosing chunk or the file, nesting deeper than the
  // limit) or an error came before.
  int OpenChunk();
  // The id of the chunk opened last; 0 before any.
  unsigned CurChunkID() const;
  // Closes the innermost open chunk, skipping what was not read of it, so that the next
  // OpenChunk finds its next sibling. After an OpenChunk that opened nothing this closes the
  // chunk that encloses the attempt. With no chunk open it does nothing.
  void CloseChunk();

  // Reads `size` bytes of the innermost chunk (of the file at the top) into `data` and sets
  // `read` to the count delivered. When fewer bytes are left, delivers those, fills the rest
  // of `data` with zeros, records an error and returns false; after an error delivers
  // nothing and fills all of `data` with zeros.
  bool Read(void* data, unsigned size, unsigned& read);
  // Reads a string written by SceneSave::WriteString. A length past the chunk or above
  // the string limit is an error and allocates nothing; on failure `text` is left empty.
  bool ReadString(std::string& text);

  // Numbers, always little-endian; on failure the value is 0.
  bool ReadUInt8(std::uint8_t& value);
  bool ReadInt32(std::int32_t& value);
  bool ReadUInt32(std::uint32_t& value);
  bool ReadUInt64(std::uint64_t& value);
  bool ReadFloat(float& value);
  bool ReadDouble(double& value);

  // Bytes of the innermost open chunk (or of the file at the top) not read yet; 0 after an
  // error, so that counts checked against it are refused.
  std::uint64_t BytesLeftInChunk() const;
  // Bytes from the read position to the end of the file, whatever chunk is open; block
  // readers bound counts whose items come later in the file with it. 0 after an error.
  std::uint64_t BytesLeftInFile() const;
  // Depth of nesting: the number of open chunks, 0 at the top of the file.
  int Depth() const;

  // Lets a block's reader report data that does not fit (a count larger than its chunk can
  // hold, say). Records the error, as "<chunk>: <what> (reported at offset <n>)", unless
  // one came before.
  void ReportCorruption(const std::string& what);
  bool HasError() const;
  // Ok, or code 2 with a message that names the chunk and the offset of the first error,
  // such as "chunk 0x0015 at offset 1184: length 9000 exceeds the 312 bytes left in its
  // parent". A message about the top level of the file starts with "file:".
  const Status& GetStatus() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace Orlo
