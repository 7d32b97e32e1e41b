// flw_cldiv: what the continuity equation lacks, the right side of the pressure equation.
//
// The change of the density and the fluxes through the faces of each cell. Called by the pressure
// step.
#pragma once

#include "flow/box.hpp"
#include "flow/grid_tables.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// div = -(sum of the differences of fraction * flux over the cell's width + source + gmc (r level
/// 1 - r level 2)/dt) * volume [kg/s] in fluid cells, 0 in others; halos are left alone. The fluxes
/// hold the conditions of their faces. `source` [kg/m3 s], which counts as a
/// divergence and takes mass away, may be null.
void flw_cldiv(frame::Crew& crew, const GridTables& grid, const Openings& openings,
               const State& state, double dt, const Field* source, Field& div);

}  // namespace flow
