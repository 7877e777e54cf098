#include "tools/orlo/commands/demo_command.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include <boost/filesystem.hpp>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/object.h>

#include "tools/orlo/current_engine.h"
#include "tools/orlo/demo/demo_scene.h"

namespace Orlo::cli {

namespace {

bool ReadBytes(const std::string& path, std::vector<char>* bytes) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return false;
  bytes->assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  return !stream.bad();
}

// Three decimals, without the "-0.000" that rounding noise would print.
std::string Coordinate(double value) {
  if (std::fabs(value) < 0.0005) value = 0.0;
  char text[32];
  std::snprintf(text, sizeof(text), "%8.3f", value);
  return text;
}

int Depth(const Node* node) {
  int depth = 0;
  for (const Node* parent = node->GetParent(); parent != nullptr; parent = parent->GetParent()) {
    ++depth;
  }
  return depth;
}

void PrintTree(SceneEngine& engine) {
  std::vector<SceneEngine::NodeMatrix> nodes;
  engine.GetAbsoluteTMs(0, nodes);
  for (const SceneEngine::NodeMatrix& entry : nodes) {
    std::string line(static_cast<std::size_t>(Depth(entry.node)) * 2 + 2, ' ');
    line += entry.node->GetName();
    if (Object* object = entry.node->GetObject()) line += "  object: " + object->GetClassName();
    if (Block* material = entry.node->GetMaterial()) {
      line += "  material: " + material->GetClassName();
    }
    std::cout << line << '\n';
  }
}

void PrintPositions(SceneEngine& engine) {
  for (int time : kDemoTimes) {
    std::cout << "  time " << time << ":\n";
    std::vector<SceneEngine::NodeMatrix> nodes;
    engine.GetAbsoluteTMs(time, nodes);
    for (const SceneEngine::NodeMatrix& entry : nodes) {
      if (entry.node == engine.GetMainNode()) continue;
      char name[32];
      std::snprintf(name, sizeof(name), "    %-10s", entry.node->GetName().c_str());
      const double* row = entry.matrix.m[3];
      std::cout << name << Coordinate(row[0]) << Coordinate(row[1]) << Coordinate(row[2]) << '\n';
    }
  }
}

}  // namespace

CLI::App* DemoCommand::Add(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "demo",
      "Build the example scene, save it, load it back, check that a second save gives the "
      "same bytes, and print its tree and world positions");
  command->add_option("-o,--output", m_output, "Scene file to write")->capture_default_str();
  return command;
}

int DemoCommand::Run(const ToolContext&) {
  SceneEngine built;
  {
    CurrentEngine current(&built);
    Status status = BuildDemoScene(built);
    if (!status.IsOk()) {
      return ReportError("demo", "cannot build the scene: " + status.GetMessage());
    }
    status = built.SaveScene(m_output);
    if (!status.IsOk()) return ReportError(m_output, status.GetMessage());
    built.DeleteScene();
  }

  // The file is loaded back into an engine of its own and saved again: the second file must
  // hold the same bytes.
  SceneEngine loaded;
  CurrentEngine current(&loaded);
  Status status = loaded.LoadScene(m_output);
  if (!status.IsOk()) return ReportError(m_output, "cannot load it back: " + status.GetMessage());
  const std::string check_path = m_output + ".check";
  status = loaded.SaveScene(check_path);
  if (!status.IsOk()) return ReportError(check_path, status.GetMessage());
  std::vector<char> first;
  std::vector<char> second;
  const bool read = ReadBytes(m_output, &first) && ReadBytes(check_path, &second);
  boost::system::error_code ignored;
  boost::filesystem::remove(check_path, ignored);
  if (!read) return ReportError(m_output, "cannot read the saved files back");
  if (first != second) {
    return ReportError(m_output, "saving the loaded scene again gives different bytes");
  }

  std::cout << "wrote " << m_output << " (" << first.size() << " bytes, " << loaded.GetNumBlocks()
            << " blocks)\n";
  std::cout << "loaded it back and saved it again: the same " << second.size() << " bytes\n";
  std::cout << "node tree:\n";
  PrintTree(loaded);
  std::cout << "world positions (x, y, z):\n";
  PrintPositions(loaded);
  return kExitOk;
}

}  // namespace Orlo::cli
