#include "plugins/assimp/internal/scene_to_asset.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <assimp/material.h>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/object_modifier.h>

#include "plugins/assimp/asset_material.h"
#include "plugins/assimp/camera_object.h"
#include "plugins/assimp/internal/conversions.h"
#include "plugins/assimp/internal/transform_keys.h"
#include "plugins/assimp/light_object.h"
#include "plugins/assimp/mesh_object.h"

namespace orlo_assimp::internal {

namespace {

aiColor3D ToAiColor(const Orlo::Color& c) { return aiColor3D(c.r, c.g, c.b); }

aiMaterial* ConvertMaterial(const AssetMaterial* source) {
  auto* material = new aiMaterial;
  const aiString name(source != nullptr ? source->GetName() : std::string("DefaultMaterial"));
  material->AddProperty(&name, AI_MATKEY_NAME);
  if (source == nullptr) return material;
  aiColor3D color = ToAiColor(source->GetDiffuseColor(0));
  material->AddProperty(&color, 1, AI_MATKEY_COLOR_DIFFUSE);
  color = ToAiColor(source->GetSpecularColor(0));
  material->AddProperty(&color, 1, AI_MATKEY_COLOR_SPECULAR);
  color = ToAiColor(source->GetEmissiveColor(0));
  material->AddProperty(&color, 1, AI_MATKEY_COLOR_EMISSIVE);
  ai_real value = static_cast<ai_real>(source->GetOpacity(0));
  material->AddProperty(&value, 1, AI_MATKEY_OPACITY);
  value = static_cast<ai_real>(source->GetShininess(0));
  material->AddProperty(&value, 1, AI_MATKEY_SHININESS);
  if (!source->GetDiffuseTexture().empty()) {
    const aiString path(source->GetDiffuseTexture());
    material->AddProperty(&path, AI_MATKEY_TEXTURE(aiTextureType_DIFFUSE, 0));
  }
  if (!source->GetNormalTexture().empty()) {
    const aiString path(source->GetNormalTexture());
    material->AddProperty(&path, AI_MATKEY_TEXTURE(aiTextureType_NORMALS, 0));
  }
  return material;
}

aiMesh* ConvertMesh(const MeshObject& source, const std::string& name, unsigned material) {
  auto* mesh = new aiMesh;
  mesh->mName = aiString(name);
  mesh->mMaterialIndex = material;
  mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
  const auto& positions = source.GetPositions();
  const auto count = static_cast<unsigned>(positions.size());
  mesh->mNumVertices = count;
  mesh->mVertices = new aiVector3D[count];
  for (unsigned i = 0; i < count; ++i) mesh->mVertices[i] = ToAiVector(positions[i]);
  if (source.GetNormals().size() == positions.size()) {
    mesh->mNormals = new aiVector3D[count];
    for (unsigned i = 0; i < count; ++i) mesh->mNormals[i] = ToAiVector(source.GetNormals()[i]);
  }
  if (source.GetTextureCoordinates().size() == positions.size()) {
    mesh->mTextureCoords[0] = new aiVector3D[count];
    mesh->mNumUVComponents[0] = 2;
    for (unsigned i = 0; i < count; ++i)
      mesh->mTextureCoords[0][i] = ToAiVector(source.GetTextureCoordinates()[i]);
  }
  const auto& faces = source.GetFaces();
  mesh->mNumFaces = static_cast<unsigned>(faces.size());
  mesh->mFaces = new aiFace[faces.size()];
  for (std::size_t i = 0; i < faces.size(); ++i) {
    aiFace& face = mesh->mFaces[i];
    face.mNumIndices = 3;
    face.mIndices = new unsigned[3];
    for (int k = 0; k < 3; ++k) face.mIndices[k] = static_cast<unsigned>(faces[i][k]);
  }
  return mesh;
}

aiCamera* ConvertCamera(const CameraObject& source, const std::string& name) {
  auto* camera = new aiCamera;
  camera->mName = aiString(name);
  camera->mHorizontalFOV = static_cast<float>(source.GetFieldOfView() / 2);
  camera->mClipPlaneNear = static_cast<float>(source.GetNearClip());
  camera->mClipPlaneFar = static_cast<float>(source.GetFarClip());
  camera->mAspect = static_cast<float>(source.GetAspectRatio());
  return camera;
}

aiLight* ConvertLight(const LightObject& source, const std::string& name) {
  auto* light = new aiLight;
  light->mName = aiString(name);
  switch (source.GetKind()) {
    case LightObject::kDirectional:
      light->mType = aiLightSource_DIRECTIONAL;
      break;
    case LightObject::kSpot:
      light->mType = aiLightSource_SPOT;
      break;
    case LightObject::kAmbient:
      light->mType = aiLightSource_AMBIENT;
      break;
    case LightObject::kArea:
      light->mType = aiLightSource_AREA;
      break;
    default:
      light->mType = aiLightSource_POINT;
      break;
  }
  const Orlo::Color c = source.GetColor();
  const auto intensity = static_cast<float>(source.GetIntensity());
  light->mColorDiffuse = aiColor3D(c.r * intensity, c.g * intensity, c.b * intensity);
  light->mColorSpecular = light->mColorDiffuse;
  light->mAngleInnerCone = static_cast<float>(source.GetInnerConeAngle());
  light->mAngleOuterCone = static_cast<float>(source.GetOuterConeAngle());
  light->mAttenuationConstant = 1.0f;
  return light;
}

// Whether every level of the node's modifier stack has what building it needs.
bool IsComplete(Orlo::Object* object) {
  while (auto* stack = dynamic_cast<Orlo::ObjectModifier*>(object)) {
    if (stack->IsEnabled() && stack->GetModifier() == nullptr) return false;
    object = stack->GetObjectToModify();
  }
  return object != nullptr;
}

class AssetBuilder {
 public:
  explicit AssetBuilder(Orlo::SceneEngine* engine) : m_engine(engine) {}
  std::unique_ptr<aiScene> Run();

