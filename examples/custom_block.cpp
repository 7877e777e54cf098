// A plug-in block class: defined outside Orlo, registered through the factory registry,
// saved and loaded through the chunk stream, and found again by its type.
#include <orlo/orlo.h>

#include <cstdio>
#include <string>

class Sphere : public Orlo::Block {
 public:
  static constexpr Orlo::BlockType m_block_type{510, 7, 1};  // a primitive object

  std::string GetClassName() const override { return "Sphere"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Orlo::Block*) override {}
  Orlo::Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Orlo::Block* Clone() override {
    auto* copy = new Sphere;  // not a copy construction: that would copy the graph links too
    copy->m_radius = m_radius;
    return copy;
  }
  int Save(Orlo::SceneSave* save) override {
    save->BeginChunk(0x0005);
    save->WriteDouble(m_radius);
    save->EndChunk();
    return 1;
  }
  int Load(Orlo::SceneLoad* load) override {
    int result;
    while ((result = load->OpenChunk()) == Orlo::SceneLoad::kChunkOpened) {
      if (load->CurChunkID() == 0x0005) load->ReadDouble(m_radius);
      load->CloseChunk();  // skips whatever was not read
    }
    return result == Orlo::SceneLoad::kError ? 0 : 1;
  }
  void DeleteThis() override { delete this; }

  double Radius() const { return m_radius; }
  void SetRadius(double radius) { m_radius = radius; }

 private:
  double m_radius = 1.0;
};

class SphereFactory : public Orlo::BlockFactory {
 public:
  Orlo::BlockType GetBlockType() const override { return Sphere::m_block_type; }
  Orlo::Block* GetBlock(bool) const override { return new Sphere; }
  std::string GetName() const override { return "Sphere"; }
};

void RegisterMyLibrary() {
  Orlo::SceneEngine::AddBlockFactory(new SphereFactory);  // the registry owns it
}

// The first registered factory whose type matches.
Orlo::BlockFactory* FindFactory(Orlo::BlockType type) {
  for (unsigned i = 0; i < Orlo::SceneEngine::GetNumBlockFactories(); ++i) {
    Orlo::BlockFactory* factory = Orlo::SceneEngine::GetBlockFactory(i);
    if (factory->GetBlockType() == type) return factory;
  }
  return nullptr;
}

int main() {
  Orlo::RegisterBaseLibrary();
  RegisterMyLibrary();

  // A list block holds the sphere; the list owns it through the graph.
  auto* list = new Orlo::BlockTable(true);
  auto* sphere = new Sphere;
  sphere->SetRadius(2.5);
  list->PushBack(sphere);

  Orlo::SceneSave save;
  sphere->Save(&save);
  Orlo::SceneLoad load(save.TakeBytes());
  Orlo::Block* loaded = FindFactory(Sphere::m_block_type)->GetBlock(false);
  const int loaded_ok = loaded->Load(&load);
  const double radius = static_cast<Sphere*>(loaded)->Radius();
  list->PushBack(loaded);

  std::printf("%s with radius %.1f, loaded back as %s with radius %.1f\n",
              sphere->GetClassName().c_str(), sphere->Radius(), loaded->GetClassName().c_str(),
              radius);
  const bool ok = loaded_ok == 1 && radius == 2.5 && list->GetNumBlocks() == 2;

  list->DeleteThisBlock(true);  // releases both spheres
  Orlo::SceneEngine::DestroyFactories();
  return ok ? 0 : 1;
}
