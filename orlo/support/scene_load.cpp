#include <orlo/support/scene_load.h>

#include <algorithm>
#include <cassert>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <utility>

#include <orlo/support/internal/chunk_format.h>
#include <orlo/support/internal/little_endian.h>
#include <orlo/support/internal/scene_file.h>

// Keeps the error paths out of the hot ones, so that those stay small and inlined.
#if defined(__GNUC__)
#define ORLO_COLD __attribute__((cold, noinline))
#else
#define ORLO_COLD
#endif

namespace Orlo {
namespace {

// The window through which a file is read: large enough that system calls stop mattering.
constexpr std::size_t kFileWindowBytes = std::size_t{64} << 10;

std::string ChunkName(std::uint32_t id, std::uint64_t header_offset) {
  char text[64];
  std::snprintf(text, sizeof(text), "chunk 0x%04" PRIx32 " at offset %" PRIu64, id, header_offset);
  return text;
}

std::string Number(std::uint64_t value) { return std::to_string(value); }

}  // namespace

// Positions are file offsets. Every bound check has the form `len <= end - pos`, with
// pos <= end kept as an invariant, so no sum of an untrusted length can wrap.
class SceneLoad::Impl {
 public:
  Impl(const char* path, Status* status, SceneLoadLimits limits)
      : m_limits(limits), m_from_file(true) {
    std::string reason;
    if (path == nullptr || !m_file.Open(path, m_file_size, reason)) {
      if (path == nullptr) reason = "no path given";
      m_status.Set(Status::kFailed, "SceneLoad : Cannot open '" +
                                        std::string(path != nullptr ? path : "") +
                                        "' for reading: " + reason + ".");
      if (status != nullptr) *status = m_status;
      m_failed = true;
      m_file_size = 0;
    } else {
      m_window.resize(kFileWindowBytes);
    }
    m_end = m_file_size;
  }

  Impl(std::vector<std::uint8_t> bytes, SceneLoadLimits limits)
      : m_limits(limits), m_window(std::move(bytes)) {
    m_file_size = m_window.size();
    m_window_end = m_file_size;
    m_end = m_file_size;
  }

  int OpenChunk() {
    if (m_failed) return kError;
    const std::uint64_t left = m_end - m_pos;
    if (left == 0) return kEndOfChunk;
    // The common case: a whole, sound header in the window and room to nest.
    if (left >= internal::kChunkHeaderBytes &&
        internal::kChunkHeaderBytes <= m_window_end - m_pos && m_open.size() < m_max_depth) {
      const std::uint8_t* header = WindowAt(m_pos);
      const auto length = internal::LoadLittleEndian<std::uint64_t>(header + 4);
      if (length <= left - internal::kChunkHeaderBytes) {
        const auto id = internal::LoadLittleEndian<std::uint32_t>(header);
        m_pos += internal::kChunkHeaderBytes;
        m_end = m_pos + length;
        m_open.push_back(OpenRecord{id, m_pos - internal::kChunkHeaderBytes, m_end});
        m_cur_id = id;
        return kChunkOpened;
      }
    }
    return OpenChunkSlow();
  }

  void CloseChunk() {
    if (m_open.empty()) return;
    m_pos = m_open.back().end;
    m_open.pop_back();
    m_end = m_open.empty() ? m_file_size : m_open.back().end;
    // Skipped bytes are never read: the window restarts where reading goes on.
    if (m_pos > m_window_end) m_window_start = m_window_end = m_pos;
  }

  // Copies `size` bytes of the innermost chunk to `out`; see SceneLoad::Read.
  bool Take(void* out, std::uint64_t size, std::uint64_t& delivered) {
    if (!m_failed && size <= m_end - m_pos && size <= m_window_end - m_pos) {
      if (size != 0) std::memcpy(out, WindowAt(m_pos), size);
      m_pos += size;
      delivered = size;
      return true;
    }
    return TakeSlow(static_cast<std::uint8_t*>(out), size, delivered);
  }

  template <typename T>
  bool TakeNumber(T& bits) {
    if (!m_failed && sizeof(T) <= m_end - m_pos && sizeof(T) <= m_window_end - m_pos) {
      bits = internal::LoadLittleEndian<T>(WindowAt(m_pos));
      m_pos += sizeof(T);
      return true;
    }
    std::uint8_t bytes[sizeof(T)];
    std::uint64_t delivered = 0;
    const bool ok = TakeSlow(bytes, sizeof(T), delivered);
    bits = ok ? internal::LoadLittleEndian<T>(bytes) : T{0};
    return ok;
  }

