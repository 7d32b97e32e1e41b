#include "trees/difrad.hpp"

#include <array>
#include <atomic>
#include <cmath>
#include <vector>

#include "trees/waves.hpp"

namespace jmk {

namespace {

using tsrf_module_jumoku::BandFluxes;
using tsrf_module_jumoku::kFaces;

/// Rows of a tile, some 100 microseconds of work in a large canopy.
constexpr std::size_t kRows = 64;

/// Passes the fluxes of one cell on; true when one of them changes beyond the tolerance.
inline bool visit(std::size_t c, const std::int32_t* next, const Tolerance& tolerance,
                  const CellWeights& w, double source, double* entering) {
  const double* in = entering + c * kFaces;
  const std::int32_t* to = next + c * kFaces;
  std::array<double, 3> stopped{};
  for (std::size_t a = 0; a < 3; ++a) stopped[a] = w.stop[a] * (in[2 * a] + in[2 * a + 1]);
  bool changed = false;
  for (std::size_t a = 0; a < 3; ++a) {
    const double own =
        w.aside[a] * (stopped[(a + 1) % 3] + stopped[(a + 2) % 3]) + w.emit[a] * source;
    // What enters by one face leaves by the other, or comes back.
    const double low = in[2 * a];
    const double high = in[2 * a + 1];
    const std::array<double, 2> out{w.ahead[a] * high + w.back[a] * low + own,
                                    w.ahead[a] * low + w.back[a] * high + own};
    for (std::size_t side = 0; side < 2; ++side) {
      double& place = entering[to[2 * a + side]];
      const double change = std::fabs(out[side] - place);
      changed |= !(change <= tolerance.absolute + tolerance.relative * std::fabs(out[side]));
      place = out[side];
    }
  }
  return changed;
}

/// Visits the cells from `first` to before `last`, there or back.
template <bool there>
bool visit_cells(const tsrf_module_jumoku::Data& data, const Tolerance& tolerance,
                 std::size_t first, std::size_t last, BandFluxes& band) {
  bool changed = false;
  for (std::size_t n = first; n < last; ++n) {
    const std::size_t c = there ? n : first + last - 1 - n;
    changed |= visit(c, data.cells.next.data(), tolerance, data.weights(band, c), band.source[c],
                     band.entering.data());
  }
  return changed;
}

/// Visits all cells, there or back. Tiles are stretches of the rows of a layer; back, their waves
/// run the other way.
template <bool there>
bool visit_all(frame::Crew& crew, const tsrf_module_jumoku::Data& data, const Tolerance& tolerance,
               BandFluxes& band) {
  if (crew.hands() == 1) return visit_cells<there>(data, tolerance, 0, data.cells.count(), band);
  const auto rows = static_cast<std::size_t>(data.grid.cells[1]);
  const auto layers = static_cast<std::size_t>(data.grid.cells[2]);
  std::atomic<bool> changed{false};
  in_waves(crew, rows, layers, crew.stretch(kRows), 1, [&](const Tile& tile) {
    const std::size_t layer = rows * (there ? tile.first[1] : layers - 1 - tile.first[1]);
    const std::size_t begin = there ? tile.first[0] : rows - tile.last[0];
    const std::size_t end = there ? tile.last[0] : rows - tile.first[0];
    const std::vector<std::int32_t>& first = data.cells.row_first;
    if (visit_cells<there>(data, tolerance, static_cast<std::size_t>(first[layer + begin]),
                           static_cast<std::size_t>(first[layer + end]), band)) {
      changed.store(true, std::memory_order_relaxed);
    }
  });
  return changed.load(std::memory_order_relaxed);
}

}  // namespace

double kept(const tsrf_module_jumoku::Data& data, const BandFluxes& band, std::size_t c) {
  const CellWeights& w = data.weights(band, c);
  const double* in = band.entering.data() + c * kFaces;
  double sum = w.emit_kept * band.source[c];
  for (std::size_t a = 0; a < 3; ++a) sum += w.kept[a] * (in[2 * a] + in[2 * a + 1]);
  return sum;
}

std::int32_t jmk_difrad_flux(frame::Log& log, frame::Crew& crew,
                             const tsrf_module_jumoku::Data& data, std::int32_t LOPRAD,
                             const Tolerance& tolerance, BandFluxes& band) {
  for (std::size_t o = 0; o < data.outer.size(); ++o) {
    band.entering[data.outer[o].entry()] = band.outside[o];
  }
  for (std::int32_t sweep = 1; sweep <= LOPRAD; ++sweep) {
    const bool there = visit_all<true>(crew, data, tolerance, band);
    const bool back = visit_all<false>(crew, data, tolerance, band);
    if (!there && !back) return sweep;
  }
  log.program_error("### program error -1- (jmk_difrad_flux)");
}

}  // namespace jmk
