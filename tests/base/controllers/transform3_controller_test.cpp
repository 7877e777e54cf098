#include <orlo/base/controllers/transform3_controller.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/affine_parts.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/testing/scoped_block.h"
#include "tests/testing/block_record_stream.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;

constexpr double kPi = 3.14159265358979323846;

Point3Controller* Point3At(Transform3Controller* controller, int slot) {
  return dynamic_cast<Point3Controller*>(controller->GetDependency(slot));
}

void ExpectMatrixEq(const Matrix3<double>& actual, const Matrix3<double>& expected) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(actual.m[r][c], expected.m[r][c]) << r << "," << c;
  }
}

void ExpectMatrixNear(const Matrix3<double>& actual, const Matrix3<double>& expected,
                      double tolerance) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_NEAR(actual.m[r][c], expected.m[r][c], tolerance) << r << "," << c;
    }
  }
}

void ExpectPointNear(const Point3<double>& actual, const Point3<double>& expected,
                     double tolerance) {
  EXPECT_NEAR(actual.x, expected.x, tolerance);
  EXPECT_NEAR(actual.y, expected.y, tolerance);
  EXPECT_NEAR(actual.z, expected.z, tolerance);
}

Matrix3<double> Rows(Point3<double> r0, Point3<double> r1, Point3<double> r2, Point3<double> r3) {
  Matrix3<double> m;
  m.SetRow(0, r0);
  m.SetRow(1, r1);
  m.SetRow(2, r2);
  m.SetRow(3, r3);
  return m;
}

Matrix3<double> Scaling(Point3<double> s) {
  return Rows({s.x, 0, 0}, {0, s.y, 0}, {0, 0, s.z}, {0, 0, 0});
}

Matrix3<double> Rotation(Point3<double> angles) {
  Matrix3<double> r = Matrix3<double>::Identity();
  r.FromEulerAnglesXYZ(angles.x, angles.y, angles.z);
  return r;
}

Matrix3<double> Translation(Point3<double> t) {
  Matrix3<double> m = Matrix3<double>::Identity();
  m.SetRow(3, t);
  return m;
}

// ---- Identity and slots ----

TEST(Transform3ControllerTest, ReportsItsNameTypeAndControllerType) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  EXPECT_EQ(controller->GetClassName(), "Transform3Controller");
  const BlockType type = controller->GetBlockType();
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 48u);
  EXPECT_EQ(controller->GetControllerType(), 7);
  EXPECT_EQ(controller->PostLoad(), 0);
}

TEST(Transform3ControllerTest, HasATableSlotAndFourControllerSlots) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  EXPECT_EQ(controller->NumDependencies(), 5);
  EXPECT_EQ(controller->GetDependencyName(0), "data_table");
  EXPECT_EQ(controller->GetDependencyName(1), "position_animation_controller");
  EXPECT_EQ(controller->GetDependencyName(2), "rotation_animation_controller");
  EXPECT_EQ(controller->GetDependencyName(3), "scale_animation_controller");
  EXPECT_EQ(controller->GetDependencyName(4), "shear_animation_controller");
  EXPECT_EQ(controller->GetDependencyType(0), 205u);
  for (int index : {1, 2, 3, 4}) EXPECT_EQ(controller->GetDependencyType(index), 300u);
  for (int index : {-1, 5, 50}) {
    EXPECT_EQ(controller->GetDependency(index), nullptr) << index;
    EXPECT_EQ(controller->GetDependencyName(index), "no_dependency") << index;
    EXPECT_EQ(controller->GetDependencyType(index), 0u) << index;
  }
}

TEST(Transform3ControllerTest, SetDependencyOutsideTheSlotsIsIgnored) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  ScopedBlock<Point3Controller> other(new Point3Controller(false));
  controller->SetDependency(-1, other.get());
  controller->SetDependency(5, other.get());
  for (int index : {-1, 0, 1, 2, 3, 4, 5}) EXPECT_EQ(controller->GetDependency(index), nullptr);
}

TEST(Transform3ControllerTest, CreatingLinksFourPoint3ControllersAndATable) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  for (int slot = 1; slot <= 4; ++slot) {
    Point3Controller* point3 = Point3At(controller.get(), slot);
    ASSERT_NE(point3, nullptr) << slot;
    EXPECT_EQ(point3->GetParentBlock(), controller.get());
    for (int i = 0; i < 3; ++i) {
      auto* scalar = dynamic_cast<BezierController*>(point3->GetDependency(i));
      ASSERT_NE(scalar, nullptr) << slot << "," << i;
      // The scale was set at time 0 of empty controllers: it is their default value.
      EXPECT_TRUE(scalar->GetKeys().empty());
      EXPECT_EQ(scalar->GetDefaultValue(), slot == 3 ? 1.0 : 0.0);
    }
  }
  DataTable* table = controller->GetDataTable();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(controller->GetDependency(0), table);
  EXPECT_EQ(table->GetParentBlock(), controller.get());
  EXPECT_EQ(table->GetNumDatas(), 30);
}

