#include <orlo/support/scene_save.h>

#include <cstring>
#include <utility>

#include <orlo/support/internal/chunk_format.h>
#include <orlo/support/internal/little_endian.h>
#include <orlo/support/internal/scene_file.h>

namespace Orlo {
namespace {

// Large enough that system calls stop mattering, small enough to live on any host.
constexpr std::size_t kFileBufferBytes = std::size_t{64} << 10;
constexpr std::size_t kFirstMemoryBytes = std::size_t{4} << 10;

}  // namespace

class SceneSave::Impl {
 public:
  // Memory writer.
  Impl() : m_buffer(kFirstMemoryBytes) {}

  // File writer.
  Impl(const char* path, Status* status) : m_to_file(true), m_path(path != nullptr ? path : "") {
    std::string reason;
    if (path == nullptr || !m_file.Open(path, reason)) {
      if (path == nullptr) reason = "no path given";
      m_status.Set(Status::kFailed,
                   "SceneSave : Cannot open '" + m_path + "' for writing: " + reason + ".");
      if (status != nullptr) *status = m_status;
      m_writable = false;
      m_finished = true;
      return;
    }
    m_buffer.resize(kFileBufferBytes);
  }

  bool Put(const void* data, std::size_t size) {
    if (!m_writable) return false;
    if (size <= m_buffer.size() - m_used) {
      if (size != 0) std::memcpy(m_buffer.data() + m_used, data, size);
      m_used += size;
      return true;
    }
    return PutSlow(data, size);
  }

  template <typename T>
  void PutNumber(T bits) {
    std::uint8_t bytes[sizeof(T)];
    internal::StoreLittleEndian(bits, bytes);
    Put(bytes, sizeof(T));
  }

  void BeginChunk(std::uint32_t id) {
    if (!m_writable) return;
    // A header never straddles a flush, so EndChunk finds its length field either wholly
    // in the buffer or wholly in the file.
    if (m_to_file && m_buffer.size() - m_used < internal::kChunkHeaderBytes && !Flush()) return;
    m_open_headers.push_back(Tell());
    std::uint8_t header[internal::kChunkHeaderBytes] = {};
    internal::StoreLittleEndian(id, header);
    Put(header, sizeof(header));
  }

  void EndChunk() {
    if (!m_writable || m_open_headers.empty()) return;
    const std::uint64_t header = m_open_headers.back();
    m_open_headers.pop_back();
    std::uint8_t length[internal::kChunkLengthBytes];
    internal::StoreLittleEndian<std::uint64_t>(Tell() - header - internal::kChunkHeaderBytes,
                                               length);
    const std::uint64_t length_offset = header + internal::kChunkIdBytes;
    if (header >= m_flushed) {
      std::memcpy(m_buffer.data() + (length_offset - m_flushed), length, sizeof(length));
      return;
    }
    std::string reason;
    if (!m_file.WriteAt(length_offset, length, sizeof(length), reason)) FailWrite(reason);
  }

  void PutString(const std::string& text) {
    if (!m_writable) return;
    if (text.size() > internal::kMaxStringBytes) {
      Fail("SceneSave : A string of " + std::to_string(text.size()) +
           " bytes is longer than the 4294967295 bytes a string can hold.");
      return;
    }
    PutNumber(static_cast<std::uint32_t>(text.size()));
    Put(text.data(), text.size());
  }

  Status Finish() {
    if (m_finished) return m_status;
    while (m_writable && !m_open_headers.empty()) EndChunk();
    if (m_to_file) {
      if (m_writable) Flush();
      std::string reason;
      if (!m_file.Close(reason)) FailWrite(reason);
    }
    m_writable = false;
    m_finished = true;
    return m_status;
  }

  std::vector<std::uint8_t> TakeBytes() {
    if (m_to_file) return {};
    Finish();
    m_buffer.resize(m_used);
    m_used = 0;
    return std::move(m_buffer);
  }

 private:
  std::uint64_t Tell() const { return m_flushed + m_used; }

  bool PutSlow(const void* data, std::size_t size) {
    if (!m_to_file) {
      std::size_t capacity = m_buffer.size() * 2;
      if (capacity - m_used < size) capacity = m_used + size;
      m_buffer.resize(capacity);
    } else {
      if (!Flush()) return false;
      if (size >= m_buffer.size()) {
        std::string reason;
        if (!m_file.Append(data, size, reason)) {
          FailWrite(reason);
          return false;
        }
        m_flushed += size;
        return true;
      }
    }
    std::memcpy(m_buffer.data() + m_used, data, size);
    m_used += size;
    return true;
  }

  bool Flush() {
    if (m_used == 0) return true;
    std::string reason;
    if (!m_file.Append(m_buffer.data(), m_used, reason)) {
      FailWrite(reason);
      return false;
    }
    m_flushed += m_used;
    m_used = 0;
    return true;
  }

  void FailWrite(const std::string& reason) {
    Fail("SceneSave : Cannot write '" + m_path + "': " + reason + ".");
  }

  // The first failure is kept; the writer stops writing from then on.
  void Fail(const std::string& message) {
    if (m_status.IsOk()) m_status.Set(Status::kFailed, message);
    m_writable = false;
  }

  internal::OutputFile m_file;
  bool m_to_file = false;
  std::string m_path;
  // The whole of m_buffer is usable; m_used bytes of it are written. A file writer keeps it
  // at its fixed size and flushes it; a memory writer grows it and never flushes.
  std::vector<std::uint8_t> m_buffer;
  std::size_t m_used = 0;
  // Bytes already handed to the file: the buffer starts at this offset of the file.
  std::uint64_t m_flushed = 0;
  // File offset of the header of every open chunk, the innermost last.
  std::vector<std::uint64_t> m_open_headers;
  // False after a failed open, a write error or Finish: every call then does nothing.
  bool m_writable = true;
  bool m_finished = false;
  Status m_status;
};

SceneSave::SceneSave(const char* path, Status* status)
    : m_impl(std::make_unique<Impl>(path, status)) {}

SceneSave::SceneSave() : m_impl(std::make_unique<Impl>()) {}

SceneSave::~SceneSave() {
  // A destructor cannot report; callers that need the outcome call Finish first.
  (void)m_impl->Finish();
}

void SceneSave::BeginChunk(unsigned id) { m_impl->BeginChunk(static_cast<std::uint32_t>(id)); }

void SceneSave::EndChunk() { m_impl->EndChunk(); }

bool SceneSave::Write(const void* data, unsigned size, unsigned& written) {
  const bool stored = m_impl->Put(data, size);
  written = stored ? size : 0;
  return stored;
}

void SceneSave::WriteString(const std::string& text) { m_impl->PutString(text); }

void SceneSave::WriteUInt8(std::uint8_t value) { m_impl->PutNumber(value); }

void SceneSave::WriteInt32(std::int32_t value) {
  m_impl->PutNumber(static_cast<std::uint32_t>(value));
}

void SceneSave::WriteUInt32(std::uint32_t value) { m_impl->PutNumber(value); }

void SceneSave::WriteUInt64(std::uint64_t value) { m_impl->PutNumber(value); }

void SceneSave::WriteFloat(float value) { m_impl->PutNumber(internal::BitsOf(value)); }

void SceneSave::WriteDouble(double value) { m_impl->PutNumber(internal::BitsOf(value)); }

Status SceneSave::Finish() { return m_impl->Finish(); }

std::vector<std::uint8_t> SceneSave::TakeBytes() { return m_impl->TakeBytes(); }

}  // namespace Orlo
