// flw_cldelt: the time step.
//
// Courant's limit and that of explicit diffusion, cell by cell. It looks neither at the
// conductivity nor at what central advection needs with one Euler step. Called once a step.
#pragma once

#include <span>

#include "flow/metrics.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "flow/urban/urban.hpp"

namespace flow {

/// The next time step [s]. Implicit: the smaller dtmax. Explicit: dtsafe over the largest
/// (A + 4 (mu + mut) D)/r of all fluid cells, at most dtmax; A is the larger mass flux of an axis'
/// two faces over the width, D the open part over the square of the least of three neighbouring
/// widths, both summed over the computed axes. Without any diffusion D does not count. In a cell of
/// part volume all of it divides by the open fraction. Where leaves stand, A gains adrg times the
/// mass flux density: so the drag of one explicit step never takes more than the momentum there is.
/// Reads r level 1, ru, mu, mut. `scratch` holds three rows of cells.
double flw_cldelt(const Control& control, const Metrics& metrics, const Openings& openings,
                  const Urban& urban, const State& state, std::span<double> scratch);

}  // namespace flow
