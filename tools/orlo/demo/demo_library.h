// Defines the block classes of the orlo tool's example scene, and RegisterDemoLibrary, which
// registers their factories as any plug-in library registers its own.
//
// The classes are small but complete: each saves and loads its state, clones itself and is
// owned through the graph like every block. The tool registers them at start-up, after the
// base library, so that it reads the files `orlo demo` writes.
//
//   | class             | kind            | type           | state                        |
//   | DemoCamera        | camera (600)    | (600, 128, 784)| field of view                |
//   | DemoBox           | primitive (510) | (510, 200, 2)  | size                         |
//   | DemoMaterial      | material (405)  | (405, 200, 3)  | name, a table of parameters  |
//   | DemoDeformer      | modifier (800)  | (800, 200, 4)  | what every modifier keeps    |
//   | DemoDeformerStack | object modifier | (520, 200, 5)  | applies a DemoDeformer       |
#pragma once

#include <string>

#include <orlo/base/block/slotless_block.h>
#include <orlo/base/scene/material.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/object.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/support/point3.h>

namespace Orlo::cli {

// The type is that of the engine's camera class, so that SceneEngine::CreateLookAtCamera
// makes a DemoCamera.
class DemoCamera : public SlotlessBlock<Object> {
 public:
  static constexpr BlockType m_block_type{600, 128, 784};

  std::string GetClassName() const override { return "DemoCamera"; }
  BlockType GetBlockType() const override { return m_block_type; }
  Block* Clone() override;
  // Chunk 0x0005: the field of view in radians, a double.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  int Flags() override { return 0; }

  double GetFieldOfView() const { return m_field_of_view; }
  void SetFieldOfView(double radians) { m_field_of_view = radians; }

 private:
  double m_field_of_view = 0.8;
};

class DemoBox : public SlotlessBlock<Object> {
 public:
  static constexpr BlockType m_block_type{510, 200, 2};

  std::string GetClassName() const override { return "DemoBox"; }
  BlockType GetBlockType() const override { return m_block_type; }
  Block* Clone() override;
  // Chunk 0x0005: the size, three doubles.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  int Flags() override { return 0; }
  // The box centred on the origin, transformed by `tm` when one is given.
  Box3<double> GetObjectBoundingBox(int time, Matrix3<double>* tm = nullptr) override;

  Point3<double> GetSize() const { return m_size; }
  void SetSize(Point3<double> size) { m_size = size; }

 private:
  Point3<double> m_size{1.0, 1.0, 1.0};
};

// A material with a name and a parameter table holding one parameter of every kind.
class DemoMaterial : public Material {
 public:
  static constexpr BlockType m_block_type{405, 200, 3};
  // Parameter ids.
  static constexpr int kDoubleSidedID = 0;  // bool
  static constexpr int kLayersID = 1;       // int
  static constexpr int kRoughnessID = 2;    // float, may be animated
  static constexpr int kNormalScaleID = 3;  // point
  static constexpr int kBaseColorID = 4;    // colour
  static constexpr int kTextureNameID = 5;  // string

  // With `create_defaults` a parameter table with every parameter is linked into slot 0.
  explicit DemoMaterial(bool create_defaults);

  std::string GetClassName() const override { return "DemoMaterial"; }
  BlockType GetBlockType() const override { return m_block_type; }
  // Slot 0 "data_table".
  int NumDependencies() const override { return 1; }
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  DataTable* GetDataTable() const override;
  Status SetDataTable(DataTable* table) override;
  // Adds the parameters the table lacks and names them all.
  void UpdateDataTable(bool create) override;
  Block* Clone() override;
  // Chunk 0x0005: the name.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override { delete this; }

  std::string GetName() const override { return m_name; }
  void SetName(std::string name) override { m_name = std::move(name); }
  void SetNumSubMaterials(int) override {}
  int GetNumSubMaterials() override { return 0; }
  Material* GetSubMaterial(int) override { return nullptr; }
  Status SetSubMaterial(int, Material*) override;
  void Shade(RenderState&) override {}

 private:
  std::string m_name;
  Block* m_data_table = nullptr;
};

class DemoDeformer : public SlotlessBlock<Modifier> {
 public:
  static constexpr BlockType m_block_type{800, 200, 4};

  std::string GetClassName() const override { return "DemoDeformer"; }
  BlockType GetBlockType() const override { return m_block_type; }
  Block* Clone() override;
  ObjectModifier* GetNewObjectModifier() override;
  void GetTimeInterval(TimeInterval&) override {}
};

// Stacks a DemoDeformer on an object. The deformation is left to renderers: building the
// stack hands the object below through unchanged.
class DemoDeformerStack : public ObjectModifier {
 public:
  static constexpr BlockType m_block_type{520, 200, 5};

  std::string GetClassName() const override { return "DemoDeformerStack"; }
  BlockType GetBlockType() const override { return m_block_type; }
  Block* Clone() override;
  void DeleteThis() override { delete this; }
  Object* UnapplyModifier(int, Object* object, Node*) override { return object; }
  Object* ApplyModifier(int, Object* object, Node*) override { return object; }
};

// Registers the factories of the classes above.
void RegisterDemoLibrary();

}  // namespace Orlo::cli
