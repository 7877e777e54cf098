// Defines SlotlessBlock, the base of the plug-in's block classes that link to no other block.
// It answers the slot operations of a block without slots and deletes the block through its
// own destructor, so that a class states only what it is, what it saves and what it adds:
//
//   class CameraObject : public SlotlessBlock<Orlo::Object> { ... };
#pragma once

#include <string>

#include <orlo/base/block/block.h>

namespace orlo_assimp {

template <typename Base>
class SlotlessBlock : public Base {
 public:
  using Base::Base;

  int NumDependencies() const override { return 0; }
  void SetDependency(int, Orlo::Block*) override {}
  Orlo::Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  void DeleteThis() override { delete this; }
};

}  // namespace orlo_assimp
