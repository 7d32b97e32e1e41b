// flw_clmodv: corrects fluxes and pressure by the solution of the pressure equation.
//
// Called by the pressure step. With a converged `phi` the corrected fluxes keep the mass of each
// cell to the tolerance of the solution.
#pragma once

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/pressure/open_faces.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// ru -= the gradient of `phi` on open faces; at a face with a held pressure `phi` is 0, over half
/// the cell's width. p += phi/dt. Closed faces and those with a given flux keep it. `phi` is 0 in
/// cells that are not fluid. Writes ru and p with their halos. Second order in space on a uniform
/// grid.
///
/// The temperature takes no part: it is one in all fields, also where its step works with the
/// potential temperature, so that nothing is converted around the correction.
///
/// The continuity equation counts a flux by the open fraction of its face, so the gradient is not
/// taken by that fraction once more: it would leave a part of the divergence in partly open cells.
void flw_clmodv(frame::Crew& crew, const GridTables& grid, const Openings& openings,
                const Boundary& boundary, const BoundaryFaces& faces, const OpenFaces& open,
                const Field& phi, double dt, State& state);

}  // namespace flow