TEST(Transform3ControllerTest, WithoutCreateEverySlotIsEmpty) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  for (int index = 0; index < 5; ++index) EXPECT_EQ(controller->GetDependency(index), nullptr);
  EXPECT_EQ(controller->GetDataTable(), nullptr);
  ExpectMatrixEq(controller->GetStoredMatrix(), Matrix3<double>::Identity());
}

TEST(Transform3ControllerTest, FactoryPassesItsFlagToTheConstructor) {
  Transform3ControllerFactory factory;
  EXPECT_EQ(factory.GetName(), "Transform3Controller");
  const BlockType type = factory.GetBlockType();
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 48u);
  ScopedBlock<Block> with(factory.GetBlock(true));
  ScopedBlock<Block> without(factory.GetBlock(false));
  ASSERT_NE(dynamic_cast<Transform3Controller*>(with.get()), nullptr);
  ASSERT_NE(dynamic_cast<Transform3Controller*>(without.get()), nullptr);
  for (int index = 0; index < 5; ++index) {
    EXPECT_NE(with->GetDependency(index), nullptr) << index;
    EXPECT_EQ(without->GetDependency(index), nullptr) << index;
  }
}

// ---- The parameter table ----

struct ExpectedParameter {
  int type;
  const char* name;
};

// Type codes: 0 bool, 1 int, 2 float, 3 point.
const ExpectedParameter kExpectedParameters[30] = {
    {1, "rotation_order"},       {3, "rotation_pivot"},       {3, "scale_pivot"},
    {0, "use_position_limit_x"}, {2, "min_position_limit_x"}, {2, "max_position_limit_x"},
    {0, "use_position_limit_y"}, {2, "min_position_limit_y"}, {2, "max_position_limit_y"},
    {0, "use_position_limit_z"}, {2, "min_position_limit_z"}, {2, "max_position_limit_z"},
    {0, "use_rotation_limit_x"}, {2, "min_rotation_limit_x"}, {2, "max_rotation_limit_x"},
    {0, "use_rotation_limit_y"}, {2, "min_rotation_limit_y"}, {2, "max_rotation_limit_y"},
    {0, "use_rotation_limit_z"}, {2, "min_rotation_limit_z"}, {2, "max_rotation_limit_z"},
    {0, "use_scale_limit_x"},    {2, "min_scale_limit_x"},    {2, "max_scale_limit_x"},
    {0, "use_scale_limit_y"},    {2, "min_scale_limit_y"},    {2, "max_scale_limit_y"},
    {0, "use_scale_limit_z"},    {2, "min_scale_limit_z"},    {2, "max_scale_limit_z"},
};

void ExpectTheThirtyParameters(DataTable* table) {
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->GetNumDatas(), 30);
  for (int id = 0; id < 30; ++id) {
    SCOPED_TRACE(id);
    // Added in id order: the parameter with id k is in slot k.
    EXPECT_EQ(table->GetDataID(id), id);
    EXPECT_EQ(table->GetDataType(id), kExpectedParameters[id].type);
    EXPECT_EQ(table->GetDataName(id), kExpectedParameters[id].name);
    EXPECT_EQ(table->GetDataSize(id), 1);
    switch (kExpectedParameters[id].type) {
      case 0:
        EXPECT_FALSE(table->GetBool(id, 0, 0));
        break;
      case 1:
        EXPECT_EQ(table->GetInt(id, 0, 0), 0);
        break;
      case 2:
        EXPECT_EQ(table->GetFloat(id, 0, 0), 0.0);
        break;
      case 3:
        EXPECT_EQ(table->GetPoint3F(id, 0, 0), Point3<double>(0, 0, 0));
        break;
    }
  }
}

TEST(Transform3ControllerTest, TableHoldsThirtyNamedParametersWithTheirDefaults) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  ExpectTheThirtyParameters(controller->GetDataTable());
}

TEST(Transform3ControllerTest, UpdateDataTableAgainKeepsTheParametersAndTheirValues) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  DataTable* table = controller->GetDataTable();
  ASSERT_TRUE(table->SetValue(4, 2.5, 0, 0).IsOk());
  ASSERT_TRUE(table->SetDataName(0, "renamed"));
  controller->UpdateDataTable(false);
  EXPECT_EQ(table->GetNumDatas(), 30);
  EXPECT_EQ(table->GetFloat(4, 0, 0), 2.5);
  // The names are set again.
  EXPECT_EQ(table->GetDataName(0), "rotation_order");
}

TEST(Transform3ControllerTest, UpdateDataTableFillsAnEmptyTable) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  ASSERT_TRUE(controller->SetDataTable(new DataTable(true)).IsOk());
  EXPECT_EQ(controller->GetDataTable()->GetNumDatas(), 0);
  controller->UpdateDataTable(true);
  ExpectTheThirtyParameters(controller->GetDataTable());
}

TEST(Transform3ControllerTest, UpdateDataTableWithoutATableDoesNothing) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  controller->UpdateDataTable(true);
  EXPECT_EQ(controller->GetDataTable(), nullptr);
  EXPECT_EQ(controller->GetDependency(0), nullptr);
}

