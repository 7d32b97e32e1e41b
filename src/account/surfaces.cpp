// The surfaces' balance, from the temperatures and the radiation that a step has left.
#include <algorithm>
#include <cmath>

#include "account/patches.hpp"
#include "inputs/moist_air.hpp"

namespace tsrf_module_account {

namespace {

using moist_air::kStefanBoltzmann;

/// What a step has left on all patches.
struct Fields {
  const double* area;
  const std::int32_t* row;  ///< of the surface properties
  const tsrf_module_srfprp::Data& properties;
  const Radiation& radiation;
  const tsrf_module_data::Data& state;
  const Data& data;
};

double fourth_power(double T) { return (T * T) * (T * T); }

/// Latent heat that the surface gains by dew, per area [W/m2].
double latent_heat(const tsrf_module_data::Data& state, std::size_t p, double T, double beta) {
  const double wetness = beta * moist_air::kLatentHeat * state.hm[p];
  if (wetness == 0.0) return 0.0;
  const double ratio = moist_air::satvap(T).es / state.airst(p, 0);
  return wetness * (state.airst(p, 2) - moist_air::humidity_of(ratio));
}

Flows add_balanced(const Fields& f, const Lot& lot) {
  const double* const Rs = f.radiation.Rs.data();
  const double* const Rl = f.radiation.Rl.data();
  const double* const Jdir = f.radiation.Jdir.data();
  const double* const T0 = f.state.tlyr.row(0).data();
  const double* const T1 = f.state.tlyr.row(1).data();
  const double* const air = f.state.airst.row(1).data();
  const double* const gcond = f.state.gcond.row(0).data();
  double beam = 0.0, light = 0.0, longwave = 0.0, absorbed_light = 0.0, absorbed_long = 0.0;
  double emission = 0.0, source = 0.0, convection = 0.0, latent = 0.0, conduction = 0.0;
  double implicit = 0.0;
  for (std::size_t n = lot.first; n < lot.last; ++n) {
    const std::size_t p = f.data.order[n];
    const auto row = static_cast<std::size_t>(f.row[p]);
    const double A = f.area[p];
    const double T = T0[p];
    const double first = f.data.T1[p];
    const double ems = A * f.properties.ems[row];
    const double incident = A * Rs[p];
    beam += A * Jdir[p];
    light += incident;
    absorbed_light += incident - f.properties.alb[row] * incident;
    longwave += A * Rl[p];
    absorbed_long += ems * Rl[p];
    emission += ems * kStefanBoltzmann * fourth_power(T);
    source += ems * kStefanBoltzmann * fourth_power(f.data.T0[p]);
    convection += A * f.state.hc[p] * (air[p] - T);
    latent += A * latent_heat(f.state, p, T, f.properties.beta[row]);
    conduction += A * gcond[p] * (first - T);
    implicit += A * gcond[p] * (T1[p] - first);
  }
  Flows flows{};
  flows[kBeam] = beam;
  flows[kLight] = light;
  flows[kLongwave] = longwave;
  flows[kAbsorbedLight] = absorbed_light;
  flows[kAbsorbedLongwave] = absorbed_long;
  flows[kEmission] = emission;
  flows[kSource] = source;
  flows[kConvection] = convection;
  flows[kLatent] = latent;
  flows[kConduction] = conduction;
  flows[kImplicit] = lot.implicit ? implicit : 0.0;
  return flows;
}

/// Patches without a balance; those of leaves give the exchange what the canopy left.
Flows add_held(const Fields& f, const Lot& lot) {
  Flows flows{};
  for (std::size_t n = lot.first; n < lot.last; ++n) {
    const std::size_t p = f.data.order[n];
    const auto row = static_cast<std::size_t>(f.row[p]);
    const double A = f.area[p];
    const double ems = A * f.properties.ems[row];
    const double light = A * f.radiation.Rs[p];
    if (lot.role == Role::held) {
      flows[kBeam] += A * f.radiation.Jdir[p];
      flows[kSource] += ems * kStefanBoltzmann * fourth_power(f.data.T0[p]);
    }
    flows[kLight] += light;
    flows[kAbsorbedLight] += light - f.properties.alb[row] * light;
    flows[kLongwave] += A * f.radiation.Rl[p];
    flows[kAbsorbedLongwave] += ems * f.radiation.Rl[p];
  }
  return flows;
}

}  // namespace

void note_patches(frame::Crew& crew, const tsrf_module_data::Data& state, Data& data) {
  crew.share(data.T0.size(), kBlock, [&](frame::Crew::Stretch part) {
    const auto copy = [&](std::int32_t row, std::span<double> to) {
      const auto from = state.tlyr.row(row).subspan(part.first, part.last - part.first);
      std::ranges::copy(from, to.begin() + static_cast<std::ptrdiff_t>(part.first));
    };
    copy(0, data.T0);
    copy(1, data.T1);
    if (data.open) return;
    for (std::int32_t k = 0; k <= state.mzg; ++k) copy(k, data.start.row(k));
  });
  for (Backed& backed : data.backed) backed.before = state.tlyr(backed.patch, backed.last);
}

void add_surfaces(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                  const tsrf_module_srfprp::Data& srfprp, const tsrf_module_data::Data& state,
                  const Radiation& radiation, double dt, Data& data) {
  const Fields fields{patch.area.data(), state.isrf.data(), srfprp, radiation, state, data};
  crew.each(data.blocks.size(), 1, [&](std::size_t b) {
    Block& block = data.blocks[b];
    for (std::size_t n = block.first_lot; n < block.last_lot; ++n) {
      const Lot& lot = data.lots[n];
      const Flows own =
          lot.role == Role::balanced ? add_balanced(fields, lot) : add_held(fields, lot);
      Flows& sums = block.flows[lot.kind];
      for (std::size_t f = 0; f < kFlows; ++f) sums[f] += own[f] * dt;
    }
  });
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    data.flows[kind][kSkyLight] += data.sky[kind] * radiation.sky.scattered * dt;
    data.flows[kind][kSkyLongwave] += data.sky[kind] * radiation.sky.longwave * dt;
  }
}

}  // namespace tsrf_module_account
