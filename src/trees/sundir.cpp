#include "trees/sundir.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "trees/beam_sweep.hpp"

namespace jmk {

namespace {

using jmk_module_radiat::kSolarBands;
using jmk_module_radiat::Optics;
using tsrf_module_jumoku::Beam;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::SolarPair;
using tsrf_module_phydat::SunVector;

constexpr double kNoFlux = 1e-20;

/// Nothing passes: the state without sun.
void clear(Beam& beam) {
  std::fill(beam.outer.begin(), beam.outer.end(), SolarPair{});
  std::fill(beam.lost.begin(), beam.lost.end(), SolarPair{});
  std::fill(beam.tree_Jdir.begin(), beam.tree_Jdir.end(), 0.0);
  std::fill(beam.left.begin(), beam.left.end(), 1.0);
}

/// The sunlit fractions of the tree patches, on the faces that they cover.
void take_fsun(std::span<const double> fsun, Data& data) {
  for (const tsrf_module_jumoku::TreePatch& tree : data.trees) {
    const auto& outer = data.outer[static_cast<std::size_t>(tree.outer)];
    data.beam.fsun[outer.entry()] = fsun[static_cast<std::size_t>(tree.patch)];
  }
}

/// Direct flux through the tree patches, per area.
void set_tree_Jdir(const SunVector& sun, double Jdn, const Optics& optics,
                   const tsrf_module_patch::Data& patch, Data& data) {
  const std::array<double, 3> s{std::fabs(sun.x), std::fabs(sun.y), std::fabs(sun.z)};
  for (std::size_t t = 0; t < data.trees.size(); ++t) {
    const auto& outer = data.outer[static_cast<std::size_t>(data.trees[t].outer)];
    const SolarPair& f = data.beam.outer[static_cast<std::size_t>(data.trees[t].outer)];
    // The free beam's flux through the face; one that the beam only grazes takes no part.
    const double weight =
        outer.area * s[tsrf_module_jumoku::axis_of(static_cast<std::size_t>(outer.face))];
    double through = 0.0;
    for (std::size_t b = 0; b < kSolarBands; ++b) through += optics[b].direct * f[b];
    data.beam.tree_Jdir[t] =
        weight < kNoFlux
            ? 0.0
            : through * weight * Jdn / patch.area[static_cast<std::size_t>(data.trees[t].patch)];
  }
}

/// The beam is swept when the run time is a multiple of this [s]; 0: always.
double time_between_sweeps(double dt, std::int32_t NSKIP_SUNDIR) {
  return std::round(dt) * NSKIP_SUNDIR;
}

bool sweeps_now(double second, double dt, const Data& data) {
  const double every = time_between_sweeps(dt, data.settings.NSKIP_SUNDIR);
  return !data.beam.swept || every <= 0.0 || std::fmod(second, every) == 0.0;
}

}  // namespace

void tsrf_sundir(frame::Log& log, frame::Crew& crew, double dt, double second, const SunVector& sun,
                 const tsrf_module_phydat::SkyFluxes& sky, const tsrf_module_patch::Data& patch,
                 std::span<const double> fsun, const jmk_module_data::Data& cells,
                 const jmk_module_radiat::Data& radiat, Data& data, std::span<double> Jdir) {
  if (!cells.CALJMK) return;
  const frame::Tag tag(log, "(tsrf_sundir)");
  if (sun.z < kNoFlux || !(sky.direct >= kNoFlux)) {
    clear(data.beam);
  } else if (sweeps_now(second, dt, data)) {
    check02(log, patch, data);
    take_fsun(fsun, data);
    sweep_beam(crew, sun, sky.direct, radiat.optics, data);
    set_tree_Jdir(sun, sky.direct, radiat.optics, patch, data);
    data.beam.swept = true;
  }
  for (std::size_t p = 0; p < Jdir.size(); ++p) Jdir[p] *= data.beam.left[p];
  for (std::size_t t = 0; t < data.trees.size(); ++t) {
    Jdir[static_cast<std::size_t>(data.trees[t].patch)] = data.beam.tree_Jdir[t];
  }
}

void warn_of_step(frame::Log& log, double dt, const tsrf_module_jumoku::Settings& settings) {
  const double every = time_between_sweeps(dt, settings.NSKIP_SUNDIR);
  if (dt == std::round(dt) || every <= 0.0) return;
  log.line("%%% warning : dtmax =", dt,
           "s; the beam is swept through the canopy only at times that are a multiple of", every,
           "s");
}

}  // namespace jmk
