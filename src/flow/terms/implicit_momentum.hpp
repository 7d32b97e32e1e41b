// The momentum predictor's implicit form, one direction at a time.
//
// The rate R of the fluxes, pressure gradient and gravity included, is taken to the centres; the
// change d of a cell's momentum solves (1 + dt L) d = dt R, with upwind advection and diffusion in
// L, and goes to the faces by the mean. What the two means lose of R, waves of two cells, goes
// forward by itself, held back by the diagonal of the system. A steady state has R = 0: it is that
// of the explicit form, and L only settles the road to it.
#pragma once

#include "flow/linear/imdqdt.hpp"
#include "flow/terms/domain.hpp"
#include "flow/terms/drag.hpp"
#include "flow/terms/wall_shear.hpp"
#include "frame/log.hpp"

namespace flow {

/// Memory of the implicit form; empty in an explicit run.
struct ImplicitMomentum {
  SevenPoint rows;
  BcgstbSystem system;
  Field rate;                   ///< on the faces of one axis [kg/m2 s2]
  std::array<Field, 3> change;  ///< of the fluxes [kg/m2 s]
};

ImplicitMomentum make_implicit_momentum(frame::Log& log, const Domain& domain);

/// Writes the change of ru of `axis` over dt [s] to `work.change`. Reads what advance_faces reads,
/// ru of all axes, the shear coefficients and the drag; uses up `dqdt`. First order in time and, on
/// the way to a steady state, in space. Errors: those of flw_imdqdt.
void solve_change(frame::Log& log, const Domain& domain, const Velocities& velocities,
                  const ShearCoefficients& shear, const Drag& drag, int axis, double dt,
                  std::span<double> scratch, ImplicitMomentum& work, const State& state,
                  Field& dqdt);

/// Adds the changes to ru; when all components are solved, so that none of them sees another's new
/// fluxes.
void add_changes(const ImplicitMomentum& work, State& state);

}  // namespace flow
