#include "trees/beam_probes.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace jmk {

namespace {

using jmk_module_radiat::kSolarBands;
using jmk_module_radiat::Optics;
using tsrf_module_jumoku::Beam;
using tsrf_module_jumoku::BeamProbe;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::SolarPair;

/// Where a patch lies on the faces of its cell: across the largest component of its normal, on the
/// side away from it.
BeamProbe probe_of(const tsrf_module_patch::Data& patch, std::size_t p) {
  const std::array<double, 3> normal{patch.nx[p], patch.ny[p], patch.nz[p]};
  std::size_t axis = 0;
  for (std::size_t a = 1; a < 3; ++a) {
    if (std::fabs(normal[a]) > std::fabs(normal[axis])) axis = a;
  }
  std::array<std::int32_t, 3> at{patch.si[p] - 1, patch.sj[p] - 1, patch.sk[p] - 1};
  if (normal[axis] < 0.0) ++at[axis];
  return {static_cast<std::int32_t>(p), static_cast<std::int32_t>(axis), at};
}

/// The part of the free beam that is left on the faces of a probe.
double left_of(const BeamProbe& probe, const Optics& optics, const Data& data) {
  const Beam& beam = data.beam;
  const std::int32_t NDIV = data.grid.NDIV;
  const auto axis = static_cast<std::size_t>(probe.axis);
  const std::int32_t parts_i = axis == 0 ? 1 : NDIV;
  const std::int32_t parts_j = axis == 1 ? 1 : NDIV;
  const std::vector<SolarPair>& faces = axis == 0 ? beam.x : axis == 1 ? beam.y : beam.z;
  const std::size_t stride = static_cast<std::size_t>(data.grid.cells[0]) + (axis == 0 ? 1 : 0);
  double taken = 0.0;
  for (std::int32_t j = probe.at[1] * NDIV; j < probe.at[1] * NDIV + parts_j; ++j) {
    for (std::int32_t i = probe.at[0] * NDIV; i < probe.at[0] * NDIV + parts_i; ++i) {
      const SolarPair& f =
          faces[static_cast<std::size_t>(j) * stride + static_cast<std::size_t>(i)];
      for (std::size_t b = 0; b < kSolarBands; ++b) taken += optics[b].direct * (1.0 - f[b]);
    }
  }
  return 1.0 - taken / (parts_i * parts_j);
}

}  // namespace

void place_probes(const tsrf_module_patch::Data& patch, Data& data) {
  Beam& beam = data.beam;
  const std::int32_t layers = data.grid.cells[2];
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] == tsrf_module_patch::kTree) continue;
    const BeamProbe probe = probe_of(patch, p);
    // Nothing above the leaves is thinned.
    if (probe.at[2] < layers) beam.probes.push_back(probe);
  }
  std::stable_sort(beam.probes.begin(), beam.probes.end(),
                   [](const BeamProbe& a, const BeamProbe& b) { return a.at[2] < b.at[2]; });
  for (std::int32_t k = 0; k <= layers; ++k) {
    const auto first = std::lower_bound(
        beam.probes.begin(), beam.probes.end(), k,
        [](const BeamProbe& probe, std::int32_t layer) { return probe.at[2] < layer; });
    beam.probe_first.push_back(static_cast<std::int32_t>(first - beam.probes.begin()));
  }
}

void read_probes(const Optics& optics, std::int32_t k, Data& data) {
  Beam& beam = data.beam;
  const auto layer = static_cast<std::size_t>(k);
  for (std::int32_t n = beam.probe_first[layer]; n < beam.probe_first[layer + 1]; ++n) {
    const BeamProbe& probe = beam.probes[static_cast<std::size_t>(n)];
    beam.left[static_cast<std::size_t>(probe.patch)] = left_of(probe, optics, data);
  }
}

}  // namespace jmk
