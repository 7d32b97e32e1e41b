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
using tsrf_module_jumoku::BeamFace;
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
  return {static_cast<std::int32_t>(p), static_cast<std::int32_t>(axis), at, 0, 0, 0};
}

/// The part of the free beam that is left on the faces of a probe.
double left_of(const BeamProbe& probe, const Optics& optics, const Beam& beam) {
  const std::int32_t parts = probe.parts_i * probe.parts_j;
  double taken = 0.0;
  for (std::int32_t n = probe.seen; n < probe.seen + parts; ++n) {
    const SolarPair& f = beam.seen[static_cast<std::size_t>(n)];
    for (std::size_t b = 0; b < kSolarBands; ++b) taken += optics[b].direct * (1.0 - f[b]);
  }
  return 1.0 - taken / parts;
}

/// Calls `use` for all fine faces of all probes by which the beam leaves a cell of the grid; by the
/// others it comes in and is free.
template <class Use>
void each_face(const BeamSweep& sweep, const Beam& beam, Use&& use) {
  const auto& way = sweep.way;
  for (const BeamProbe& probe : beam.probes) {
    std::int32_t seen = probe.seen;
    const std::int32_t NDIV = std::max(probe.parts_i, probe.parts_j);
    for (std::int32_t b = 0; b < probe.parts_j; ++b) {
      for (std::int32_t a = 0; a < probe.parts_i; ++a, ++seen) {
        std::int32_t i = probe.at[0] * NDIV + a;
        std::int32_t j = probe.at[1] * NDIV + b;
        if (probe.axis == 0 && way[0].step > 0) --i;
        if (probe.axis == 1 && way[1].step > 0) --j;
        if (i < 0 || i >= way[0].count || j < 0 || j >= way[1].count) continue;
        use(static_cast<std::size_t>(probe.at[2]) * static_cast<std::size_t>(way[1].count) +
                static_cast<std::size_t>(j),
            BeamFace{i, probe.axis, seen});
      }
    }
  }
}

}  // namespace

void place_probes(const tsrf_module_patch::Data& patch, Data& data) {
  Beam& beam = data.beam;
  const std::int32_t layers = data.grid.cells[2];
  const std::int32_t NDIV = data.grid.NDIV;
  std::int32_t seen = 0;
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] == tsrf_module_patch::kTree) continue;
    BeamProbe probe = probe_of(patch, p);
    // Nothing above the leaves is thinned, nor below the ground.
    if (probe.at[2] < 0 || probe.at[2] >= layers) continue;
    probe.seen = seen;
    probe.parts_i = probe.axis == 0 ? 1 : NDIV;
    probe.parts_j = probe.axis == 1 ? 1 : NDIV;
    seen += probe.parts_i * probe.parts_j;
    beam.probes.push_back(probe);
  }
  beam.seen.resize(static_cast<std::size_t>(seen));
  beam.faces.resize(static_cast<std::size_t>(seen));
  beam.face_first.assign(
      static_cast<std::size_t>(data.grid.cells[1]) * static_cast<std::size_t>(layers) + 1, 0);
}

void look_at_faces(const BeamSweep& sweep, Beam& beam) {
  std::fill(beam.seen.begin(), beam.seen.end(), SolarPair{1.0, 1.0});
  const std::array<std::int32_t, 2> steps{sweep.way[0].step, sweep.way[1].step};
  if (beam.faces_for == steps) return;
  beam.faces_for = steps;
  // A row's faces are counted one behind it, so that counting up to their places leaves the firsts.
  std::fill(beam.face_first.begin(), beam.face_first.end(), 0);
  each_face(sweep, beam, [&](std::size_t row, const BeamFace&) { ++beam.face_first[row + 1]; });
  for (std::size_t r = 1; r < beam.face_first.size(); ++r) {
    beam.face_first[r] += beam.face_first[r - 1];
  }
  each_face(sweep, beam, [&](std::size_t row, const BeamFace& face) {
    beam.faces[static_cast<std::size_t>(beam.face_first[row]++)] = face;
  });
  for (std::size_t r = beam.face_first.size(); r-- > 1;) {
    beam.face_first[r] = beam.face_first[r - 1];
  }
  beam.face_first[0] = 0;
  for (std::size_t r = 0; r + 1 < beam.face_first.size(); ++r) {
    std::sort(beam.faces.begin() + beam.face_first[r], beam.faces.begin() + beam.face_first[r + 1],
              [](const BeamFace& a, const BeamFace& b) { return a.column < b.column; });
  }
}

void read_probes(frame::Crew& crew, const Optics& optics, Beam& beam) {
  constexpr std::size_t kProbes = 4096;  // of a stretch
  crew.each(beam.probes.size(), kProbes, [&](std::size_t n) {
    const BeamProbe& probe = beam.probes[n];
    beam.left[static_cast<std::size_t>(probe.patch)] = left_of(probe, optics, beam);
  });
}

}  // namespace jmk
