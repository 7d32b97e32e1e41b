#include "driver/tree_incident.hpp"

#include <algorithm>

#include "inputs/moist_air.hpp"
#include "trees/jumoku.hpp"

namespace rad_admin {

namespace {

/// Rows of tsrf_module_data::Data::airst and treeax.
enum AirRow : std::int32_t { kPressure, kTemperature, kHumidity, kWind };
enum TreeRow : std::int32_t { kLeafArea, kHeight, kLeafTemperature };

jmk::Air air_over(const tsrf_module_data::Data& state, std::size_t p) {
  return {.p = state.airst(p, kPressure),
          .T = state.airst(p, kTemperature),
          .q = state.airst(p, kHumidity),
          .U = state.airst(p, kWind)};
}

}  // namespace

void tree_incident(frame::Log& log, const SunVector& sun, const SkyFluxes& sky,
                   const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                   const Trees& trees, const Fields& fields, tsrf_module_data::Data& state,
                   std::span<double> Rl, std::span<double> Rs) {
  for (std::size_t p = 0; p < Rl.size(); ++p) {
    if (state.treemk[p] <= 0) continue;
    const auto row = static_cast<std::size_t>(state.isrf[p]);
    const double T = state.tlyr(p, 0);
    const double cosine = cosine_to(sun, patch, p);
    const jmk::Ground ground{
        .cosi = cosine,
        .emission = moist_air::kStefanBoltzmann * ((T * T) * (T * T)) * srfprp.ems[row],
        .emissivity = srfprp.ems[row],
        .albedo = srfprp.alb[row]};
    const SkyFluxes above{.direct = fields.fsun[p] * sky.direct,
                          .scattered = sky.scattered * fields.skyvf[p],
                          .longwave = sky.longwave * fields.skyvf[p]};
    jmk::SimpleTree tree{.LAD = state.treeax(p, kLeafArea),
                         .H = state.treeax(p, kHeight),
                         .T = state.treeax(p, kLeafTemperature)};
    const SkyFluxes beneath =
        jmk::jumoku(log, trees.htrans, trees.radiat, sun, ground, air_over(state, p), above, tree);
    state.treeax(p, kLeafTemperature) = tree.T;
    Rs[p] = beneath.direct * cosine + beneath.scattered;
    Rl[p] = beneath.longwave;
  }
}

}  // namespace rad_admin
