// Test doubles for the scene graph: concrete objects, modifiers, object-modifiers, materials,
// textures and tools with the class ids host libraries use, a matrix controller that holds one
// fixed matrix, and helpers that compare matrices.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/scene/export_tool.h>
#include <orlo/base/scene/import_tool.h>
#include <orlo/base/scene/material.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/object.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/base/scene/texture.h>
#include <orlo/base/scene/tool_block.h>

namespace Orlo::testing {

// A plain object (class id 505 unless told otherwise). BuildObject returns what the test
// sets, and counts its calls.
class TestObject : public Object {
 public:
  explicit TestObject(std::string name = "object", BlockType type = BlockType(505, 1, 1))
      : m_name(std::move(name)), m_type(type) {}

  const std::string& Name() const { return m_name; }
  std::string GetClassName() const override { return "TestObject"; }
  BlockType GetBlockType() const override { return m_type; }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override { return new TestObject(m_name + "_clone", m_type); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }
  int Flags() override { return 1; }

  Object* BuildObject(int time, Node* node) override {
    ++builds;
    last_time = time;
    last_node = node;
    return built;
  }
  Object* UnbuildObject(int time, Node* node) override {
    ++unbuilds;
    last_time = time;
    last_node = node;
    return nullptr;
  }

  // What BuildObject returns; this object itself when the test sets it so.
  Object* built = nullptr;
  int builds = 0;
  int unbuilds = 0;
  int last_time = -1;
  Node* last_node = nullptr;

 private:
  std::string m_name;
  BlockType m_type;
};

// A modifier (class id 800 unless told otherwise) whose effect stays the same over
// `interval`.
class TestModifier : public Modifier {
 public:
  explicit TestModifier(BlockType type = BlockType(800, 1, 1)) : m_type(type) {}

  std::string GetClassName() const override { return "TestModifier"; }
  BlockType GetBlockType() const override { return m_type; }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override {
    auto* copy = new TestModifier(m_type);
    copy->SetName(GetName());
    copy->SetBox(GetBox());
    copy->SetActive(IsActive());
    return copy;
  }
  void DeleteThis() override { delete this; }
  ObjectModifier* GetNewObjectModifier() override;
  void GetTimeInterval(TimeInterval& out) override { out = out & interval; }

  TimeInterval interval = TimeInterval::Forever();

 private:
  BlockType m_type;
};

// An object-modifier that logs its calls. ApplyModifier returns `applied` (the object passed
// in when that is null); UnapplyModifier returns `unapplied`. Its validity interval is
// `interval`.
class TestObjectModifier : public ObjectModifier {
 public:
  std::string GetClassName() const override { return "TestObjectModifier"; }
  BlockType GetBlockType() const override { return BlockType(520, 1, 1); }
  Block* Clone() override { return new TestObjectModifier(); }
  void DeleteThis() override { delete this; }
  void GetTimeInterval(TimeInterval& out) override { out = out & interval; }

  Object* ApplyModifier(int time, Object* object, Node*) override {
    log.push_back("apply " + std::to_string(time));
    return applied != nullptr ? applied : object;
  }
  Object* UnapplyModifier(int time, Object* object, Node*) override {
    log.push_back("unapply " + std::to_string(time));
    unapplied_from = object;
    return unapplied;
  }

  TimeInterval interval = TimeInterval::Forever();
  Object* applied = nullptr;
  Object* unapplied = nullptr;
  Object* unapplied_from = nullptr;
  std::vector<std::string> log;
};

inline ObjectModifier* TestModifier::GetNewObjectModifier() { return new TestObjectModifier(); }

// A material (class id 405 unless told otherwise) that counts its table updates.
class TestMaterial : public Material {
 public:
  explicit TestMaterial(std::string name = "material", BlockType type = BlockType(405, 1, 1))
      : m_name(std::move(name)), m_type(type) {}

  std::string GetClassName() const override { return "TestMaterial"; }
  BlockType GetBlockType() const override { return m_type; }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override { return new TestMaterial(m_name + "_clone", m_type); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }
  void UpdateDataTable(bool) override { ++table_updates; }

