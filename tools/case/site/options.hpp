// The command's flags: they name the site file and win over what it says.
#pragma once

#include <string>
#include <vector>

#include "site/site.hpp"

namespace townskin_case {

struct Options {
  Site site;
  std::string output;    ///< the run directory
  bool strict = false;   ///< what cannot be repaired is a fault
  bool force = false;    ///< an older run is replaced
  std::string to_print;  ///< help or version: nothing is to be done but to print it
};

/// Reads the arguments and the site file; `version` is what --version prints. Faults of either are
/// Fault.
Options read_options(int argc, const char* const* argv, const std::string& version);

}  // namespace townskin_case
