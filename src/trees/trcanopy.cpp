#include "trees/trcanopy.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "trees/difrad.hpp"

namespace jmk {

namespace {

using jmk_module_radiat::kLongWave;
using jmk_module_radiat::kSolarBands;
using jmk_module_radiat::kVisible;
using tsrf_module_jumoku::BandFluxes;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::kFaces;
using tsrf_module_jumoku::OuterFace;

/// How much of the sky a face without tree patches sees, by its direction alone.
constexpr std::array<double, kFaces> kSkySeen{0.5, 0.5, 0.5, 0.5, 0.0, 1.0};

/// Leaf cells or faces of a stretch for one hand: some 20 microseconds.
constexpr std::size_t kCells = 4096;

constexpr double kLeastGuess = 1e-6;  // all that came into the canopy and started in it [W]

/// Flux density that enters by an outer face: `R` by patch, or `sky` where no patch stands.
double incident(const OuterFace& outer, const Data& data, const tsrf_module_patch::Data& patch,
                std::span<const double> R, double sky) {
  const auto patch_of = [&](std::int32_t tree) {
    return static_cast<std::size_t>(data.trees[static_cast<std::size_t>(tree)].patch);
  };
  if (outer.tree >= 0) return R[patch_of(outer.tree)];
  if (outer.group < 0) return kSkySeen[static_cast<std::size_t>(outer.face)] * sky;
  const auto& group = data.groups[static_cast<std::size_t>(outer.group)];
  double power = 0.0;
  for (std::int32_t n = group.first; n < group.last; ++n) {
    const std::size_t p = patch_of(data.group_trees[static_cast<std::size_t>(n)]);
    power += R[p] * patch.area[p];
  }
  return power / group.area;
}

/// storeflux: what comes into the canopy from outside in one band, the share `part` of R and sky.
void storeflux(frame::Crew& crew, const tsrf_module_patch::Data& patch, std::span<const double> R,
               double sky, double part, const Data& data, BandFluxes& band) {
  crew.each(data.outer.size(), kCells, [&](std::size_t o) {
    const OuterFace& outer = data.outer[o];
    band.outside[o] = part * incident(outer, data, patch, R, sky) * outer.area;
  });
}

/// Scales the light of the last step to the light of this one, as a first guess: at dusk the
/// iteration would else chase its own past down to the tolerance. What a night has left of the
/// light is no guess: it lies below the tolerance, and the day's first light many powers above.
void scale_guess(frame::Crew& crew, BandFluxes& band) {
  const double total = std::accumulate(band.source.begin(), band.source.end(), 0.0) +
                       std::accumulate(band.outside.begin(), band.outside.end(), 0.0);
  const double factor = total / band.total;
  if (band.total > kLeastGuess && std::isfinite(factor)) {
    crew.each(band.entering.size(), kCells, [&](std::size_t n) { band.entering[n] *= factor; });
  } else {
    std::fill(band.entering.begin(), band.entering.end(), 0.0);
  }
  band.total = total;
}

/// Scattered light of the solar bands: what the leaves take of it and of the beam.
void exchange_shortwave(frame::Log& log, frame::Crew& crew,
                        const tsrf_module_phydat::SkyFluxes& sky,
                        const tsrf_module_patch::Data& patch, const jmk_module_radiat::Data& radiat,
                        std::span<const double> Rs, Data& data) {
  tsrf_module_jumoku::Leaves& leaves = data.leaves;
  std::fill(leaves.Sabs.begin(), leaves.Sabs.end(), 0.0);
  const jmk_module_radiat::Settings& s = radiat.settings;
  for (std::size_t b = 0; b < kSolarBands; ++b) {
    BandFluxes& band = data.bands[b];
    const double scatter = radiat.optics[b].scatter();
    crew.each(leaves.count(), kCells, [&](std::size_t n) {
      band.source[static_cast<std::size_t>(leaves.cell[n])] = scatter * data.beam.lost[n][b];
    });
    storeflux(crew, patch, Rs, sky.scattered, radiat.optics[b].scattered, data, band);
    scale_guess(crew, band);
    jmk_difrad_flux(log, crew, data, s.LOPRAD, {s.AEPSRD, s.REPSRD}, band);
    crew.each(leaves.count(), kCells, [&](std::size_t n) {
      const auto c = static_cast<std::size_t>(leaves.cell[n]);
      const double absorbed = (1.0 - scatter) * data.beam.lost[n][b] + kept(data, band, c);
      leaves.Sabs[n] += absorbed;
      if (b == kVisible) leaves.PAR[n] = absorbed / (leaves.lad[n] * leaves.volume[n]);
    });
  }
}

/// setflux: what leaves the canopy in one band by the outer face of a tree patch, per area.
double setflux(const Data& data, const BandFluxes& band,
               const tsrf_module_jumoku::TreePatch& tree) {
  const auto outer = static_cast<std::size_t>(tree.outer);
  return band.entering[data.cells.count() * kFaces + outer] / data.outer[outer].area;
}

}  // namespace

void tsrf_trcanopy(frame::Log& log, frame::Crew& crew, const tsrf_module_phydat::SkyFluxes& sky,
                   const tsrf_module_patch::Data& patch, const jmk_module_data::Data& cells,
                   const jmk_module_htrans::Data& htrans, const jmk_module_radiat::Data& radiat,
                   Data& data, std::span<const double> Rl, std::span<const double> Rs,
                   std::span<double> JRl, std::span<double> JRs) {
  if (!cells.CALJMK) return;
  const frame::Tag tag(log, "(tsrf_trcanopy)");
  check02(log, patch, data);
  exchange_shortwave(log, crew, sky, patch, radiat, Rs, data);
  storeflux(crew, patch, Rl, sky.longwave, 1.0, data, data.bands[kLongWave]);
  jmk2_cal_canopy(log, crew, htrans, radiat, data);
  for (const tsrf_module_jumoku::TreePatch& tree : data.trees) {
    const auto p = static_cast<std::size_t>(tree.patch);
    JRl[p] = setflux(data, data.bands[kLongWave], tree);
    JRs[p] = 0.0;
    for (std::size_t b = 0; b < kSolarBands; ++b) JRs[p] += setflux(data, data.bands[b], tree);
  }
}

}  // namespace jmk
