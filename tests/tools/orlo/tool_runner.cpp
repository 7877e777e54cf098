#include "tests/tools/orlo/tool_runner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

#include <boost/filesystem.hpp>

extern char** environ;

namespace Orlo::cli::testing {

namespace {

std::string ReadAll(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

}  // namespace

std::string ToolPath() { return ORLO_TOOL_PATH; }
std::string ExamplePluginPath() { return ORLO_EXAMPLE_PLUGIN_PATH; }

ToolRun RunTool(const std::vector<std::string>& arguments, const ToolOptions& options) {
  const boost::filesystem::path capture =
      boost::filesystem::temp_directory_path() /
      boost::filesystem::unique_path("orlo-tool-run-%%%%-%%%%-%%%%");
  boost::filesystem::create_directories(capture);
  const std::string out_path = (capture / "out").string();
  const std::string err_path = (capture / "err").string();

  // Everything the child needs is prepared before fork: the child only calls functions that
  // are safe there.
  std::vector<std::string> argument_strings{ToolPath()};
  argument_strings.insert(argument_strings.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : argument_strings) argv.push_back(argument.data());
  argv.push_back(nullptr);

  std::vector<std::string> environment_strings;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::string name = text.substr(0, text.find('='));
    if (name == "ORLO_PLUGIN_PATH" || options.environment.count(name) != 0) continue;
    environment_strings.push_back(text);
  }
  for (const auto& [name, value] : options.environment) {
    environment_strings.push_back(name + "=" + value);
  }
  std::vector<char*> envp;
  for (std::string& entry : environment_strings) envp.push_back(entry.data());
  envp.push_back(nullptr);

  ToolRun run;
  const pid_t child = fork();
  if (child == 0) {
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0) _exit(127);
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) _exit(127);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  if (child > 0) {
    int status = 0;
    if (waitpid(child, &status, 0) == child && WIFEXITED(status)) {
      run.exit_code = WEXITSTATUS(status);
    }
  }
  run.out = ReadAll(out_path);
  run.err = ReadAll(err_path);
  boost::system::error_code ignored;
  boost::filesystem::remove_all(capture, ignored);
  return run;
}

}  // namespace Orlo::cli::testing
