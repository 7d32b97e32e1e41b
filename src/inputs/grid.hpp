// Optional geometry of the grid: the Grid file's coordinates and the Porous file's open fractions.
//
// Both belong to the canopy of cells, to the heat that buildings release into a volume of air, and
// to a flow field over the surfaces; a run without them reads empty files. Called by the driver at
// the start.
#pragma once

#include <array>
#include <cstdint>
#include <variant>
#include <vector>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_main01 {

/// One axis of the grid with two mirror cells at each end.
struct Axis {
  std::int32_t cells = 0;           ///< m
  std::vector<double> widths;       ///< cells -1 .. m+2 at positions 0 .. m+3 [m]
  std::vector<double> coordinates;  ///< points 0 .. m+2 at positions 0 .. m+2 [m]; cell i lies
                                    ///< between the points i and i+1
  /// Width of cell i (from 1).
  [[nodiscard]] double dx(std::int32_t i) const { return widths[static_cast<std::size_t>(i) + 1]; }
  /// Coordinate of point i (from 1).
  [[nodiscard]] double x(std::int32_t i) const { return coordinates[static_cast<std::size_t>(i)]; }
};

using Sizes = std::array<std::int32_t, 3>;  ///< mx, my, mz
using Axes = std::array<Axis, 3>;           ///< x, y, z

/// The grid: its sizes alone, as the control data have them, or the axes of a Grid file.
using Grid = std::variant<Sizes, Axes>;

[[nodiscard]] inline Sizes sizes_of(const Grid& grid) {
  if (const auto* sizes = std::get_if<Sizes>(&grid)) return *sizes;
  const auto& axes = std::get<Axes>(grid);
  return {axes[0].cells, axes[1].cells, axes[2].cells};
}

/// Reads the Grid file for a grid of `sizes`: per axis a count of points and the coordinates, which
/// increase. An empty file gives the sizes alone.
[[nodiscard]] Grid read_grid(frame::Log& log, frame::TextInput& file, const Sizes& sizes);

/// Open fractions of one cell: volume and the three pairs of faces.
struct PorousCell {
  std::int32_t i, j, k;
  std::array<double, 7> fraction;
};
/// The cells that the file names, in its order (of a cell named twice the last row counts); every
/// other cell is fully open, its fractions are 1. Kept as rows because few cells of a grid are not.
struct Porous {
  std::vector<PorousCell> cells;
};

/// Reads the Porous file; its cells lie in the grid of `sizes`.
void tsrf_dummyb(frame::Log& log, frame::TextInput& file, const Sizes& sizes, Porous& porous);

}  // namespace tsrf_main01
