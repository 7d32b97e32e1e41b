// Runs the district of a folder through the installed library.
#include <driver/flw_main00.hpp>
#include <iostream>

int main(int argc, char** argv) {
  return flw_main00::run(
      {.directory = argc > 1 ? argv[1] : ".", .screen = std::cout, .errors = std::cerr});
}
