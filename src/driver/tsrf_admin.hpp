// tsrf_admin: all physics of one time step, in one fixed pass; the story of a step.
//
// Nothing in a step is iterated as a whole: radiation, surface balance, conduction and buildings
// each run once, with the latest values of what ran before them. Called by the driver.
#pragma once

#include <cstdint>

#include "driver/run.hpp"

namespace tsrf_main01 {

/// One step of length `dtmax` [s] from model time `time` [s]. Returns `kconv`: the daily cycle
/// repeats itself.
bool tsrf_admin(Run& run, std::int64_t iter, double time, double dtmax);

}  // namespace tsrf_main01
