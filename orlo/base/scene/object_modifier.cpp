#include <orlo/base/scene/object_modifier.h>

#include <cassert>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

// Payload of an object-modifier. Format history, newest first:
//   v1: chunk 0x0000 holding chunk 0x0010, the 96-byte record.
constexpr unsigned kObjectModifierChunk = 0x0000;
constexpr unsigned kRecordChunk = 0x0010;

constexpr const char* kSlotNames[] = {"modifier", "base_object"};
constexpr unsigned kSlotTypes[] = {800, 500};

}  // namespace

int ObjectModifier::NumDependencies() const { return kNumSlots; }

void ObjectModifier::SetDependency(int index, Block* block) {
  if (index == kModifierSlot) {
    m_modifier.Set(block);
  } else if (index == kBaseObjectSlot) {
    m_base_object.Set(block);
  }
}

Block* ObjectModifier::GetDependency(int index) const {
  if (index == kModifierSlot) return m_modifier.Raw();
  if (index == kBaseObjectSlot) return m_base_object.Raw();
  return nullptr;
}

std::string ObjectModifier::GetDependencyName(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotNames[index] : "no_dependency";
}

unsigned ObjectModifier::GetDependencyType(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotTypes[index] : 0;
}

int ObjectModifier::Save(SceneSave* save) {
  save->BeginChunk(kObjectModifierChunk);
  save->BeginChunk(kRecordChunk);
  unsigned written = 0;
  save->Write(m_record.data(), static_cast<unsigned>(m_record.size()), written);
  save->EndChunk();
  save->EndChunk();
  return 1;
}

int ObjectModifier::Load(SceneLoad* load) {
  int opened = load->OpenChunk();
  if (opened != SceneLoad::kChunkOpened) return opened == SceneLoad::kError ? 0 : 1;
  if (load->CurChunkID() == kObjectModifierChunk) {
    while ((opened = load->OpenChunk()) == SceneLoad::kChunkOpened) {
      if (load->CurChunkID() == kRecordChunk) {
        unsigned read = 0;
        load->Read(m_record.data(), static_cast<unsigned>(m_record.size()), read);
      }
      load->CloseChunk();
    }
  }
  load->CloseChunk();
  return opened == SceneLoad::kError ? 0 : 1;
}

int ObjectModifier::Flags() { return kFlags; }

Object* ObjectModifier::BuildObject(int time, Node* node) {
  TimeInterval interval = TimeInterval::Forever();
  GetTimeInterval(interval);
  if (m_cached_result != nullptr && m_cache_valid && interval.Valid(time)) return m_cached_result;
  if (m_cached_result != nullptr && m_cache_valid) {
    m_cached_result = UnapplyModifier(time, m_cached_result, node);
    m_cache_valid = false;
  }
  Object* base = GetObjectToModify();
  assert(base != nullptr && "ObjectModifier::BuildObject needs a base object");
  Object* result = base != nullptr ? base->BuildObject(time, node) : nullptr;
  if (!m_enabled) return result;
  Modifier* modifier = GetModifier();
  assert(modifier != nullptr && "ObjectModifier::BuildObject needs a modifier while enabled");
  if (modifier != nullptr && modifier->IsActive()) {
    result = ApplyModifier(time, result, node);
    m_cache_valid = true;
  } else {
    m_cache_valid = false;
  }
  m_cached_result = result;
  return result;
}

Object* ObjectModifier::UnbuildObject(int time, Node* node) {
  if (m_cached_result != nullptr && m_cache_valid) {
    m_cached_result = UnapplyModifier(time, m_cached_result, node);
    m_cache_valid = false;
  }
  Object* base = GetObjectToModify();
  assert(base != nullptr && "ObjectModifier::UnbuildObject needs a base object");
  if (base != nullptr) base->UnbuildObject(time, node);
  return m_cached_result;
}

void ObjectModifier::GetDependantObjects(std::vector<Object*>& out) {
  out.push_back(this);
  Object* below = GetObjectToModify();
  // A loop down the stack, so a stack of any height is listed without deep recursion.
  while (auto* stacked = dynamic_cast<ObjectModifier*>(below)) {
    out.push_back(stacked);
    below = stacked->GetObjectToModify();
  }
  if (below != nullptr) below->GetDependantObjects(out);
}

Status ObjectModifier::SetModifier(Modifier* modifier) {
  if (modifier != nullptr && !SceneEngine::IsModifier(modifier)) {
    return Status(Status::kInvalidArgument,
                  "ObjectModifier::SetModifier : The block is not a valid Modifier.");
  }
  return MakeDependencyByID(kModifierSlot, modifier);
}

Status ObjectModifier::SetObjectToModify(Object* object) {
  if (object != nullptr && !SceneEngine::IsObject(object)) {
    return Status(Status::kInvalidArgument,
                  "ObjectModifier::SetObjectToModify : The block is not a valid Object.");
  }
  return MakeDependencyByID(kBaseObjectSlot, object);
}

}  // namespace Orlo
