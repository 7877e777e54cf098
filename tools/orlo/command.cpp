#include "tools/orlo/command.h"

#include <iostream>

namespace Orlo::cli {

int ReportError(const std::string& subject, const std::string& problem) {
  std::string line = "orlo: " + subject + ": " + problem;
  // One line per error, whatever the message holds: scripts read stderr line by line.
  for (char& c : line) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  std::cerr << line << '\n';
  return kExitFailure;
}

}  // namespace Orlo::cli
