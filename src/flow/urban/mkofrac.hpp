// flw_module_fv: the open fractions of cells and faces, and what the city brings into them.
//
// Group VFRAC asks for obstacles and porous cells; without it everything is open. Called once by
// the start-up.
#pragma once

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "flow/urban/urban.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// kcp_module_data: group KPC_DATA, whose member TIME0 is the second of the day at time 0 of the
/// run. The place in the control data is kept. A TIME0 below 0 is a data error.
double kcp_inputdata(frame::Log& log, frame::TextInput& control);

/// True when group VFRAC wants fractions (LVFRAC not 0). The place in the control data is kept.
bool wants_fractions(frame::Log& log, frame::TextInput& control);

/// The city's files; null where a run has none, or does not want it.
struct CityFiles {
  frame::TextInput* porous = nullptr;
  frame::TextInput* surftemp = nullptr;
  frame::TextInput* bldload = nullptr;
  frame::TextInput* lad = nullptr;
};

/// Fills the fractions (all cells fluid still: flw_prep_stiobs takes out the filled ones), and the
/// city's drag and heat; tells the sums of heat of each hour, that of surfaces to air of `tamb`.
/// Reads group DUMMYGRID of `control`. Errors: those of the readers and of kpc_chkdat.
Openings mkofrac(frame::Log& log, frame::TextInput& control, const CityFiles& files,
                 const Settings& settings, const GridTables& grid, const Boundary& boundary,
                 Urban& urban);

}  // namespace flow
