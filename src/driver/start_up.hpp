// The parts of the start of a run, in the order in which the driver calls them.
//
// tsrf_main01 and tsrf_prep_init make a run of them. The check of all files (check/) calls the same
// parts with a log that collects faults: each then goes on where it can, and leaves its modules so
// that the next ones can be called.
#pragma once

#include "driver/run.hpp"
#include "driver/tsrf_main01.hpp"

namespace tsrf_main01 {

/// The fixed lines of the control data; those of the flow field are passed over.
void tsrf_read_cntdat(Desk& desk, Inputs& inputs, jmk::Trees& trees);
/// A dated run's date of model time 0, and where its days' Sun files stand.
void set_calendar(Run& run);
/// All namelist groups; each reader rewinds the control data, so groups stand in any order.
void read_settings(Run& run);
/// Patches, their properties and materials, and the ground columns.
void read_surfaces(Desk& desk, Inputs& inputs, Surface& surface, const jmk::Trees& trees);
/// Buildings, their room heat and air-conditioning schedules, and the wall columns.
void read_buildings(Desk& desk, Inputs& inputs, Surface& surface, Buildings& buildings);
/// Columns of cells behind the patches, their conductances and transmission.
void set_columns(Desk& desk, const Inputs& inputs, Surface& surface);
/// Patch groups, view factors and the correction of areas.
void read_exchange(Desk& desk, const Inputs& inputs, Surface& surface, Radiation& radiation);
/// Trees over single patches, where the settings ask for them.
void read_plan_trees(Run& run);
/// Both exchanges are on; a run without one has no incident radiation.
void check_bands(frame::Log& log, const tsrf_module_raddat::Data& raddat);
/// What makes the columns go forward in time; warns of those that the step is too long for.
void prepare_columns(Desk& desk, const Inputs& inputs, Surface& surface,
                     const Buildings& buildings);
/// The first state: from the restart file, or cold.
Start restore(Run& run);
/// The grid's axes, and the canopy of cells.
void read_canopy(Run& run);
/// The data of one month of a dated run.
void load_month(Run& run, std::int32_t month);

}  // namespace tsrf_main01
