// Defines OutputFile and InputFile, the thin owners of an operating-system file that the
// chunk writer and reader stand on. Each owns its descriptor and closes it when destroyed.
// Failures come back as false with the system's reason in `error`; nothing is thrown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Orlo::internal {

class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Creates or truncates the file at `path` for writing.
  bool Open(const char* path, std::string& error);
  bool IsOpen() const { return m_fd >= 0; }
  // Writes all `size` bytes after the bytes appended so far.
  bool Append(const void* data, std::size_t size, std::string& error);
  // Overwrites `size` bytes at `offset`, which lies inside what was appended so far.
  bool WriteAt(std::uint64_t offset, const void* data, std::size_t size, std::string& error);
  // Closes the file; reports what the system says about the last writes.
  bool Close(std::string& error);

 private:
  int m_fd = -1;
};

class InputFile {
 public:
  InputFile() = default;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  // Opens the file at `path` for reading and sets `size` to its size at that moment.
  // A directory is refused.
  bool Open(const char* path, std::uint64_t& size, std::string& error);
  bool IsOpen() const { return m_fd >= 0; }
  // Reads up to `size` bytes at `offset` and sets `got` to the count read: fewer than asked
  // only where the file ends.
  bool ReadAt(std::uint64_t offset, void* data, std::size_t size, std::size_t& got,
              std::string& error);

 private:
  int m_fd = -1;
};

}  // namespace Orlo::internal
