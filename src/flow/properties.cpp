#include "flow/properties.hpp"

#include <algorithm>
#include <cmath>

#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

constexpr std::size_t kBlock = 128;  ///< cells that share a sum over the species

FLOW_INLINE double polynomial(const std::array<double, 5>& a, double T) {
  return a[0] + T * (a[1] + T * (a[2] + T * (a[3] + T * a[4])));
}

/// cp += y times that of a species; so the moles.
FLOW_CLONES void add_species(std::size_t count, const std::array<double, 5>& a, double wm,
                             const double* y, const double* t, double* cp, double* moles) {
  for (std::size_t i = 0; i < count; ++i) {
    cp[i] += y[i] * polynomial(a, t[i]);
    moles[i] += y[i] / wm;
  }
}

FLOW_INLINE double of_species(double mu, double sclmnr, double moles, double y, double wm) {
  const double others = moles - y / wm;
  return mu / sclmnr * moles * (1.0 - y) / (others < 1e-20 ? 1e-20 : others);
}

FLOW_CLONES void set_diffusivity(std::size_t count, double sclmnr, double wm, const double* mu,
                                 const double* y, const double* moles, double* dif) {
  for (std::size_t i = 0; i < count; ++i) dif[i] = of_species(mu[i], sclmnr, moles[i], y[i], wm);
}

void set_transport(const Species& species, std::size_t place, std::size_t count, State& state) {
  double moles[kBlock] = {};
  std::fill_n(state.cp.data() + place, count, 0.0);
  for (std::size_t s = 0; s < state.ys.size(); ++s) {
    add_species(count, species.acpk[s], species.wm[s], state.ys[s].data() + place,
                state.t.data() + place, state.cp.data() + place, moles);
  }
  if (state.dif.empty()) return;
  set_diffusivity(count, species.sclmnr, species.wm[1], state.mu.data() + place,
                  state.ys[1].data() + place, moles, state.dif.data() + place);
}

/// One gas whose specific heat does not change with its temperature, and has been set before.
bool heat_stands(const Species& species, const State& state) {
  if (state.ys.size() != 1) return false;
  const auto& a = species.acpk[0];
  return std::all_of(a.begin() + 1, a.end(), [](double factor) { return factor == 0.0; }) &&
         state.cp(1, 1, 1) == state.ys[0](1, 1, 1) * a[0];
}

}  // namespace

double viscosity(const Species& species, double T) {
  if (!species.sutherland) return species.mu;
  const double ratio = T / species.T;
  return species.mu * (species.T + species.C) / (T + species.C) * (ratio * std::sqrt(ratio));
}

double specific_heat(const Species& species, std::size_t s, double T) {
  return polynomial(species.acpk[s], T);
}

double diffusivity(const Species& species, std::size_t s, double y, double moles, double mu) {
  return of_species(mu, species.sclmnr, moles, y, species.wm[s]);
}

void flw_clprop(frame::Crew& crew, const Species& species, State& state) {
  // A constant stands from the first call on.
  const bool stands = !species.sutherland && state.mu(1, 1, 1) == species.mu;
  const bool sets_heat = !state.cp.empty() && !heat_stands(species, state);
  if (stands && !sets_heat) return;
  share_wide_rows(crew, state.t.box(), [&](std::size_t place, std::size_t count, auto, auto) {
    if (!species.sutherland && !stands) {
      std::fill_n(state.mu.data() + place, count, species.mu);
    }
    if (species.sutherland) {
      for (std::size_t c = place; c < place + count; ++c) {
        state.mu[c] = viscosity(species, state.t[c]);
      }
    }
    if (!sets_heat) return;
    for (std::size_t i = 0; i < count; i += kBlock) {
      set_transport(species, place + i, std::min(kBlock, count - i), state);
    }
  });
}

}  // namespace flow
