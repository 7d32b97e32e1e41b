#include "trees/beam_sweep.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "trees/beam_cells.hpp"
#include "trees/beam_probes.hpp"
#include "trees/waves.hpp"

namespace jmk {

namespace {

using jmk_module_radiat::kSolarBands;
using jmk_module_radiat::Optics;
using tsrf_module_jumoku::Beam;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::FourFractions;
using tsrf_module_phydat::SunVector;

constexpr FourFractions kFree{{1.0, 1.0, 1.0, 1.0}};

/// Rows and least columns of a tile, some 300 microseconds of work, and kinds of cells of a
/// stretch.
constexpr std::size_t kRows = 64;
constexpr std::size_t kColumns = 128;
constexpr std::size_t kKinds = 512;

BeamSweep sweep_of(const SunVector& sun, double Jdn, const Optics& optics, const Data& data) {
  BeamSweep sweep;
  const std::array<double, 3> s{sun.x, sun.y, sun.z};
  for (std::size_t a = 0; a < 3; ++a) {
    sweep.way[a] = Way(s[a], a, data.grid.cells[a]);
    sweep.speed[a] = std::fabs(s[a]);
  }
  for (std::size_t b = 0; b < kSolarBands; ++b) sweep.direct[b] = optics[b].direct;
  sweep.Jdn = Jdn;
  return sweep;
}

/// What leaves let pass, by kind of cell, for both beams.
void set_passed(frame::Crew& crew, const BeamSweep& sweep, const Optics& optics, Data& data) {
  crew.each(data.kinds.size(), kKinds, [&](std::size_t kind) {
    const tsrf_module_jumoku::Kind& cell = data.kinds[kind];
    const double path = Spread(cell.width, sweep.speed).path;
    for (std::size_t b = 0; b < kSolarBands; ++b) {
      const double passed = std::exp(-optics[b].extinction(cell.lad) * path);
      data.beam.passed[kind][b] = passed;
      data.beam.passed[kind][kSolarBands + b] = passed;
    }
  });
}

/// By row: the first cell on the way that leaves stand in or something dimmed by them reaches. What
/// is before it is free and needs no visit.
void set_reached(const BeamSweep& sweep, Data& data) {
  const auto& cells = data.cells;
  for (std::int32_t k = 0; k < sweep.way[2].count; ++k) {
    for (std::int32_t j = 0; j < sweep.way[1].count; ++j) {
      const auto row = [&](std::int32_t back_j, std::int32_t back_k) {
        return data.grid.row(sweep.way[1].cell(j - back_j), sweep.way[2].cell(k - back_k));
      };
      const std::size_t r = row(0, 0);
      std::int32_t& reached = data.beam.reached[r];
      reached = sweep.way[0].count;
      if (cells.row_first[r] < cells.row_first[r + 1]) {
        const std::int32_t c =
            sweep.way[0].step > 0 ? cells.row_first[r] : cells.row_first[r + 1] - 1;
        reached = sweep.way[0].cell(cells.at[static_cast<std::size_t>(c)][0]);
      }
      if (j > 0) reached = std::min(reached, data.beam.reached[row(1, 0)]);
      if (k > 0) reached = std::min(reached, data.beam.reached[row(0, 1)]);
    }
  }
}

}  // namespace

void sweep_beam(frame::Crew& crew, const SunVector& sun, double Jdn, const Optics& optics,
                Data& data, frame::InstructionSet set) {
  Beam& beam = data.beam;
  const BeamSweep sweep = sweep_of(sun, Jdn, optics, data);
  set_passed(crew, sweep, optics, data);
  set_reached(sweep, data);
  look_at_faces(sweep, beam);
  std::fill(beam.x.begin(), beam.x.end(), kFree);
  std::fill(beam.y.begin(), beam.y.end(), kFree);
  const SweepTile sweep_tile = sweep_tile_for(set);
  const auto rows = static_cast<std::size_t>(sweep.way[1].count);
  const auto columns = static_cast<std::size_t>(sweep.way[0].count);
  // A tile that starts in the middle of a row has to find its place: two for each hand are enough.
  const std::size_t hands = crew.hands();
  const std::size_t height = hands == 1 ? rows : crew.stretch(kRows);
  const std::size_t width =
      hands == 1 ? columns : std::max(crew.stretch(kColumns), columns / (2 * hands));
  in_waves(crew, rows, columns, height, width, [&](const Tile& tile) {
    sweep_tile(sweep,
               {static_cast<std::int32_t>(tile.first[0]), static_cast<std::int32_t>(tile.last[0]),
                static_cast<std::int32_t>(tile.first[1]), static_cast<std::int32_t>(tile.last[1])},
               data);
  });
  read_probes(crew, optics, beam);
}

}  // namespace jmk
