// flw_iccg: the conjugate gradient with an incomplete Cholesky factor (Hestenes and Stiefel 1952,
// Meijerink and van der Vorst 1977).
//
// Used by the pressure step. An iteration goes through memory twice (iccg_passes.hpp).
#pragma once

#include "flow/linear/iccg_pre.hpp"
#include "flow/linear/solve_limits.hpp"
#include "frame/log.hpp"

namespace flow {

/// Solves the scaled system for the right side system.b from a start of 0; system.x holds the
/// solution. Whatever the vectors held before has no influence. When p A p or r z vanishes, the
/// solution starts anew from the true residual, by a step along the preconditioned one.
/// Errors, on standard output: "### interface error -n- (flw_iccg)" with n 1 for layers that do
/// not fit the vectors, 2 for rows that do not fit a layer, 3 for tolerances not above 0, 4 for
/// itmax < 1.
SolveResult flw_iccg(frame::Log& log, const SolveLimits& limits, IccgSystem& system);

}  // namespace flow
