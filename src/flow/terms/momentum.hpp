// flw_cldvdt: the momentum predictor.
//
// Brings the mass fluxes forward by everything but the pressure's correction, which the pressure
// step adds behind it. The tendencies are formed at the centres of the cells, for the velocity
// components in conservative form, and then taken to the faces; the gradient of the pressure kept
// from before and gravity act on the faces themselves. First order in time, second order in space
// (the limiter of advection apart). Called once a step.
#pragma once

#include "flow/terms/domain.hpp"
#include "flow/terms/drag.hpp"
#include "flow/terms/face_sweep.hpp"
#include "flow/terms/implicit_momentum.hpp"
#include "flow/terms/velocities.hpp"
#include "flow/terms/wall_shear.hpp"
#include "frame/log.hpp"

namespace flow {

/// Memory of the predictor, taken once.
struct Momentum {
  Velocities velocities;
  ShearCoefficients shear;
  Drag drag;
  SweepRows rows;
  std::array<Field, 3> dqdt;  ///< tendencies of the components at the centres [kg/m2 s2]
  ImplicitMomentum implicit;
};

Momentum make_momentum(frame::Log& log, const Domain& domain);

/// Reads r level 1, p, mu, mut, pt and ru with their halos; brings ru forward by dt [s], halos
/// included. Errors: those of flw_imdqdt, then "(flw_cldvdt)".
void flw_cldvdt(frame::Log& log, const Domain& domain, double dt, Momentum& work, State& state);

}  // namespace flow
