// What the programs tell of themselves: version, commit and compiler, and the two answers of those
// that take no other argument.
//
// Stands beside the core, which does not know it: a new commit costs one small generated file and
// the links of the programs. Called by the main programs only.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace townskin_version {

extern const std::string_view kVersion;   ///< "0.2.0"
extern const std::string_view kCommit;    ///< of the sources; "unknown" outside a repository
extern const std::string_view kCompiler;  ///< its name and version

/// "townskin 0.2.0 (commit 1234567, GNU 12.2.0)".
inline std::string line(std::string_view program) {
  std::string text;
  for (const std::string_view part :
       {program, std::string_view(" "), kVersion, std::string_view(" (commit "), kCommit,
        std::string_view(", "), kCompiler, std::string_view(")")}) {
    text += part;
  }
  return text;
}

/// Answers --help, -h or --version where one is the first argument; whether it was.
inline bool answered(int argc, const char* const* argv, std::string_view program,
                     std::string_view help, std::ostream& screen) {
  const std::string_view word = argc > 1 ? argv[1] : "";
  if (word == "--version") {
    screen << line(program) << '\n';
  } else if (word == "--help" || word == "-h") {
    screen << help;
  } else {
    return false;
  }
  return true;
}

}  // namespace townskin_version
