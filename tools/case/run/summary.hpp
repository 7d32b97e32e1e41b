// What the tool tells of a run that it has made.
#pragma once

#include <string>
#include <vector>

#include "run/check_run.hpp"
#include "run/run_data.hpp"

namespace townskin_case {

/// Counts and areas, sky views, errors, and what the run will take, as lines for the screen.
std::vector<std::string> summary_of(const RunData& run, const Trial& trial);

/// The mean of the sky's share over the area of the groups that `counts` is true of; -1: none.
double mean_sky(const RunData& run, bool (*counts)(const Group&));

}  // namespace townskin_case