  bool TakeString(std::string& text) {
    text.clear();
    const std::uint64_t at = m_pos;
    std::uint32_t length = 0;
    if (!TakeNumber(length)) return false;
    if (length > m_end - m_pos) {
      Fail(Here(), "string of " + Number(length) + " bytes at offset " + Number(at) +
                       " exceeds the " + Number(m_end - m_pos) + " bytes left in " + Container());
      return false;
    }
    if (length > m_limits.max_string_bytes) {
      Fail(Here(), "string of " + Number(length) + " bytes at offset " + Number(at) +
                       " exceeds the limit of " + Number(m_limits.max_string_bytes) + " bytes");
      return false;
    }
    text.resize(length);
    std::uint64_t delivered = 0;
    if (!Take(&text[0], length, delivered)) {
      text.clear();
      return false;
    }
    return true;
  }

  std::uint64_t BytesLeftInChunk() const { return m_failed ? 0 : m_end - m_pos; }
  std::uint64_t BytesLeftInFile() const { return m_failed ? 0 : m_file_size - m_pos; }
  int Depth() const { return static_cast<int>(m_open.size()); }
  unsigned CurChunkID() const { return m_cur_id; }

  void ReportCorruption(const std::string& what) {
    Fail(Here(), what + " (reported at offset " + Number(m_pos) + ")");
  }

  bool HasError() const { return m_failed; }
  const Status& GetStatus() const { return m_status; }

 private:
  struct OpenRecord {
    std::uint32_t id;
    std::uint64_t header_offset;
    // File offset just past the chunk's content.
    std::uint64_t end;
  };

  // Everything OpenChunk does, for the cases its fast path leaves: a header across the
  // window's edge, and every error.
  ORLO_COLD int OpenChunkSlow() {
    if (m_failed) return kError;
    const std::uint64_t left = m_end - m_pos;
    if (left == 0) return kEndOfChunk;
    const std::uint64_t at = m_pos;
    if (left < internal::kChunkHeaderBytes) {
      Fail(Here(), "chunk header at offset " + Number(at) + " is cut short: " + Number(left) +
                       " of its 12 bytes are left");
      return kError;
    }
    std::uint8_t header[internal::kChunkHeaderBytes];
    if (!TakeRaw(header, sizeof(header))) return kError;
    const auto id = internal::LoadLittleEndian<std::uint32_t>(header);
    const auto length = internal::LoadLittleEndian<std::uint64_t>(header + 4);
    const std::uint64_t room = left - internal::kChunkHeaderBytes;
    if (length > room) {
      Fail(ChunkName(id, at), "length " + Number(length) + " exceeds the " + Number(room) +
                                  " bytes left in " + (m_open.empty() ? "the file" : "its parent"));
      return kError;
    }
    if (m_open.size() >= m_max_depth) {
      Fail(ChunkName(id, at), "nesting depth " + Number(m_open.size() + 1) +
                                  " exceeds the limit of " + Number(m_max_depth));
      return kError;
    }
    m_end = m_pos + length;
    m_open.push_back(OpenRecord{id, at, m_end});
    m_cur_id = id;
    return kChunkOpened;
  }

  // Requires: `offset` lies in the window (its end included).
  const std::uint8_t* WindowAt(std::uint64_t offset) const {
    assert(offset >= m_window_start && offset <= m_window_end);
    return m_window.data() + (offset - m_window_start);
  }

  // The place an error is reported at: the innermost open chunk, or the file itself.
  std::string Here() const {
    if (m_open.empty()) return "file";
    return ChunkName(m_open.back().id, m_open.back().header_offset);
  }
  const char* Container() const { return m_open.empty() ? "the file" : "the chunk"; }

  // Every failure of the reader comes through here. Only the first one is kept.
  ORLO_COLD void Fail(const std::string& where, const std::string& what) {
    if (m_failed) return;
    m_failed = true;
    m_status.Set(Status::kFailed, where + ": " + what);
  }

  ORLO_COLD bool TakeSlow(std::uint8_t* out, std::uint64_t size, std::uint64_t& delivered) {
    delivered = 0;
    if (m_failed) {
      if (size != 0) std::memset(out, 0, size);
      return false;
    }
    const std::uint64_t at = m_pos;
    const std::uint64_t left = m_end - m_pos;
    const std::uint64_t wanted = std::min(size, left);
    delivered = Copy(out, wanted);
    if (delivered < size) {
      std::memset(out + delivered, 0, size - delivered);
      Fail(Here(), "read of " + Number(size) + " bytes at offset " + Number(at) + " finds only " +
                       Number(left) + " left in " + Container());
      return false;
    }
    return true;
  }

  // Copies `size` bytes known to lie inside the innermost chunk, as a header is.
  bool TakeRaw(std::uint8_t* out, std::uint64_t size) {
    if (size <= m_window_end - m_pos) {
      std::memcpy(out, WindowAt(m_pos), size);
      m_pos += size;
      return true;
    }
    return Copy(out, size) == size;
  }

