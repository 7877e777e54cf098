// A plug-in's block classes: Torus, a primitive object with two radii, and NodeListExporter,
// an export tool that writes a scene's node names, one per line, indented by depth, to files
// ending in ".nodes". RegisterTorusPlugin registers both factories.
//
// The plug-in library (orlo_example_plugin.cpp) only adds the exported registration function
// the orlo tool calls; a host that links these classes directly calls RegisterTorusPlugin.
#pragma once

#include <string>
#include <vector>

#include <orlo/orlo.h>

namespace orlo_example {

class Torus : public Orlo::SlotlessBlock<Orlo::Object> {
 public:
  static constexpr Orlo::BlockType m_block_type{510, 300, 1};  // a primitive object

  std::string GetClassName() const override { return "Torus"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  Orlo::Block* Clone() override;
  // Chunk 0x0005: the ring radius and the tube radius, two doubles.
  int Save(Orlo::SceneSave* save) override;
  int Load(Orlo::SceneLoad* load) override;
  int Flags() override { return 0; }

  double GetRingRadius() const { return m_ring_radius; }
  double GetTubeRadius() const { return m_tube_radius; }
  void SetRadii(double ring, double tube) {
    m_ring_radius = ring;
    m_tube_radius = tube;
  }

 private:
  double m_ring_radius = 1.0;
  double m_tube_radius = 0.25;
};

class NodeListExporter : public Orlo::SlotlessBlock<Orlo::ExportTool> {
 public:
  static constexpr Orlo::BlockType m_block_type{100010, 300, 2};

  std::string GetClassName() const override { return "NodeListExporter"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  Orlo::Block* Clone() override { return new NodeListExporter; }
  int Save(Orlo::SceneSave*) override { return 1; }
  int Load(Orlo::SceneLoad*) override { return 1; }

  std::vector<std::string> GetExtensions() override { return {".nodes"}; }
  // Writes the names of the nodes below the main node; releases itself at the end when
  // nothing keeps it, as every export tool must.
  Orlo::Status Execute(Orlo::SceneEngine* engine, std::string path) override;
};

// Registers the factories of Torus and NodeListExporter.
void RegisterTorusPlugin();

}  // namespace orlo_example
