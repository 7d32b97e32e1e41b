// The memory of a run, array by array, at the end of its log. Called by the main program.
#pragma once

#include "driver/run.hpp"

namespace tsrf_main01 {

/// Prints what the run took at most and what its arrays take.
void report_memory(const Run& run);

}  // namespace tsrf_main01