  // Copies up to `size` bytes from the read position, refilling the window from the file
  // as needed, and returns the count copied: fewer only when the file cannot deliver them,
  // which is recorded as an error.
  std::uint64_t Copy(std::uint8_t* out, std::uint64_t size) {
    std::uint64_t copied = 0;
    while (copied < size) {
      if (m_pos < m_window_end) {
        const std::uint64_t step = std::min(size - copied, m_window_end - m_pos);
        std::memcpy(out + copied, WindowAt(m_pos), step);
        m_pos += step;
        copied += step;
        continue;
      }
      if (!m_from_file) break;  // the image is all there is
      const std::uint64_t rest = size - copied;
      std::uint8_t* target = m_window.data();
      std::uint64_t want = std::min<std::uint64_t>(m_window.size(), m_file_size - m_pos);
      if (rest >= m_window.size()) {
        // Large reads go straight to the caller's memory.
        target = out + copied;
        want = rest;
      }
      std::size_t got = 0;
      std::string reason;
      if (!m_file.ReadAt(m_pos, target, want, got, reason)) {
        Fail(Here(), "cannot read the file at offset " + Number(m_pos) + ": " + reason);
        break;
      }
      if (target == m_window.data()) {
        m_window_start = m_pos;
        m_window_end = m_pos + got;
      } else {
        m_pos += got;
        copied += got;
        m_window_start = m_window_end = m_pos;
      }
      if (got == 0) break;
    }
    if (copied < size) {
      Fail(Here(), "the file ends at offset " + Number(m_pos) + ", short of the " +
                       Number(m_file_size) + " bytes it had when opened");
    }
    return copied;
  }

  SceneLoadLimits m_limits;
  // The depth limit as a count of open chunks; a negative limit allows none.
  std::size_t m_max_depth = static_cast<std::size_t>(std::max(0, m_limits.max_depth));
  internal::InputFile m_file;
  bool m_from_file = false;
  // A memory reader's whole image, or a file reader's window onto its file. The window's
  // valid bytes are the file offsets [m_window_start, m_window_end);
  // m_window_start <= m_pos always holds, and so does m_pos <= m_window_end once reading
  // goes on.
  std::vector<std::uint8_t> m_window;
  std::uint64_t m_window_start = 0;
  std::uint64_t m_window_end = 0;
  // The file's size when it was opened: no read goes past it, whatever the file does later.
  std::uint64_t m_file_size = 0;
  std::uint64_t m_pos = 0;
  // End of the innermost open chunk, or m_file_size at the top; m_pos <= m_end.
  std::uint64_t m_end = 0;
  std::vector<OpenRecord> m_open;
  std::uint32_t m_cur_id = 0;
  bool m_failed = false;
  Status m_status;
};

SceneLoad::SceneLoad(const char* path, Status* status, SceneLoadLimits limits)
    : m_impl(std::make_unique<Impl>(path, status, limits)) {}

SceneLoad::SceneLoad(std::vector<std::uint8_t> bytes, SceneLoadLimits limits)
    : m_impl(std::make_unique<Impl>(std::move(bytes), limits)) {}

SceneLoad::~SceneLoad() = default;

int SceneLoad::OpenChunk() { return m_impl->OpenChunk(); }

unsigned SceneLoad::CurChunkID() const { return m_impl->CurChunkID(); }

void SceneLoad::CloseChunk() { m_impl->CloseChunk(); }

bool SceneLoad::Read(void* data, unsigned size, unsigned& read) {
  std::uint64_t delivered = 0;
  const bool ok = m_impl->Take(data, size, delivered);
  read = static_cast<unsigned>(delivered);
  return ok;
}

bool SceneLoad::ReadString(std::string& text) { return m_impl->TakeString(text); }

bool SceneLoad::ReadUInt8(std::uint8_t& value) { return m_impl->TakeNumber(value); }

bool SceneLoad::ReadInt32(std::int32_t& value) {
  std::uint32_t bits = 0;
  const bool ok = m_impl->TakeNumber(bits);
  value = static_cast<std::int32_t>(bits);
  return ok;
}

bool SceneLoad::ReadUInt32(std::uint32_t& value) { return m_impl->TakeNumber(value); }

bool SceneLoad::ReadUInt64(std::uint64_t& value) { return m_impl->TakeNumber(value); }

bool SceneLoad::ReadFloat(float& value) {
  std::uint32_t bits = 0;
  const bool ok = m_impl->TakeNumber(bits);
  value = internal::FloatFromBits(bits);
  return ok;
}

bool SceneLoad::ReadDouble(double& value) {
  std::uint64_t bits = 0;
  const bool ok = m_impl->TakeNumber(bits);
  value = internal::DoubleFromBits(bits);
  return ok;
}

std::uint64_t SceneLoad::BytesLeftInChunk() const { return m_impl->BytesLeftInChunk(); }

std::uint64_t SceneLoad::BytesLeftInFile() const { return m_impl->BytesLeftInFile(); }

int SceneLoad::Depth() const { return m_impl->Depth(); }

void SceneLoad::ReportCorruption(const std::string& what) { m_impl->ReportCorruption(what); }

bool SceneLoad::HasError() const { return m_impl->HasError(); }

const Status& SceneLoad::GetStatus() const { return m_impl->GetStatus(); }

}  // namespace Orlo
