// A run as files for ParaView: the patches of each hour (.vtp), or the flow at each set of its
// restart file (.vtr), and the series of them (.pvd).
//
// Each piece of a patch is a polygon; a patch with holes is cut into triangles, as polygons of VTK
// have none. Cells carry PID, so that those of a patch are found again.
#pragma once

#include <string>

#include "flow/flow_run.hpp"
#include "run/run_model.hpp"
#include "stage.hpp"

namespace townskin_view {

/// `patches_NNN.vtp` and `patches.pvd` in `folder`.
void write_vtk_patches(const RunModel& run, const std::string& folder, Stage& stage);
/// `flow_NNN.vtr` and `flow.pvd` in `folder`; nothing where the run has no fields yet.
FlowSets write_vtk_flow(const FlowRun& run, const std::string& folder, Stage& stage);

}  // namespace townskin_view