TEST(Transform3ControllerTest, AParameterChangeReachesTheControllersListeners) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  ASSERT_TRUE(controller->GetDataTable()->SetValue(7, 1.5, 0, 0).IsOk());
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].block, controller.get());
  EXPECT_EQ(recorder.events[0].code, 3);
  EXPECT_EQ(recorder.events[0].param, 7);
  controller->RemoveBlockListener(&recorder);
}

// ---- SetDataTable ----

// A table that reports another class id, so the engine does not take it for a table.
class NotATable : public DataTable {
 public:
  NotATable() : DataTable(true) {}
  BlockType GetBlockType() const override { return BlockType(200, 64, 16); }
  void DeleteThis() override { delete this; }
};

TEST(Transform3ControllerTest, SetDataTableRefusesABlockThatIsNotATable) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  DataTable* before = controller->GetDataTable();
  ScopedBlock<NotATable> impostor(new NotATable());
  const Status status = controller->SetDataTable(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(),
            "Transform3Controller::SetDataTable : The block is not a valid data_table.");
  EXPECT_EQ(controller->GetDependency(0), before);
  EXPECT_EQ(controller->GetDataTable(), before);
}

TEST(Transform3ControllerTest, SetDataTableLinksATableOrEmptiesTheSlot) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  RecordingListener recorder;
  controller->GetDataTable()->AddBlockListener(&recorder);
  Status status = controller->SetDataTable(nullptr);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(status.GetMessage(), "");
  EXPECT_EQ(controller->GetDataTable(), nullptr);
  // The old table lost its last dependant: it said so and went away.
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].code, 1);

  auto* table = new DataTable(true);
  status = controller->SetDataTable(table);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(controller->GetDataTable(), table);
  EXPECT_EQ(table->GetParentBlock(), controller.get());
}

TEST(Transform3ControllerTest, SetDataTableReportsSuccessWhenTheLinkIsRefused) {
  // A table that depends on the controller would close a cycle: the link is refused, the
  // slot keeps its table, and the caller still gets a success status.
  auto* controller = new Transform3Controller(true);
  DataTable* before = controller->GetDataTable();
  auto* table = new DataTable(true);
  ASSERT_TRUE(table->AddDataInt(0, 0, 1));
  ASSERT_TRUE(table->MakeDependencyByID(0, controller).IsOk());
  const Status status = controller->SetDataTable(table);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(status.GetMessage(), "");
  EXPECT_EQ(controller->GetDataTable(), before);
  // Releasing the table releases the controller it alone keeps alive.
  table->DeleteThisBlock(true);
}

// ---- GetMatrix3 ----

TEST(Transform3ControllerTest, NewControllerGivesTheIdentityAtTimeZero) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  ExpectMatrixEq(controller->GetMatrix3(0), Matrix3<double>::Identity());
}

TEST(Transform3ControllerTest, NewControllerHasAZeroLinearPartAtOtherTimes) {
  // Scalar controllers without keys give 0.0 away from time 0, the scale included.
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  EXPECT_EQ(controller->GetScale(5), Point3<double>(0, 0, 0));
  const Matrix3<double> m = controller->GetMatrix3(5);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(m.m[r][c], 0.0) << r << "," << c;
  }
}

TEST(Transform3ControllerTest, PositionAndUniformScaleGiveTheExpectedRows) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetPosition(Point3<double>(1, 2, 3), 0);
  controller->SetRotation(Point3<double>(0, 0, 0), 0);
  controller->SetScale(Point3<double>(2, 2, 2), 0);
  ExpectMatrixEq(controller->GetMatrix3(0), Rows({2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 2, 3}));
}

TEST(Transform3ControllerTest, MatrixIsScaleThenRotationThenTranslation) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  const Point3<double> position(1, -2, 3);
  const Point3<double> angles(0.3, -0.4, 1.1);
  const Point3<double> scale(2, 3, 0.5);
  controller->SetPosition(position, 10);
  controller->SetRotation(angles, 10);
  controller->SetScale(scale, 10);
  EXPECT_EQ(controller->GetPosition(10), position);
  EXPECT_EQ(controller->GetRotation(10), angles);
  EXPECT_EQ(controller->GetScale(10), scale);
  const Matrix3<double> m = controller->GetMatrix3(10);
  ExpectMatrixEq(m, (Scaling(scale) * Rotation(angles)) * Translation(position));
  // For row vectors, scaling first multiplies each rotated axis by its own factor.
  const Matrix3<double> r = Rotation(angles);
  for (int c = 0; c < 3; ++c) {
    EXPECT_NEAR(m.m[0][c], 2 * r.m[0][c], 1e-15);
    EXPECT_NEAR(m.m[1][c], 3 * r.m[1][c], 1e-15);
    EXPECT_NEAR(m.m[2][c], 0.5 * r.m[2][c], 1e-15);
  }
  EXPECT_EQ(m.GetRow(3), position);
}

