#include "tests/plugins/assimp/asset_fixture.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include <orlo/base/scene/node.h>

#include <assimp/material.h>
#include <assimp/Exporter.hpp>

namespace orlo_assimp::testing {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;

// A 4x4 matrix for column vectors, in double precision.
using Mat4 = std::array<std::array<double, 4>, 4>;

Mat4 Identity() {
  Mat4 m{};
  for (int i = 0; i < 4; ++i) m[i][i] = 1;
  return m;
}

Mat4 Multiply(const Mat4& a, const Mat4& b) {
  Mat4 out{};
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      for (int k = 0; k < 4; ++k) out[r][c] += a[r][k] * b[k][c];
    }
  }
  return out;
}

Mat4 Translate(double x, double y, double z) {
  Mat4 m = Identity();
  m[0][3] = x;
  m[1][3] = y;
  m[2][3] = z;
  return m;
}

Mat4 Scale(double x, double y, double z) {
  Mat4 m = Identity();
  m[0][0] = x;
  m[1][1] = y;
  m[2][2] = z;
  return m;
}

// Turn about axis 0 (x), 1 (y) or 2 (z), right-handed.
Mat4 Turn(int axis, double angle) {
  Mat4 m = Identity();
  const double c = std::cos(angle), s = std::sin(angle);
  const int a = (axis + 1) % 3, b = (axis + 2) % 3;
  m[a][a] = c;
  m[a][b] = -s;
  m[b][a] = s;
  m[b][b] = c;
  return m;
}

Mat4 BaseLocal() { return Multiply(Translate(1, 2, 3), Turn(2, 30 * kDegree)); }

Mat4 ArmRotation(std::int32_t time) {
  return Multiply(Turn(2, ArmTurn(time)), Turn(0, 45 * kDegree));
}

Mat4 ArmLocal(std::int32_t time) {
  return Multiply(Multiply(Translate(0, 1, 0), ArmRotation(time)), Scale(2, 2, 2));
}

Mat4 HandLocal() {
  return Multiply(Multiply(Translate(0, 0, 1.5), Turn(1, -20 * kDegree)), Scale(1, 0.5, 1));
}

aiMatrix4x4 ToAi(const Mat4& m) {
  aiMatrix4x4 out;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) out[r][c] = static_cast<ai_real>(m[r][c]);
  }
  return out;
}

aiQuaternion ToAiRotation(const Mat4& m) {
  aiMatrix3x3 rotation;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) rotation[r][c] = static_cast<ai_real>(m[r][c]);
  }
  return aiQuaternion(rotation);
}

aiMesh* Triangle(unsigned material, const char* name) {
  auto* mesh = new aiMesh;
  mesh->mName = aiString(name);
  mesh->mMaterialIndex = material;
  mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
  mesh->mNumVertices = 3;
  mesh->mVertices = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  mesh->mNormals = new aiVector3D[3]{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
  mesh->mNumFaces = 1;
  mesh->mFaces = new aiFace[1];
  mesh->mFaces[0].mNumIndices = 3;
  mesh->mFaces[0].mIndices = new unsigned[3]{0, 1, 2};
  return mesh;
}

aiMaterial* Material(const char* name, aiColor3D diffuse) {
  auto* material = new aiMaterial;
  const aiString text(name);
  material->AddProperty(&text, AI_MATKEY_NAME);
  material->AddProperty(&diffuse, 1, AI_MATKEY_COLOR_DIFFUSE);
  return material;
}

aiNode* AddChild(aiNode* parent, const char* name, const Mat4& local) {
  auto* node = new aiNode(name);
  node->mTransformation = ToAi(local);
  node->mParent = parent;
  auto** children = new aiNode*[parent->mNumChildren + 1];
  std::copy(parent->mChildren, parent->mChildren + parent->mNumChildren, children);
  children[parent->mNumChildren] = node;
  delete[] parent->mChildren;
  parent->mChildren = children;
  ++parent->mNumChildren;
  return node;
}

Orlo::Matrix3<double> ToEngine(const Mat4& m) {
  Orlo::Matrix3<double> out;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) out.m[r][c] = m[c][r];
  }
  for (int c = 0; c < 3; ++c) out.m[3][c] = m[c][3];
  return out;
}

}  // namespace

