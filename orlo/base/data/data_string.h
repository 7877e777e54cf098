// Defines DataString, the data value of narrow string elements, and its factory
// DataStringFactory.
// Owned by the DataTable it sits in (through the block graph); a factory-made value carries
// the id -1 and the empty default.
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/internal/data_array.h>

namespace Orlo {

class DataString : public internal::DataArray<std::string> {
 public:
  static constexpr BlockType m_block_type{200, 64, 112};

  // A size below 1 is taken as 1; every element starts at `default_value`.
  DataString(int id, std::string default_value, int size);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  Block* Clone() override;
  int GetType() const override;

  using DataArray::GetValue;
  using DataArray::SetValue;

  void GetValue(std::string& out, int time, int index) const override;
  std::string GetString(int time, int index) const override;
  // Kept as is: unlike the point and colour values, a string reads as 0 and 0.0.
  int GetInt(int time, int index) const override;
  double GetFloat(int time, int index) const override;
  void SetValue(const std::string& value, int time, int index) override;
  // Strings are not animated and carry no validity interval: `interval` is left as it is.
  void GetTimeInterval(TimeInterval& interval) const override;
};

class DataStringFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A one-element value with the id -1 and the empty default, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
