// Defines Controller, the abstract base of the blocks that compute a value from a time.
// Callers test a controller's kind by GetControllerType before casting it:
// 0 scalar (FloatController), 4 three-component (Point3Controller), 7 matrix
// (Matrix3Controller).
#pragma once

#include <orlo/base/block/block.h>

namespace Orlo {

class Controller : public Block {
 public:
  virtual int GetControllerType() const = 0;
};

}  // namespace Orlo
