#include "tools/orlo/plugin_loader.h"

#include <dlfcn.h>

#include <algorithm>

#include <boost/filesystem.hpp>

namespace Orlo::cli {

Status PluginLoader::Load(const std::string& path) {
  // RTLD_NOW: a plug-in that needs a symbol the tool lacks fails here, with the symbol's
  // name, rather than in the middle of a command. RTLD_LOCAL: plug-ins do not see each other.
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* reason = dlerror();
    return Status(Status::kFailed,
                  std::string("cannot load: ") + (reason != nullptr ? reason : "unknown error"));
  }
  if (std::find(m_handles.begin(), m_handles.end(), handle) != m_handles.end()) {
    dlclose(handle);  // drops the reference this call added; the library stays loaded
    return Status();
  }
  void* symbol = dlsym(handle, kPluginEntryPoint);
  if (symbol == nullptr) {
    dlclose(handle);
    return Status(Status::kFailed, std::string("no function ") + kPluginEntryPoint);
  }
  m_handles.push_back(handle);
  m_loaded.push_back(path);
  using RegisterFunction = void (*)();
  reinterpret_cast<RegisterFunction>(symbol)();
  return Status();
}

std::vector<std::string> PluginLoader::ListFolder(const std::string& folder) {
  std::vector<std::string> libraries;
  boost::system::error_code error;
  boost::filesystem::directory_iterator it(folder, error);
  if (error) return libraries;
  for (; it != boost::filesystem::directory_iterator(); it.increment(error)) {
    if (error) break;
    const boost::filesystem::path& path = it->path();
    if (path.extension() == ".so" && boost::filesystem::is_regular_file(path, error)) {
      libraries.push_back(path.string());
    }
  }
  std::sort(libraries.begin(), libraries.end());
  return libraries;
}

std::vector<std::string> PluginLoader::SplitPath(const std::string& list) {
  std::vector<std::string> folders;
  std::string::size_type start = 0;
  while (start <= list.size()) {
    std::string::size_type end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    if (end > start) folders.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return folders;
}

}  // namespace Orlo::cli
