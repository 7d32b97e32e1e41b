// Monitor of a step: the largest values of the flow and where they are.
//
// Written by the driver after each step. It is also where a flow that has lost its numbers is
// found: a run must not go on with them.
#pragma once

#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"

namespace flow {

/// One pass over the fluid cells: largest speed [m/s], largest and smallest temperature [K] and,
/// with a turbulence model, the largest eddy viscosity [Pa s] with k and epsilon there. Fails when
/// a value is not finite. Reads r, t, ru, mut and ak.
void print_monitor(frame::Log& log, frame::Crew& crew, const State& state, const Flags& fluid,
                   Turbulence model);

}  // namespace flow
