// Defines DataColor, the data value of colour elements, and its factory DataColorFactory.
// Owned by the DataTable it sits in (through the block graph); a factory-made value
// carries the id -1 and the default (0, 0, 0).
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/internal/data_array.h>

namespace Orlo {

class DataColor : public internal::DataArray<Color> {
 public:
  static constexpr BlockType m_block_type{200, 64, 96};

  // A size below 1 is taken as 1; every element starts at `default_value`.
  DataColor(int id, Color default_value, int size);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  Block* Clone() override;
  int GetType() const override;

  using DataArray::GetValue;
  using DataArray::SetValue;

  void GetValue(Color& out, int time, int index) const override;
  Color GetColor(int time, int index) const override;
  void SetValue(Color value, int time, int index) override;
};

class DataColorFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A one-element value with the id -1 and the default (0, 0, 0), whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
