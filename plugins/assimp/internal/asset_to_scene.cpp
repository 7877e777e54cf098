#include "plugins/assimp/internal/asset_to_scene.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <assimp/material.h>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

#include "plugins/assimp/asset_material.h"
#include "plugins/assimp/camera_object.h"
#include "plugins/assimp/internal/conversions.h"
#include "plugins/assimp/internal/transform_keys.h"
#include "plugins/assimp/light_object.h"
#include "plugins/assimp/mesh_object.h"

namespace orlo_assimp::internal {

namespace {

struct Pose {
  Orlo::Point3<double> position;
  Orlo::Point3<double> rotation;
  Orlo::Point3<double> scale{1.0, 1.0, 1.0};
};

// A node's animation channel and the rate of the animation it belongs to.
struct Channel {
  const aiNodeAnim* keys = nullptr;
  double ticks_per_second = 0;
};

template <typename Key>
std::pair<std::size_t, double> Bracket(const Key* keys, unsigned count, double time) {
  // The key at or before `time` and the share of the way to the next one; clamped at the ends.
  if (time <= keys[0].mTime) return {0, 0.0};
  if (time >= keys[count - 1].mTime) return {count - 1, 0.0};
  std::size_t i = 0;
  while (i + 1 < count && keys[i + 1].mTime <= time) ++i;
  const double span = keys[i + 1].mTime - keys[i].mTime;
  return {i, span > 0 ? (time - keys[i].mTime) / span : 0.0};
}

Orlo::Point3<double> SampleVector(const aiVectorKey* keys, unsigned count, double time) {
  const auto [i, share] = Bracket(keys, count, time);
  const Orlo::Point3<double> a = ToPoint3(keys[i].mValue);
  if (share == 0.0) return a;
  const Orlo::Point3<double> b = ToPoint3(keys[i + 1].mValue);
  return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share, a.z + (b.z - a.z) * share};
}

aiQuaternion SampleRotation(const aiQuatKey* keys, unsigned count, double time) {
  const auto [i, share] = Bracket(keys, count, time);
  if (share == 0.0) return keys[i].mValue;
  aiQuaternion out;
  aiQuaternion::Interpolate(out, keys[i].mValue, keys[i + 1].mValue, static_cast<ai_real>(share));
  return out.Normalize();
}

std::string ToString(const aiString& text) { return std::string(text.C_Str(), text.length); }

Orlo::Color ToColor(const aiColor3D& c) { return Orlo::Color(c.r, c.g, c.b); }

AssetMaterial* ConvertMaterial(const aiMaterial& source) {
  auto* material = new AssetMaterial(true);
  aiString name;
  if (source.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS) material->SetName(ToString(name));
  aiColor3D color;
  if (source.Get(AI_MATKEY_COLOR_DIFFUSE, color) == aiReturn_SUCCESS)
    material->SetDiffuseColor(ToColor(color), 0);
  if (source.Get(AI_MATKEY_COLOR_SPECULAR, color) == aiReturn_SUCCESS)
    material->SetSpecularColor(ToColor(color), 0);
  if (source.Get(AI_MATKEY_COLOR_EMISSIVE, color) == aiReturn_SUCCESS)
    material->SetEmissiveColor(ToColor(color), 0);
  ai_real value = 0;
  if (source.Get(AI_MATKEY_OPACITY, value) == aiReturn_SUCCESS) material->SetOpacity(value, 0);
  if (source.Get(AI_MATKEY_SHININESS, value) == aiReturn_SUCCESS) material->SetShininess(value, 0);
  aiString texture;
  if (source.GetTexture(aiTextureType_DIFFUSE, 0, &texture) == aiReturn_SUCCESS)
    material->SetDiffuseTexture(ToString(texture));
  if (source.GetTexture(aiTextureType_NORMALS, 0, &texture) == aiReturn_SUCCESS)
    material->SetNormalTexture(ToString(texture));
  return material;
}

MeshObject* ConvertMesh(const aiMesh& source) {
  auto* mesh = new MeshObject;
  std::vector<Orlo::Point3<double>> positions(source.mNumVertices);
  for (unsigned i = 0; i < source.mNumVertices; ++i) positions[i] = ToPoint3(source.mVertices[i]);
  mesh->SetPositions(std::move(positions));
  if (source.HasNormals()) {
    std::vector<Orlo::Point3<double>> normals(source.mNumVertices);
    for (unsigned i = 0; i < source.mNumVertices; ++i) normals[i] = ToPoint3(source.mNormals[i]);
    mesh->SetNormals(std::move(normals));
  }
  if (source.HasTextureCoords(0)) {
    std::vector<Orlo::Point3<double>> uvws(source.mNumVertices);
    for (unsigned i = 0; i < source.mNumVertices; ++i) {
      uvws[i] = ToPoint3(source.mTextureCoords[0][i]);
    }
    mesh->SetTextureCoordinates(std::move(uvws));
  }
  // Points and lines have no place in a triangle mesh; the triangulation step made every
  // polygon a triangle.
  std::vector<MeshObject::Face> faces;
  faces.reserve(source.mNumFaces);
  for (unsigned i = 0; i < source.mNumFaces; ++i) {
    const aiFace& face = source.mFaces[i];
    if (face.mNumIndices != 3) continue;
    faces.push_back({static_cast<std::int32_t>(face.mIndices[0]),
                     static_cast<std::int32_t>(face.mIndices[1]),
                     static_cast<std::int32_t>(face.mIndices[2])});
  }
  mesh->SetFaces(std::move(faces));
  return mesh;
}

CameraObject* ConvertCamera(const aiCamera& source) {
  auto* camera = new CameraObject;
  // The library keeps half the horizontal angle.
  camera->SetFieldOfView(2.0 * source.mHorizontalFOV);
  camera->SetNearClip(source.mClipPlaneNear);
  camera->SetFarClip(source.mClipPlaneFar);
  camera->SetAspectRatio(source.mAspect);
  return camera;
}

LightObject* ConvertLight(const aiLight& source) {
  auto* light = new LightObject;
  switch (source.mType) {
    case aiLightSource_DIRECTIONAL:
      light->SetKind(LightObject::kDirectional);
      break;
    case aiLightSource_SPOT:
      light->SetKind(LightObject::kSpot);
      break;
    case aiLightSource_AMBIENT:
      light->SetKind(LightObject::kAmbient);
      break;
    case aiLightSource_AREA:
      light->SetKind(LightObject::kArea);
      break;
    default:
      light->SetKind(LightObject::kPoint);
      break;
  }
  // The library folds the intensity into the colour: the brightest component becomes the
  // intensity and the colour keeps the hue.
  const aiColor3D& c = source.mColorDiffuse;
  const double intensity = std::max({c.r, c.g, c.b});
  light->SetIntensity(intensity);
  if (intensity > 0) {
    light->SetColor(Orlo::Color(static_cast<float>(c.r / intensity),
                                static_cast<float>(c.g / intensity),
                                static_cast<float>(c.b / intensity)));
  }
  light->SetInnerConeAngle(source.mAngleInnerCone);
  light->SetOuterConeAngle(source.mAngleOuterCone);
  return light;
}

class AssetImporter {
 public:
  AssetImporter(const aiScene& scene, Orlo::SceneEngine* engine)
      : m_scene(scene), m_engine(engine) {}

