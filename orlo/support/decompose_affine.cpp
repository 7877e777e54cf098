#include <orlo/support/affine_parts.h>

#include <algorithm>
#include <cassert>
#include <cmath>

namespace Orlo {
namespace {

// A 3 × 3 matrix of the linear parts, small enough to pass by value.
struct Mat3 {
  double a[3][3];
};

Mat3 Identity3() { return Mat3{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}; }

Mat3 Multiply(const Mat3& x, const Mat3& y) {
  Mat3 r{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      r.a[i][j] = x.a[i][0] * y.a[0][j] + x.a[i][1] * y.a[1][j] + x.a[i][2] * y.a[2][j];
    }
  }
  return r;
}

Mat3 Transpose(const Mat3& x) {
  Mat3 r{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r.a[i][j] = x.a[j][i];
  }
  return r;
}

double Determinant(const Mat3& x) {
  return x.a[0][0] * (x.a[1][1] * x.a[2][2] - x.a[1][2] * x.a[2][1]) -
         x.a[0][1] * (x.a[1][0] * x.a[2][2] - x.a[1][2] * x.a[2][0]) +
         x.a[0][2] * (x.a[1][0] * x.a[2][1] - x.a[1][1] * x.a[2][0]);
}

double FrobeniusNorm(const Mat3& x) {
  double sum = 0.0;
  for (const auto& row : x.a) {
    for (double value : row) sum += value * value;
  }
  return std::sqrt(sum);
}

// The transposed inverse: the cofactor matrix divided by the determinant.
// Requires: det is the (non-zero) determinant of x.
Mat3 InverseTranspose(const Mat3& x, double det) {
  const auto& a = x.a;
  Mat3 c{};
  c.a[0][0] = a[1][1] * a[2][2] - a[1][2] * a[2][1];
  c.a[0][1] = a[1][2] * a[2][0] - a[1][0] * a[2][2];
  c.a[0][2] = a[1][0] * a[2][1] - a[1][1] * a[2][0];
  c.a[1][0] = a[0][2] * a[2][1] - a[0][1] * a[2][2];
  c.a[1][1] = a[0][0] * a[2][2] - a[0][2] * a[2][0];
  c.a[1][2] = a[0][1] * a[2][0] - a[0][0] * a[2][1];
  c.a[2][0] = a[0][1] * a[1][2] - a[0][2] * a[1][1];
  c.a[2][1] = a[0][2] * a[1][0] - a[0][0] * a[1][2];
  c.a[2][2] = a[0][0] * a[1][1] - a[0][1] * a[1][0];
  for (auto& row : c.a) {
    for (double& value : row) value /= det;
  }
  return c;
}

// The orthogonal factor Q of the polar decomposition of a non-singular matrix, by Newton's
// iteration Q <- (γQ + Q⁻ᵀ/γ) / 2. The scaling γ (ratio of Frobenius norms) makes the first
// steps fast for strongly stretched input; the last steps are unscaled, where convergence
// is quadratic. A positive determinant gives a proper rotation.
// Returns false when an iterate turns singular, so the caller can take the rank-deficient
// route instead.
bool PolarRotation(const Mat3& l, Mat3* q_out) {
  Mat3 q = l;
  constexpr int kMaxIterations = 100;
  constexpr double kScaledUntil = 1e-2;
  constexpr double kConverged = 1e-13;
  bool converged = false;
  for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
    const double det = Determinant(q);
    if (det == 0.0 || !std::isfinite(det)) return false;
    const Mat3 inverse_transpose = InverseTranspose(q, det);
    double gamma = 1.0;
    Mat3 next{};
    double change = 0.0;
    for (int pass = 0; pass < 2; ++pass) {
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
          next.a[i][j] = 0.5 * (gamma * q.a[i][j] + inverse_transpose.a[i][j] / gamma);
        }
      }
      Mat3 difference{};
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) difference.a[i][j] = next.a[i][j] - q.a[i][j];
      }
      change = FrobeniusNorm(difference);
      if (pass == 1 || change <= kScaledUntil) break;
      // Far from orthogonal: redo the step with the norm-balancing scale.
      gamma = std::sqrt(FrobeniusNorm(inverse_transpose) / FrobeniusNorm(q));
    }
    q = next;
    if (converged) break;
    // One more step after the change falls below the tolerance lands on the rounding floor.
    if (change <= kConverged) converged = true;
  }
  *q_out = q;
  return true;
}

