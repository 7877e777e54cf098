// Defines DataArray<T>, the storage and the shared behaviour of the six data values.
//
// It holds the element array, the default value and the validity interval, and implements
// everything the members have in common: size changes, the name, the file payload, and the
// answers of a getter or setter that does not fit the element type (no-ops and the fixed
// values -1, (-1, -1, -1), (0, 0, 0), false and the empty string). Each member overrides
// only the conversions it makes. The template is instantiated in data_array.cpp for bool,
// int, double, Point3<double>, Color and std::string.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <orlo/base/data/data.h>

namespace Orlo {
class SceneLoad;
class SceneSave;
}  // namespace Orlo

namespace Orlo::internal {

// Ids above this cannot come from a file: a table's id-to-index map is as long as its largest
// id, and no block numbers its parameters anywhere near this far.
inline constexpr int kMaxLoadedParameterID = 0xFFFF;

template <typename T>
class DataArray : public Data {
 public:
  // ---- Block ----

  // Data values have no slots, except DataFloat's controllers.
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  unsigned GetDependencyType(int) const override { return 0; }
  // Chunks 0x05 (id), 0x10 (default value) and 0x15 (count and elements); returns 1. The name
  // and the controllers are not written.
  // Requires: save is not null.
  int Save(SceneSave* save) override;
  // Reads the chunks Save wrote; unknown chunks are skipped. Returns 0 when the reader
  // reports an error, or when a chunk holds an id or a count that cannot be right.
  // Requires: load is not null.
  int Load(SceneLoad* load) override;
  void DeleteThis() override { delete this; }

  // ---- Storage ----

  std::string GetName() const override { return m_name.Get(); }
  void SetName(const std::string& name) override {
    // Tables set the names of their parameters again at every refresh; the same name keeps
    // its shared text.
    if (m_name.Get() != name) m_name = SharedName(name);
  }
  int GetSize() const override { return static_cast<int>(m_size); }
  void SetSize(int size) override { Resize(size > 0 ? static_cast<std::size_t>(size) : 0); }
  // Requires: 0 <= index < GetSize(); a release build ignores an index outside the elements.
  void Erase(int index) override;
  // Stored values do not depend on time, so they stay valid forever: the interval is left as
  // it is (narrowing it by the forever interval would change nothing).
  void GetTimeInterval(TimeInterval&) const override {}
  Controller* GetController(int) const override { return nullptr; }
  void SetController(Controller*, int) override {}

  // The value that fills new elements.
  const T& GetDefaultValue() const { return m_default; }

  // ---- Conversions a member does not make ----

  void GetValue(std::string&, int, int) const override {}
  void GetValue(Color&, int, int) const override {}
  void GetValue(Point3<int>&, int, int) const override {}
  void GetValue(Point3<double>&, int, int) const override {}
  void GetValue(bool&, int, int) const override {}
  void GetValue(int&, int, int) const override {}
  void GetValue(double&, int, int) const override {}
  double GetFloat(int, int) const override { return -1.0; }
  int GetInt(int, int) const override { return -1; }
  bool GetBool(int, int) const override { return false; }
  Point3<double> GetPoint3F(int, int) const override { return {-1.0, -1.0, -1.0}; }
  Point3<int> GetPoint3I(int, int) const override { return {-1, -1, -1}; }
  Color GetColor(int, int) const override { return {}; }
  std::string GetString(int, int) const override { return {}; }
  void SetValue(const std::string&, int, int) override {}
  void SetValue(Color, int, int) override {}
  void SetValue(Point3<int>, int, int) override {}
  void SetValue(Point3<double>, int, int) override {}
  void SetValue(bool, int, int) override {}
  void SetValue(int, int, int) override {}
  void SetValue(double, int, int) override {}
  using Data::SetValue;

 protected:
  // A size below 1 is taken as 1; every element starts at the default.
  DataArray(int id, T default_value, int size);
  DataArray(const DataArray& other);
  DataArray& operator=(const DataArray& other);
  ~DataArray() override;

  // Requires: 0 <= index < GetSize(). A release build answers the default value instead of
  // reading outside the elements.
  T At(int index) const {
    assert(index >= 0 && index < GetSize());
    if (index < 0 || index >= GetSize()) return m_default;
    return Elements()[index];
  }

  // Stores one element, then tells the listeners and the table which element changed.
  // Requires: 0 <= index < GetSize(). A release build stores nothing outside the elements.
  void Store(int index, T value) {
    assert(index >= 0 && index < GetSize());
    if (index < 0 || index >= GetSize()) return;
    Elements()[index] = std::move(value);
    PostEvent(BlockEvent(this, 3, index));
  }

  // A new member of class `Member` with the same id, default value, size, elements and name.
  template <typename Member>
  Member* CloneAs() const {
    auto* copy = new Member(m_parameter_id, m_default, GetSize());
    copy->CopyElementsOf(*this);
    copy->m_name = m_name;
    return copy;
  }

  // Called by Load before it reads `count` elements; DataFloat resizes its controller slots
  // here as well.
  virtual void ResizeForLoad(std::size_t count) { Resize(count); }

 private:
  // Nearly every value has one element, so one element lives in the object and only a longer
  // array is allocated, exactly as long as the count. The count sits in the padding at the
  // end of Data where the compiler allows it.
  bool IsInline() const { return m_size <= 1; }
  const T* Elements() const { return IsInline() ? &m_one : m_many; }
  T* Elements() { return IsInline() ? &m_one : m_many; }
  // Keeps the first `count` elements; new ones take the default value.
  void Resize(std::size_t count);
  void CopyElementsOf(const DataArray& other);
  // Ends the current storage, leaving the count as it is.
  void FreeElements();
  bool LoadValues(SceneLoad* load);

  std::uint32_t m_size;
  union {
    T m_one;    // while m_size <= 1 (with 0 elements it holds an unused default)
    T* m_many;  // otherwise, from new T[m_size]
  };
  T m_default;
};

extern template class DataArray<bool>;
extern template class DataArray<int>;
extern template class DataArray<double>;
extern template class DataArray<Point3<double>>;
extern template class DataArray<Color>;
extern template class DataArray<std::string>;

}  // namespace Orlo::internal
