// The thermodynamic pressure of a domain without held pressure: it follows the mass of the air.
//
// Air that is heated in a closed domain cannot leave: its pressure rises instead. Called by the
// pressure step, before it forms the right side.
#pragma once

#include <span>

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"
#include "frame/function_ref.hpp"

namespace flow {

/// Mass of the air in the open volume of the fluid cells by a level of the density [kg]. `rows`
/// holds a number for each row of cells.
double air_mass(frame::Crew& crew, const GridTables& grid, const Openings& openings, const Field& r,
                std::span<double> rows);

/// Brings pt and the density to the mass that the domain keeps: pt takes the ratio of the reference
/// to the present mass, then `set_density` computes level 1 of r from it. The reference is the mass
/// of level 2 at the first call and follows what enters through faces with a given flux, and the
/// `source` of flw_cldiv, over `dt`. Writes pt, reference_mass and, by set_density, r.
void keep_mass(frame::Crew& crew, const GridTables& grid, const Openings& openings,
               const BoundaryFaces& faces, double dt, const Field* source,
               frame::FunctionRef<void()> set_density, std::span<double> rows, State& state);

}  // namespace flow
