// The momentum predictor's implicit form, one direction at a time.
//
// The rate R of the fluxes, pressure gradient and gravity included, is taken to the centres; the
// change d of a cell's momentum solves (1 + dt L) d = dt R, with upwind advection and diffusion in
// L, and goes to the faces by the mean. A steady state has R = 0: it is that of the explicit form,
// and L only settles the road to it.
#pragma once

#include "flow/linear/imdqdt.hpp"
#include "flow/terms/domain.hpp"
#include "flow/terms/wall_shear.hpp"
#include "frame/log.hpp"

namespace flow {

/// Memory of the implicit form; empty in an explicit run.
struct ImplicitMomentum {
  SevenPoint rows;
  BcgstbSystem system;
  Field rate;  ///< on the faces of one axis [kg/m2 s2]
};

ImplicitMomentum make_implicit_momentum(frame::Log& log, const Domain& domain);

/// Turns the tendency `dqdt` of one component into the change of its momentum over dt [s], halos
/// along a periodic axis included. Reads what advance_faces reads, ru of all axes and the shear
/// coefficients. First order in time and, on the way to a steady state, in space.
/// Errors: those of flw_imdqdt.
void solve_change(frame::Log& log, const Domain& domain, const ShearCoefficients& shear, int axis,
                  double dt, std::span<double> scratch, ImplicitMomentum& work, const State& state,
                  Field& dqdt);

/// Adds the changes of the cells to ru of `axis`; when all components are solved, so that none of
/// them sees another's new fluxes.
void add_change(const Domain& domain, int axis, const Field& change, State& state);

}  // namespace flow