// Eigen-decomposition of a symmetric matrix by cyclic Jacobi rotations: s = V diag(k) Vᵀ,
// the columns of V being the eigenvectors. Starting from V = I, an already diagonal matrix
// keeps its diagonal order, which is what gives the stretch factors back axis by axis.
void SymmetricEigen(Mat3 s, double k[3], Mat3* v_out) {
  Mat3 v = Identity3();
  constexpr int kMaxSweeps = 50;
  for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
    const double off = s.a[0][1] * s.a[0][1] + s.a[0][2] * s.a[0][2] + s.a[1][2] * s.a[1][2];
    const double diagonal = s.a[0][0] * s.a[0][0] + s.a[1][1] * s.a[1][1] + s.a[2][2] * s.a[2][2];
    if (off == 0.0 || off <= 1e-32 * diagonal) break;
    static constexpr int kPairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
    for (const auto& pair : kPairs) {
      const int p = pair[0];
      const int q = pair[1];
      if (s.a[p][q] == 0.0) continue;
      // The rotation J (c, s in rows/columns p and q) with Jᵀ S J zero at (p, q); the
      // smaller root keeps the turn at most 45 degrees.
      const double theta = (s.a[q][q] - s.a[p][p]) / (2.0 * s.a[p][q]);
      const double t = std::isinf(theta) ? 0.0
                                         : (theta >= 0.0 ? 1.0 : -1.0) /
                                               (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
      const double c = 1.0 / std::sqrt(t * t + 1.0);
      const double sn = t * c;
      Mat3 j = Identity3();
      j.a[p][p] = c;
      j.a[q][q] = c;
      j.a[p][q] = sn;
      j.a[q][p] = -sn;
      s = Multiply(Transpose(j), Multiply(s, j));
      s.a[p][q] = 0.0;
      s.a[q][p] = 0.0;
      v = Multiply(v, j);
    }
  }
  for (int i = 0; i < 3; ++i) k[i] = s.a[i][i];
  *v_out = v;
}

Point3<double> Row(const Mat3& x, int i) { return Point3<double>(x.a[i][0], x.a[i][1], x.a[i][2]); }

void SetRow(Mat3* x, int i, const Point3<double>& p) {
  x->a[i][0] = p.x;
  x->a[i][1] = p.y;
  x->a[i][2] = p.z;
}

// A unit vector perpendicular to the unit vector n.
Point3<double> AnyPerpendicular(const Point3<double>& n) {
  // Cross with the axis least aligned with n, so the product is never small.
  const double ax = std::fabs(n.x), ay = std::fabs(n.y), az = std::fabs(n.z);
  Point3<double> axis(0, 0, 1);
  if (ax <= ay && ax <= az) {
    axis = Point3<double>(1, 0, 0);
  } else if (ay <= az) {
    axis = Point3<double>(0, 1, 0);
  }
  const Point3<double> p = Cross(n, axis);
  return p * (1.0 / Length(p));
}

// Polar decomposition l = S Q (row vectors) of a singular or nearly singular l, through
// the eigenvectors V of l lᵀ = S²: the rows of Vᵀ l are k_i times the rows of Vᵀ Q, so their
// lengths are the stretch factors, and the rows of the collapsed axes are completed into a
// proper rotation.
void RankDeficientPolar(const Mat3& l, Mat3* q_out, double k[3], Mat3* v_out) {
  Mat3 v{};
  double eigenvalues[3];
  SymmetricEigen(Multiply(l, Transpose(l)), eigenvalues, &v);
  const Mat3 w = Multiply(Transpose(v), l);
  const double tolerance = 1e-12 * FrobeniusNorm(l);
  int order[3] = {0, 1, 2};
  for (int i = 0; i < 3; ++i) k[i] = Length(Row(w, i));
  std::sort(order, order + 3, [&](int x, int y) { return k[x] > k[y]; });

  Mat3 q_hat = Transpose(v);  // gives Q = I when every axis collapsed
  if (k[order[0]] > tolerance && k[order[0]] > 0.0) {
    const Point3<double> first = Row(w, order[0]) * (1.0 / k[order[0]]);
    Point3<double> second = Row(w, order[1]);
    second -= first * Dot(first, second);
    const double second_length = Length(second);
    if (k[order[1]] > tolerance && second_length > 0.0) {
      second = second * (1.0 / second_length);
    } else {
      second = AnyPerpendicular(first);
    }
    SetRow(&q_hat, order[0], first);
    SetRow(&q_hat, order[1], second);
    SetRow(&q_hat, order[2], Cross(first, second));
    // Q = V Q̂ must be a proper rotation: det Q̂ has to match det V.
    if ((Determinant(q_hat) > 0.0) != (Determinant(v) > 0.0)) {
      SetRow(&q_hat, order[2], -Cross(first, second));
    }
  }
  *q_out = Multiply(v, q_hat);
  *v_out = v;
}

Mat3 LinearPart(const Matrix3<double>& m) {
  Mat3 l{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) l.a[i][j] = m.m[i][j];
  }
  return l;
}

Matrix3<double> ToMatrix3(const Mat3& l) {
  Matrix3<double> m;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) m.m[i][j] = l.a[i][j];
  }
  return m;
}

}  // namespace

Matrix3<double> ToMatrix3(const Quat& q) {
  const double xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
  const double xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z;
  const double wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
  // The transpose of the usual column-vector rotation, since points are row vectors here.
  Matrix3<double> m;
  m.m[0][0] = 1.0 - 2.0 * (yy + zz);
  m.m[0][1] = 2.0 * (xy + wz);
  m.m[0][2] = 2.0 * (xz - wy);
  m.m[1][0] = 2.0 * (xy - wz);
  m.m[1][1] = 1.0 - 2.0 * (xx + zz);
  m.m[1][2] = 2.0 * (yz + wx);
  m.m[2][0] = 2.0 * (xz + wy);
  m.m[2][1] = 2.0 * (yz - wx);
  m.m[2][2] = 1.0 - 2.0 * (xx + yy);
  return m;
}

