#include <orlo/base/data/internal/data_array.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <new>
#include <string>
#include <utility>

#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo::internal {

namespace {

// Payload of a data value. Format history, newest first:
//   v1: chunks 0x05 id, 0x10 default value, 0x15 count and elements.
constexpr unsigned kIDChunk = 0x05;
constexpr unsigned kDefaultChunk = 0x10;
constexpr unsigned kValuesChunk = 0x15;

// How each element type is written. kMinEncodedSize is the fewest bytes one element takes in
// chunk 0x15, used to check a count against what the chunk holds before anything is
// allocated.
template <typename T>
struct ElementCodec;

template <>
struct ElementCodec<bool> {
  static constexpr std::uint64_t kMinEncodedSize = 4;
  static void WriteDefault(SceneSave* save, bool value) { save->WriteUInt8(value ? 1 : 0); }
  static void ReadDefault(SceneLoad* load, bool& value) {
    std::uint8_t byte = 0;
    load->ReadUInt8(byte);
    value = byte != 0;
  }
  static void Write(SceneSave* save, bool value) { save->WriteInt32(value ? 1 : 0); }
  static void Read(SceneLoad* load, bool& value) {
    std::int32_t number = 0;
    load->ReadInt32(number);
    value = number != 0;
  }
};

template <>
struct ElementCodec<int> {
  static constexpr std::uint64_t kMinEncodedSize = 4;
  static void WriteDefault(SceneSave* save, int value) { save->WriteInt32(value); }
  static void ReadDefault(SceneLoad* load, int& value) { Read(load, value); }
  static void Write(SceneSave* save, int value) { save->WriteInt32(value); }
  static void Read(SceneLoad* load, int& value) {
    std::int32_t number = 0;
    load->ReadInt32(number);
    value = number;
  }
};

template <>
struct ElementCodec<double> {
  static constexpr std::uint64_t kMinEncodedSize = 8;
  static void WriteDefault(SceneSave* save, double value) { save->WriteDouble(value); }
  static void ReadDefault(SceneLoad* load, double& value) { load->ReadDouble(value); }
  static void Write(SceneSave* save, double value) { save->WriteDouble(value); }
  static void Read(SceneLoad* load, double& value) { load->ReadDouble(value); }
};

template <>
struct ElementCodec<Point3<double>> {
  static constexpr std::uint64_t kMinEncodedSize = 24;
  static void WriteDefault(SceneSave* save, const Point3<double>& value) { Write(save, value); }
  static void ReadDefault(SceneLoad* load, Point3<double>& value) { Read(load, value); }
  static void Write(SceneSave* save, const Point3<double>& value) {
    save->WriteDouble(value.x);
    save->WriteDouble(value.y);
    save->WriteDouble(value.z);
  }
  static void Read(SceneLoad* load, Point3<double>& value) {
    load->ReadDouble(value.x);
    load->ReadDouble(value.y);
    load->ReadDouble(value.z);
  }
};

template <>
struct ElementCodec<Color> {
  static constexpr std::uint64_t kMinEncodedSize = 12;
  static void WriteDefault(SceneSave* save, const Color& value) { Write(save, value); }
  static void ReadDefault(SceneLoad* load, Color& value) { Read(load, value); }
  static void Write(SceneSave* save, const Color& value) {
    save->WriteFloat(value.r);
    save->WriteFloat(value.g);
    save->WriteFloat(value.b);
  }
  static void Read(SceneLoad* load, Color& value) {
    load->ReadFloat(value.r);
    load->ReadFloat(value.g);
    load->ReadFloat(value.b);
  }
};

// A string's default value is kept as a fixed 32-byte record, the image of a short-string
// object: bytes 0-15 the text and a zero byte, bytes 16-23 the length, bytes 24-31 the
// capacity 15. Kept as is: existing scene files hold this record. It cannot carry more than
// 15 characters, so the writer stores at most 15 and the reader takes at most 15.
constexpr std::size_t kShortStringCapacity = 15;
constexpr std::size_t kShortStringTextBytes = 16;

template <>
struct ElementCodec<std::string> {
  // Every string starts with its length prefix.
  static constexpr std::uint64_t kMinEncodedSize = 4;
  static void WriteDefault(SceneSave* save, const std::string& value) {
    const std::size_t length =
        value.size() < kShortStringCapacity ? value.size() : kShortStringCapacity;
    // Zero-filled, so the text is followed by its zero byte (length is at most 15 of 16).
    char text[kShortStringTextBytes] = {};
    std::copy_n(value.data(), length, text);
    unsigned written = 0;
    save->Write(text, sizeof(text), written);
    save->WriteUInt64(length);
    save->WriteUInt64(kShortStringCapacity);
  }
  static void ReadDefault(SceneLoad* load, std::string& value) {
    char text[kShortStringTextBytes] = {};
    unsigned read = 0;
    load->Read(text, sizeof(text), read);
    std::uint64_t length = 0;
    load->ReadUInt64(length);
    std::uint64_t capacity = 0;
    load->ReadUInt64(capacity);
    // A longer text never fitted the record; what is there is its first 15 bytes.
    if (length > kShortStringCapacity) length = kShortStringCapacity;
    value.assign(text, static_cast<std::size_t>(length));
  }
  static void Write(SceneSave* save, const std::string& value) { save->WriteString(value); }
  static void Read(SceneLoad* load, std::string& value) { load->ReadString(value); }
};

}  // namespace

