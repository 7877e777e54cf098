// Defines SceneSave, the writer of a file made of nested chunks.
// A chunk is an unsigned 32-bit id and a content of bytes, other chunks, or both; the byte
// layout is described in docs/scene-file-format.md. The writer owns its buffer and its file
// handle for its whole life; the destructor finishes the file. It writes either to a file,
// through a 64 KiB buffer so that Write issues no system call per call, or to memory, and
// both give the same bytes.
//
//   Status status;
//   SceneSave save("x.scene", &status);
//   if (status.GetCode() != 0) return status;
//   save.BeginChunk(0x05);
//   save.WriteUInt32(3);
//   save.EndChunk();
//   return save.Finish();
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <orlo/support/status.h>

namespace Orlo {

class SceneSave {
 public:
  // Creates or truncates the file at `path`. On failure sets code 2 in `status` (when not
  // null) with the message "SceneSave : Cannot open '<path>' for writing: <reason>." and
  // every later call does nothing. On success `status` is left as it is.
  SceneSave(const char* path, Status* status);
  // Writes to memory; the bytes are handed out by TakeBytes.
  SceneSave();
  SceneSave(const SceneSave&) = delete;
  SceneSave& operator=(const SceneSave&) = delete;
  // Finishes the file as Finish does; its status is lost, so callers that care call Finish.
  ~SceneSave();

  // Opens a chunk inside the innermost open one (at the top of the file when none is open).
  void BeginChunk(unsigned id);
  // Closes the innermost open chunk and stores its length. Without an open chunk it does
  // nothing.
  void EndChunk();

  // Appends `size` raw bytes to the innermost chunk and sets `written` to the count stored:
  // `size`, or 0 once the writer has failed or finished (the result is then false).
  bool Write(const void* data, unsigned size, unsigned& written);
  // Writes `text` so that SceneLoad::ReadString gives it back whole. A string longer than
  // 4294967295 bytes cannot be framed: it fails the writer.
  void WriteString(const std::string& text);

  // Numbers, always little-endian whatever the host.
  void WriteUInt8(std::uint8_t value);
  void WriteInt32(std::int32_t value);
  void WriteUInt32(std::uint32_t value);
  void WriteUInt64(std::uint64_t value);
  void WriteFloat(float value);
  void WriteDouble(double value);

  // Closes the chunks that are still open, flushes and closes the file, and returns the
  // first failure (code 2, "SceneSave : Cannot write '<path>': <reason>." for a write
  // error). Later calls of any writing operation do nothing; a second Finish returns the
  // same status.
  Status Finish();

  // Memory writer only: finishes and returns the bytes written; later calls return nothing.
  // A file writer returns an empty vector and is left as it is.
  std::vector<std::uint8_t> TakeBytes();

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace Orlo