TEST(Transform3ControllerTest, RotationIsInRadiansAboutXThenYThenZ) {
  // About x by pi/2, then about z by pi/2, for row vectors: x goes to y, y to z and z to x.
  // The other order (z first) would send x to z.
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetRotation(Point3<double>(kPi / 2, 0, kPi / 2), 0);
  ExpectMatrixNear(controller->GetMatrix3(0), Rows({0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, 0}),
                   1e-15);
  // About y alone by pi/2: x goes to -z.
  controller->SetRotation(Point3<double>(0, kPi / 2, 0), 0);
  ExpectMatrixNear(controller->GetMatrix3(0), Rows({0, 0, -1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}),
                   1e-15);
}

TEST(Transform3ControllerTest, ScaleAppliesBeforeRotationAndTranslationLast) {
  // Scale x by 2, then turn a quarter about z, then move: the x axis becomes (0, 2, 0).
  // Rotating first would give (0, 1, 0) for it and scale the turned y axis instead.
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetScale(Point3<double>(2, 1, 1), 0);
  controller->SetRotation(Point3<double>(0, 0, kPi / 2), 0);
  controller->SetPosition(Point3<double>(1, 2, 3), 0);
  ExpectMatrixNear(controller->GetMatrix3(0), Rows({0, 2, 0}, {-1, 0, 0}, {0, 0, 1}, {1, 2, 3}),
                   1e-15);
}

TEST(Transform3ControllerTest, OnlyAScaleOfExactlyOneIsSkipped) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  const double above_one = std::nextafter(1.0, 2.0);
  controller->SetScale(Point3<double>(1, 1, above_one), 0);
  const Matrix3<double> m = controller->GetMatrix3(0);
  EXPECT_EQ(m.m[2][2], above_one);
  ExpectMatrixEq(m, Rows({1, 0, 0}, {0, 1, 0}, {0, 0, above_one}, {0, 0, 0}));
}

TEST(Transform3ControllerTest, ScaleEntriesOffTheDiagonalAreProductsWithZero) {
  // Each linear row of the scale matrix is the identity row times the factors, so an infinite
  // x factor puts 0 * inf = NaN in column x of the other rows, and from there into every
  // linear entry of the result; a scale matrix with plain zeros would keep rows 1 and 2.
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetScale(Point3<double>(std::numeric_limits<double>::infinity(), 1, 1), 0);
  const Matrix3<double> m = controller->GetMatrix3(0);
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_TRUE(std::isnan(m.m[r][c])) << r << "," << c;
  }
  EXPECT_EQ(m.GetRow(3), Point3<double>(0, 0, 0));
}

TEST(Transform3ControllerTest, MatrixIgnoresTheParameterTableAndTheStoredMatrix) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetPosition(Point3<double>(1, 2, 3), 0);
  controller->SetRotation(Point3<double>(0.3, 0.2, 0.1), 0);
  controller->SetScale(Point3<double>(2, 3, 4), 0);
  const Matrix3<double> before = controller->GetMatrix3(0);
  DataTable* table = controller->GetDataTable();
  ASSERT_TRUE(table->SetValue(0, 5, 0, 0).IsOk());                           // rotation order
  ASSERT_TRUE(table->SetValue(1, Point3<double>(7, 8, 9), 0, 0).IsOk());     // rotation pivot
  ASSERT_TRUE(table->SetValue(2, Point3<double>(-7, -8, -9), 0, 0).IsOk());  // scale pivot
  for (int use : {3, 6, 9, 12, 15, 18, 21, 24, 27}) {
    ASSERT_TRUE(table->SetValue(use, true, 0, 0).IsOk());
    ASSERT_TRUE(table->SetValue(use + 1, 0.5, 0, 0).IsOk());
    ASSERT_TRUE(table->SetValue(use + 2, 0.5, 0, 0).IsOk());
  }
  controller->SetStoredMatrix(Rows({0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {9, 9, 9}));
  ExpectMatrixEq(controller->GetMatrix3(0), before);
  EXPECT_EQ(controller->GetPosition(0), Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetScale(0), Point3<double>(2, 3, 4));
}

TEST(Transform3ControllerTest, NegativeScaleMirrorsItsAxis) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetScale(Point3<double>(-1, 2, 1), 0);
  ExpectMatrixEq(controller->GetMatrix3(0), Rows({-1, 0, 0}, {0, 2, 0}, {0, 0, 1}, {0, 0, 0}));
}

TEST(Transform3ControllerTest, MissingControllersContributeTheIdentity) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  ExpectMatrixEq(controller->GetMatrix3(3), Matrix3<double>::Identity());
  // The getters give zero, the scale too, while the matrix takes no scaling.
  EXPECT_EQ(controller->GetPosition(3), Point3<double>(0, 0, 0));
  EXPECT_EQ(controller->GetRotation(3), Point3<double>(0, 0, 0));
  EXPECT_EQ(controller->GetScale(3), Point3<double>(0, 0, 0));
  // The setters do nothing.
  controller->SetPosition(Point3<double>(1, 2, 3), 3);
  controller->SetRotation(Point3<double>(1, 2, 3), 3);
  controller->SetScale(Point3<double>(1, 2, 3), 3);
  ExpectMatrixEq(controller->GetMatrix3(3), Matrix3<double>::Identity());
}

