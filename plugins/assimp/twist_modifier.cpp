#include "plugins/assimp/twist_modifier.h"

#include <cmath>

#include <orlo/base/controllers/float_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/time_interval.h>

#include "plugins/assimp/twist_object_modifier.h"

namespace orlo_assimp {

TwistModifier::TwistModifier(bool create_defaults) {
  if (create_defaults) CreateDataTable();
}

void TwistModifier::UpdateDataTable(bool) {
  Orlo::DataTable* table = GetDataTable();
  if (table == nullptr) return;
  (void)table->AddDataFloat(kAngleID, 0.0, 1);
  (void)table->AddDataInt(kAxisID, 2, 1);
  table->UpdateIDToIndex();
  (void)table->SetDataName(kAngleID, "angle");
  (void)table->SetDataName(kAxisID, "axis");
}

Orlo::Block* TwistModifier::Clone() {
  auto* copy = new TwistModifier(false);
  copy->SetName(GetName());
  copy->SetBox(GetBox());
  copy->SetSendEvents(false);  // the copy's first change is not news to anyone
  copy->SetActive(IsActive());
  copy->SetSendEvents(true);
  if (Orlo::DataTable* table = GetDataTable()) {
    Orlo::Block* table_copy = table->Clone();
    if (!copy->SetDataTable(static_cast<Orlo::DataTable*>(table_copy)).IsOk()) {
      table_copy->DeleteThisBlock(true);
    }
  }
  return copy;
}

Orlo::ObjectModifier* TwistModifier::GetNewObjectModifier() {
  auto* stack = new TwistObjectModifier;
  (void)stack->SetModifier(this);  // a fresh stack takes any modifier
  return stack;
}

void TwistModifier::GetTimeInterval(Orlo::TimeInterval& interval) {
  Orlo::DataTable* table = GetDataTable();
  if (table == nullptr) return;
  // An animated angle changes at any time: the twist is then valid at no time span, and a
  // stack builds it again at every time asked.
  if (table->GetAnimationContoller(kAngleID, 0) != nullptr) {
    interval = Orlo::TimeInterval(1, 0);
    return;
  }
  Orlo::TimeInterval own = Orlo::TimeInterval::Forever();
  table->GetTimeInterval(own);
  interval &= own;
}

double TwistModifier::GetAngle(int time) const {
  Orlo::DataTable* table = GetDataTable();
  if (table == nullptr) return 0.0;
  // The table's values hold what was set last; an animated angle is read from its controller.
  if (auto* controller =
          dynamic_cast<Orlo::FloatController*>(table->GetAnimationContoller(kAngleID, 0))) {
    return controller->GetFloat(time);
  }
  return table->GetFloat(kAngleID, time, 0);
}

int TwistModifier::GetAxis() const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetInt(kAxisID, 0, 0) : 2;
}

void TwistModifier::SetAngle(double radians, int time) {
  if (Orlo::DataTable* table = GetDataTable()) (void)table->SetValue(kAngleID, radians, time, 0);
}

void TwistModifier::SetAxis(int axis) {
  if (Orlo::DataTable* table = GetDataTable()) (void)table->SetValue(kAxisID, axis, 0, 0);
}

Orlo::Point3<double> TwistModifier::Twist(Orlo::Point3<double> point, double angle, int axis,
                                          double low, double high) {
  // The coordinate along the axis, and the two that turn, in right-handed order.
  double* along = &point.z;
  double* first = &point.x;
  double* second = &point.y;
  if (axis == 0) {
    along = &point.x;
    first = &point.y;
    second = &point.z;
  } else if (axis == 1) {
    along = &point.y;
    first = &point.z;
    second = &point.x;
  }
  const double extent = high - low;
  const double share = extent > 0 ? (*along - low) / extent : 0.0;
  const double turn = angle * share;
  const double c = std::cos(turn), s = std::sin(turn);
  const double a = *first, b = *second;
  *first = a * c - b * s;
  *second = a * s + b * c;
  return point;
}

}  // namespace orlo_assimp
