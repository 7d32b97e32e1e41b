// The columns behind the patches: from layer structures to the cells that conduction works on.
//
// Called once at the start, in the order below, when patches, properties and structures are known.
#pragma once

#include "frame/log.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_main01 {

/// Fills `lcal`, `isrf`, `nlyr`, the cells (`dzl`, `capa`, `cond`, `extc`) and the film
/// coefficients `hc`, `hm` of all patches. Only a patch with a structure is computed; cells beyond
/// a column's end are marked as outside by a huge thickness without conductivity. A SurfCD that
/// SurfProp does not define is a data error.
void tsrf_set_gdata(frame::Log& log, const tsrf_module_patch::Data& patch,
                    const tsrf_module_srfprp::Data& srfprp,
                    const tsrf_module_lyrstrct::Data& lyrstrct, tsrf_module_data::Data& data);

/// Conductances between neighbouring nodes, each two half cells in series; the last one is a half
/// cell and the inner film `hin`, so that without a film the column is closed.
void set_conductances(tsrf_module_data::Data& data);

/// The largest time step [s] that is stable for all columns when they are advanced explicitly;
/// 1e20 when nothing conducts.
[[nodiscard]] double smallest_explicit_step(const tsrf_module_data::Data& data);
/// Tells it on the log. For information: each column chooses its own way in a step.
void report_smallest_step(frame::Log& log, const tsrf_module_data::Data& data);

/// `uval`: transmission from air to air [W/m2 K], 0 when something in the way does not conduct,
/// and heat capacity per area [J/m2 K].
void set_transmission(tsrf_module_data::Data& data);

}  // namespace tsrf_main01
