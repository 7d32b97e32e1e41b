// What follows from the results: the terms of the surface balance that no file holds.
//
// The model solves, for the surface temperature Ts of every patch of ground and of buildings,
//
//     (1 - alb) Rs + ems Rl - ems sigma Ts^4 + HTRNS (Ta - Ts) + latent - conducted = 0
//
// The files give Ts, the latent and the conducted heat, and the short-wave radiosity JRs = alb Rs;
// all but ems Rl follows at once, and ems Rl from the balance itself. What of both comes from sun
// and sky is known beforehand; the rest comes from neighbours. Called by read_run.
#pragma once

#include "run/run_model.hpp"

namespace townskin_view {

inline constexpr double kZeroCelsius = 273.15;

/// Adds the derived fields that the run's stored ones allow, and those that tell of the patches.
void add_derived(RunModel& run);

}  // namespace townskin_view
