// Defines DataPoint3, the data value of three-component double elements, and its factory
// DataPoint3Factory.
// Owned by the DataTable it sits in (through the block graph); a factory-made value carries
// the id -1 and the default (0, 0, 0).
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/internal/data_array.h>

namespace Orlo {

class DataPoint3 : public internal::DataArray<Point3<double>> {
 public:
  static constexpr BlockType m_block_type{200, 64, 80};

  // A size below 1 is taken as 1; every element starts at `default_value`.
  DataPoint3(int id, Point3<double> default_value, int size);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  Block* Clone() override;
  int GetType() const override;

  using DataArray::GetValue;
  using DataArray::SetValue;

  void GetValue(Point3<double>& out, int time, int index) const override;
  Point3<double> GetPoint3F(int time, int index) const override;
  // Stores a Point3<double> only: an integer point is deliberately ignored.
  void SetValue(Point3<double> value, int time, int index) override;
};

class DataPoint3Factory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A one-element value with the id -1 and the default (0, 0, 0), whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
