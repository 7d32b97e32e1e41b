#include <unistd.h>

#include <iostream>

#include "flow/program.hpp"

int main() {
  return flow::run_program({.screen = std::cout,
                            .errors = std::cerr,
                            .errors_is_terminal = ::isatty(STDERR_FILENO) != 0});
}
