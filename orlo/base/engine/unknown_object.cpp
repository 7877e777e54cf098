#include <orlo/base/engine/unknown_object.h>

namespace Orlo {

UnknownObject::UnknownObject(bool /*create*/) {}

std::string UnknownObject::GetClassName() const { return "UnknownObject"; }

BlockType UnknownObject::GetBlockType() const { return m_block_type; }

int UnknownObject::NumDependencies() const { return 0; }

void UnknownObject::SetDependency(int /*index*/, Block* /*block*/) {}

Block* UnknownObject::GetDependency(int /*index*/) const { return nullptr; }

std::string UnknownObject::GetDependencyName(int /*index*/) const { return "nil"; }

unsigned UnknownObject::GetDependencyType(int /*index*/) const { return 0; }

Block* UnknownObject::Clone() { return new UnknownObject(false); }

int UnknownObject::Save(SceneSave* /*save*/) { return 0; }

int UnknownObject::Load(SceneLoad* /*load*/) { return 0; }

void UnknownObject::DeleteThis() { delete this; }

int UnknownObject::Flags() { return kFlags; }

}  // namespace Orlo
