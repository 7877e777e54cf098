// Defines FloatController, the abstract controller of a scalar value.
#pragma once

#include <orlo/base/controllers/controller.h>

namespace Orlo {

class FloatController : public Controller {
 public:
  static constexpr int kControllerType = 0;

  int GetControllerType() const override { return kControllerType; }

  // The value at `time`. Not const: an evaluation may cache what it computes.
  virtual double GetFloat(int time) = 0;
  virtual void SetFloat(int time, double value) = 0;
};

}  // namespace Orlo
