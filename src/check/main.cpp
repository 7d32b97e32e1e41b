// townskin_check [--json] RUN. Status 0: nothing found; 1: doubts only; 2: faults, or a wrong call.
#include <iostream>
#include <string_view>

#include "check/check.hpp"
#include "townskin_version.hpp"

int main(int argc, char** argv) {
  constexpr std::string_view kUsage =
      "townskin_check [--json] RUN\n"
      "  tells all faults and doubts of the run directory RUN; nothing is run or written\n"
      "  --json      one object a line\n"
      "  --help, -h  print this text\n"
      "  --version   print version, commit and compiler\n"
      "  status      0 nothing found, 1 doubts only, 2 faults\n";
  bool json = false;
  std::string directory;
  for (int n = 1; n < argc; ++n) {
    const std::string_view word = argv[n];
    if (townskin_version::answered(argc - n + 1, argv + n - 1, "townskin_check", kUsage,
                                   std::cout)) {
      return 0;
    }
    if (word == "--json") {
      json = true;
    } else if (word.starts_with("-") || !directory.empty()) {
      std::cerr << "### townskin_check : " << word << " is not known\n" << kUsage;
      return 2;
    } else {
      directory = word;
    }
  }
  if (directory.empty()) {
    std::cerr << kUsage;
    return 2;
  }
  return check::check_run(directory, json, std::cout);
}
