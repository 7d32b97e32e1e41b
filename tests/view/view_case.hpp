// Runs for the tests of townskin_view, and the program on them.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "run/run_model.hpp"
#include "run_case.hpp"

namespace view_case {

/// What a command printed on both streams, and its status.
struct Said {
  int status = -1;
  std::string text;
};

inline Said run(const std::string& command) {
  Said said;
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return said;
  for (int c = 0; (c = std::getc(pipe)) != EOF;) said.text += static_cast<char>(c);
  const int status = ::pclose(pipe);
  said.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return said;
}

inline Said view(const std::string& arguments) {
  return run(std::string(TOWNSKIN_VIEW_PROGRAM) + " " + arguments);
}

/// The directory of a finished run of an example, or of a case of the tests; each is run once.
inline const std::filesystem::path& finished(const std::string& name) {
  static std::map<std::string, run_case::RunCase> runs;
  static std::map<std::string, std::filesystem::path> paths;
  if (const auto at = paths.find(name); at != paths.end()) return at->second;
  const run_case::RunCase& run = runs.try_emplace(name, run_case::inputs_of(name)).first->second;
  if (const auto outcome = run.run(); outcome.status != 0) {
    throw std::runtime_error(name + " ends with status " + std::to_string(outcome.status));
  }
  return paths.emplace(name, run.path()).first->second;
}

/// A copy of a finished run, to be harmed.
class FinishedRun : public run_case::RunCase {
 public:
  explicit FinishedRun(const std::string& name) : RunCase(finished(name)) {}
  [[nodiscard]] std::string directory() const { return path().string(); }
};

}  // namespace view_case
