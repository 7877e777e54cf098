#include <orlo/base/controllers/transform3_controller.h>

#include <cassert>

#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/affine_parts.h>

namespace Orlo {

namespace {

constexpr const char* kSlotNames[] = {"data_table", "position_animation_controller",
                                      "rotation_animation_controller", "scale_animation_controller",
                                      "shear_animation_controller"};
constexpr char kNoDependency[] = "no_dependency";
constexpr unsigned kDataTableDependencyType = 205;
constexpr unsigned kControllerDependencyType = 300;

enum class ParameterKind { kInt, kPoint3, kBool, kFloat };

struct Parameter {
  ParameterKind kind;
  const char* name;
};

// The parameter table, in id order (the id is the position). Every default is zero or false.
constexpr Parameter kParameters[Transform3Controller::kNumParameters] = {
    {ParameterKind::kInt, "rotation_order"},
    {ParameterKind::kPoint3, "rotation_pivot"},
    {ParameterKind::kPoint3, "scale_pivot"},
    {ParameterKind::kBool, "use_position_limit_x"},
    {ParameterKind::kFloat, "min_position_limit_x"},
    {ParameterKind::kFloat, "max_position_limit_x"},
    {ParameterKind::kBool, "use_position_limit_y"},
    {ParameterKind::kFloat, "min_position_limit_y"},
    {ParameterKind::kFloat, "max_position_limit_y"},
    {ParameterKind::kBool, "use_position_limit_z"},
    {ParameterKind::kFloat, "min_position_limit_z"},
    {ParameterKind::kFloat, "max_position_limit_z"},
    {ParameterKind::kBool, "use_rotation_limit_x"},
    {ParameterKind::kFloat, "min_rotation_limit_x"},
    {ParameterKind::kFloat, "max_rotation_limit_x"},
    {ParameterKind::kBool, "use_rotation_limit_y"},
    {ParameterKind::kFloat, "min_rotation_limit_y"},
    {ParameterKind::kFloat, "max_rotation_limit_y"},
    {ParameterKind::kBool, "use_rotation_limit_z"},
    {ParameterKind::kFloat, "min_rotation_limit_z"},
    {ParameterKind::kFloat, "max_rotation_limit_z"},
    {ParameterKind::kBool, "use_scale_limit_x"},
    {ParameterKind::kFloat, "min_scale_limit_x"},
    {ParameterKind::kFloat, "max_scale_limit_x"},
    {ParameterKind::kBool, "use_scale_limit_y"},
    {ParameterKind::kFloat, "min_scale_limit_y"},
    {ParameterKind::kFloat, "max_scale_limit_y"},
    {ParameterKind::kBool, "use_scale_limit_z"},
    {ParameterKind::kFloat, "min_scale_limit_z"},
    {ParameterKind::kFloat, "max_scale_limit_z"},
};

// Every parameter holds one element.
constexpr int kParameterSize = 1;

}  // namespace

Transform3Controller::Transform3Controller(bool create) {
  if (!create) return;
  Point3Controller* controllers[4];
  for (Point3Controller*& controller : controllers) controller = new Point3Controller(true);
  controllers[kScaleSlot - kPositionSlot]->SetPoint3(0, Point3<double>(1.0, 1.0, 1.0));
  // Fresh blocks linked into a fresh controller: no link can be refused.
  for (int i = 0; i < 4; ++i) (void)MakeDependencyByID(kPositionSlot + i, controllers[i]);
  (void)MakeDependencyByID(kDataTableSlot, new DataTable(true));
  UpdateDataTable(true);
}

std::string Transform3Controller::GetClassName() const { return "Transform3Controller"; }

BlockType Transform3Controller::GetBlockType() const { return m_block_type; }

int Transform3Controller::NumDependencies() const { return kNumSlots; }

void Transform3Controller::SetDependency(int index, Block* block) {
  if (!IsSlot(index)) return;
  if (index == kDataTableSlot) {
    m_data_table.Set(block);
    return;
  }
  auto* controller = dynamic_cast<Controller*>(block);
  m_controllers[index - kPositionSlot].Set(
      block,
      controller != nullptr && controller->GetControllerType() == Point3Controller::kControllerType
          ? dynamic_cast<Point3Controller*>(block)
          : nullptr);
}

Block* Transform3Controller::GetDependency(int index) const {
  if (!IsSlot(index)) return nullptr;
  if (index == kDataTableSlot) return m_data_table.Raw();
  return m_controllers[index - kPositionSlot].Raw();
}

std::string Transform3Controller::GetDependencyName(int index) const {
  return IsSlot(index) ? kSlotNames[index] : kNoDependency;
}

unsigned Transform3Controller::GetDependencyType(int index) const {
  if (!IsSlot(index)) return 0;
  return index == kDataTableSlot ? kDataTableDependencyType : kControllerDependencyType;
}

DataTable* Transform3Controller::GetDataTable() const { return m_data_table.Get(); }

Status Transform3Controller::SetDataTable(DataTable* table) {
  Status result;
  if (table != nullptr && !SceneEngine::IsDataTable(table)) {
    result.Set(Status::kInvalidArgument,
               "Transform3Controller::SetDataTable : The block is not a valid data_table.");
    return result;
  }
  // Kept as is: the link's own result is not reported, callers only learn about the kind.
  (void)MakeDependencyByID(kDataTableSlot, table);
  return result;
}

void Transform3Controller::UpdateDataTable(bool) {
  DataTable* table = m_data_table.Get();
  if (table == nullptr) return;
  for (int id = 0; id < kNumParameters; ++id) {
    // An id the table holds already is refused by the table and keeps its value.
    switch (kParameters[id].kind) {
      case ParameterKind::kInt:
        (void)table->AddDataInt(id, 0, kParameterSize);
        break;
      case ParameterKind::kPoint3:
        (void)table->AddDataPoint3(id, Point3<double>(0.0, 0.0, 0.0), kParameterSize);
        break;
      case ParameterKind::kBool:
        (void)table->AddDataBool(id, false, kParameterSize);
        break;
      case ParameterKind::kFloat:
        (void)table->AddDataFloat(id, 0.0, kParameterSize);
        break;
    }
  }
  table->UpdateIDToIndex();
  for (int id = 0; id < kNumParameters; ++id) (void)table->SetDataName(id, kParameters[id].name);
}

Block* Transform3Controller::Clone() {
  auto* clone = new Transform3Controller(false);
  clone->m_matrix = m_matrix;
  for (int i = 0; i < 4; ++i) {
    if (Block* block = m_controllers[i].Raw()) {
      (void)clone->MakeDependencyByID(kPositionSlot + i, block->Clone());
    }
  }
  if (m_data_table.Get() != nullptr) {
    UpdateDataTable(false);
    Block* table_copy = GetDataTable()->Clone();
    if (auto* table = dynamic_cast<DataTable*>(table_copy)) (void)clone->SetDataTable(table);
    // A host table whose copy is not a parameter table: the clone refuses it, and nothing
    // else would ever release it.
    if (table_copy != nullptr && clone->GetDependency(kDataTableSlot) != table_copy) {
      table_copy->DeleteThisBlock(true);
    }
    clone->UpdateDataTable(false);
  }
  return clone;
}

int Transform3Controller::Save([[maybe_unused]] SceneSave* save) {
  assert(save != nullptr);
  return 1;
}

int Transform3Controller::Load([[maybe_unused]] SceneLoad* load) {
  assert(load != nullptr);
  return 1;
}

void Transform3Controller::DeleteThis() { delete this; }

void Transform3Controller::SetMatrix3(Matrix3<double> matrix, int time) {
  Point3Controller* position = Point3At(kPositionSlot);
  Point3Controller* rotation = Point3At(kRotationSlot);
  Point3Controller* scale = Point3At(kScaleSlot);
  if (position != nullptr) position->SetPoint3(time, matrix.GetRow(3));
  AffinePartsD parts;
  DecomposeAffine(matrix, &parts);
  // Kept as is: the angles come from the whole matrix, not from the rotation of the
  // decomposition, so a scaled matrix gives the angles of its unnormalised rows. Existing
  // scenes were keyed this way.
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  (void)matrix.ToEulerAnglesXYZ(x, y, z);
  if (rotation != nullptr) rotation->SetPoint3(time, Point3<double>(x, y, z));
  if (scale != nullptr) scale->SetPoint3(time, parts.stretch);
  PostEvent(0, 0);
}

void Transform3Controller::SetPosition(Point3<double> position, int time) {
  if (Point3Controller* controller = Point3At(kPositionSlot)) {
    controller->SetPoint3(time, position);
  }
}

void Transform3Controller::SetRotation(Point3<double> rotation, int time) {
  if (Point3Controller* controller = Point3At(kRotationSlot)) {
    controller->SetPoint3(time, rotation);
  }
}

void Transform3Controller::SetScale(Point3<double> scale, int time) {
  if (Point3Controller* controller = Point3At(kScaleSlot)) {
    controller->SetPoint3(time, scale);
  }
}

Matrix3<double> Transform3Controller::GetMatrix3(int time) {
  Matrix3<double> translation = Matrix3<double>::Identity();
  if (Point3Controller* position = Point3At(kPositionSlot)) {
    translation.SetRow(3, position->GetPoint3(time));
  }
  Matrix3<double> rotation_matrix = Matrix3<double>::Identity();
  if (Point3Controller* rotation = Point3At(kRotationSlot)) {
    const Point3<double> angles = rotation->GetPoint3(time);
    rotation_matrix.FromEulerAnglesXYZ(angles.x, angles.y, angles.z);
  }
  Matrix3<double> scale_matrix = Matrix3<double>::Identity();
  if (Point3Controller* scale = Point3At(kScaleSlot)) {
    const Point3<double> s = scale->GetPoint3(time);
    if (s != Point3<double>(1.0, 1.0, 1.0)) {
      const double factors[3] = {s.x, s.y, s.z};
      const Matrix3<double> identity = Matrix3<double>::Identity();
      // Column c of the identity's linear rows times factor c: the diagonal becomes the
      // scale, every other entry a product with 0.0.
      for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) scale_matrix.m[r][c] = identity.m[r][c] * factors[c];
      }
    }
  }
  return (scale_matrix * rotation_matrix) * translation;
}

Point3<double> Transform3Controller::GetPosition(int time) {
  Point3Controller* controller = Point3At(kPositionSlot);
  return controller != nullptr ? controller->GetPoint3(time) : Point3<double>(0.0, 0.0, 0.0);
}

Point3<double> Transform3Controller::GetRotation(int time) {
  Point3Controller* controller = Point3At(kRotationSlot);
  return controller != nullptr ? controller->GetPoint3(time) : Point3<double>(0.0, 0.0, 0.0);
}

Point3<double> Transform3Controller::GetScale(int time) {
  Point3Controller* controller = Point3At(kScaleSlot);
  return controller != nullptr ? controller->GetPoint3(time) : Point3<double>(0.0, 0.0, 0.0);
}

BlockType Transform3ControllerFactory::GetBlockType() const {
  return Transform3Controller::m_block_type;
}

Block* Transform3ControllerFactory::GetBlock(bool create_defaults) const {
  return new Transform3Controller(create_defaults);
}

std::string Transform3ControllerFactory::GetName() const { return "Transform3Controller"; }

}  // namespace Orlo
