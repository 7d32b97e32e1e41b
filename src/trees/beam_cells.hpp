// The cells of a sweep of the beam, tile by tile.
//
// A tile is a stretch of rows by a stretch of columns through all layers. Two beams go through it
// side by side, four numbers to a face: the free beam in both solar bands, and that in the canopy,
// which means something in blocks alone. A row of the fine grid (j, k) hands its faces on along x
// to the tile beside it, along y to the row of the next j in the same layer, and along z to the
// row of the same j below. Some layers of a j go along together, each a column behind the one above
// it, so that what one cell waits for does not hold the processor up.
//
// Used by trees/beam_sweep.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame/instruction_set.hpp"
#include "trees/canopy.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// How a cell of given widths spreads a beam of given speeds along the axes.
struct Spread {
  Spread() = default;
  Spread(const std::array<double, 3>& width, const std::array<double, 3>& speed);

  std::array<double, 3> weight{};               ///< by axis: the free beam through a face [m2]
  double path = 0.0;                            ///< longest way of a ray through the cell [m]
  std::array<std::array<double, 2>, 3> over{};  ///< by leaving axis: from the next, the one after
};

/// An axis as the beam sees it.
struct Way {
  Way() = default;
  Way(double s, std::size_t axis, std::int32_t cell_count)
      : step(-s >= 0.0 ? 1 : -1), count(cell_count), entry_face(2 * axis + (step > 0 ? 0 : 1)) {}
  /// The n-th cell on the way.
  [[nodiscard]] std::int32_t cell(std::int32_t n) const { return step > 0 ? n : count - 1 - n; }

  std::int32_t step = 1;
  std::int32_t count = 0;
  std::size_t entry_face = 0;  ///< 0 to 5
};

/// What stays the same in a sweep.
struct BeamSweep {
  std::array<Way, 3> way;
  std::array<double, 3> speed{};
  std::array<double, 2> direct{};  ///< by band: its share of the beam
  double Jdn = 0.0;                ///< direct normal flux [W/m2]
};

/// Rows and columns from `first` to before `last`, counted on the beam's way.
struct BeamTile {
  std::int32_t first_row, last_row;
  std::int32_t first_column, last_column;
};

using SweepTile = void (*)(const BeamSweep& sweep, const BeamTile& tile,
                           tsrf_module_jumoku::Data& data);
SweepTile sweep_tile_for(frame::InstructionSet set);

}  // namespace jmk
