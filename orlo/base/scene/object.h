// Defines Object, the abstract interface of anything a node can build into renderable
// geometry at a time.
//
// A node shows geometry through the Object in its "object" slot: either a plain object of a
// host library (a mesh, a camera, a light) or the top of a chain of ObjectModifiers, each
// stacking one Modifier on the object below it. Objects are blocks, owned through the graph
// like every block. This library gives every operation but Flags a neutral default; concrete
// geometry classes and their factories live in host libraries.
#pragma once

#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/support/box3.h>
#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>
#include <orlo/support/time_interval.h>

namespace Orlo {

class Node;

class Object : public Block {
 public:
  // The virtual operations below follow Block's in this order; host classes override them in
  // place.

  // Host-defined flags of the object.
  virtual int Flags() = 0;
  // The object to render at `time` for `node`. The default builds nothing: null.
  virtual Object* BuildObject(int time, Node* node);
  // Undoes what BuildObject prepared. The default does nothing and returns null.
  virtual Object* UnbuildObject(int time, Node* node);
  // The object's bounding box at `time`, transformed by `tm` when one is given. The default is
  // the empty box (minimum at +MAX_REAL, maximum at -MAX_REAL on every axis).
  virtual Box3<double> GetObjectBoundingBox(int time, Matrix3<double>* tm = nullptr);
  // The editable points: none by default.
  virtual int GetNumPoints();
  // (0, 0, 0) by default.
  virtual Point3<double> GetPoint(int index);
  // Does nothing by default.
  virtual void SetPoint(int index, Point3<double> point);
  // Called after a series of SetPoint; does nothing by default.
  virtual void PointsWereSet();
  // Narrows `interval` to the span in which the object stays valid; the default leaves it.
  virtual void GetTimeInterval(TimeInterval& interval);
  // Appends the objects this one is built from; the default appends nothing.
  virtual void GetDependantObjects(std::vector<Object*>& out);

 protected:
  Object() = default;
  Object(const Object&) = default;
  Object& operator=(const Object&) = default;
};

}  // namespace Orlo
