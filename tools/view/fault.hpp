// What ends the program with status 2: told in one line on standard error.
#pragma once

#include <stdexcept>

namespace townskin_view {

struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace townskin_view
