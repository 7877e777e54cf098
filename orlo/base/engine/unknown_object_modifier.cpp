#include <orlo/base/engine/unknown_object_modifier.h>

#include <orlo/base/scene/modifier.h>

namespace Orlo {

UnknownObjectModifier::UnknownObjectModifier(bool /*create*/) {}

std::string UnknownObjectModifier::GetClassName() const { return "UnknownObjectModifier"; }

BlockType UnknownObjectModifier::GetBlockType() const { return m_block_type; }

Block* UnknownObjectModifier::Clone() {
  auto* copy = new UnknownObjectModifier(false);
  if (Modifier* modifier = GetModifier()) {
    Block* cloned = modifier->Clone();
    auto* cloned_modifier = dynamic_cast<Modifier*>(cloned);
    if (cloned_modifier != nullptr) {
      // A clone of a modifier has the modifier class id, which is all SetModifier checks.
      (void)copy->SetModifier(cloned_modifier);
    } else if (cloned != nullptr) {
      // A host modifier whose Clone gives another class: released instead of leaking.
      cloned->DeleteThisBlock(true);
    }
  }
  return copy;
}

int UnknownObjectModifier::Save(SceneSave* /*save*/) { return 0; }

int UnknownObjectModifier::Load(SceneLoad* /*load*/) { return 0; }

void UnknownObjectModifier::DeleteThis() { delete this; }

Object* UnknownObjectModifier::UnapplyModifier(int /*time*/, Object* /*object*/, Node* /*node*/) {
  return nullptr;
}

Object* UnknownObjectModifier::ApplyModifier(int /*time*/, Object* /*object*/, Node* /*node*/) {
  return nullptr;
}

}  // namespace Orlo