TEST(Transform3ControllerTest, ControllerOfAnotherKindContributesTheIdentity) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  auto* scalar = new BezierController(5.0, true);
  ASSERT_TRUE(controller->MakeDependencyByID(1, scalar).IsOk());
  ASSERT_TRUE(controller->MakeDependencyByID(3, new BezierController(2.0, true)).IsOk());
  EXPECT_EQ(controller->GetDependency(1), scalar);
  ExpectMatrixEq(controller->GetMatrix3(0), Matrix3<double>::Identity());
  EXPECT_EQ(controller->GetPosition(0), Point3<double>(0, 0, 0));
  controller->SetPosition(Point3<double>(1, 2, 3), 0);
  EXPECT_EQ(scalar->GetDefaultValue(), 5.0);
  EXPECT_TRUE(scalar->GetKeys().empty());
}

TEST(Transform3ControllerTest, TableSlotHoldingAnotherKindOfBlockIsNoTable) {
  // A corrupt file may link any block into the table slot: it is kept but not used.
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  auto* scalar = new BezierController(0.0, true);
  ASSERT_TRUE(controller->MakeDependencyByID(0, scalar).IsOk());
  EXPECT_EQ(controller->GetDependency(0), scalar);
  EXPECT_EQ(controller->GetDataTable(), nullptr);
  controller->UpdateDataTable(true);
  ScopedBlock<Block> clone(controller->Clone());
  EXPECT_EQ(clone->GetDependency(0), nullptr);
}

TEST(Transform3ControllerTest, ShearIsNeverEvaluated) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  Point3At(controller.get(), 4)->SetPoint3(0, Point3<double>(5, 6, 7));
  ExpectMatrixEq(controller->GetMatrix3(0), Matrix3<double>::Identity());
}

// ---- SetMatrix3 ----

TEST(Transform3ControllerTest, SetMatrix3OfAScaledMatrixStoresScaleAndTranslation) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  const Matrix3<double> m = Rows({2, 0, 0}, {0, 3, 0}, {0, 0, 4}, {5, 6, 7});
  controller->SetMatrix3(m, 10);
  ExpectPointNear(controller->GetScale(10), Point3<double>(2, 3, 4), 1e-12);
  EXPECT_EQ(controller->GetPosition(10), Point3<double>(5, 6, 7));
  // The angles are those of the scaled matrix itself.
  double x = 0;
  double y = 0;
  double z = 0;
  (void)m.ToEulerAnglesXYZ(x, y, z);
  EXPECT_EQ(controller->GetRotation(10), Point3<double>(x, y, z));
}

TEST(Transform3ControllerTest, SetMatrix3TakesTheAnglesFromTheUnnormalisedRows) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  const Point3<double> angles(0.2, 0.3, -0.5);
  const Matrix3<double> m = Scaling({1, 2, 3}) * Rotation(angles);
  controller->SetMatrix3(m, 0);
  double x = 0;
  double y = 0;
  double z = 0;
  (void)m.ToEulerAnglesXYZ(x, y, z);
  EXPECT_EQ(controller->GetRotation(0), Point3<double>(x, y, z));
  // Rows 1 and 2 are scaled unevenly, so the x angle is not the one the matrix was built with.
  EXPECT_GT(std::fabs(controller->GetRotation(0).x - angles.x), 1e-3);
  AffinePartsD parts;
  DecomposeAffine(m, &parts);
  EXPECT_EQ(controller->GetScale(0), parts.stretch);
}

TEST(Transform3ControllerTest, SetMatrix3PostsTheSubcontrollerEventsThenCodeZero) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetMatrix3(Translation({1, 2, 3}), 5);
  // Nine scalar controllers each post code 3, forwarded up with the controller as sender.
  ASSERT_EQ(recorder.events.size(), 10u);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(recorder.events[i].block, controller.get()) << i;
    EXPECT_EQ(recorder.events[i].code, 3) << i;
    EXPECT_EQ(recorder.events[i].param, 0) << i;
  }
  EXPECT_EQ(recorder.events[9].block, controller.get());
  EXPECT_EQ(recorder.events[9].code, 0);
  EXPECT_EQ(recorder.events[9].param, 0);
  controller->RemoveBlockListener(&recorder);
}

