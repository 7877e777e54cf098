#include "tools/orlo/demo/demo_library.h"

#include <memory>
#include <type_traits>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/color.h>
#include <orlo/support/math_functions.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo::cli {

namespace {

constexpr std::uint32_t kValueChunk = 0x0005;

// Reads the chunks of a payload, handing each to `read`, and reports failure as Load does:
// 0 only when the reader met an error.
template <typename ReadChunk>
int ReadPayload(SceneLoad* load, ReadChunk read) {
  int result;
  while ((result = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    read(load->CurChunkID());
    load->CloseChunk();
  }
  return result == SceneLoad::kError ? 0 : 1;
}

template <typename BlockClass>
class DemoFactory : public BlockFactory {
 public:
  explicit DemoFactory(std::string name) : m_name(std::move(name)) {}
  BlockType GetBlockType() const override { return BlockClass::m_block_type; }
  Block* GetBlock(bool create_defaults) const override { return Make(create_defaults); }
  std::string GetName() const override { return m_name; }

 private:
  static Block* Make(bool create_defaults) {
    if constexpr (std::is_constructible_v<BlockClass, bool>) {
      return new BlockClass(create_defaults);
    } else {
      (void)create_defaults;
      return new BlockClass;
    }
  }
  std::string m_name;
};

// A refused factory (its type is registered already) stays ours: it is destroyed here.
template <typename BlockClass>
void Register(const char* name) {
  auto factory = std::make_unique<DemoFactory<BlockClass>>(name);
  const unsigned before = SceneEngine::GetNumBlockFactories();
  SceneEngine::AddBlockFactory(factory.get());
  if (SceneEngine::GetNumBlockFactories() != before) (void)factory.release();  // registry owns it
}

}  // namespace

// ---- DemoCamera ----

Block* DemoCamera::Clone() {
  auto* copy = new DemoCamera;
  copy->m_field_of_view = m_field_of_view;
  return copy;
}

int DemoCamera::Save(SceneSave* save) {
  save->BeginChunk(kValueChunk);
  save->WriteDouble(m_field_of_view);
  save->EndChunk();
  return 1;
}

int DemoCamera::Load(SceneLoad* load) {
  return ReadPayload(load, [&](std::uint32_t id) {
    if (id == kValueChunk) load->ReadDouble(m_field_of_view);
  });
}

// ---- DemoBox ----

Block* DemoBox::Clone() {
  auto* copy = new DemoBox;
  copy->m_size = m_size;
  return copy;
}

int DemoBox::Save(SceneSave* save) {
  save->BeginChunk(kValueChunk);
  save->WriteDouble(m_size.x);
  save->WriteDouble(m_size.y);
  save->WriteDouble(m_size.z);
  save->EndChunk();
  return 1;
}

int DemoBox::Load(SceneLoad* load) {
  return ReadPayload(load, [&](std::uint32_t id) {
    if (id != kValueChunk) return;
    load->ReadDouble(m_size.x);
    load->ReadDouble(m_size.y);
    load->ReadDouble(m_size.z);
  });
}

Box3<double> DemoBox::GetObjectBoundingBox(int, Matrix3<double>* tm) {
  const Point3<double> half(m_size.x / 2, m_size.y / 2, m_size.z / 2);
  Box3<double> box;
  for (int corner = 0; corner < 8; ++corner) {
    Point3<double> point((corner & 1) ? half.x : -half.x, (corner & 2) ? half.y : -half.y,
                         (corner & 4) ? half.z : -half.z);
    box += tm != nullptr ? TransformPoint(point, *tm) : point;
  }
  return box;
}

// ---- DemoMaterial ----

DemoMaterial::DemoMaterial(bool create_defaults) {
  if (!create_defaults) return;
  (void)SetDataTable(new DataTable(true));
  UpdateDataTable(true);
}

void DemoMaterial::SetDependency(int index, Block* block) {
  if (index == 0) m_data_table = block;
}

Block* DemoMaterial::GetDependency(int index) const { return index == 0 ? m_data_table : nullptr; }

std::string DemoMaterial::GetDependencyName(int index) const {
  return index == 0 ? "data_table" : "no_dependency";
}

DataTable* DemoMaterial::GetDataTable() const {
  return SceneEngine::IsDataTable(m_data_table) ? static_cast<DataTable*>(m_data_table) : nullptr;
}

Status DemoMaterial::SetDataTable(DataTable* table) {
  if (table != nullptr && !SceneEngine::IsDataTable(table)) {
    return Status(Status::kInvalidArgument,
                  "DemoMaterial::SetDataTable : The block is not a valid data_table.");
  }
  return MakeDependencyByID(0, table);
}

void DemoMaterial::UpdateDataTable(bool) {
  DataTable* table = GetDataTable();
  if (table == nullptr) return;
  // The table refuses ids it holds already, so this also repairs a table after a load.
  (void)table->AddDataBool(kDoubleSidedID, false, 1);
  (void)table->AddDataInt(kLayersID, 1, 1);
  (void)table->AddDataFloat(kRoughnessID, 0.5, 1);
  (void)table->AddDataPoint3(kNormalScaleID, Point3<double>(1.0, 1.0, 1.0), 1);
  (void)table->AddDataColor(kBaseColorID, Color(0.8f, 0.8f, 0.8f), 1);
  (void)table->AddDataString(kTextureNameID, "", 1);
  table->UpdateIDToIndex();
  (void)table->SetDataName(kDoubleSidedID, "double_sided");
  (void)table->SetDataName(kLayersID, "layers");
  (void)table->SetDataName(kRoughnessID, "roughness");
  (void)table->SetDataName(kNormalScaleID, "normal_scale");
  (void)table->SetDataName(kBaseColorID, "base_color");
  (void)table->SetDataName(kTextureNameID, "texture_name");
}

Block* DemoMaterial::Clone() {
  auto* copy = new DemoMaterial(false);
  copy->m_name = m_name;
  if (DataTable* table = GetDataTable()) {
    Block* table_copy = table->Clone();
    if (!copy->SetDataTable(static_cast<DataTable*>(table_copy)).IsOk()) {
      table_copy->DeleteThisBlock(true);
    }
  }
  return copy;
}

int DemoMaterial::Save(SceneSave* save) {
  save->BeginChunk(kValueChunk);
  save->WriteString(m_name);
  save->EndChunk();
  return 1;
}

int DemoMaterial::Load(SceneLoad* load) {
  return ReadPayload(load, [&](std::uint32_t id) {
    if (id == kValueChunk) load->ReadString(m_name);
  });
}

Status DemoMaterial::SetSubMaterial(int, Material*) {
  return Status(Status::kNotApplicable, "DemoMaterial::SetSubMaterial : No sub-materials.");
}

// ---- DemoDeformer and its stack ----

Block* DemoDeformer::Clone() {
  auto* copy = new DemoDeformer;
  copy->SetName(GetName());
  copy->SetBox(GetBox());
  copy->SetSendEvents(false);  // the copy's first change is not news to anyone
  copy->SetActive(IsActive());
  copy->SetSendEvents(true);
  return copy;
}

ObjectModifier* DemoDeformer::GetNewObjectModifier() { return new DemoDeformerStack; }

Block* DemoDeformerStack::Clone() {
  auto* copy = new DemoDeformerStack;
  copy->GetRecord() = GetRecord();
  copy->SetEnabled(IsEnabled());
  if (Modifier* modifier = GetModifier()) (void)copy->SetModifier(modifier);
  if (Object* object = GetObjectToModify()) {
    auto* object_copy = static_cast<Object*>(object->Clone());
    if (!copy->SetObjectToModify(object_copy).IsOk()) object_copy->DeleteThisBlock(true);
  }
  return copy;
}

void RegisterDemoLibrary() {
  Register<DemoCamera>("DemoCamera");
  Register<DemoBox>("DemoBox");
  Register<DemoMaterial>("DemoMaterial");
  Register<DemoDeformer>("DemoDeformer");
  Register<DemoDeformerStack>("DemoDeformerStack");
}

}  // namespace Orlo::cli
