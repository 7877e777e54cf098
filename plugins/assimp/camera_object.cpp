#include "plugins/assimp/camera_object.h"

#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "plugins/assimp/internal/plugin_factory.h"

namespace orlo_assimp {

namespace {
constexpr unsigned kValuesChunk = 0x0005;
}  // namespace

Orlo::Block* CameraObject::Clone() {
  auto* copy = new CameraObject;
  copy->m_field_of_view = m_field_of_view;
  copy->m_near_clip = m_near_clip;
  copy->m_far_clip = m_far_clip;
  copy->m_aspect_ratio = m_aspect_ratio;
  return copy;
}

int CameraObject::Save(Orlo::SceneSave* save) {
  save->BeginChunk(kValuesChunk);
  save->WriteDouble(m_field_of_view);
  save->WriteDouble(m_near_clip);
  save->WriteDouble(m_far_clip);
  save->WriteDouble(m_aspect_ratio);
  save->EndChunk();
  return 1;
}

int CameraObject::Load(Orlo::SceneLoad* load) {
  return internal::ReadPayload(load, [&](unsigned id) {
    if (id != kValuesChunk) return;
    double values[4];
    for (double& value : values) {
      if (!load->ReadDouble(value)) return;  // a short chunk changes nothing
    }
    m_field_of_view = values[0];
    m_near_clip = values[1];
    m_far_clip = values[2];
    m_aspect_ratio = values[3];
  });
}

}  // namespace orlo_assimp
