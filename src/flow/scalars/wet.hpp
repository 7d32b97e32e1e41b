// ubx_clwet: heat and vapour that the rim of the air gives, dry walls, wet surfaces and inlets.
//
// A wall of a given value exchanges with the air over the half cell, by molecular diffusion or by
// the law of the wall; a heat flux goes into the cell as it is. Where air leaves or is free
// nothing diffuses, and what it carries in belongs to advection. Called by the step of temperature
// and species.
#pragma once

#include "flow/scalars/advance.hpp"
#include "flow/scalars/wall_law.hpp"

namespace flow {

/// Exchange of each face of the rim by the difference of values, times its area over the face's
/// [kg/m2 s].
struct Wet {
  RimFactors fwtt;  ///< heat, over the specific heat
  RimFactors fwty;  ///< of the second species
  WallLaw heat, vapour;
  RimFactors friction;  ///< friction velocities where a law of the wall is taken [m/s]
};
Wet make_wet(const Domain& domain);

/// Solves the law of the wall, for both of the following. Reads ru, r level 1, mu.
void set_frictions(const Domain& domain, const State& state, Wet& wet);

/// Behind set_frictions: writes `fwtt` and adds what walls give to the rate of `heat`'s step [kg
/// K/m3 s]. Without diffusion (`idift`) only fluxes count. Reads ru, r level 1, mu, cp. First order
/// in the half cell, which leaves the temperature of second order.
void add_wall_heat(const Domain& domain, const State& state, const ScalarStep& heat, Wet& wet);

/// The same for the second species [kg/m3 s]; reads ru, r level 1, mu, dif, ys.
void add_wall_vapour(const Domain& domain, const State& state, Wet& wet, Field& dqdt);

}  // namespace flow
