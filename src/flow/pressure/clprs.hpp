// flw_clprs: the pressure step, which makes the predicted mass fluxes keep the mass of each cell.
//
// What the continuity equation lacks becomes the right side of an equation for `phi`, dt times the
// correction of the pressure; its gradient corrects the fluxes, and `p` takes it up. The matrix
// hangs on the grid, the openings and the kinds of the conditions alone, which do not change
// between steps: it is built and factorised once, by make_pressure_step.
//
// Called by the time step behind the momentum predictor.
#pragma once

#include "flow/boundary.hpp"
#include "flow/box.hpp"
#include "flow/grid_tables.hpp"
#include "flow/pressure/clslvp.hpp"
#include "flow/pressure/open_faces.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/function_ref.hpp"
#include "frame/log.hpp"

namespace flow {

/// What the pressure step keeps between the steps of a run. `grid`, `openings`, `boundary` and
/// `faces` belong to the run and outlive it.
struct PressureStep {
  const GridTables* grid = nullptr;
  const Openings* openings = nullptr;
  const Boundary* boundary = nullptr;
  const BoundaryFaces* faces = nullptr;
  bool closed = false;  ///< no pressure is held anywhere
  OpenFaces open;
  PressureSolver solver;
  Field div;                 ///< right side, then `phi`
  std::vector<double> rows;  ///< a number for each row of cells, in a closed domain
};

/// Builds and factorises the matrix; to be called once, when openings and faces are known. Tells
/// the fix point of a domain without held pressure on the log.
/// Errors: "### program error -1- (flw_matrix)".
PressureStep make_pressure_step(frame::Log& log, const Settings& settings, const GridTables& grid,
                                const Openings& openings, const Boundary& boundary,
                                const BoundaryFaces& faces);

/// One pressure step over `dt`, the step of the predictor [s]. Reads r, levels 1 and 2, and the
/// predicted fluxes ru, which hold the conditions of their faces; `source` is a mass source
/// [kg/m3 s], null where there is none. Writes ru and p with their halos. In a closed domain pt
/// and r are first brought to the mass that the domain keeps: `set_density` has to compute level 1
/// of r from pt, t and ys, halos included, and nothing else. One line goes to the log.
/// Errors: "### error : cg solver (flw_clslvp)", "not converged", "(flw_clslvp)".
void flw_clprs(frame::Log& log, frame::Crew& crew, PressureStep& step, double dt,
               const Field* source, frame::FunctionRef<void()> set_density, State& state);

}  // namespace flow