TEST(Transform3ControllerTest, SetMatrix3SetsPositionThenRotationThenScaleThenPostsCodeZero) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  Point3Controller* parts[3] = {Point3At(controller.get(), 1), Point3At(controller.get(), 2),
                                Point3At(controller.get(), 3)};
  RecordingListener recorder;
  for (Point3Controller* part : parts) part->AddBlockListener(&recorder);
  controller->AddBlockListener(&recorder);
  controller->SetMatrix3(Rows({2, 0, 0}, {0, 3, 0}, {0, 0, 4}, {5, 6, 7}), 10);
  // Each scalar change is heard on its Point3Controller, then on the transform above it.
  ASSERT_EQ(recorder.events.size(), 19u);
  for (std::size_t i = 0; i < 18; i += 2) {
    SCOPED_TRACE(i);
    EXPECT_EQ(recorder.events[i].block, parts[i / 6]);
    EXPECT_EQ(recorder.events[i].code, 3);
    EXPECT_EQ(recorder.events[i + 1].block, controller.get());
    EXPECT_EQ(recorder.events[i + 1].code, 3);
  }
  EXPECT_EQ(recorder.events[18].block, controller.get());
  EXPECT_EQ(recorder.events[18].code, 0);
  EXPECT_EQ(recorder.events[18].param, 0);
  for (Point3Controller* part : parts) part->RemoveBlockListener(&recorder);
  controller->RemoveBlockListener(&recorder);
}

TEST(Transform3ControllerTest, SetMatrix3WithoutARotationControllerSetsTheOthers) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->DeleteDependency(2);
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetMatrix3(Rows({2, 0, 0}, {0, 3, 0}, {0, 0, 4}, {5, 6, 7}), 10);
  EXPECT_EQ(controller->GetPosition(10), Point3<double>(5, 6, 7));
  ExpectPointNear(controller->GetScale(10), Point3<double>(2, 3, 4), 1e-12);
  EXPECT_EQ(controller->GetRotation(10), Point3<double>(0, 0, 0));
  ASSERT_EQ(recorder.events.size(), 7u);
  EXPECT_EQ(recorder.events[6].code, 0);
  controller->RemoveBlockListener(&recorder);
}

TEST(Transform3ControllerTest, SetMatrix3LeavesAControllerOfAnotherKindUntouched) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  auto* scalar = new BezierController(5.0, true);
  ASSERT_TRUE(controller->MakeDependencyByID(1, scalar).IsOk());
  controller->SetMatrix3(Rows({2, 0, 0}, {0, 3, 0}, {0, 0, 4}, {5, 6, 7}), 10);
  EXPECT_EQ(controller->GetDependency(1), scalar);
  EXPECT_EQ(scalar->GetDefaultValue(), 5.0);
  EXPECT_TRUE(scalar->GetKeys().empty());
  ExpectPointNear(controller->GetScale(10), Point3<double>(2, 3, 4), 1e-12);
}

TEST(Transform3ControllerTest, SetMatrix3LeavesTheShearAlone) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetMatrix3(Rows({2, 0, 0}, {0, 3, 0}, {0, 0, 4}, {5, 6, 7}), 10);
  EXPECT_EQ(Point3At(controller.get(), 4)->GetPoint3(10), Point3<double>(0, 0, 0));
  for (int i = 0; i < 3; ++i) {
    auto* scalar = dynamic_cast<BezierController*>(Point3At(controller.get(), 4)->GetDependency(i));
    EXPECT_TRUE(scalar->GetKeys().empty());
  }
}

TEST(Transform3ControllerTest, SetMatrix3SkipsMissingControllersAndStillPostsCodeZero) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetMatrix3(Translation({1, 2, 3}), 5);
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].code, 0);
  ExpectMatrixEq(controller->GetMatrix3(5), Matrix3<double>::Identity());
  controller->RemoveBlockListener(&recorder);
}

TEST(Transform3ControllerTest, SetMatrix3OfAnUnscaledMatrixGivesTheSameMatrixBack) {
  std::mt19937_64 random(20240611);
  std::uniform_real_distribution<double> position(-1000.0, 1000.0);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  // Away from gimbal lock: the middle angle stays clear of +-pi/2.
  std::uniform_real_distribution<double> middle_angle(-kPi / 2 + 0.1, kPi / 2 - 0.1);
  std::uniform_int_distribution<int> time(-100, 100);
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  for (int trial = 0; trial < 500; ++trial) {
    SCOPED_TRACE(trial);
    const Point3<double> t(position(random), position(random), position(random));
    const Point3<double> a(angle(random), middle_angle(random), angle(random));
    const Matrix3<double> m = Rotation(a) * Translation(t);
    const int at = time(random);
    controller->SetMatrix3(m, at);
    ExpectMatrixNear(controller->GetMatrix3(at), m, 1e-9);
  }
}

TEST(Transform3ControllerTest, SetMatrix3OfAScaledMatrixKeepsItsScaleAndPosition) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> position(-1000.0, 1000.0);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  std::uniform_real_distribution<double> middle_angle(-kPi / 2 + 0.1, kPi / 2 - 0.1);
  std::uniform_real_distribution<double> factor(0.01, 100.0);
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  for (int trial = 0; trial < 500; ++trial) {
    SCOPED_TRACE(trial);
    const Point3<double> t(position(random), position(random), position(random));
    const Point3<double> a(angle(random), middle_angle(random), angle(random));
    const Point3<double> s(factor(random), factor(random), factor(random));
    const Matrix3<double> m = (Scaling(s) * Rotation(a)) * Translation(t);
    controller->SetMatrix3(m, trial);
    ExpectPointNear(controller->GetScale(trial), s, 1e-9);
    ExpectPointNear(controller->GetPosition(trial), t, 1e-9);
  }
}

