// Property: in random trees of nodes with random transforms, the absolute matrix of every
// node equals the product of the local matrices along its path to the root, computed here
// independently from the values the transforms were given.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/scene/node.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;

struct LocalTransform {
  Point3<double> position;
  Point3<double> rotation;
  Point3<double> scale;
};

// The affine product "a, then b", written out here.
Matrix3<double> Multiply(const Matrix3<double>& a, const Matrix3<double>& b) {
  Matrix3<double> result;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      double sum = r == 3 ? b.m[3][c] : 0.0;
      for (int k = 0; k < 3; ++k) sum += a.m[r][k] * b.m[k][c];
      result.m[r][c] = sum;
    }
  }
  return result;
}

// Scale, then rotation about x, y and z, then translation, for row vectors; built from the
// entries of each factor rather than through the controller.
Matrix3<double> LocalMatrix(const LocalTransform& t) {
  Matrix3<double> scale;
  scale.m[0][0] = t.scale.x;
  scale.m[1][1] = t.scale.y;
  scale.m[2][2] = t.scale.z;
  const double cx = std::cos(t.rotation.x), sx = std::sin(t.rotation.x);
  const double cy = std::cos(t.rotation.y), sy = std::sin(t.rotation.y);
  const double cz = std::cos(t.rotation.z), sz = std::sin(t.rotation.z);
  Matrix3<double> rx(Point3<double>(1, 0, 0), Point3<double>(0, cx, sx), Point3<double>(0, -sx, cx),
                     Point3<double>(0, 0, 0));
  Matrix3<double> ry(Point3<double>(cy, 0, -sy), Point3<double>(0, 1, 0), Point3<double>(sy, 0, cy),
                     Point3<double>(0, 0, 0));
  Matrix3<double> rz(Point3<double>(cz, sz, 0), Point3<double>(-sz, cz, 0), Point3<double>(0, 0, 1),
                     Point3<double>(0, 0, 0));
  Matrix3<double> translation;
  translation.SetRow(3, t.position);
  return Multiply(Multiply(Multiply(Multiply(scale, rx), ry), rz), translation);
}

void CheckRandomTree(unsigned seed, int size) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> position(-5.0, 5.0);
  std::uniform_real_distribution<double> angle(-3.14159, 3.14159);
  std::uniform_real_distribution<double> scale(0.8, 1.25);

  std::vector<Node*> nodes;
  std::vector<int> parents;  // -1 for the root
  std::vector<LocalTransform> locals;
  ScopedBlock<Node> root(new Node(true));
  for (int i = 0; i < size; ++i) {
    Node* node = i == 0 ? root.get() : new Node(true);
    const int parent = i == 0 ? -1 : std::uniform_int_distribution<int>(0, i - 1)(random);
    if (parent >= 0) {
      ASSERT_TRUE(nodes[static_cast<std::size_t>(parent)]->AddChild(node).IsOk());
    }
    LocalTransform local{{position(random), position(random), position(random)},
                         {angle(random), angle(random), angle(random)},
                         {scale(random), scale(random), scale(random)}};
    Matrix3Controller* controller = node->GetNodeTransformController();
    controller->SetPosition(local.position, 0);
    controller->SetRotation(local.rotation, 0);
    controller->SetScale(local.scale, 0);
    nodes.push_back(node);
    parents.push_back(parent);
    locals.push_back(local);
  }

  for (int i = 0; i < size; ++i) {
    Node* node = nodes[static_cast<std::size_t>(i)];
    const int parent = parents[static_cast<std::size_t>(i)];
    ASSERT_EQ(node->GetParent(), parent < 0 ? nullptr : nodes[static_cast<std::size_t>(parent)]);
    // The path from the node up to the root, then the product from the root down.
    std::vector<int> path;
    for (int k = i; k >= 0; k = parents[static_cast<std::size_t>(k)]) path.push_back(k);
    Matrix3<double> expected = LocalMatrix(locals[static_cast<std::size_t>(path.back())]);
    for (std::size_t p = path.size() - 1; p-- > 0;) {
      expected = Multiply(LocalMatrix(locals[static_cast<std::size_t>(path[p])]), expected);
    }
    const Matrix3<double> actual = node->GetAbsoluteTM(0);
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 3; ++c) {
        const double tolerance = 1e-9 * (1.0 + std::fabs(expected.m[r][c]));
        ASSERT_NEAR(actual.m[r][c], expected.m[r][c], tolerance)
            << "seed " << seed << ", node " << i << ", depth " << path.size() << ", entry " << r
            << "," << c;
      }
    }
  }
}

TEST(NodePropertyTest, AbsoluteMatricesOfRandomTreesAreTheProductsAlongTheirPaths) {
  const int sizes[] = {1, 2, 3, 10, 50, 200, 1000};
  unsigned seed = 1;
  for (int size : sizes) {
    for (int repeat = 0; repeat < 3; ++repeat) CheckRandomTree(seed++, size);
  }
}

}  // namespace
}  // namespace Orlo
