#include "examples/plugin/torus.h"

#include <fstream>
#include <memory>

namespace orlo_example {

namespace {

template <typename BlockClass>
class Factory : public Orlo::BlockFactory {
 public:
  explicit Factory(std::string name) : m_name(std::move(name)) {}
  Orlo::BlockType GetBlockType() const override { return BlockClass::m_block_type; }
  Orlo::Block* GetBlock(bool) const override { return new BlockClass; }
  std::string GetName() const override { return m_name; }

 private:
  std::string m_name;
};

// A factory the registry refuses (its type is there already) stays ours to destroy.
template <typename BlockClass>
void Register(const char* name) {
  auto factory = std::make_unique<Factory<BlockClass>>(name);
  const unsigned before = Orlo::SceneEngine::GetNumBlockFactories();
  Orlo::SceneEngine::AddBlockFactory(factory.get());
  if (Orlo::SceneEngine::GetNumBlockFactories() != before) (void)factory.release();
}

}  // namespace

Orlo::Block* Torus::Clone() {
  auto* copy = new Torus;  // not a copy construction: that would copy the graph links too
  copy->SetRadii(m_ring_radius, m_tube_radius);
  return copy;
}

int Torus::Save(Orlo::SceneSave* save) {
  save->BeginChunk(0x0005);
  save->WriteDouble(m_ring_radius);
  save->WriteDouble(m_tube_radius);
  save->EndChunk();
  return 1;
}

int Torus::Load(Orlo::SceneLoad* load) {
  int result;
  while ((result = load->OpenChunk()) == Orlo::SceneLoad::kChunkOpened) {
    if (load->CurChunkID() == 0x0005) {
      load->ReadDouble(m_ring_radius);
      load->ReadDouble(m_tube_radius);
    }
    load->CloseChunk();  // skips whatever was not read
  }
  return result == Orlo::SceneLoad::kError ? 0 : 1;
}

Orlo::Status NodeListExporter::Execute(Orlo::SceneEngine* engine, std::string path) {
  Orlo::Status status;
  std::ofstream out(path);
  if (!out || engine == nullptr || engine->GetMainNode() == nullptr) {
    status.Set(Orlo::Status::kFailed, "NodeListExporter::Execute : Cannot write " + path + ".");
  } else {
    std::vector<Orlo::Node*> nodes;
    engine->GetAllSceneNodes(nodes);
    for (Orlo::Node* node : nodes) {
      int depth = 0;
      for (Orlo::Node* parent = node->GetParent();
           parent != engine->GetMainNode() && parent != nullptr; parent = parent->GetParent()) {
        ++depth;
      }
      out << std::string(static_cast<std::size_t>(depth) * 2, ' ') << node->GetName() << '\n';
    }
    if (!out)
      status.Set(Orlo::Status::kFailed, "NodeListExporter::Execute : Cannot write " + path + ".");
  }
  if (GetParentBlock() == nullptr) DeleteThisBlock(true);  // nothing keeps this tool
  return status;
}

void RegisterTorusPlugin() {
  Register<Torus>("Torus");
  Register<NodeListExporter>("NodeListExporter");
}

}  // namespace orlo_example
