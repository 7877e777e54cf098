// Defines DataBool, the data value of boolean elements, and its factory DataBoolFactory.
// Owned by the DataTable it sits in (through the block graph); a factory-made value
// carries the id -1 and the default false.
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/internal/data_array.h>

namespace Orlo {

class DataBool : public internal::DataArray<bool> {
 public:
  static constexpr BlockType m_block_type{200, 64, 32};

  // A size below 1 is taken as 1; every element starts at `default_value`.
  DataBool(int id, bool default_value, int size);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  Block* Clone() override;
  int GetType() const override;

  using DataArray::GetValue;
  using DataArray::SetValue;

  // The bit, as 1 or 0, or as 1.0 or 0.0.
  void GetValue(bool& out, int time, int index) const override;
  void GetValue(int& out, int time, int index) const override;
  void GetValue(double& out, int time, int index) const override;
  bool GetBool(int time, int index) const override;
  int GetInt(int time, int index) const override;
  double GetFloat(int time, int index) const override;

  // A number is stored as whether it differs from zero (NaN gives true).
  void SetValue(bool value, int time, int index) override;
  void SetValue(int value, int time, int index) override;
  void SetValue(double value, int time, int index) override;
};

class DataBoolFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A one-element value with the id -1 and the default false, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
