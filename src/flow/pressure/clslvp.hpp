// flw_clslvp: the solution of the pressure equation, and the choice of its solver.
//
// A further solver takes a name in PressureMethod, a word for the log, and a branch in
// make_pressure_solver and flw_clslvp; nothing else knows which of them is at work. Called by the
// pressure step.
#pragma once

#include <cstdint>

#include "flow/box.hpp"
#include "flow/linear/iccg.hpp"
#include "flow/pressure/matrix.hpp"
#include "flow/settings.hpp"
#include "frame/log.hpp"

namespace flow {

/// The solvers of the pressure equation.
enum class PressureMethod : std::int32_t { iccg = 0 };

/// The solver that `iamg` asks for; to be called when the record that names it has been read.
/// Errors: "### error : amg solver not available" for iamg >= 1.
PressureMethod flw_amg_setup(frame::Log& log, std::int32_t iamg);

/// A solver, set up for one matrix.
struct PressureSolver {
  PressureMethod method = PressureMethod::iccg;
  SolveLimits limits;
  std::vector<std::size_t> fixed;  ///< places of cells whose `phi` is 0
  IccgSystem iccg;
};

/// Factorises the matrix for the method; `control` gives gsfcg, epscg and itercg.
PressureSolver make_pressure_solver(frame::Log& log, PressureMethod method,
                                    const PressureMatrix& matrix, const Flags& fluid,
                                    bool periodic_y, const Control& control);

/// Solves for the right side `div` of the fluid cells and puts `phi` in its place; other cells get
/// 0, halos are left alone. One line goes to the log: "iccg ", count, "L2", ratio to the first
/// norm, final norm, flag of non-convergence.
/// Errors: "### error : cg solver (flw_clslvp)", "not converged", "(flw_clslvp)".
void flw_clslvp(frame::Log& log, PressureSolver& solver, Field& div);

}  // namespace flow
