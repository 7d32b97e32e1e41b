// flw_clslvp: the solution of the pressure equation, and the choice of its solver.
//
// A further solver takes a name in PressureMethod, a word for the log, and a branch in
// make_pressure_solver and flw_clslvp; nothing else knows which of them is at work. Called by the
// pressure step.
#pragma once

#include <cstdint>

#include "flow/box.hpp"
#include "flow/grid_tables.hpp"
#include "flow/linear/amgcg.hpp"
#include "flow/linear/iccg.hpp"
#include "flow/pressure/matrix.hpp"
#include "flow/settings.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"

namespace flow {

/// The solvers of the pressure equation.
enum class PressureMethod : std::int32_t { iccg = 0, amgcg = 1 };

/// The solver that `iamg` asks for: the multigrid from 1 on.
PressureMethod flw_amg_setup(std::int32_t iamg);

/// A solver, set up for one matrix.
struct PressureSolver {
  PressureMethod method = PressureMethod::iccg;
  SolveLimits limits;
  std::vector<std::size_t> fixed;  ///< places of cells whose `phi` is 0
  std::vector<PartRun> parts;      ///< the cells that they stand for
  std::vector<double> of_parts;    ///< a number for each of them
  IccgSystem iccg;
  AmgSystem amgcg;
};

/// Sets the matrix up for the method; `control` gives gsfcg, epscg and itercg. The multigrid leaves
/// the parts of the fix points free, for a constant over a part that walls shut off is what it
/// could not find on coarse grids; it shifts the solution afterwards.
PressureSolver make_pressure_solver(frame::Log& log, PressureMethod method, PressureMatrix&& matrix,
                                    const GridTables& grid, const Flags& fluid, bool periodic_y,
                                    const Control& control);

/// Solves for the right side `div` of the fluid cells and puts `phi` in its place; other cells get
/// 0, halos are left alone. One line goes to the log: "iccg " or "amgcg", count, "L2", ratio to the
/// first norm, final norm, flag of non-convergence. Errors: "### error : cg solver (flw_clslvp)",
/// "not converged", "(flw_clslvp)".
void flw_clslvp(frame::Log& log, frame::Crew& crew, PressureSolver& solver, Field& div);

}  // namespace flow
