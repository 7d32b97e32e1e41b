#include "flow/properties.hpp"

#include <algorithm>
#include <cmath>

namespace flow {

namespace {

void set_transport(const Species& species, std::size_t c, State& state) {
  double cp = 0.0;
  double moles = 0.0;
  for (std::size_t s = 0; s < state.ys.size(); ++s) {
    cp += state.ys[s][c] * specific_heat(species, s, state.t[c]);
    moles += state.ys[s][c] / species.wm[s];
  }
  state.conductivity[c] = state.mu[c] * cp / species.prlmnr;
  for (std::size_t s = 0; s < state.dif.size(); ++s) {
    state.dif[s][c] = diffusivity(species, s, state.ys[s][c], moles, state.mu[c]);
  }
}

}  // namespace

double viscosity(const Species& species, double T) {
  if (!species.sutherland) return species.mu;
  const double ratio = T / species.T;
  return species.mu * (species.T + species.C) / (T + species.C) * (ratio * std::sqrt(ratio));
}

double specific_heat(const Species& species, std::size_t s, double T) {
  const auto& a = species.acpk[s];
  return a[0] + T * (a[1] + T * (a[2] + T * (a[3] + T * a[4])));
}

double diffusivity(const Species& species, std::size_t s, double y, double moles, double mu) {
  const double others = std::max(1e-20, moles - y / species.wm[s]);
  return mu / species.sclmnr * moles * (1.0 - y) / others;
}

void flw_clprop(const Species& species, State& state) {
  for_wide_rows(state.t.box(), [&](std::size_t place, std::size_t count, auto, auto) {
    if (!species.sutherland) {
      std::fill_n(state.mu.data() + place, count, species.mu);
    } else {
      for (std::size_t c = place; c < place + count; ++c) {
        state.mu[c] = viscosity(species, state.t[c]);
      }
    }
    if (state.conductivity.empty()) return;
    for (std::size_t c = place; c < place + count; ++c) set_transport(species, c, state);
  });
}

}  // namespace flow
