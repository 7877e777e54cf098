#include <orlo/base/scene/modifier.h>

#include <cstdint>

#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

// Payload of a modifier. Format history, newest first:
//   v1: chunk 0x0000 holding 0x0005 (active flag), 0x0010 (box), 0x0015 (name).
constexpr unsigned kModifierChunk = 0x0000;
constexpr unsigned kActiveChunk = 0x0005;
constexpr unsigned kBoxChunk = 0x0010;
constexpr unsigned kNameChunk = 0x0015;

}  // namespace

void Modifier::SetActive(bool active) {
  m_active = active;
  PostEvent(3, 0);
}

int Modifier::Save(SceneSave* save) {
  save->BeginChunk(kModifierChunk);
  save->BeginChunk(kActiveChunk);
  save->WriteInt32(m_active ? 1 : 0);
  save->EndChunk();
  save->BeginChunk(kBoxChunk);
  for (const Point3<double>& corner : {m_box.min, m_box.max}) {
    save->WriteDouble(corner.x);
    save->WriteDouble(corner.y);
    save->WriteDouble(corner.z);
  }
  save->EndChunk();
  save->BeginChunk(kNameChunk);
  save->WriteString(m_name);
  save->EndChunk();
  save->EndChunk();
  return 1;
}

int Modifier::Load(SceneLoad* load) {
  // Kept as is: a record without the flag chunk loads inactive, not with the default true.
  // Scenes written before the flag existed are read this way.
  bool found_active = false;
  std::int32_t active = 0;
  int opened = load->OpenChunk();
  if (opened == SceneLoad::kChunkOpened) {
    if (load->CurChunkID() == kModifierChunk) {
      while ((opened = load->OpenChunk()) == SceneLoad::kChunkOpened) {
        switch (load->CurChunkID()) {
          case kActiveChunk:
            load->ReadInt32(active);
            found_active = true;
            break;
          case kBoxChunk: {
            double values[6] = {};
            for (double& value : values) load->ReadDouble(value);
            m_box.min = Point3<double>(values[0], values[1], values[2]);
            m_box.max = Point3<double>(values[3], values[4], values[5]);
            break;
          }
          case kNameChunk:
            load->ReadString(m_name);
            break;
          default:
            break;
        }
        load->CloseChunk();
      }
    }
    load->CloseChunk();
  }
  m_active = found_active && (active & 1) != 0;
  return opened == SceneLoad::kError ? 0 : 1;
}

}  // namespace Orlo