 private:
  unsigned MaterialIndex(Orlo::Block* material);
  void AddObject(Orlo::Node* node, aiNode* target);
  // Adds the node's keys as a channel; with `skip_if_still`, not when every key is the
  // identity.
  void AddChannel(Orlo::Node* node, bool skip_if_still);

  Orlo::SceneEngine* m_engine;
  std::vector<aiMaterial*> m_materials;
  std::map<const AssetMaterial*, unsigned> m_material_indices;
  int m_default_material = -1;
  std::vector<aiMesh*> m_meshes;
  std::vector<aiCamera*> m_cameras;
  std::vector<aiLight*> m_lights;
  std::vector<aiNodeAnim*> m_channels;
  std::int32_t m_last_time = 0;
};

unsigned AssetBuilder::MaterialIndex(Orlo::Block* block) {
  auto* material = dynamic_cast<AssetMaterial*>(block);
  if (material == nullptr) {
    if (m_default_material < 0) {
      m_default_material = static_cast<int>(m_materials.size());
      m_materials.push_back(ConvertMaterial(nullptr));
    }
    return static_cast<unsigned>(m_default_material);
  }
  const auto found = m_material_indices.find(material);
  if (found != m_material_indices.end()) return found->second;
  const auto index = static_cast<unsigned>(m_materials.size());
  m_materials.push_back(ConvertMaterial(material));
  m_material_indices.emplace(material, index);
  return index;
}

void AssetBuilder::AddObject(Orlo::Node* node, aiNode* target) {
  Orlo::Object* object = node->GetObject();
  if (!IsComplete(object)) return;
  Orlo::Object* built = node->BuildObject(0);
  const std::string name = node->GetName();
  if (auto* mesh = dynamic_cast<MeshObject*>(built)) {
    target->mNumMeshes = 1;
    target->mMeshes = new unsigned[1]{static_cast<unsigned>(m_meshes.size())};
    m_meshes.push_back(ConvertMesh(*mesh, name, MaterialIndex(node->GetMaterial())));
  } else if (auto* camera = dynamic_cast<CameraObject*>(built)) {
    m_cameras.push_back(ConvertCamera(*camera, name));
  } else if (auto* light = dynamic_cast<LightObject*>(built)) {
    m_lights.push_back(ConvertLight(*light, name));
  }
}

void AssetBuilder::AddChannel(Orlo::Node* node, bool skip_if_still) {
  Orlo::Matrix3Controller* controller = node->GetNodeTransformController();
  std::set<std::int32_t> times;
  CollectKeyTimes(controller, times);
  if (times.empty()) return;
  if (skip_if_still) {
    // The main node becomes the asset's root; keyed in place it moves nothing, and a root
    // without a channel reads back as the empty root it was.
    bool still = true;
    for (std::int32_t time : times)
      still = still && controller->GetMatrix3(time) == Orlo::Matrix3<double>();
    if (still) return;
  }
  const auto count = static_cast<unsigned>(times.size());
  auto* channel = new aiNodeAnim;
  channel->mNodeName = aiString(node->GetName());
  channel->mNumPositionKeys = channel->mNumRotationKeys = channel->mNumScalingKeys = count;
  channel->mPositionKeys = new aiVectorKey[count];
  channel->mRotationKeys = new aiQuatKey[count];
  channel->mScalingKeys = new aiVectorKey[count];
  unsigned i = 0;
  for (std::int32_t time : times) {
    const double seconds = time / kTicksPerSecond;
    channel->mPositionKeys[i] = aiVectorKey(seconds, ToAiVector(controller->GetPosition(time)));
    channel->mRotationKeys[i] = aiQuatKey(seconds, ToAiQuaternion(controller->GetRotation(time)));
    channel->mScalingKeys[i] = aiVectorKey(seconds, ToAiVector(controller->GetScale(time)));
    ++i;
  }
  m_last_time = std::max(m_last_time, *times.rbegin());
  m_channels.push_back(channel);
}

template <typename T>
void Publish(std::vector<T*>& items, T**& array, unsigned& count) {
  count = static_cast<unsigned>(items.size());
  if (items.empty()) return;
  array = new T*[items.size()];
  std::copy(items.begin(), items.end(), array);
  items.clear();
}

std::unique_ptr<aiScene> AssetBuilder::Run() {
  auto scene = std::make_unique<aiScene>();
  Orlo::Node* main = m_engine->GetMainNode();
  // The scene's materials first, in list order, so that unused ones are written too.
  if (Orlo::MainScene* main_scene = m_engine->GetMainScene()) {
    for (int i = 0; i < main_scene->GetNumMaterials(); ++i) {
      if (dynamic_cast<AssetMaterial*>(main_scene->GetMaterial(i)) != nullptr)
        (void)MaterialIndex(main_scene->GetMaterial(i));
    }
  }
  // Pre-order with an explicit stack; each aiNode's child array is sized before its
  // children are built.
  struct Pending {
    Orlo::Node* node;
    aiNode* target;
  };
  std::vector<Pending> stack;
  scene->mRootNode = new aiNode(main->GetName());
  stack.push_back({main, scene->mRootNode});
  while (!stack.empty()) {
    const Pending pending = stack.back();
    stack.pop_back();
    Orlo::Node* node = pending.node;
    aiNode* target = pending.target;
    if (Orlo::Matrix3Controller* controller = node->GetNodeTransformController())
      target->mTransformation = ToAiMatrix(controller->GetMatrix3(0));
    AddObject(node, target);
    AddChannel(node, node == main);
    const int children = node->GetNumChildren();
    if (children <= 0) continue;
    target->mNumChildren = static_cast<unsigned>(children);
    target->mChildren = new aiNode*[static_cast<std::size_t>(children)];
    for (int i = 0; i < children; ++i) {
      Orlo::Node* child = node->GetChild(i);
      auto* child_target = new aiNode(child != nullptr ? child->GetName() : std::string());
      child_target->mParent = target;
      target->mChildren[i] = child_target;
    }
    for (int i = children; i-- > 0;) {
      if (Orlo::Node* child = node->GetChild(i)) stack.push_back({child, target->mChildren[i]});
    }
  }
  // Exporters expect at least one material.
  if (m_materials.empty()) (void)MaterialIndex(nullptr);
  Publish(m_materials, scene->mMaterials, scene->mNumMaterials);
  Publish(m_meshes, scene->mMeshes, scene->mNumMeshes);
  Publish(m_cameras, scene->mCameras, scene->mNumCameras);
  Publish(m_lights, scene->mLights, scene->mNumLights);
  if (!m_channels.empty()) {
    auto* animation = new aiAnimation;
    animation->mName = aiString("animation");
    // Key times in seconds, one tick per second: some of the library's exporters write key
    // times as they are, whatever the rate, and the formats count in seconds.
    animation->mTicksPerSecond = 1.0;
    animation->mDuration = m_last_time / kTicksPerSecond;
    Publish(m_channels, animation->mChannels, animation->mNumChannels);
    scene->mNumAnimations = 1;
    scene->mAnimations = new aiAnimation* [1] { animation };
  }
  return scene;
}

}  // namespace

std::unique_ptr<aiScene> BuildAsset(Orlo::SceneEngine* engine) {
  assert(engine != nullptr && engine->GetMainNode() != nullptr && "BuildAsset needs a scene");
  return AssetBuilder(engine).Run();
}

}  // namespace orlo_assimp::internal
