#include "plugins/assimp/mesh_object.h"

#include <cassert>

#include <orlo/support/math_functions.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "plugins/assimp/internal/plugin_factory.h"

namespace orlo_assimp {

namespace {

constexpr unsigned kPositionsChunk = 0x0010;
constexpr unsigned kNormalsChunk = 0x0015;
constexpr unsigned kTextureCoordinatesChunk = 0x0020;
constexpr unsigned kFacesChunk = 0x0025;
constexpr std::uint64_t kPointBytes = 3 * sizeof(double);
constexpr std::uint64_t kFaceBytes = 3 * sizeof(std::int32_t);

void WritePoints(Orlo::SceneSave* save, unsigned id,
                 const std::vector<Orlo::Point3<double>>& points) {
  save->BeginChunk(id);
  save->WriteUInt32(static_cast<std::uint32_t>(points.size()));
  for (const Orlo::Point3<double>& p : points) {
    save->WriteDouble(p.x);
    save->WriteDouble(p.y);
    save->WriteDouble(p.z);
  }
  save->EndChunk();
}

// Reads a count, checked against the bytes left in the chunk before anything is allocated.
bool ReadCount(Orlo::SceneLoad* load, std::uint64_t entry_bytes, std::uint32_t& count) {
  if (!load->ReadUInt32(count)) return false;
  if (count > load->BytesLeftInChunk() / entry_bytes) {
    load->ReportCorruption("MeshObject: " + std::to_string(count) + " entries exceed the " +
                           std::to_string(load->BytesLeftInChunk()) + " bytes left");
    return false;
  }
  return true;
}

bool ReadPoints(Orlo::SceneLoad* load, std::vector<Orlo::Point3<double>>& out) {
  std::uint32_t count = 0;
  if (!ReadCount(load, kPointBytes, count)) return false;
  std::vector<Orlo::Point3<double>> points(count);
  for (Orlo::Point3<double>& p : points) {
    if (!load->ReadDouble(p.x) || !load->ReadDouble(p.y) || !load->ReadDouble(p.z)) return false;
  }
  out = std::move(points);
  return true;
}

bool ReadFaces(Orlo::SceneLoad* load, std::vector<MeshObject::Face>& out) {
  std::uint32_t count = 0;
  if (!ReadCount(load, kFaceBytes, count)) return false;
  std::vector<MeshObject::Face> faces(count);
  for (MeshObject::Face& face : faces) {
    for (std::int32_t& index : face) {
      if (!load->ReadInt32(index)) return false;
    }
  }
  out = std::move(faces);
  return true;
}

}  // namespace

Orlo::Block* MeshObject::Clone() {
  auto* copy = new MeshObject;
  copy->m_positions = m_positions;
  copy->m_normals = m_normals;
  copy->m_uvws = m_uvws;
  copy->m_faces = m_faces;
  copy->m_box = m_box;
  return copy;
}

int MeshObject::Save(Orlo::SceneSave* save) {
  WritePoints(save, kPositionsChunk, m_positions);
  WritePoints(save, kNormalsChunk, m_normals);
  WritePoints(save, kTextureCoordinatesChunk, m_uvws);
  save->BeginChunk(kFacesChunk);
  save->WriteUInt32(static_cast<std::uint32_t>(m_faces.size()));
  for (const Face& face : m_faces) {
    for (std::int32_t index : face) save->WriteInt32(index);
  }
  save->EndChunk();
  return 1;
}

int MeshObject::Load(Orlo::SceneLoad* load) {
  // Read into locals so that a damaged payload leaves the mesh as it was.
  std::vector<Orlo::Point3<double>> positions, normals, uvws;
  std::vector<Face> faces;
  bool ok = true;
  const int result = internal::ReadPayload(load, [&](unsigned id) {
    if (!ok) return;
    if (id == kPositionsChunk) ok = ReadPoints(load, positions);
    if (id == kNormalsChunk) ok = ReadPoints(load, normals);
    if (id == kTextureCoordinatesChunk) ok = ReadPoints(load, uvws);
    if (id == kFacesChunk) ok = ReadFaces(load, faces);
  });
  if (result == 0 || !ok) return 0;
  for (const Face& face : faces) {
    for (std::int32_t index : face) {
      if (index < 0 || static_cast<std::size_t>(index) >= positions.size()) {
        load->ReportCorruption("MeshObject: face index " + std::to_string(index) + " outside the " +
                               std::to_string(positions.size()) + " positions");
        return 0;
      }
    }
  }
  m_positions = std::move(positions);
  m_normals = std::move(normals);
  m_uvws = std::move(uvws);
  m_faces = std::move(faces);
  UpdateBox();
  return 1;
}

Orlo::Box3<double> MeshObject::GetObjectBoundingBox(int, Orlo::Matrix3<double>* tm) {
  if (tm == nullptr) return m_box;
  Orlo::Box3<double> box;
  for (const Orlo::Point3<double>& p : m_positions) box += Orlo::TransformPoint(p, *tm);
  return box;
}

Orlo::Point3<double> MeshObject::GetPoint(int index) {
  if (index < 0 || index >= GetNumPoints()) return Orlo::Point3<double>(0, 0, 0);
  return m_positions[static_cast<std::size_t>(index)];
}

void MeshObject::SetPoint(int index, Orlo::Point3<double> point) {
  if (index < 0 || index >= GetNumPoints()) return;
  m_positions[static_cast<std::size_t>(index)] = point;
}

void MeshObject::PointsWereSet() { UpdateBox(); }

void MeshObject::SetPositions(std::vector<Orlo::Point3<double>> positions) {
  m_positions = std::move(positions);
  UpdateBox();
}

void MeshObject::SetFaces(std::vector<Face> faces) {
#ifndef NDEBUG
  for (const Face& face : faces) {
    for (std::int32_t index : face) {
      assert(index >= 0 && static_cast<std::size_t>(index) < m_positions.size() &&
             "MeshObject::SetFaces needs indices of existing positions");
    }
  }
#endif
  m_faces = std::move(faces);
}

void MeshObject::UpdateBox() {
  m_box = Orlo::Box3<double>();
  for (const Orlo::Point3<double>& p : m_positions) m_box += p;
}

}  // namespace orlo_assimp