double ArmTurn(std::int32_t time) { return 120 * kDegree * time / 1000.0; }

std::unique_ptr<aiScene> MakeTestAsset() {
  auto scene = std::make_unique<aiScene>();
  scene->mRootNode = new aiNode("root");
  aiNode* base = AddChild(scene->mRootNode, "base", BaseLocal());
  aiNode* arm = AddChild(base, "arm", ArmLocal(0));
  aiNode* hand = AddChild(arm, "hand", HandLocal());
  base->mNumMeshes = 1;
  base->mMeshes = new unsigned[1]{0};
  hand->mNumMeshes = 1;
  hand->mMeshes = new unsigned[1]{1};

  scene->mNumMeshes = 2;
  scene->mMeshes = new aiMesh* [2] { Triangle(0, "base_mesh"), Triangle(1, "hand_mesh") };
  scene->mNumMaterials = 2;
  scene->mMaterials = new aiMaterial* [2] {
    Material("red", aiColor3D(1, 0, 0)), Material("blue", aiColor3D(0, 0, 1))
  };

  auto* channel = new aiNodeAnim;
  channel->mNodeName = aiString("arm");
  const auto count = static_cast<unsigned>(kAssetTimes.size());
  channel->mNumPositionKeys = channel->mNumRotationKeys = channel->mNumScalingKeys = count;
  channel->mPositionKeys = new aiVectorKey[count];
  channel->mRotationKeys = new aiQuatKey[count];
  channel->mScalingKeys = new aiVectorKey[count];
  for (unsigned i = 0; i < count; ++i) {
    const double seconds = kAssetTimes[i] / 1000.0;
    channel->mPositionKeys[i] = aiVectorKey(seconds, aiVector3D(0, 1, 0));
    channel->mRotationKeys[i] = aiQuatKey(seconds, ToAiRotation(ArmRotation(kAssetTimes[i])));
    channel->mScalingKeys[i] = aiVectorKey(seconds, aiVector3D(2, 2, 2));
  }
  auto* animation = new aiAnimation;
  animation->mName = aiString("turn");
  animation->mTicksPerSecond = 1.0;  // key times in seconds
  animation->mDuration = 2.0;
  animation->mNumChannels = 1;
  animation->mChannels = new aiNodeAnim* [1] { channel };
  scene->mNumAnimations = 1;
  scene->mAnimations = new aiAnimation* [1] { animation };
  return scene;
}

bool WriteTestAsset(const std::string& format, const std::string& path) {
  std::unique_ptr<aiScene> scene = MakeTestAsset();
  Assimp::Exporter exporter;
  return exporter.Export(scene.get(), format, path) == aiReturn_SUCCESS;
}

Orlo::Matrix3<double> ExpectedAbsolute(const std::string& name, std::int32_t time) {
  Mat4 m = BaseLocal();
  if (name == "arm" || name == "hand") m = Multiply(m, ArmLocal(time));
  if (name == "hand") m = Multiply(m, HandLocal());
  return ToEngine(m);
}

double MaxDifference(const Orlo::Matrix3<double>& a, const Orlo::Matrix3<double>& b) {
  double out = 0;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) out = std::max(out, std::abs(a.m[r][c] - b.m[r][c]));
  }
  return out;
}

void ExpectAssetMatrices(Orlo::SceneEngine& engine) {
  for (const char* name : {"base", "arm", "hand"}) {
    Orlo::Node* node = engine.GetNodeByName(name);
    ASSERT_NE(node, nullptr) << name;
    for (std::int32_t time : kAssetTimes) {
      EXPECT_LT(MaxDifference(node->GetAbsoluteTM(time), ExpectedAbsolute(name, time)), 1e-6)
          << name << " at " << time;
    }
  }
}

}  // namespace orlo_assimp::testing
