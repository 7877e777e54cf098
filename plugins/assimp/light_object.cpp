#include "plugins/assimp/light_object.h"

#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "plugins/assimp/internal/plugin_factory.h"

namespace orlo_assimp {

namespace {
constexpr unsigned kValuesChunk = 0x0005;
}  // namespace

Orlo::Block* LightObject::Clone() {
  auto* copy = new LightObject;
  copy->m_kind = m_kind;
  copy->m_color = m_color;
  copy->m_intensity = m_intensity;
  copy->m_inner_cone = m_inner_cone;
  copy->m_outer_cone = m_outer_cone;
  return copy;
}

int LightObject::Save(Orlo::SceneSave* save) {
  save->BeginChunk(kValuesChunk);
  save->WriteInt32(m_kind);
  save->WriteFloat(m_color.r);
  save->WriteFloat(m_color.g);
  save->WriteFloat(m_color.b);
  save->WriteDouble(m_intensity);
  save->WriteDouble(m_inner_cone);
  save->WriteDouble(m_outer_cone);
  save->EndChunk();
  return 1;
}

int LightObject::Load(Orlo::SceneLoad* load) {
  return internal::ReadPayload(load, [&](unsigned id) {
    if (id != kValuesChunk) return;
    std::int32_t kind = 0;
    Orlo::Color color;
    double intensity = 0, inner = 0, outer = 0;
    if (!load->ReadInt32(kind) || !load->ReadFloat(color.r) || !load->ReadFloat(color.g) ||
        !load->ReadFloat(color.b) || !load->ReadDouble(intensity) || !load->ReadDouble(inner) ||
        !load->ReadDouble(outer)) {
      return;  // a short chunk changes nothing
    }
    m_kind = kind >= kDirectional && kind <= kArea ? static_cast<Kind>(kind) : kPoint;
    m_color = color;
    m_intensity = intensity;
    m_inner_cone = inner;
    m_outer_cone = outer;
  });
}

}  // namespace orlo_assimp
