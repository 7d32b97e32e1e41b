// Optional geometry of the grid: the Grid file's coordinates and the Porous file's open fractions.
//
// Both belong to the canopy of cells and to a flow field over the surfaces; a run without them
// reads empty files. Called by the driver at the start.
#pragma once

#include <array>
#include <cstdint>
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

struct Grid {
  std::array<std::int32_t, 3> cells{};  ///< mx, my, mz
  bool given = false;                   ///< the Grid file holds coordinates
  std::array<Axis, 3> axes;             ///< x, y, z; empty unless given
};

/// Reads the Grid file for a grid of `grid.cells`: per axis a count of points and the coordinates,
/// which increase. An empty file leaves `grid.given` false.
void read_grid(frame::Log& log, frame::TextInput& file, Grid& grid);

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

/// Reads the Porous file; its cells lie in the grid of `grid.cells`.
void tsrf_dummyb(frame::Log& log, frame::TextInput& file, const Grid& grid, Porous& porous);

}  // namespace tsrf_main01
