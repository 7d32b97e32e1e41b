// The result files of a run as hours and fields. Called by read_run.
#pragma once

#include "run/input_files.hpp"
#include "run/run_model.hpp"

namespace townskin_view {

/// Patches, buildings and, as asked for, cells of all hours that are there. What lacks is noted.
void read_results(const RunFiles& files, const Wanted& wanted, RunModel& run);

}  // namespace townskin_view
