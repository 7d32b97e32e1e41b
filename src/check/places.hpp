// Where a finding lies that was made when its file had been read.
//
// The words of the finding name a code and the data that it is of; the record with that code is
// looked up, one pass a file for all findings. Costs nothing where there is none.
#pragma once

#include "check/reading.hpp"

namespace check {

/// Gives the findings without a place the file and line that their words point to.
void find_places(const Parts& parts, const tsrf_main01::Run& run, frame::Findings& findings);

}  // namespace check
