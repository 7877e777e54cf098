#include <orlo/base/scene/main_scene.h>

#include <orlo/base/block/block_table.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/material.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/tool_block.h>

namespace Orlo {

namespace {

constexpr const char* kSlotNames[] = {"data_table", "main_node", "scene_tools", "materials"};
constexpr unsigned kSlotTypes[] = {205, 115, 100000, 405};
constexpr char kNoSlot[] = "nil";

// Every parameter holds one element.
constexpr int kParameterSize = 1;

}  // namespace

MainScene::MainScene(bool create) {
  if (!create) return;
  // Fresh blocks linked into a fresh scene: no link can be refused.
  (void)MakeDependencyByID(kMainNodeSlot, new Node(true));
  (void)MakeDependencyByID(kDataTableSlot, new DataTable(true));
  (void)MakeDependencyByID(kSceneToolsSlot, new BlockTable(true));
  (void)MakeDependencyByID(kMaterialsSlot, new BlockTable(true));
  UpdateDataTable(create);
}

// ---- Block ----

std::string MainScene::GetClassName() const { return "MainScene"; }

BlockType MainScene::GetBlockType() const { return m_block_type; }

int MainScene::NumDependencies() const { return kNumSlots; }

void MainScene::SetDependency(int index, Block* block) {
  switch (index) {
    case kDataTableSlot:
      m_data_table.Set(block);
      break;
    case kMainNodeSlot:
      m_main_node.Set(block);
      break;
    case kSceneToolsSlot:
      m_scene_tools.Set(block);
      break;
    case kMaterialsSlot:
      m_materials.Set(block);
      break;
    default:
      break;
  }
}

Block* MainScene::GetDependency(int index) const {
  switch (index) {
    case kDataTableSlot:
      return m_data_table.Raw();
    case kMainNodeSlot:
      return m_main_node.Raw();
    case kSceneToolsSlot:
      return m_scene_tools.Raw();
    case kMaterialsSlot:
      return m_materials.Raw();
    default:
      return nullptr;
  }
}

std::string MainScene::GetDependencyName(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotNames[index] : kNoSlot;
}

unsigned MainScene::GetDependencyType(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotTypes[index] : 0;
}

DataTable* MainScene::GetDataTable() const { return m_data_table.Get(); }

Status MainScene::SetDataTable(DataTable* table) {
  if (table != nullptr && !SceneEngine::IsDataTable(table)) {
    return Status(Status::kInvalidArgument,
                  "MainScene::SetDataTable : The block is not a valid data_table.");
  }
  // Kept as is: a refused cycle is not reported here; callers only learn about the kind.
  (void)MakeDependencyByID(kDataTableSlot, table);
  return Status();
}

void MainScene::UpdateDataTable(bool) {
  DataTable* table = GetDataTable();
  if (table == nullptr) return;
  // An id the table holds already is refused by the table and keeps its value, so this is
  // also the repair step after a load.
  (void)table->AddDataColor(kAmbientLightColorID, Color(0.0f, 0.0f, 0.0f), kParameterSize);
  (void)table->AddDataColor(kBackgroundColorID, Color(0.0f, 0.0f, 0.0f), kParameterSize);
  (void)table->AddDataInt(kAmbientOcclusionSamplesID, 0, kParameterSize);
  table->UpdateIDToIndex();
  (void)table->SetDataName(kAmbientLightColorID, "ambient_light_color");
  (void)table->SetDataName(kBackgroundColorID, "background_color");
  (void)table->SetDataName(kAmbientOcclusionSamplesID, "ambient_occlusion_samples");
}

Block* MainScene::Clone() {
  auto* copy = new MainScene(false);
  for (int i = 0; i < kNumSlots; ++i) {
    Block* source = GetDependency(i);
    if (source == nullptr) continue;
    Block* slot_copy = source->Clone();
    // Fresh copies linked into a fresh scene: no link can be refused.
    (void)copy->MakeDependencyByID(i, slot_copy);
  }
  copy->UpdateDataTable(false);
  return copy;
}

int MainScene::Save(SceneSave*) { return 1; }

int MainScene::Load(SceneLoad*) { return 1; }

void MainScene::DeleteThis() { delete this; }

void MainScene::ProcessEvent(BlockEvent event) {
  if (event.block != nullptr && event.block == m_materials.Raw() && event.code == 2) {
    event.block = this;
    event.code = 18;
  }
  PostEvent(event);
}

// ---- Scene colours ----

Color MainScene::GetAmbientLightColor() const {
  const DataTable* table = GetDataTable();
  return table != nullptr ? table->GetColor(kAmbientLightColorID, 0, 0) : Color();
}

void MainScene::SetAmbientLightColor(Color color) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kAmbientLightColorID, color, 0, 0);
}

Color MainScene::GetBackgroundColor() const {
  const DataTable* table = GetDataTable();
  return table != nullptr ? table->GetColor(kBackgroundColorID, 0, 0) : Color();
}

void MainScene::SetBackgroundColor(Color color) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kBackgroundColorID, color, 0, 0);
}

// ---- Lists ----

BlockTable* MainScene::EnsureList(int slot) {
  internal::TypedSlot<BlockTable>& list = slot == kMaterialsSlot ? m_materials : m_scene_tools;
  if (list.Get() == nullptr) (void)MakeDependencyByID(slot, new BlockTable(true));
  return list.Get();
}

void MainScene::AddMaterial(Material* material) { EnsureList(kMaterialsSlot)->PushBack(material); }

int MainScene::GetNumMaterials() const {
  const BlockTable* list = m_materials.Get();
  return list != nullptr ? static_cast<int>(list->GetNumBlocks()) : 0;
}

Material* MainScene::GetMaterial(int index) const {
  const BlockTable* list = m_materials.Get();
  return list != nullptr ? dynamic_cast<Material*>(list->GetBlock(index)) : nullptr;
}

void MainScene::DeleteMaterial(int index) {
  BlockTable* list = m_materials.Get();
  if (list != nullptr && index >= 0 && index < static_cast<int>(list->GetNumBlocks())) {
    list->Erase(index);
  }
}

void MainScene::DeleteMaterial(Material* material) {
  BlockTable* list = m_materials.Get();
  if (list == nullptr) return;
  const int count = static_cast<int>(list->GetNumBlocks());
  for (int i = 0; i < count; ++i) {
    if (dynamic_cast<Material*>(list->GetBlock(i)) == material) {
      list->Erase(i);
      return;
    }
  }
}

void MainScene::AddSceneTool(ToolBlock* tool) { EnsureList(kSceneToolsSlot)->PushBack(tool); }

int MainScene::GetNumSceneTools() const {
  const BlockTable* list = m_scene_tools.Get();
  return list != nullptr ? static_cast<int>(list->GetNumBlocks()) : 0;
}

ToolBlock* MainScene::GetSceneTool(int index) const {
  const BlockTable* list = m_scene_tools.Get();
  return list != nullptr ? dynamic_cast<ToolBlock*>(list->GetBlock(index)) : nullptr;
}

void MainScene::DeleteSceneTool(int index) {
  if (BlockTable* list = m_scene_tools.Get()) list->Erase(index);
}

void MainScene::DeleteSceneTool(ToolBlock* tool) {
  if (BlockTable* list = m_scene_tools.Get()) list->Erase(tool);
}

BlockType MainSceneFactory::GetBlockType() const { return MainScene::m_block_type; }

Block* MainSceneFactory::GetBlock(bool create_defaults) const {
  return new MainScene(create_defaults);
}

std::string MainSceneFactory::GetName() const { return "MainScene"; }

}  // namespace Orlo
