// Defines SlotlessBlock, a base for block classes that link to no other block. It answers the
// slot operations of a block without slots ("no_dependency" for every name) and deletes the
// block through its own destructor, so that a host or plug-in class states only what it is,
// what it saves and what it adds:
//
//   class CameraObject : public Orlo::SlotlessBlock<Orlo::Object> { ... };
#pragma once

#include <string>

#include <orlo/base/block/block.h>

namespace Orlo {

template <typename Base>
class SlotlessBlock : public Base {
 public:
  using Base::Base;

  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  void DeleteThis() override { delete this; }
};

}  // namespace Orlo