// ---- Clone ----

TEST(Transform3ControllerTest, CloneCopiesTheMatrixAndClonesEverySubBlock) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetPosition(Point3<double>(1, 2, 3), 10);
  controller->SetRotation(Point3<double>(0.1, 0.2, 0.3), 10);
  controller->SetScale(Point3<double>(2, 3, 4), 10);
  Point3At(controller.get(), 4)->SetPoint3(10, Point3<double>(7, 8, 9));
  controller->SetStoredMatrix(Translation({4, 5, 6}));
  ASSERT_TRUE(controller->GetDataTable()->SetValue(16, 0.75, 0, 0).IsOk());
  ScopedBlock<Block> clone_owned(controller->Clone());
  auto* clone = dynamic_cast<Transform3Controller*>(clone_owned.get());
  ASSERT_NE(clone, nullptr);
  ExpectMatrixEq(clone->GetStoredMatrix(), Translation({4, 5, 6}));
  for (int slot = 1; slot <= 4; ++slot) {
    Point3Controller* copy = Point3At(clone, slot);
    ASSERT_NE(copy, nullptr) << slot;
    EXPECT_NE(copy, Point3At(controller.get(), slot)) << slot;
    EXPECT_EQ(copy->GetParentBlock(), clone) << slot;
    EXPECT_EQ(copy->GetPoint3(10), Point3At(controller.get(), slot)->GetPoint3(10)) << slot;
  }
  ExpectMatrixEq(clone->GetMatrix3(10), controller->GetMatrix3(10));
  DataTable* table = clone->GetDataTable();
  ASSERT_NE(table, nullptr);
  EXPECT_NE(table, controller->GetDataTable());
  EXPECT_EQ(table->GetParentBlock(), clone);
  EXPECT_EQ(table->GetFloat(16, 0, 0), 0.75);
  EXPECT_EQ(table->GetNumDatas(), 30);
  EXPECT_EQ(table->GetDataName(16), "min_rotation_limit_y");
  // The clone is independent.
  clone->SetPosition(Point3<double>(0, 0, 0), 10);
  EXPECT_EQ(controller->GetPosition(10), Point3<double>(1, 2, 3));
}

TEST(Transform3ControllerTest, CloneFillsTheSourceTableBeforeCopyingIt) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(false));
  ASSERT_TRUE(controller->SetDataTable(new DataTable(true)).IsOk());
  ASSERT_EQ(controller->GetDataTable()->GetNumDatas(), 0);
  ScopedBlock<Block> clone_owned(controller->Clone());
  ExpectTheThirtyParameters(controller->GetDataTable());
  auto* clone = dynamic_cast<Transform3Controller*>(clone_owned.get());
  ASSERT_NE(clone, nullptr);
  ExpectTheThirtyParameters(clone->GetDataTable());
  for (int slot = 1; slot <= 4; ++slot) EXPECT_EQ(clone->GetDependency(slot), nullptr) << slot;
}

// A block that is not a parameter table for the engine, counting its live instances so that
// a test can tell whether a copy that nobody took was released.
class CountedImpostorTable : public NotATable {
 public:
  CountedImpostorTable() { ++s_live; }
  ~CountedImpostorTable() override { --s_live; }
  static int s_live;
};
int CountedImpostorTable::s_live = 0;

class CountedScalar : public BezierController {
 public:
  CountedScalar() { ++s_live; }
  ~CountedScalar() override { --s_live; }
  void DeleteThis() override { delete this; }
  static int s_live;
};
int CountedScalar::s_live = 0;

// Host tables whose copies come out as blocks that a controller cannot take as its table.
class TableCopiedAsImpostor : public DataTable {
 public:
  TableCopiedAsImpostor() : DataTable(true) {}
  Block* Clone() override { return new CountedImpostorTable(); }
  void DeleteThis() override { delete this; }
};

class TableCopiedAsScalar : public DataTable {
 public:
  TableCopiedAsScalar() : DataTable(true) {}
  Block* Clone() override { return new CountedScalar(); }
  void DeleteThis() override { delete this; }
};

TEST(Transform3ControllerTest, CloneReleasesATableCopyThatIsNotATable) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  ASSERT_TRUE(controller->SetDataTable(new TableCopiedAsImpostor()).IsOk());
  const int live_before = CountedImpostorTable::s_live;
  {
    ScopedBlock<Block> clone(controller->Clone());
    EXPECT_EQ(clone->GetDependency(0), nullptr);
    EXPECT_EQ(clone->GetDataTable(), nullptr);
    EXPECT_NE(clone->GetDependency(1), nullptr);
  }
  EXPECT_EQ(CountedImpostorTable::s_live, live_before);
}

