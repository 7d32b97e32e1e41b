#include <unistd.h>

#include <iostream>

#include "driver/flw_main00.hpp"

int main() {
  return flw_main00::run({.screen = std::cout,
                          .errors = std::cerr,
                          .errors_is_terminal = ::isatty(STDERR_FILENO) != 0});
}
