// Defines ObjectModifier, the object that stacks one Modifier on top of another Object.
//
// The object below (the base object) may itself be an ObjectModifier, so modifiers chain
// into a stack whose bottom is a plain object. Both the modifier and the base object are
// dependencies, owned through the graph. Building the stack caches its result: while the
// stack's validity interval holds, the cached object is returned again; before the stack is
// rebuilt or unbuilt the cached change is undone through UnapplyModifier. Concrete stacks of
// host libraries supply ApplyModifier and UnapplyModifier and may use the fixed 96-byte
// record, which is saved with the block.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <orlo/base/block/internal/typed_slot.h>
#include <orlo/base/scene/object.h>
#include <orlo/support/matrix3.h>

namespace Orlo {

class Modifier;

class ObjectModifier : public Object {
 public:
  static constexpr int kFlags = 0x80040;
  static constexpr std::size_t kRecordSize = 96;
  using Record = std::array<std::uint8_t, kRecordSize>;

  // ---- Block ----

  // Slot 0 "modifier" (type 800), slot 1 "base_object" (type 500).
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  // Chunk 0x0000 holding chunk 0x0010, the record as 96 raw bytes.
  int Save(SceneSave* save) override;
  // Reads the first chunk; when it is 0x0000, chunk 0x0010 inside it fills the record. Returns
  // 0 only when the reader reported an error.
  int Load(SceneLoad* load) override;

  // ---- Object ----

  int Flags() override;
  // Returns the cached result while the cache is valid and GetTimeInterval holds at `time`.
  // Otherwise undoes the cached change, builds the base object and, when the stack is enabled
  // and the modifier active, applies the modifier and caches the result.
  // Requires: a base object; a modifier, unless the stack is disabled.
  Object* BuildObject(int time, Node* node) override;
  // Undoes the cached change (when the cache is valid), unbuilds the base object and returns
  // the cached result.
  // Requires: a base object.
  Object* UnbuildObject(int time, Node* node) override;
  // Appends this block, then the object-modifiers below it, top first, then whatever the
  // first plain object appends. Final: the chain is walked with a loop, not through each
  // level's own override.
  void GetDependantObjects(std::vector<Object*>& out) final;

  // ---- The stack ----

  // Restores an object that carries the modifier's change and returns the restored object.
  virtual Object* UnapplyModifier(int time, Object* object, Node* node) = 0;
  // Applies the modifier to `object` and returns the modified object.
  virtual Object* ApplyModifier(int time, Object* object, Node* node) = 0;

  // The modifier, or null (also when the slot holds a block that is not a Modifier).
  Modifier* GetModifier() const { return m_modifier.Get(); }
  // The base object, or null (also when the slot holds a block that is not an Object).
  Object* GetObjectToModify() const { return m_base_object.Get(); }
  // Links `modifier` (null empties the slot) and returns the link's status. A block whose
  // class id is not 800 gives code 3, "ObjectModifier::SetModifier : The block is not a valid
  // Modifier." and changes nothing.
  Status SetModifier(Modifier* modifier);
  // Links `object` (null empties the slot) and returns the link's status. A block whose class
  // id is not an object's gives code 3, "ObjectModifier::SetObjectToModify : The block is not
  // a valid Object." and changes nothing.
  Status SetObjectToModify(Object* object);

  // A matrix carried for the concrete stack (the engine sets it to the identity when it
  // inserts a modifier); the identity by default. It is not part of the saved record.
  const Matrix3<double>& GetTransform() const { return m_transform; }
  void SetTransform(Matrix3<double> transform) { m_transform = transform; }

  // When false, BuildObject returns the base object's result untouched.
  bool IsEnabled() const { return m_enabled; }
  void SetEnabled(bool enabled) { m_enabled = enabled; }

  // The record's bytes, zero until a subclass or a file fills them.
  Record& GetRecord() { return m_record; }
  const Record& GetRecord() const { return m_record; }

  // The object returned by the last build, and whether it carries the modifier's change.
  Object* GetCachedResult() const { return m_cached_result; }
  bool IsCacheValid() const { return m_cache_valid; }

 protected:
  ObjectModifier() = default;
  ObjectModifier(const ObjectModifier&) = default;
  ObjectModifier& operator=(const ObjectModifier&) = default;

 private:
  enum Slot { kModifierSlot = 0, kBaseObjectSlot = 1, kNumSlots = 2 };

  internal::TypedSlot<Object> m_base_object;
  // Not a dependency: the stack's last result, which the stack itself owns.
  Object* m_cached_result = nullptr;
  internal::TypedSlot<Modifier> m_modifier;
  bool m_cache_valid = false;
  // Zeroed so that a saved file never carries uninitialised memory.
  Record m_record{};
  bool m_enabled = true;
  Matrix3<double> m_transform;
};

}  // namespace Orlo
