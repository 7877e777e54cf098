// Defines UnknownObject, the object the scene reader puts in place of an object whose class
// has no registered factory.
//
// The placeholder keeps nothing of the block it stands for (neither its type nor its data):
// it only lets the rest of the scene be held, evaluated and deleted. It has no slots, and its
// Save fails on purpose, so that a scene holding one cannot be written back as if it were
// whole. It is owned through the graph like every block.
#pragma once

#include <string>

#include <orlo/base/scene/object.h>

namespace Orlo {

class UnknownObject : public Object {
 public:
  static constexpr BlockType m_block_type{500, 128, 0};
  static constexpr int kFlags = 0x640043;

  // The flag is unused: there is nothing to create.
  explicit UnknownObject(bool create);
  UnknownObject(const UnknownObject&) = default;
  UnknownObject(UnknownObject&&) = default;
  UnknownObject& operator=(const UnknownObject&) = default;
  UnknownObject& operator=(UnknownObject&&) = default;

  // ---- Block ----

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // No slots: 0, null, "nil", type 0, and SetDependency does nothing.
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  // A new UnknownObject.
  Block* Clone() override;
  // Both return 0 and touch no data: a placeholder cannot be written back.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  // ---- Object ----

  int Flags() override;
};

}  // namespace Orlo
