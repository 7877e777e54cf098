// Defines MainScene, the root block of a scene, and its factory MainSceneFactory.
//
// The scene owns, as dependencies, its parameter table (ambient light colour, background
// colour, ambient occlusion samples), the main node at the top of the node hierarchy, the
// list of scene tools and the list of materials. The engine holds one MainScene per scene;
// deleting the scene is one DeleteThisBlock(true) on it, and saving walks the graph from it.
//
//   auto* scene = new MainScene(true);   // main node, table, both lists
//   scene->AddMaterial(material);        // the list posts code 2; the scene turns it into 18
#pragma once

#include <string>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/internal/typed_slot.h>
#include <orlo/support/color.h>

namespace Orlo {

class BlockTable;
class DataTable;
class Material;
class Node;
class ToolBlock;

class MainScene : public Block {
 public:
  static constexpr BlockType m_block_type{100, 16, 16};

  static constexpr int kAmbientLightColorID = 0;
  static constexpr int kBackgroundColorID = 1;
  static constexpr int kAmbientOcclusionSamplesID = 2;

  // With `create` false every slot stays empty, for the scene reader to fill. With true, a
  // new Node(true) becomes the main node, then a new table and the two lists are linked, and
  // the parameters are added.
  explicit MainScene(bool create);

  // ---- Block ----

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // Slots: 0 "data_table" (type 205), 1 "main_node" (115), 2 "scene_tools" (100000),
  // 3 "materials" (405).
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  // "nil" outside the four slots.
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  DataTable* GetDataTable() const override;
  // Links `table` (null empties the slot) and reports success. A block that is not a
  // parameter table gives code 3, "MainScene::SetDataTable : The block is not a valid
  // data_table." and changes nothing.
  Status SetDataTable(DataTable* table) override;
  // Adds the three parameters (an id already present keeps its value), rebuilds the table's
  // id lookup and names them, whatever the flag. Without a table it does nothing.
  void UpdateDataTable(bool create) override;
  // A new scene holding a clone of each block in its slots.
  Block* Clone() override;
  // Nothing is written: everything of the scene root lives in its dependencies.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override;
  // A structure change (code 2) of the materials list becomes code 18 from the scene, the
  // parameter kept. Every event, rewritten or not, is posted on with the sender it then has:
  // events of the main node, the table and the tools list leave with their own sender.
  void ProcessEvent(BlockEvent event) override;
  using Block::ProcessEvent;

  // The main node, or null.
  Node* GetMainNode() const { return m_main_node.Get(); }

  // ---- Scene colours (time 0, element 0) ----
  // Without a table the getters give (0, 0, 0) and the setters do nothing.

  Color GetAmbientLightColor() const;
  void SetAmbientLightColor(Color color);
  Color GetBackgroundColor() const;
  void SetBackgroundColor(Color color);

  // ---- Materials ----

  // Appends `material` to the materials list, creating the list first when there is none.
  void AddMaterial(Material* material);
  int GetNumMaterials() const;
  // The material at `index`, or null outside the list (or for a block that is not one).
  Material* GetMaterial(int index) const;
  // Releases the entry at `index`; nothing outside the list.
  void DeleteMaterial(int index);
  // Releases the first entry that holds `material`; nothing when absent.
  void DeleteMaterial(Material* material);

  // ---- Scene tools ----

  // Appends `tool` to the tools list, creating the list first when there is none.
  void AddSceneTool(ToolBlock* tool);
  int GetNumSceneTools() const;
  // The tool at `index`, or null outside the list (or for a block that is not one).
  ToolBlock* GetSceneTool(int index) const;
  // The list's Erase by position: nothing outside the list.
  void DeleteSceneTool(int index);
  // The list's Erase by block: every entry that holds `tool` is released.
  void DeleteSceneTool(ToolBlock* tool);

 private:
  enum Slot {
    kDataTableSlot = 0,
    kMainNodeSlot = 1,
    kSceneToolsSlot = 2,
    kMaterialsSlot = 3,
    kNumSlots = 4,
  };

  BlockTable* EnsureList(int slot);

  internal::TypedSlot<DataTable> m_data_table;
  internal::TypedSlot<Node> m_main_node;
  internal::TypedSlot<BlockTable> m_scene_tools;
  internal::TypedSlot<BlockTable> m_materials;
};

class MainSceneFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // Passes the flag to the constructor.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
