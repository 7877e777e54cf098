#include <orlo/base/scene/object.h>

#include <gtest/gtest.h>

#include <vector>

#include <orlo/support/math.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;

// An object that keeps every default of Object.
class DefaultObject : public Object {
 public:
  std::string GetClassName() const override { return "DefaultObject"; }
  BlockType GetBlockType() const override { return BlockType(505, 2, 2); }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override { return new DefaultObject(); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }
  int Flags() override { return 7; }
};

TEST(ObjectTest, BuildAndUnbuildGiveNothingByDefault) {
  ScopedBlock<DefaultObject> object(new DefaultObject());
  EXPECT_EQ(object->BuildObject(0, nullptr), nullptr);
  EXPECT_EQ(object->UnbuildObject(5, nullptr), nullptr);
}

TEST(ObjectTest, TheDefaultBoundingBoxIsTheEmptyBoxWithOrWithoutAMatrix) {
  ScopedBlock<DefaultObject> object(new DefaultObject());
  const double max = Math<double>::MAX_REAL;
  for (Box3<double> box : {object->GetObjectBoundingBox(0), [&] {
                             Matrix3<double> tm = testing::Translation(1, 2, 3);
                             return object->GetObjectBoundingBox(3, &tm);
                           }()}) {
    EXPECT_EQ(box.min, Point3<double>(max, max, max));
    EXPECT_EQ(box.max, Point3<double>(-max, -max, -max));
  }
}

TEST(ObjectTest, HasNoPointsByDefault) {
  ScopedBlock<DefaultObject> object(new DefaultObject());
  EXPECT_EQ(object->GetNumPoints(), 0);
  EXPECT_EQ(object->GetPoint(3), Point3<double>(0, 0, 0));
  object->SetPoint(0, Point3<double>(1, 2, 3));
  object->PointsWereSet();
  EXPECT_EQ(object->GetPoint(0), Point3<double>(0, 0, 0));
  EXPECT_EQ(object->GetNumPoints(), 0);
}

TEST(ObjectTest, LeavesTheIntervalAndTheListUnchangedByDefault) {
  ScopedBlock<DefaultObject> object(new DefaultObject());
  TimeInterval interval(3, 9);
  object->GetTimeInterval(interval);
  EXPECT_EQ(interval, TimeInterval(3, 9));
  std::vector<Object*> out{nullptr};
  object->GetDependantObjects(out);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(out[0], nullptr);
  EXPECT_EQ(object->Flags(), 7);
}

}  // namespace
}  // namespace Orlo
