// Defines Matrix3Controller, the abstract controller of an affine transform: it gives a
// matrix at a time and splits one back into position, rotation and scale.
// Like every block it is owned by the dependency graph (see Block).
#pragma once

#include <orlo/base/controllers/controller.h>
#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>

namespace Orlo {

class Matrix3Controller : public Controller {
 public:
  static constexpr int kControllerType = 7;

  int GetControllerType() const override { return kControllerType; }

  // Setters, then getters, in this order: hosts that extend the family override them in
  // place. The rotation is three Euler angles in radians, applied about X, then Y, then Z.
  virtual void SetMatrix3(Matrix3<double> matrix, int time) = 0;
  virtual void SetPosition(Point3<double> position, int time) = 0;
  virtual void SetRotation(Point3<double> rotation, int time) = 0;
  virtual void SetScale(Point3<double> scale, int time) = 0;
  // Not const: evaluating the sub-controllers may cache what they compute.
  virtual Matrix3<double> GetMatrix3(int time) = 0;
  virtual Point3<double> GetPosition(int time) = 0;
  virtual Point3<double> GetRotation(int time) = 0;
  virtual Point3<double> GetScale(int time) = 0;
};

}  // namespace Orlo
