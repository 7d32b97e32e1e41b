// townskin_check: all faults and doubts of a run directory, nothing run.
#pragma once

#include <iosfwd>
#include <string>

namespace check {

/// Reads the run in `directory` as the programs would and prints all that it finds on `out`, as
/// text or as JSON. 0: nothing found; 1: doubts only; 2: faults.
int check_run(const std::string& directory, bool json, std::ostream& out);

}  // namespace check