  int Run();

 private:
  void CollectAnimation();
  bool IsEmptyRoot(const aiNode& node) const;
  Orlo::Node* NewNode(const std::string& name, const Pose& pose, const Channel* channel);
  void AddObjects(const aiNode& source, Orlo::Node* node);
  void Attach(Orlo::Node* parent, Orlo::Node* child);
  AssetMaterial* Material(unsigned index);
  MeshObject* Mesh(unsigned index);

  const aiScene& m_scene;
  Orlo::SceneEngine* m_engine;
  std::map<std::string, Channel> m_channels;
  // Every key time of the asset, in scene ticks, and 0; empty when nothing is animated.
  std::set<std::int32_t> m_times;
  std::vector<AssetMaterial*> m_materials;
  std::vector<MeshObject*> m_meshes;
  std::map<std::string, const aiCamera*> m_cameras;
  std::map<std::string, const aiLight*> m_lights;
  int m_approximated = 0;
};

void AssetImporter::CollectAnimation() {
  for (unsigned a = 0; a < m_scene.mNumAnimations; ++a) {
    const aiAnimation* animation = m_scene.mAnimations[a];
    for (unsigned c = 0; c < animation->mNumChannels; ++c) {
      const aiNodeAnim* keys = animation->mChannels[c];
      // The first animation that moves a node decides its keys.
      if (!m_channels.emplace(ToString(keys->mNodeName), Channel{keys, animation->mTicksPerSecond})
               .second) {
        continue;
      }
      const double rate = animation->mTicksPerSecond;
      for (unsigned i = 0; i < keys->mNumPositionKeys; ++i)
        m_times.insert(ToSceneTime(keys->mPositionKeys[i].mTime, rate));
      for (unsigned i = 0; i < keys->mNumRotationKeys; ++i)
        m_times.insert(ToSceneTime(keys->mRotationKeys[i].mTime, rate));
      for (unsigned i = 0; i < keys->mNumScalingKeys; ++i)
        m_times.insert(ToSceneTime(keys->mScalingKeys[i].mTime, rate));
    }
  }
  if (!m_times.empty()) m_times.insert(0);
}

bool AssetImporter::IsEmptyRoot(const aiNode& node) const {
  const std::string name = ToString(node.mName);
  return node.mTransformation.IsIdentity() && node.mNumMeshes == 0 && m_cameras.count(name) == 0 &&
         m_lights.count(name) == 0 && m_channels.count(name) == 0;
}

Orlo::Node* AssetImporter::NewNode(const std::string& name, const Pose& pose,
                                   const Channel* channel) {
  auto* node = new Orlo::Node(true);
  node->SetName(name);
  Orlo::Matrix3Controller* controller = node->GetNodeTransformController();
  SetPose(controller, 0, pose.position, pose.rotation, pose.scale);
  Orlo::Point3<double> previous_rotation = pose.rotation;
  for (std::int32_t time : m_times) {
    Pose keyed = pose;
    if (channel != nullptr) {
      const aiNodeAnim& keys = *channel->keys;
      const double rate =
          channel->ticks_per_second > 0 ? channel->ticks_per_second : kDefaultAssetTicksPerSecond;
      const double asset_time = time / kTicksPerSecond * rate;
      if (keys.mNumPositionKeys > 0)
        keyed.position = SampleVector(keys.mPositionKeys, keys.mNumPositionKeys, asset_time);
      if (keys.mNumScalingKeys > 0)
        keyed.scale = SampleVector(keys.mScalingKeys, keys.mNumScalingKeys, asset_time);
      if (keys.mNumRotationKeys > 0) {
        keyed.rotation = ClosestEulerAngles(
            ToEulerAngles(SampleRotation(keys.mRotationKeys, keys.mNumRotationKeys, asset_time)),
            previous_rotation);
      }
    }
    previous_rotation = keyed.rotation;
    SetPose(controller, time, keyed.position, keyed.rotation, keyed.scale);
  }
  return node;
}

void AssetImporter::Attach(Orlo::Node* parent, Orlo::Node* child) {
  // A fresh node below a fresh or main node cannot close a cycle.
  const Orlo::Status status = parent->AddChild(child);
  assert(status.IsOk() && "a new node is always accepted as a child");
  (void)status;
}

AssetMaterial* AssetImporter::Material(unsigned index) {
  return index < m_materials.size() ? m_materials[index] : nullptr;
}

MeshObject* AssetImporter::Mesh(unsigned index) {
  // A mesh used by several nodes is one block that each node links (an instance).
  if (m_meshes[index] == nullptr) m_meshes[index] = ConvertMesh(*m_scene.mMeshes[index]);
  return m_meshes[index];
}

void AssetImporter::AddObjects(const aiNode& source, Orlo::Node* node) {
  const std::string name = node->GetName();
  const Pose identity;
  if (source.mNumMeshes == 1) {
    const unsigned index = source.mMeshes[0];
    (void)node->SetObject(Mesh(index));  // a MeshObject is always a valid object
    if (AssetMaterial* material = Material(m_scene.mMeshes[index]->mMaterialIndex))
      (void)node->SetMaterial(material);
  } else {
    for (unsigned k = 0; k < source.mNumMeshes; ++k) {
      const unsigned index = source.mMeshes[k];
      Orlo::Node* part = NewNode(name + "_mesh" + std::to_string(k), identity, nullptr);
      (void)part->SetObject(Mesh(index));
      if (AssetMaterial* material = Material(m_scene.mMeshes[index]->mMaterialIndex))
        (void)part->SetMaterial(material);
      Attach(node, part);
    }
  }
  const auto camera = m_cameras.find(name);
  if (camera != m_cameras.end()) {
    Orlo::Node* holder = node;
    if (node->GetObject() != nullptr) {
      holder = NewNode(name + "_camera", identity, nullptr);
      Attach(node, holder);
    }
    (void)holder->SetObject(ConvertCamera(*camera->second));
  }
  const auto light = m_lights.find(name);
  if (light != m_lights.end()) {
    Orlo::Node* holder = node;
    if (node->GetObject() != nullptr) {
      holder = NewNode(name + "_light", identity, nullptr);
      Attach(node, holder);
    }
    (void)holder->SetObject(ConvertLight(*light->second));
  }
}

int AssetImporter::Run() {
  CollectAnimation();
  for (unsigned i = 0; i < m_scene.mNumCameras; ++i)
    m_cameras.emplace(ToString(m_scene.mCameras[i]->mName), m_scene.mCameras[i]);
  for (unsigned i = 0; i < m_scene.mNumLights; ++i)
    m_lights.emplace(ToString(m_scene.mLights[i]->mName), m_scene.mLights[i]);
  m_materials.resize(m_scene.mNumMaterials);
  for (unsigned i = 0; i < m_scene.mNumMaterials; ++i)
    m_materials[i] = ConvertMaterial(*m_scene.mMaterials[i]);
  m_meshes.assign(m_scene.mNumMeshes, nullptr);

  // Pre-order with an explicit stack: an asset's hierarchy may be deep. Nodes are built
  // apart from the scene and attached at the end, children in the asset's order.
  struct Pending {
    const aiNode* source;
    Orlo::Node* parent;  // null: a top-level node
  };
  std::vector<Orlo::Node*> top_level;
  std::vector<Pending> stack;
  const aiNode& root = *m_scene.mRootNode;
  const bool skip_root = IsEmptyRoot(root);
  if (skip_root) {
    for (unsigned i = root.mNumChildren; i-- > 0;) stack.push_back({root.mChildren[i], nullptr});
  } else {
    stack.push_back({&root, nullptr});
  }
  while (!stack.empty()) {
    const Pending pending = stack.back();
    stack.pop_back();
    const aiNode& source = *pending.source;
    const TransformParts parts = SplitTransform(ToMatrix3(source.mTransformation));
    if (!parts.exact) ++m_approximated;
    const std::string name = ToString(source.mName);
    const auto channel = m_channels.find(name);
    Orlo::Node* node = NewNode(name, Pose{parts.position, parts.rotation, parts.scale},
                               channel != m_channels.end() ? &channel->second : nullptr);
    AddObjects(source, node);
    if (pending.parent != nullptr) {
      Attach(pending.parent, node);
    } else {
      top_level.push_back(node);
    }
    for (unsigned i = source.mNumChildren; i-- > 0;) stack.push_back({source.mChildren[i], node});
  }

  // Everything above exists on its own; now it joins the scene.
  Orlo::MainScene* scene = m_engine->GetMainScene();
  for (AssetMaterial* material : m_materials) scene->AddMaterial(material);
  Orlo::Node* main = m_engine->GetMainNode();
  if (!m_times.empty()) {
    // The main node's matrix takes part in every absolute matrix: it must hold at every key
    // time too. One that is animated already keeps its keys.
    Orlo::Matrix3Controller* controller = main->GetNodeTransformController();
    std::set<std::int32_t> own_times;
    CollectKeyTimes(controller, own_times);
    if (controller != nullptr && own_times.empty()) {
      const Orlo::Point3<double> position = controller->GetPosition(0);
      const Orlo::Point3<double> rotation = controller->GetRotation(0);
      const Orlo::Point3<double> scale = controller->GetScale(0);
      for (std::int32_t time : m_times) SetPose(controller, time, position, rotation, scale);
    }
  }
  for (Orlo::Node* node : top_level) Attach(main, node);
  return m_approximated;
}

}  // namespace

int ImportAsset(const aiScene& scene, Orlo::SceneEngine* engine) {
  assert(engine != nullptr && engine->GetMainNode() != nullptr && "ImportAsset needs a scene");
  return AssetImporter(scene, engine).Run();
}

}  // namespace orlo_assimp::internal
