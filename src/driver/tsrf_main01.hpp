// tsrf_main01: the driver of the surface model, the story of a run.
//
// Reads the control data, brings up every module in one fixed order, and marches the district
// through time, one tsrf_admin step a time level, until the last iteration, the daily convergence
// or the file "EXIT" ends the run. Called by the main program.
#pragma once

#include "driver/run.hpp"
#include "results/restart.hpp"

namespace tsrf_main01 {

/// The whole of a run once the files are open and the grid's sizes are known.
void tsrf_main01(Run& run);

/// Start-up (tsrf_prep_init.cpp): all modules, all time-independent data, the first state.
struct Start {
  std::int64_t iteration = 1;  ///< first iteration of the loop
  double time = 0.0;           ///< model time at its start [s]
};
Start tsrf_prep_init(Run& run);

/// The month-dependent data of a dated run (tsrf_prep_monthly.cpp): SurfProp, LAD_simple, Building
/// and RmHeat of the month of `time`, when it is another than the one loaded. On the first call, of
/// a time before the run, all months are loaded in turn. Nothing in a repeating-day run.
void tsrf_prep_monthly(Run& run, double time);

/// The arrays that a restart file keeps, where they stand in their modules.
tsrf_io_restart::State restart_state(Run& run);

}  // namespace tsrf_main01
