// The implicit form of a scalar's step: its rows, and their solution.
#pragma once

#include "flow/scalars/advance.hpp"

namespace flow {

/// Puts the change of the variable over dt [s] in the place of the tendency of `step`. A cell
/// beside the rim is held back by what exchanges with a condition or brings its value in.
/// Errors: those of flw_imdqdt.
void solve_scalar(frame::Log& log, const Domain& domain, const State& state, double dt,
                  const ScalarStep& step, ScalarSystem& implicit);

}  // namespace flow
