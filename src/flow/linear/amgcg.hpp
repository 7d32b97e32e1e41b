// flw_amgcg: the conjugate gradient with a multigrid cycle in the place of a factor.
//
// The cycle is symmetric: it smooths by colours before the coarse correction (red, black, red,
// black) and in the opposite order behind it, and what takes a residual to the coarse grid is the
// transpose of what takes the correction back. The two sums of an iteration are taken together, as
// the product with the matrix is formed of the cycle's result and not of the direction
// (Chronopoulos and Gear 1989): so an iteration goes through the finest level twice.
//
// The result does not hang on the order of work within a layer: sums are those of the rows, added
// in their order to those of the layers. So the hands of a crew share a layer's rows, and any
// number of them gives the same bits. Used by the pressure step.
#pragma once

#include "flow/linear/amgcg_pre.hpp"
#include "flow/linear/solve_limits.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"

namespace flow {

/// Solves for the right side system.exact.b from a start of 0; system.exact.x holds the solution.
/// Whatever the vectors held before has no influence. The norm is that of flw_iccg, of the residual
/// scaled by the roots of the diagonal, and the iterations are counted as there. Where the matrix
/// is singular the right side has to sum to 0 over each part that nothing holds; the solution is
/// one of many. When a sum vanishes, the solution starts anew from the true residual. Errors, on
/// standard output: "### interface error -n- (flw_amgcg)" with n 1 for vectors of other sizes, 2
/// for the largest residual as the norm, 3 for tolerances not above 0, 4 for itmax < 1.
SolveResult flw_amgcg(frame::Log& log, frame::Crew& crew, const SolveLimits& limits,
                      AmgSystem& system);

/// z of the finest level becomes the cycle's result for its right side r: what the matrix' inverse
/// is replaced by.
void apply_cycle(frame::Crew& crew, AmgSystem& system);

}  // namespace flow
