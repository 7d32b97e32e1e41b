// flw_imdqdt: the implicit step of one variable, a general matrix of seven diagonals.
//
// Called by the momentum and scalar steps when they are implicit: they assemble the rows, this
// solves them by Bi-CGSTAB and tells so in one line of the log.
#pragma once

#include <cstdint>

#include "flow/box.hpp"
#include "flow/linear/bcgstb.hpp"
#include "frame/log.hpp"

namespace flow {

/// Limits of the solution: `itrbcg` and `epsbcg` of the control data.
struct ImplicitLimits {
  std::int32_t itmax = 1;
  double epsrel = 0.0;
};

/// Takes the memory that flw_imdqdt works in, once for a run and all its variables.
BcgstbSystem make_implicit_work(frame::Log& log, const Flags& fluid, bool periodic_y);

/// Solves `rows` for the fluid cells. `q` holds the right side on entry and the solution on
/// return; cells that are not fluid get 0, halos are left alone. `work` was made by
/// make_implicit_work for the same box. One line goes to the log: "bcgstb", count, "L2", ratio to
/// the first norm, final norm, flag of non-convergence.
/// Errors: "### error : bcgstb (flw_imdqdt)", "not converged", "(flw_imdqdt)".
void flw_imdqdt(frame::Log& log, const SevenPoint& rows, const ImplicitLimits& limits,
                BcgstbSystem& work, Field& q);

}  // namespace flow
