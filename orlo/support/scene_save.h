// Defines SceneSave, the writer of a file made of nested chunks.
// A chunk is an unsigned 32-bit id and a payload of bytes, other chunks, or both; the byte
// layout is described in docs/scene-file-format.md. The writer buffers its output: Write
// does not issue a system call per call. It writes either to a file or to memory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <orlo/support/status.h>

namespace Orlo {

class SceneSave {
 public:
  // Creates or truncates the file at `path`. On failure sets a non-zero code in `status`
  // (when not null); every later call then does nothing.
  SceneSave(const char* path, Status* status);
  // Writes to memory; the bytes are handed out by TakeBytes.
  SceneSave();
  SceneSave(const SceneSave&) = delete;
  SceneSave& operator=(const SceneSave&) = delete;
  // Finishes the file: closes the chunks that are still open and flushes the buffer.
  ~SceneSave();

  // Opens a chunk inside the innermost open one.
  void BeginChunk(unsigned id);
  // Closes the innermost open chunk. Without an open chunk it does nothing.
  void EndChunk();

  // Appends `size` raw bytes to the innermost chunk and sets `written` to the count stored.
  bool Write(const void* data, unsigned size, unsigned& written);
  // Writes `text` so that SceneLoad::ReadString gives it back whole.
  void WriteString(const std::string& text);

  // Numbers, always little-endian.
  void WriteUInt8(std::uint8_t value);
  void WriteInt32(std::int32_t value);
  void WriteUInt32(std::uint32_t value);
  void WriteUInt64(std::uint64_t value);
  void WriteFloat(float value);
  void WriteDouble(double value);

  // Closes the open chunks, flushes and closes the file; reports the first write error.
  // Called by the destructor when the caller has not called it.
  Status Finish();

  // Memory writer only: finishes and returns the bytes written.
  std::vector<std::uint8_t> TakeBytes();

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace Orlo
