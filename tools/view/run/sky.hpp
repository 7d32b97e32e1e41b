// Sun, sky and air at the hours of results. Called by read_run.
#pragma once

#include "run/input_files.hpp"
#include "run/inputs.hpp"
#include "run/run_model.hpp"

namespace townskin_view {

/// Fills `run.sky` and the fields of the weather: the air in the middle of the step that ends at
/// the hour, the sun at its start, and what Sun & Sky tells. In a dated run the means over the
/// steps that the month's hour has had.
void read_sky(const RunFiles& files, QuietLog& quiet, RunModel& run);

}  // namespace townskin_view
