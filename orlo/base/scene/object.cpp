#include <orlo/base/scene/object.h>

namespace Orlo {

Object* Object::BuildObject(int, Node*) { return nullptr; }

Object* Object::UnbuildObject(int, Node*) { return nullptr; }

Box3<double> Object::GetObjectBoundingBox(int, Matrix3<double>*) { return Box3<double>(); }

int Object::GetNumPoints() { return 0; }

Point3<double> Object::GetPoint(int) { return Point3<double>(0.0, 0.0, 0.0); }

void Object::SetPoint(int, Point3<double>) {}

void Object::PointsWereSet() {}

void Object::GetTimeInterval(TimeInterval&) {}

void Object::GetDependantObjects(std::vector<Object*>&) {}

}  // namespace Orlo
