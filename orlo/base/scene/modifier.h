// Defines Modifier, the abstract block that changes an object (a deformation, for example).
//
// A modifier is applied to an object by an ObjectModifier, which stacks it on top of the
// object in a node's object chain. The modifier carries a display name, an active flag (an
// inactive modifier is skipped when the stack is built) and a bounding box, and saves all
// three. Concrete modifiers and their factories live in host libraries; like every block a
// modifier is owned through the graph.
#pragma once

#include <string>
#include <utility>

#include <orlo/base/block/block.h>
#include <orlo/support/box3.h>
#include <orlo/support/time_interval.h>

namespace Orlo {

class ObjectModifier;

class Modifier : public Block {
 public:
  // The two operations every concrete modifier supplies, in this order after Block's.

  // A new ObjectModifier that applies this kind of modifier, owned by the caller.
  virtual ObjectModifier* GetNewObjectModifier() = 0;
  // Narrows `interval` to the span in which the modifier's effect stays the same.
  virtual void GetTimeInterval(TimeInterval& interval) = 0;

  // The display name; setting it posts nothing.
  std::string GetName() const { return m_name; }
  void SetName(std::string name) { m_name = std::move(name); }

  bool IsActive() const { return m_active; }
  // Stores the flag and posts code 3 with parameter 0, even when the value is unchanged.
  void SetActive(bool active);

  // A box carried by the modifier for the host and saved with it; empty by default.
  Box3<double> GetBox() const { return m_box; }
  void SetBox(Box3<double> box) { m_box = box; }

  // Chunk 0x0000 holding chunk 0x0005 (the active flag, int32 1 or 0), chunk 0x0010 (the box:
  // minimum x, y, z, then maximum x, y, z as doubles) and chunk 0x0015 (the name).
  int Save(SceneSave* save) override;
  // Reads the first chunk; when it is 0x0000, reads its inner chunks in any order. The active
  // flag becomes bit 0 of the value read, and false when no chunk 0x0005 was found. Returns
  // 0 only when the reader reported an error.
  int Load(SceneLoad* load) override;

 protected:
  Modifier() = default;
  Modifier(const Modifier&) = default;
  Modifier& operator=(const Modifier&) = default;

 private:
  std::string m_name;
  bool m_active = true;
  Box3<double> m_box;
};

}  // namespace Orlo
