// Defines DataInt, the data value of signed 32-bit integer elements, and its factory
// DataIntFactory.
// Owned by the DataTable it sits in (through the block graph); a factory-made value carries
// the id -1 and the default 0.
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/internal/data_array.h>

namespace Orlo {

class DataInt : public internal::DataArray<int> {
 public:
  static constexpr BlockType m_block_type{200, 64, 48};

  // A size below 1 is taken as 1; every element starts at `default_value`.
  DataInt(int id, int default_value, int size);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  Block* Clone() override;
  int GetType() const override;

  using DataArray::GetValue;
  using DataArray::SetValue;

  void GetValue(bool& out, int time, int index) const override;
  void GetValue(int& out, int time, int index) const override;
  // Through a 32-bit float: magnitudes above 2^24 lose precision.
  void GetValue(double& out, int time, int index) const override;
  // The integer broadcast into all three components; the by-value point and colour getters
  // deliberately do not broadcast.
  void GetValue(Point3<int>& out, int time, int index) const override;
  void GetValue(Point3<double>& out, int time, int index) const override;
  void GetValue(Color& out, int time, int index) const override;
  bool GetBool(int time, int index) const override;
  int GetInt(int time, int index) const override;
  double GetFloat(int time, int index) const override;

  void SetValue(bool value, int time, int index) override;
  void SetValue(int value, int time, int index) override;
  // Truncated toward zero; out of range and NaN give -2147483648.
  void SetValue(double value, int time, int index) override;
};

class DataIntFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A one-element value with the id -1 and the default 0, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
