// townskin_flow: computes the air flow of the working directory. --help and --version are all the
// arguments that it knows; others are ignored.
#include <unistd.h>

#include <iostream>

#include "flow/program.hpp"
#include "townskin_version.hpp"

int main(int argc, char** argv) {
  constexpr std::string_view kUsage =
      "townskin_flow\n"
      "  computes the air flow whose files are listed in the file flow_file_name of the present\n"
      "  directory\n"
      "  --help, -h  print this text\n"
      "  --version   print version, commit and compiler\n"
      "  environment TOWNSKIN_THREADS: number of threads, else one for each processor\n"
      "  status      0 at the end of a run, 231 after a fault, which log0000 tells\n";
  if (townskin_version::answered(argc, argv, "townskin_flow", kUsage, std::cout)) return 0;
  return flow::run_program({.screen = std::cout,
                            .errors = std::cerr,
                            .errors_is_terminal = ::isatty(STDERR_FILENO) != 0});
}
