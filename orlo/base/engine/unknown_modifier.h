// Defines UnknownModifier, the modifier the scene reader puts in place of a modifier whose
// class has no registered factory.
//
// Like UnknownObject it keeps nothing of the block it stands for, has no slots and refuses to
// be saved. Applied to an object it gives an UnknownObjectModifier. It is owned through the
// graph like every block.
#pragma once

#include <string>

#include <orlo/base/scene/modifier.h>

namespace Orlo {

class UnknownModifier : public Modifier {
 public:
  static constexpr BlockType m_block_type{800, 160, 0};

  // The flag is unused: there is nothing to create.
  explicit UnknownModifier(bool create);
  UnknownModifier(const UnknownModifier&) = default;
  UnknownModifier(UnknownModifier&&) = default;
  UnknownModifier& operator=(const UnknownModifier&) = default;
  UnknownModifier& operator=(UnknownModifier&&) = default;

  // ---- Block ----

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // No slots: 0, null, "nil", type 0, and SetDependency does nothing.
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  // A new UnknownModifier.
  Block* Clone() override;
  // Both return 0 and touch no data (not even the name, flag and box every modifier saves):
  // a placeholder cannot be written back.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  // ---- Modifier ----

  // A new UnknownObjectModifier, owned by the caller.
  ObjectModifier* GetNewObjectModifier() override;
  // Leaves `interval` as it is.
  void GetTimeInterval(TimeInterval& interval) override;
};

}  // namespace Orlo
