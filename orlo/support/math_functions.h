// Declares the free math helpers the library computes with: transforming a point by an
// affine matrix, inverting a matrix, normalising a vector, and bounding a transformed box.
// All take and return values; nothing is owned.
#pragma once

#include <orlo/support/box3.h>
#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>

namespace Orlo {

// p.x·row 0 + p.y·row 1 + p.z·row 2 + row 3: the point transformed, translation included.
// Both argument orders give the same result.
Point3<double> TransformPoint(const Point3<double>& p, const Matrix3<double>& m);
Point3<double> TransformPoint(const Matrix3<double>& m, const Point3<double>& p);

// The inverse of an affine matrix. The linear part is the adjugate of m's linear part times
// r = 1 / det; the translation row is -(t.x·row 0 + t.y·row 1 + t.z·row 2) of that new
// linear part, t being m's translation. Never fails: a singular linear part (det exactly 0)
// uses r = 1e7 and so yields a very large finite matrix; callers rely on always getting one.
Matrix3<double> Inverse(const Matrix3<double>& m);

// v scaled to length 1. Stores sqrt(x² + y² + z²) in *length when length is not null. A zero
// vector yields (1, 0, 0).
Point3<double> Normalize(const Point3<double>& v, double* length = nullptr);

// The axis-aligned box that holds the eight corners of box transformed by m. An empty box
// stays empty.
Box3<double> TransformBox(const Box3<double>& box, const Matrix3<double>& m);

}  // namespace Orlo
