// The inputs of a run, read by the core's own readers into the model.
//
// Patches must be readable; of everything else what lacks becomes a note. Called by read_run.
#pragma once

#include "inputs/grid_index.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "run/input_files.hpp"
#include "run/run_model.hpp"

namespace townskin_view {

/// What further readers need of the core's own data.
struct CoreInputs {
  tsrf_module_grdindx::Data grid_index;
  tsrf_module_patch::Data patch;
  tsrf_module_srfprp::Data srfprp;
  double steps_a_day = 0.0;
};

/// Control, grid, patches, materials, properties of each month, buildings and leaves.
CoreInputs read_inputs(const RunFiles& files, QuietLog& quiet, RunModel& run);

/// Notes why a part of the run is not shown.
void note(RunModel& run, const std::string& what, const std::string& fault);

}  // namespace townskin_view
