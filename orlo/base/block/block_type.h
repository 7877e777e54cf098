// Defines BlockType, the three numbers that name a block class in memory and in files.
#pragma once

#include <cstdint>

namespace Orlo {

struct BlockType {
  // The block's kind (100 MainScene, 105 BlockTable, 200 data values, 300 controllers,
  // 500 to 799 objects, 800 modifiers, ...).
  std::uint32_t class_id = 0;
  // The kind within the category.
  std::uint32_t super_class_id = 0;
  // The class within the kind.
  std::uint32_t sub_id = 0;

  constexpr BlockType() = default;
  constexpr BlockType(unsigned class_id_value, unsigned super_class_id_value, unsigned sub_id_value)
      : class_id(class_id_value), super_class_id(super_class_id_value), sub_id(sub_id_value) {}

  // Deliberately ignores class_id: two types that differ only in their first number are the
  // same type. Factory registration and the scene reader's lookup rely on this equality.
  constexpr int operator==(const BlockType& other) const {
    return super_class_id == other.super_class_id && sub_id == other.sub_id ? 1 : 0;
  }
  constexpr int operator!=(const BlockType& other) const { return *this == other ? 0 : 1; }
};

}  // namespace Orlo
