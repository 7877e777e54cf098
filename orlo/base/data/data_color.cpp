#include <orlo/base/data/data_color.h>

namespace Orlo {

DataColor::DataColor(int id, Color default_value, int size) : DataArray(id, default_value, size) {}

std::string DataColor::GetClassName() const { return "DataColor"; }

BlockType DataColor::GetBlockType() const { return m_block_type; }

Block* DataColor::Clone() { return CloneAs<DataColor>(); }

int DataColor::GetType() const { return kTypeColor; }

void DataColor::GetValue(Color& out, int, int index) const { out = At(index); }

Color DataColor::GetColor(int, int index) const { return At(index); }

void DataColor::SetValue(Color value, int, int index) { Store(index, value); }

BlockType DataColorFactory::GetBlockType() const { return DataColor::m_block_type; }

Block* DataColorFactory::GetBlock(bool) const { return new DataColor(-1, Color(), 1); }

std::string DataColorFactory::GetName() const { return "DataColor"; }

}  // namespace Orlo