Quat ToQuat(const Matrix3<double>& m) {
  // r is the column-vector rotation, the transpose of m's linear part.
  auto r = [&m](int i, int j) { return m.m[j][i]; };
  Quat q;
  const double trace = r(0, 0) + r(1, 1) + r(2, 2);
  // Take the square root of the largest of the four candidates for accuracy.
  if (trace > 0.0) {
    const double s = 0.5 / std::sqrt(trace + 1.0);
    q = Quat((r(2, 1) - r(1, 2)) * s, (r(0, 2) - r(2, 0)) * s, (r(1, 0) - r(0, 1)) * s, 0.25 / s);
  } else if (r(0, 0) >= r(1, 1) && r(0, 0) >= r(2, 2)) {
    const double s = 2.0 * std::sqrt(1.0 + r(0, 0) - r(1, 1) - r(2, 2));
    q = Quat(0.25 * s, (r(0, 1) + r(1, 0)) / s, (r(0, 2) + r(2, 0)) / s, (r(2, 1) - r(1, 2)) / s);
  } else if (r(1, 1) >= r(2, 2)) {
    const double s = 2.0 * std::sqrt(1.0 + r(1, 1) - r(0, 0) - r(2, 2));
    q = Quat((r(0, 1) + r(1, 0)) / s, 0.25 * s, (r(1, 2) + r(2, 1)) / s, (r(0, 2) - r(2, 0)) / s);
  } else {
    const double s = 2.0 * std::sqrt(1.0 + r(2, 2) - r(0, 0) - r(1, 1));
    q = Quat((r(0, 2) + r(2, 0)) / s, (r(1, 2) + r(2, 1)) / s, 0.25 * s, (r(1, 0) - r(0, 1)) / s);
  }
  const double length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  const double scale = (q.w < 0.0 ? -1.0 : 1.0) / length;
  return Quat(q.x * scale, q.y * scale, q.z * scale, q.w * scale);
}

void DecomposeAffine(Matrix3<double> m, AffinePartsD* parts) {
  assert(parts != nullptr);
  parts->translation = m.GetRow(3);

  Mat3 l = LinearPart(m);
  const double det = Determinant(l);
  parts->determinant_sign = det < 0.0 ? -1.0 : 1.0;
  // In three dimensions negating the matrix flips its determinant, so the rest works on a
  // matrix whose orthogonal factor is a proper rotation.
  if (det < 0.0) {
    for (auto& row : l.a) {
      for (double& value : row) value = -value;
    }
  }

  Mat3 q{};
  Mat3 v{};
  double k[3];
  const double norm = FrobeniusNorm(l);
  // Newton's iteration needs the inverse; a (nearly) singular matrix takes the eigenvector
  // route, which copes with collapsed axes.
  const bool regular = std::fabs(det) > 1e-14 * norm * norm * norm && PolarRotation(l, &q);
  if (regular) {
    // l = S Q, so the stretch is S = l Qᵀ; symmetrise away the rounding before the
    // eigen-decomposition.
    Mat3 s = Multiply(l, Transpose(q));
    for (int i = 0; i < 3; ++i) {
      for (int j = i + 1; j < 3; ++j) {
        const double mean = 0.5 * (s.a[i][j] + s.a[j][i]);
        s.a[i][j] = mean;
        s.a[j][i] = mean;
      }
    }
    SymmetricEigen(s, k, &v);
  } else {
    RankDeficientPolar(l, &q, k, &v);
  }

  // An eigenvector's sign is free: make the stretch axes a proper rotation.
  if (Determinant(v) < 0.0) {
    for (auto& row : v.a) row[2] = -row[2];
  }
  parts->rotation = ToQuat(ToMatrix3(q));
  parts->stretch_rotation = ToQuat(ToMatrix3(Transpose(v)));
  // Rounding can leave a zero factor a hair below zero.
  parts->stretch = Point3<double>(std::max(k[0], 0.0), std::max(k[1], 0.0), std::max(k[2], 0.0));
}

Matrix3<double> ComposeAffine(const AffinePartsD& parts) {
  const Matrix3<double> u = ToMatrix3(parts.stretch_rotation);
  Matrix3<double> u_transposed;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) u_transposed.m[i][j] = u.m[j][i];
  }
  Matrix3<double> stretch;
  stretch.m[0][0] = parts.stretch.x * parts.determinant_sign;
  stretch.m[1][1] = parts.stretch.y * parts.determinant_sign;
  stretch.m[2][2] = parts.stretch.z * parts.determinant_sign;
  Matrix3<double> result = u_transposed * stretch * u * ToMatrix3(parts.rotation);
  result.SetRow(3, parts.translation);
  return result;
}

}  // namespace Orlo
