// Defines PluginLoader, which loads the shared libraries that add block classes to the
// factory registry.
//
// A plug-in exports one registration function with C linkage,
//
//   extern "C" void OrloRegisterPlugin();
//
// which registers its factories with SceneEngine::AddBlockFactory. The loader opens the
// library, finds the function and calls it once. The libraries stay loaded for the life of
// the process: the registry holds factories (and scenes hold blocks) whose code lives in
// them, and both go only when the process ends.
#pragma once

#include <string>
#include <vector>

#include <orlo/support/status.h>

namespace Orlo::cli {

// The name of the function every plug-in exports.
inline constexpr const char* kPluginEntryPoint = "OrloRegisterPlugin";
// The environment variable that lists plug-in folders, separated by ':'.
inline constexpr const char* kPluginPathVariable = "ORLO_PLUGIN_PATH";

class PluginLoader {
 public:
  PluginLoader() = default;
  PluginLoader(const PluginLoader&) = delete;
  PluginLoader& operator=(const PluginLoader&) = delete;

  // Loads the library at `path` and calls its registration function. Code 2 with the reason
  // ("cannot load: <system message>", "no function OrloRegisterPlugin") when either fails;
  // a library loaded twice registers once.
  [[nodiscard]] Status Load(const std::string& path);

  // The shared libraries (files ending in ".so") of `folder`, sorted by name, so that the
  // load order does not depend on the file system. A folder that cannot be listed gives none.
  static std::vector<std::string> ListFolder(const std::string& folder);
  // The folders of a ':'-separated list, empty entries dropped.
  static std::vector<std::string> SplitPath(const std::string& list);

  // The libraries loaded so far, in load order.
  const std::vector<std::string>& Loaded() const { return m_loaded; }

 private:
  std::vector<std::string> m_loaded;
  // The handles of the loaded libraries; deliberately never closed (see above).
  std::vector<void*> m_handles;
};

}  // namespace Orlo::cli
