#include <orlo/base/engine/unknown_modifier.h>

#include <orlo/base/engine/unknown_object_modifier.h>

namespace Orlo {

UnknownModifier::UnknownModifier(bool /*create*/) {}

std::string UnknownModifier::GetClassName() const { return "UnknownModifier"; }

BlockType UnknownModifier::GetBlockType() const { return m_block_type; }

int UnknownModifier::NumDependencies() const { return 0; }

void UnknownModifier::SetDependency(int /*index*/, Block* /*block*/) {}

Block* UnknownModifier::GetDependency(int /*index*/) const { return nullptr; }

std::string UnknownModifier::GetDependencyName(int /*index*/) const { return "nil"; }

unsigned UnknownModifier::GetDependencyType(int /*index*/) const { return 0; }

Block* UnknownModifier::Clone() { return new UnknownModifier(false); }

int UnknownModifier::Save(SceneSave* /*save*/) { return 0; }

int UnknownModifier::Load(SceneLoad* /*load*/) { return 0; }

void UnknownModifier::DeleteThis() { delete this; }

ObjectModifier* UnknownModifier::GetNewObjectModifier() { return new UnknownObjectModifier(false); }

void UnknownModifier::GetTimeInterval(TimeInterval& /*interval*/) {}

}  // namespace Orlo
