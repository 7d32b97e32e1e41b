// One step of the flow: what stands between two outputs.
//
// The driver calls prepare once, when grid, boundary, openings and the first p, t, ys, ru and pt
// are there, and advance once a step; it writes nothing of its own into the fields in between.
#pragma once

#include "flow/run.hpp"
#include "flow/terms/domain.hpp"
#include "frame/accounts.hpp"
#include "frame/log.hpp"

namespace flow {

/// What the terms of the equations receive of the run.
Domain domain_of(Run& run);

/// Lists and work arrays of the step; halos, the first density and the first properties. The run
/// must stay where it is from here on. Errors: those of make_pressure_step.
void prepare(frame::Log& log, Run& run);

/// Puts the normal mass fluxes of walls, inlets, symmetric ends and closed faces on their
/// conditions. Called for a uniform start, behind prepare.
void put_normal_fluxes(Run& run);

/// One step, from the density to the non-fluid cells: `time` and `iter` move on by one, and the
/// step's line is written. Fails when a solver does not converge.
void advance(frame::Log& log, frame::Accounts& accounts, Run& run);

}  // namespace flow
