// Defines UnknownObjectModifier, the object-modifier the scene reader puts in place of one
// whose class has no registered factory.
//
// It keeps the two slots of every ObjectModifier, so its links to the modifier and to the
// object below are restored like any other block's and the stack above and below it stays
// whole; it applies nothing. Its Save fails on purpose, like every placeholder's. It is owned
// through the graph like every block.
#pragma once

#include <string>

#include <orlo/base/scene/object_modifier.h>

namespace Orlo {

class UnknownObjectModifier : public ObjectModifier {
 public:
  static constexpr BlockType m_block_type{520, 144, 0};

  // The flag is unused: both slots start empty.
  explicit UnknownObjectModifier(bool create);
  UnknownObjectModifier(const UnknownObjectModifier&) = default;
  UnknownObjectModifier(UnknownObjectModifier&&) = default;
  UnknownObjectModifier& operator=(const UnknownObjectModifier&) = default;
  UnknownObjectModifier& operator=(UnknownObjectModifier&&) = default;

  // ---- Block ----

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // A new UnknownObjectModifier holding a clone of this one's modifier, when it has one; the
  // object below is not copied.
  Block* Clone() override;
  // Both return 0 and touch no data (not even the record every object-modifier saves): a
  // placeholder cannot be written back.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  // ---- The stack ----

  // Both return null: the modifier's effect is unknown.
  Object* UnapplyModifier(int time, Object* object, Node* node) override;
  Object* ApplyModifier(int time, Object* object, Node* node) override;
};

}  // namespace Orlo
