// Test doubles shared by the undo and modifier-application tests: objects that report their
// deletion and can be modified, and a modifier whose object modifiers link back to it.
#pragma once

#include <string>
#include <utility>

#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/support/box3.h>
#include <orlo/support/math_functions.h>
#include <orlo/support/matrix3.h>

#include "tests/base/scene/scene_test_blocks.h"

namespace Orlo::testing {

// A plain object that builds to itself, reports the flags it is given and a fixed bounding
// box (moved by the matrix when one is passed), and sets *deleted when it is destroyed.
class ProbeObject : public TestObject {
 public:
  explicit ProbeObject(std::string name, bool* deleted = nullptr, int flags = 0x400000)
      : TestObject(std::move(name)), m_deleted(deleted), m_flags(flags) {
    built = this;
  }
  ~ProbeObject() override {
    if (m_deleted != nullptr) *m_deleted = true;
  }
  int Flags() override { return m_flags; }
  Box3<double> GetObjectBoundingBox(int, Matrix3<double>* tm) override {
    if (tm == nullptr) return box;
    Box3<double> moved;
    moved += TransformPoint(box.min, *tm);
    moved += TransformPoint(box.max, *tm);
    return moved;
  }

  Box3<double> box{Point3<double>(-1.0, -2.0, -3.0), Point3<double>(1.0, 2.0, 3.0)};

 private:
  bool* m_deleted;
  int m_flags;
};

// A modifier whose new object modifiers hold it, as host modifiers' do; sets *deleted when it
// is destroyed.
class LinkingModifier : public TestModifier {
 public:
  explicit LinkingModifier(bool* deleted = nullptr) : m_deleted(deleted) {}
  ~LinkingModifier() override {
    if (m_deleted != nullptr) *m_deleted = true;
  }
  ObjectModifier* GetNewObjectModifier() override {
    auto* object_modifier = new TestObjectModifier();
    (void)object_modifier->SetModifier(this);
    return object_modifier;
  }

 private:
  bool* m_deleted;
};

}  // namespace Orlo::testing
