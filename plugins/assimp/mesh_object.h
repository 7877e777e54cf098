// Defines MeshObject, a triangle mesh: positions, normals, texture coordinates and faces.
//
// The mesh owns its arrays by value; like every block it is owned through the graph. Its
// points are the positions, so modifiers deform it through GetPoint / SetPoint, and its flags
// say that it accepts modifiers. Building it returns the mesh itself.
//
//   auto* mesh = new MeshObject;
//   mesh->SetPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
//   mesh->SetFaces({{0, 1, 2}});
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <orlo/base/block/slotless_block.h>
#include <orlo/base/scene/object.h>

#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class MeshObject : public Orlo::SlotlessBlock<Orlo::Object> {
 public:
  static constexpr Orlo::BlockType m_block_type = kMeshObjectType;
  // Bit 22 of Flags: the object accepts modifiers.
  static constexpr int kAcceptsModifiersFlag = 1 << 22;
  using Face = std::array<std::int32_t, 3>;

  std::string GetClassName() const override { return "MeshObject"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  // A new mesh with the same arrays.
  Orlo::Block* Clone() override;
  // Chunk 0x0010 the positions, 0x0015 the normals, 0x0020 the texture coordinates (each a
  // uint32 count, then three doubles per entry), 0x0025 the faces (a uint32 count, then three
  // int32 indices per face).
  int Save(Orlo::SceneSave* save) override;
  // A count larger than the bytes of its chunk allow, or a face index outside the positions,
  // is corruption: returns 0 and leaves the mesh as it was.
  int Load(Orlo::SceneLoad* load) override;

  int Flags() override { return kAcceptsModifiersFlag; }
  Orlo::Object* BuildObject(int, Orlo::Node*) override { return this; }
  // The box of the positions, transformed by `tm` when given; empty without positions.
  Orlo::Box3<double> GetObjectBoundingBox(int time, Orlo::Matrix3<double>* tm = nullptr) override;
  int GetNumPoints() override { return static_cast<int>(m_positions.size()); }
  // (0, 0, 0) for an index outside the positions.
  Orlo::Point3<double> GetPoint(int index) override;
  // Ignores an index outside the positions.
  void SetPoint(int index, Orlo::Point3<double> point) override;
  // Brings the bounding box up to date after SetPoint calls.
  void PointsWereSet() override;

  const std::vector<Orlo::Point3<double>>& GetPositions() const { return m_positions; }
  const std::vector<Orlo::Point3<double>>& GetNormals() const { return m_normals; }
  const std::vector<Orlo::Point3<double>>& GetTextureCoordinates() const { return m_uvws; }
  const std::vector<Face>& GetFaces() const { return m_faces; }
  void SetPositions(std::vector<Orlo::Point3<double>> positions);
  // Either empty or one per position.
  void SetNormals(std::vector<Orlo::Point3<double>> normals) { m_normals = std::move(normals); }
  // (u, v, w), either empty or one per position.
  void SetTextureCoordinates(std::vector<Orlo::Point3<double>> uvws) { m_uvws = std::move(uvws); }
  // Requires: every index names a position.
  void SetFaces(std::vector<Face> faces);

 private:
  void UpdateBox();

  std::vector<Orlo::Point3<double>> m_positions;
  std::vector<Orlo::Point3<double>> m_normals;
  std::vector<Orlo::Point3<double>> m_uvws;
  std::vector<Face> m_faces;
  // The box of m_positions, kept current by every change but SetPoint (PointsWereSet).
  Orlo::Box3<double> m_box;
};

}  // namespace orlo_assimp
