// flw_bcgstb: Bi-CGSTAB with a diagonal incomplete factor (van der Vorst 1992).
//
// Used by flw_imdqdt. An iteration goes through memory five times (bcgstb_passes.hpp).
#pragma once

#include "flow/linear/bcgstb_pre.hpp"
#include "flow/linear/solve_limits.hpp"
#include "frame/log.hpp"

namespace flow {

/// Solves the scaled system for the right side system.b from a start of 0; system.x holds the
/// solution. Whatever the vectors held before has no influence. When r~ r, r~ v, t t or omega
/// vanishes, the solution starts anew from the true residual, which counts as an iteration; if no
/// step had been taken since the last start, a step along the preconditioned residual comes first.
/// Errors, on standard output: "### interface error -n- (flw_bcgstb)", n as in flw_iccg.
SolveResult flw_bcgstb(frame::Log& log, const SolveLimits& limits, BcgstbSystem& system);

}  // namespace flow
