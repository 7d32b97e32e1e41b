// flw_cldelt: the time step.
//
// Courant's limit and that of explicit diffusion, cell by cell. It looks neither at the
// conductivity nor at what central advection needs with one Euler step. Called once a step.
#pragma once

#include <span>

#include "flow/metrics.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// The next time step [s]. Implicit: the smaller dtmax. Explicit: dtsafe over the largest
/// (A + 4 (mu + mut) D)/r of all fluid cells, at most dtmax; A is the larger mass flux of an axis'
/// two faces over the width, D the open part over the square of the least of three neighbouring
/// widths, both summed over the computed axes. Without any diffusion D does not count. Reads r
/// level 1, ru, mu, mut. `scratch` holds three rows of cells for
/// each hand.
double flw_cldelt(frame::Crew& crew, const Control& control, const Metrics& metrics,
                  const Openings& openings, const State& state, std::span<double> scratch);

}  // namespace flow
