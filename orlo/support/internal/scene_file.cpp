#include <orlo/support/internal/scene_file.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orlo::internal {
namespace {

std::string SystemReason(int error_number) { return std::strerror(error_number); }

}  // namespace

// ---- OutputFile ----

OutputFile::~OutputFile() {
  if (m_fd >= 0) ::close(m_fd);
}

bool OutputFile::Open(const char* path, std::string& error) {
  m_fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (m_fd < 0) {
    error = SystemReason(errno);
    return false;
  }
  return true;
}

bool OutputFile::Append(const void* data, std::size_t size, std::string& error) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  while (size > 0) {
    const ssize_t done = ::write(m_fd, bytes, size);
    if (done < 0) {
      if (errno == EINTR) continue;
      error = SystemReason(errno);
      return false;
    }
    bytes += done;
    size -= static_cast<std::size_t>(done);
  }
  return true;
}

bool OutputFile::WriteAt(std::uint64_t offset, const void* data, std::size_t size,
                         std::string& error) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  while (size > 0) {
    const ssize_t done = ::pwrite(m_fd, bytes, size, static_cast<off_t>(offset));
    if (done < 0) {
      if (errno == EINTR) continue;
      error = SystemReason(errno);
      return false;
    }
    bytes += done;
    offset += static_cast<std::uint64_t>(done);
    size -= static_cast<std::size_t>(done);
  }
  return true;
}

bool OutputFile::Close(std::string& error) {
  if (m_fd < 0) return true;
  const int result = ::close(m_fd);
  m_fd = -1;
  if (result != 0 && errno != EINTR) {
    error = SystemReason(errno);
    return false;
  }
  return true;
}

// ---- InputFile ----

InputFile::~InputFile() {
  if (m_fd >= 0) ::close(m_fd);
}

bool InputFile::Open(const char* path, std::uint64_t& size, std::string& error) {
  m_fd = ::open(path, O_RDONLY | O_CLOEXEC);
  if (m_fd < 0) {
    error = SystemReason(errno);
    return false;
  }
  struct stat info;
  if (::fstat(m_fd, &info) != 0) {
    error = SystemReason(errno);
  } else if (S_ISDIR(info.st_mode)) {
    error = SystemReason(EISDIR);
  } else {
    // Devices and pipes report no size and read as empty files.
    size = S_ISREG(info.st_mode) ? static_cast<std::uint64_t>(info.st_size) : 0;
    return true;
  }
  ::close(m_fd);
  m_fd = -1;
  return false;
}

bool InputFile::ReadAt(std::uint64_t offset, void* data, std::size_t size, std::size_t& got,
                       std::string& error) {
  auto* bytes = static_cast<std::uint8_t*>(data);
  got = 0;
  while (got < size) {
    const ssize_t done = ::pread(m_fd, bytes + got, size - got, static_cast<off_t>(offset + got));
    if (done < 0) {
      if (errno == EINTR) continue;
      error = SystemReason(errno);
      return false;
    }
    if (done == 0) break;
    got += static_cast<std::size_t>(done);
  }
  return true;
}

}  // namespace Orlo::internal
