#include "account/leaves.hpp"

#include <algorithm>
#include <cmath>

#include "inputs/moist_air.hpp"

namespace tsrf_module_account {

namespace {

using jmk_module_radiat::kLongWave;
using jmk_module_radiat::kSolarBands;
using tsrf_module_jumoku::BandFluxes;
using tsrf_module_jumoku::kFaces;
using Canopy = tsrf_module_jumoku::Data;
using Sums = std::array<double, kLeafFlows>;

constexpr double kSenses = 6.0;  // leaves emit into two senses of each axis

/// What comes into the canopy by a face, less what goes out by it [W].
double net_of(const Canopy& canopy, const BandFluxes& band, std::size_t face) {
  return band.outside[face] - band.entering[canopy.cells.count() * kFaces + face];
}

/// Faces that stand in the exchange by others' patches, or not at all, and the part of the others
/// by which they are larger than their patches. A patch passes R - J [W/m2] in one band.
void add_faces(const tsrf_module_patch::Data& patch, const Canopy& canopy,
               std::span<const double> R, std::span<const double> J,
               std::span<const BandFluxes> bands, double& bare, double& area) {
  for (std::size_t o = 0; o < canopy.outer.size(); ++o) {
    const tsrf_module_jumoku::OuterFace& outer = canopy.outer[o];
    if (outer.tree < 0) {
      for (const BandFluxes& band : bands) bare += net_of(canopy, band, o);
      continue;
    }
    const auto p =
        static_cast<std::size_t>(canopy.trees[static_cast<std::size_t>(outer.tree)].patch);
    area += (outer.area - patch.area[p]) * (R[p] - J[p]);
  }
}

/// Of one cell: what its weights send by its faces, beyond what arrives behind them [W].
double on_its_way(const Canopy& canopy, const BandFluxes& band, std::size_t c) {
  const jmk::CellWeights& w = canopy.weights(band, c);
  const double* const in = band.entering.data() + c * kFaces;
  const std::int32_t* const to = canopy.cells.next.data() + c * kFaces;
  double sum = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    const double both = in[2 * a] + in[2 * a + 1];
    const double sides = 2.0 * (w.aside[(a + 1) % 3] + w.aside[(a + 2) % 3]);
    sum += (w.ahead[a] + w.back[a] + w.stop[a] * sides) * both + 2.0 * w.emit[a] * band.source[c];
    sum -= band.entering[static_cast<std::size_t>(to[2 * a])] +
           band.entering[static_cast<std::size_t>(to[2 * a + 1])];
  }
  return sum;
}

/// A leaf cell's balance at the temperatures that the last round of the search went out from.
void add_leaf(const jmk::Trees& trees, std::size_t n, Sums& sums) {
  const tsrf_module_jumoku::Leaves& leaves = trees.canopy.leaves;
  const double latent_heat = trees.htrans.constants.latent_heat;
  const double area = 2.0 * leaves.lad[n] * leaves.volume[n];
  const double emissivity = trees.radiat.optics[kLongWave].emissivity;
  const double fourth =
      leaves.E[n] / (leaves.lad[n] * 0.5 * moist_air::kStefanBoltzmann * emissivity);
  const double T = leaves.E[n] > 0.0 ? std::sqrt(std::sqrt(fourth)) : leaves.T[n];
  const double slope = area * (leaves.h[n] + latent_heat * leaves.e[n] * leaves.dqsdT[n]) +
                       kSenses * leaves.escaping[n] * leaves.volume[n] * leaves.dEdT[n];
  sums[kLeafLight] += leaves.Sabs[n];
  sums[kLeafLongwave] += leaves.Labs[n];
  sums[kLeafSensible] += area * leaves.h[n] * (leaves.Ta[n] - T);
  sums[kLeafLatent] += area * latent_heat * leaves.e[n] * (leaves.q[n] - leaves.qs[n]);
  sums[kLeafSearch] += slope * (leaves.T[n] - T);
  for (const double lost : trees.canopy.beam.lost[n]) sums[kLeafBeam] += lost;
}

}  // namespace

void prepare_leaves(frame::Log& log, const Canopy& canopy, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_account)(prepare_leaves)");
  const std::size_t rows = std::max(canopy.cells.count(), canopy.leaves.count());
  const std::size_t blocks = (rows + kBlock - 1) / kBlock;
  frame::allocating(log, "account", frame::bytes_of<Sums>(blocks),
                    [&] { data.leaf_blocks.assign(blocks, Sums{}); });
}

double leaf_area(const Canopy& canopy) {
  double sum = 0.0;
  for (std::size_t n = 0; n < canopy.leaves.count(); ++n) {
    sum += canopy.leaves.lad[n] * canopy.leaves.volume[n];
  }
  return sum;
}

void add_leaves(frame::Crew& crew, const tsrf_module_patch::Data& patch, const jmk::Trees& trees,
                const tsrf_module_raddat::Data& raddat, const Radiation& radiation, double dt,
                Data& data) {
  const Canopy& canopy = trees.canopy;
  crew.each(data.leaf_blocks.size(), 1, [&](std::size_t block) {
    Sums sums{};
    const auto last = [&](std::size_t rows) { return std::min((block + 1) * kBlock, rows); };
    for (std::size_t c = block * kBlock; c < last(canopy.cells.count()); ++c) {
      for (std::size_t b = 0; b < kSolarBands; ++b)
        sums[kLightRelaxed] += on_its_way(canopy, canopy.bands[b], c);
      sums[kLongwaveRelaxed] += on_its_way(canopy, canopy.bands[kLongWave], c);
    }
    for (std::size_t n = block * kBlock; n < last(canopy.leaves.count()); ++n)
      add_leaf(trees, n, sums);
    for (std::size_t f = 0; f < kLeafFlows; ++f) data.leaf_blocks[block][f] += sums[f] * dt;
  });
  Sums faces{};
  const std::span<const BandFluxes> bands(canopy.bands);
  add_faces(patch, canopy, radiation.Rs, raddat.JRs, bands.first(kSolarBands), faces[kFacesLight],
            faces[kFacesArea]);
  add_faces(patch, canopy, radiation.Rl, raddat.JRl, bands.subspan(kLongWave, 1),
            faces[kFacesLongwave], faces[kFacesAreaLongwave]);
  for (std::size_t f = 0; f < kLeafFlows; ++f) data.leaves[f] += faces[f] * dt;
}

}  // namespace tsrf_module_account