TEST(Transform3ControllerTest, CloneReleasesATableCopyOfAnotherClass) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  ASSERT_TRUE(controller->SetDataTable(new TableCopiedAsScalar()).IsOk());
  const int live_before = CountedScalar::s_live;
  {
    ScopedBlock<Block> clone(controller->Clone());
    EXPECT_EQ(clone->GetDependency(0), nullptr);
    EXPECT_EQ(clone->GetDataTable(), nullptr);
  }
  EXPECT_EQ(CountedScalar::s_live, live_before);
}

TEST(Transform3ControllerTest, CloneSkipsMissingSubBlocks) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->DeleteDependency(4);
  (void)controller->SetDataTable(nullptr);
  ScopedBlock<Block> clone_owned(controller->Clone());
  auto* clone = dynamic_cast<Transform3Controller*>(clone_owned.get());
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->GetDataTable(), nullptr);
  EXPECT_EQ(clone->GetDependency(0), nullptr);
  EXPECT_EQ(clone->GetDependency(4), nullptr);
  for (int slot = 1; slot <= 3; ++slot) EXPECT_NE(Point3At(clone, slot), nullptr) << slot;
}

// ---- Files ----

TEST(Transform3ControllerTest, SaveAndLoadWriteAndReadNothing) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  SceneSave save;
  save.BeginChunk(0x20);
  EXPECT_EQ(controller->Save(&save), 1);
  save.EndChunk();
  std::vector<std::uint8_t> bytes = save.TakeBytes();
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.BytesLeftInChunk(), 0u);
  EXPECT_EQ(controller->Load(&load), 1);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError());
}

class Transform3ControllerFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(Transform3ControllerFileTest, ControllerWithKeysRoundTripsThroughTheChunkStream) {
  ScopedBlock<Transform3Controller> controller(new Transform3Controller(true));
  controller->SetPosition(Point3<double>(1, 2, 3), 10);
  controller->SetPosition(Point3<double>(-4, 5, 6), 20);
  controller->SetRotation(Point3<double>(0.1, -0.2, 0.3), 10);
  controller->SetRotation(Point3<double>(0.4, 0.5, -0.6), 30);
  controller->SetScale(Point3<double>(2, 3, 4), 20);
  Point3At(controller.get(), 4)->SetPoint3(5, Point3<double>(7, 8, 9));
  ASSERT_TRUE(controller->GetDataTable()->SetValue(0, 3, 0, 0).IsOk());
  ASSERT_TRUE(controller->GetDataTable()->SetValue(1, Point3<double>(1, 1, 2), 0, 0).IsOk());
  ASSERT_TRUE(controller->GetDataTable()->SetValue(21, true, 0, 0).IsOk());
  ASSERT_TRUE(controller->GetDataTable()->SetValue(29, 8.5, 0, 0).IsOk());

  const std::vector<std::uint8_t> bytes = testing::SaveBlockGraph(controller.get());
  ScopedBlock<Block> loaded_block(testing::LoadBlockGraph(bytes));
  auto* loaded = dynamic_cast<Transform3Controller*>(loaded_block.get());
  ASSERT_NE(loaded, nullptr);

  for (int slot = 1; slot <= 4; ++slot) {
    Point3Controller* source = Point3At(controller.get(), slot);
    Point3Controller* copy = Point3At(loaded, slot);
    ASSERT_NE(copy, nullptr) << slot;
    EXPECT_EQ(copy->GetParentBlock(), loaded);
    for (int axis = 0; axis < 3; ++axis) {
      auto* source_keys = dynamic_cast<BezierController*>(source->GetDependency(axis));
      auto* copy_keys = dynamic_cast<BezierController*>(copy->GetDependency(axis));
      ASSERT_NE(copy_keys, nullptr) << slot << "," << axis;
      EXPECT_EQ(copy_keys->GetKeys(), source_keys->GetKeys()) << slot << "," << axis;
      EXPECT_EQ(copy_keys->GetDefaultValue(), source_keys->GetDefaultValue());
    }
  }
  for (int time : {0, 5, 10, 15, 20, 25, 30, 35}) {
    SCOPED_TRACE(time);
    ExpectMatrixEq(loaded->GetMatrix3(time), controller->GetMatrix3(time));
  }
  DataTable* table = loaded->GetDataTable();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->GetParentBlock(), loaded);
  EXPECT_EQ(table->GetNumDatas(), 30);
  EXPECT_EQ(table->GetInt(0, 0, 0), 3);
  EXPECT_EQ(table->GetPoint3F(1, 0, 0), Point3<double>(1, 1, 2));
  EXPECT_TRUE(table->GetBool(21, 0, 0));
  EXPECT_EQ(table->GetFloat(29, 0, 0), 8.5);
  for (int id = 0; id < 30; ++id) {
    EXPECT_EQ(table->GetDataName(id), kExpectedParameters[id].name) << id;
    EXPECT_EQ(table->GetDataType(id), kExpectedParameters[id].type) << id;
  }
  // Saving the loaded graph gives the same bytes again.
  EXPECT_EQ(testing::SaveBlockGraph(loaded), bytes);
}

}  // namespace
}  // namespace Orlo