  std::string GetName() const override { return m_name; }
  void SetName(std::string name) override { m_name = std::move(name); }
  void SetNumSubMaterials(int) override {}
  int GetNumSubMaterials() override { return 0; }
  Material* GetSubMaterial(int) override { return nullptr; }
  Status SetSubMaterial(int, Material*) override { return Status(); }
  void Shade(RenderState&) override {}

  int table_updates = 0;

 private:
  std::string m_name;
  BlockType m_type;
};

// A texture: only the name and Block's operations are its own.
class TestTexture : public Texture {
 public:
  std::string GetClassName() const override { return "TestTexture"; }
  BlockType GetBlockType() const override { return BlockType(410, 1, 1); }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override {
    auto* copy = new TestTexture();
    copy->SetName(m_name);
    return copy;
  }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }
  std::string GetName() const override { return m_name; }
  void SetName(std::string name) override { m_name = std::move(name); }

 private:
  std::string m_name;
};

// Block operations shared by the tool doubles.
template <typename Base>
class ToolDouble : public Base {
 public:
  explicit ToolDouble(unsigned class_id) : m_class_id(class_id) {}
  std::string GetClassName() const override { return "TestTool"; }
  BlockType GetBlockType() const override { return BlockType(m_class_id, 1, 1); }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }

 private:
  unsigned m_class_id;
};

class TestTool : public ToolDouble<ToolBlock> {
 public:
  TestTool() : ToolDouble(ToolBlock::kClassID) {}
  Block* Clone() override { return new TestTool(); }
};

class TestImportTool : public ToolDouble<ImportTool> {
 public:
  TestImportTool() : ToolDouble(ImportTool::kClassID) {}
  Block* Clone() override { return new TestImportTool(); }
  std::vector<std::string> GetExtensions() override { return {".abc"}; }
  // Like every tool, it releases itself at the end of its Execute when nothing holds it.
  Status Execute(SceneEngine*, std::string path) override {
    last_path = path;
    if (GetParentBlock() == nullptr) DeleteThisBlock(true);
    return Status();
  }
  std::string last_path;
};

class TestExportTool : public ToolDouble<ExportTool> {
 public:
  TestExportTool() : ToolDouble(ExportTool::kClassID) {}
  Block* Clone() override { return new TestExportTool(); }
  std::vector<std::string> GetExtensions() override { return {".xyz", ".XYW"}; }
  Status Execute(SceneEngine*, std::string) override {
    const Status status(Status::kFailed, "TestExportTool::Execute : nothing to write.");
    if (GetParentBlock() == nullptr) DeleteThisBlock(true);
    return status;
  }
};

// A matrix controller without sub-blocks that gives one fixed matrix at every time: a light
// stand-in for a Transform3Controller in very large hierarchies.
class FixedMatrixController : public Matrix3Controller {
 public:
  explicit FixedMatrixController(Matrix3<double> matrix = Matrix3<double>()) : m_matrix(matrix) {}

  std::string GetClassName() const override { return "FixedMatrixController"; }
  BlockType GetBlockType() const override { return BlockType(300, 99, 1); }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override { return new FixedMatrixController(m_matrix); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }

  void SetMatrix3(Matrix3<double> matrix, int) override {
    m_matrix = matrix;
    PostEvent(3, 0);
  }
  void SetPosition(Point3<double>, int) override {}
  void SetRotation(Point3<double>, int) override {}
  void SetScale(Point3<double>, int) override {}
  Matrix3<double> GetMatrix3(int) override { return m_matrix; }
  Point3<double> GetPosition(int) override { return m_matrix.GetRow(3); }
  Point3<double> GetRotation(int) override { return Point3<double>(); }
  Point3<double> GetScale(int) override { return Point3<double>(1, 1, 1); }

 private:
  Matrix3<double> m_matrix;
};

inline void ExpectMatrixEq(const Matrix3<double>& actual, const Matrix3<double>& expected) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(actual.m[r][c], expected.m[r][c]) << r << "," << c;
  }
}

inline void ExpectMatrixNear(const Matrix3<double>& actual, const Matrix3<double>& expected,
                             double tolerance) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_NEAR(actual.m[r][c], expected.m[r][c], tolerance) << r << "," << c;
    }
  }
}

inline Matrix3<double> Translation(double x, double y, double z) {
  Matrix3<double> m;
  m.SetRow(3, Point3<double>(x, y, z));
  return m;
}

}  // namespace Orlo::testing