template <typename T>
DataArray<T>::DataArray(int id, T default_value, int size)
    : Data(id), m_size(1), m_one(default_value), m_default(std::move(default_value)) {
  if (size > 1) Resize(static_cast<std::size_t>(size));
}

template <typename T>
DataArray<T>::DataArray(const DataArray& other)
    : Data(other), m_size(1), m_one(other.m_default), m_default(other.m_default) {
  CopyElementsOf(other);
}

template <typename T>
DataArray<T>& DataArray<T>::operator=(const DataArray& other) {
  if (this == &other) return *this;
  Data::operator=(other);
  m_default = other.m_default;
  CopyElementsOf(other);
  return *this;
}

template <typename T>
DataArray<T>::~DataArray() {
  FreeElements();
}

template <typename T>
void DataArray<T>::FreeElements() {
  if (IsInline()) {
    m_one.~T();
  } else {
    delete[] m_many;
  }
}

template <typename T>
void DataArray<T>::Resize(std::size_t count) {
  if (count == m_size) return;
  if (count <= 1) {
    T kept = m_size > 0 ? Elements()[0] : m_default;
    FreeElements();
    new (&m_one) T(std::move(kept));
  } else {
    auto* grown = new T[count];
    const std::size_t kept = std::min<std::size_t>(m_size, count);
    std::copy(Elements(), Elements() + kept, grown);
    std::fill(grown + kept, grown + count, m_default);
    FreeElements();
    m_many = grown;
  }
  m_size = static_cast<std::uint32_t>(count);
}

template <typename T>
void DataArray<T>::Erase(int index) {
  assert(index >= 0 && index < GetSize());
  if (index < 0 || index >= GetSize()) return;
  if (m_size == 2) {
    // Back to one element in the object.
    T kept = std::move(m_many[index == 0 ? 1 : 0]);
    delete[] m_many;
    new (&m_one) T(std::move(kept));
  } else if (m_size > 2) {
    std::move(m_many + index + 1, m_many + m_size, m_many + index);
  }
  --m_size;
}

template <typename T>
void DataArray<T>::CopyElementsOf(const DataArray& other) {
  Resize(other.m_size);
  std::copy(other.Elements(), other.Elements() + other.m_size, Elements());
}

template <typename T>
int DataArray<T>::Save(SceneSave* save) {
  assert(save != nullptr);
  using Codec = ElementCodec<T>;
  save->BeginChunk(kIDChunk);
  save->WriteInt32(m_parameter_id);
  save->EndChunk();

  save->BeginChunk(kDefaultChunk);
  Codec::WriteDefault(save, m_default);
  save->EndChunk();

  save->BeginChunk(kValuesChunk);
  save->WriteInt32(static_cast<std::int32_t>(m_size));
  const T* elements = Elements();
  for (std::size_t i = 0; i < m_size; ++i) Codec::Write(save, elements[i]);
  save->EndChunk();
  return 1;
}

template <typename T>
int DataArray<T>::Load(SceneLoad* load) {
  assert(load != nullptr);
  int opened = SceneLoad::kError;
  while ((opened = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    switch (load->CurChunkID()) {
      case kIDChunk: {
        std::int32_t id = -1;
        load->ReadInt32(id);
        if (id > kMaxLoadedParameterID) {
          load->ReportCorruption(GetClassName() + " parameter id " + std::to_string(id) +
                                 " is larger than " + std::to_string(kMaxLoadedParameterID));
          load->CloseChunk();
          return 0;
        }
        m_parameter_id = id;
        break;
      }
      case kDefaultChunk:
        ElementCodec<T>::ReadDefault(load, m_default);
        break;
      case kValuesChunk:
        if (!LoadValues(load)) {
          load->CloseChunk();
          return 0;
        }
        break;
      default:
        break;
    }
    load->CloseChunk();
  }
  return opened == SceneLoad::kError ? 0 : 1;
}

template <typename T>
bool DataArray<T>::LoadValues(SceneLoad* load) {
  assert(load != nullptr);
  using Codec = ElementCodec<T>;
  std::int32_t count = 0;
  if (!load->ReadInt32(count)) return false;
  // Checked before anything is allocated: the count comes from the file.
  if (count < 0 ||
      static_cast<std::uint64_t>(count) > load->BytesLeftInChunk() / Codec::kMinEncodedSize) {
    load->ReportCorruption(GetClassName() + " element count " + std::to_string(count) +
                           " does not fit the " + std::to_string(load->BytesLeftInChunk()) +
                           " bytes left in its chunk");
    return false;
  }
  const auto size = static_cast<std::size_t>(count);
  ResizeForLoad(size);
  T* elements = Elements();
  for (std::size_t i = 0; i < size; ++i) {
    T value{};
    Codec::Read(load, value);
    elements[i] = std::move(value);
  }
  return !load->HasError();
}

template class DataArray<bool>;
template class DataArray<int>;
template class DataArray<double>;
template class DataArray<Point3<double>>;
template class DataArray<Color>;
template class DataArray<std::string>;

}  // namespace Orlo::internal
