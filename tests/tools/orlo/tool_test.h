// The fixture of the orlo tool's tests: a fresh folder for the files a test writes, and the
// factory registry of the test process, which writes them (the base library and the example
// plug-in's classes, which the tool itself only knows through the plug-in).
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/tools/orlo/tool_runner.h"

namespace Orlo::cli::testing {

class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // A path in the test's folder.
  std::string Path(const std::string& name) const;

  // Writes a small scene and returns its path:
  //   MainNode
  //     base
  //       tip     a Torus (a class of the example plug-in) when `with_torus`
  //     lamp
  std::string WriteSmallScene(const std::string& name, bool with_torus);

  static std::vector<std::uint8_t> ReadBytes(const std::string& path);
  static void WriteBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);

  // Runs the tool and expects exit status `expected_exit`; the run is returned for more
  // checks.
  static ToolRun Run(const std::vector<std::string>& arguments, int expected_exit,
                     const ToolOptions& options = {});

  std::string m_folder;
};

// The lines of `text`, without their line feeds.
std::vector<std::string> Lines(const std::string& text);

}  // namespace Orlo::cli::testing
