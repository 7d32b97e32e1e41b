// ubx_clwet: heat and vapour that the rim of the air gives, dry walls, wet surfaces and inlets.
//
// A wall of a given value exchanges with the air over the half cell, by molecular diffusion or by
// the law of the wall; a heat flux goes into the cell as it is. Where air leaves or is free
// nothing diffuses, and what it carries in belongs to advection. Called by the step of temperature
// and species.
#pragma once

#include "flow/scalars/wall_law.hpp"
#include "flow/terms/advection.hpp"
#include "flow/terms/domain.hpp"

namespace flow {

/// Exchange of each face of the rim by the difference of values, times its area over the face's
/// [kg/m2 s].
struct Wet {
  RimFactors fwtt;               ///< heat, over the specific heat
  std::vector<RimFactors> fwty;  ///< species, but the first
  WallLaw heat, vapour;
};
Wet make_wet(const Domain& domain);

/// Writes `fwtt` and adds what walls give to the rate of the temperature q [kg K/m3 s]; `given` are
/// the factors on given temperatures, `factor` that from q to a temperature (null: 1). Without
/// diffusion (`idift`) only fluxes count. Reads ru, r level 1, mu, cp. First order in the half
/// cell, which leaves q of second order.
void add_wall_heat(const Domain& domain, const State& state, const Field& q,
                   const RimFactors* given, const Field* factor, Wet& wet, Field& dqdt);

/// The same for species s > 0 [kg/m3 s]; reads ru, r level 1, mu, dif, ys.
void add_wall_vapour(const Domain& domain, const State& state, std::size_t s, Wet& wet,
                     Field& dqdt);

}  // namespace flow
