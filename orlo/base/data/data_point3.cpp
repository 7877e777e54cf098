#include <orlo/base/data/data_point3.h>

namespace Orlo {

DataPoint3::DataPoint3(int id, Point3<double> default_value, int size)
    : DataArray(id, default_value, size) {}

std::string DataPoint3::GetClassName() const { return "DataPoint3"; }

BlockType DataPoint3::GetBlockType() const { return m_block_type; }

Block* DataPoint3::Clone() { return CloneAs<DataPoint3>(); }

int DataPoint3::GetType() const { return kTypePoint3; }

void DataPoint3::GetValue(Point3<double>& out, int, int index) const { out = At(index); }

Point3<double> DataPoint3::GetPoint3F(int, int index) const { return At(index); }

void DataPoint3::SetValue(Point3<double> value, int, int index) { Store(index, value); }

BlockType DataPoint3Factory::GetBlockType() const { return DataPoint3::m_block_type; }

Block* DataPoint3Factory::GetBlock(bool) const { return new DataPoint3(-1, Point3<double>(), 1); }

std::string DataPoint3Factory::GetName() const { return "DataPoint3"; }

}  // namespace Orlo
