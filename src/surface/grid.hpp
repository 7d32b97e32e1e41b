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
  std::int32_t cells = 0;
  std::vector<double> widths;  ///< cells -1 .. m+2 at positions 0 .. m+3 [m]
  std::vector<double>
      coordinates;  ///< points 0 .. m+2 at the same positions as the widths' left ends [m]
  /// Width of cell i (from 1).
  [[nodiscard]] double dx(std::int32_t i) const { return widths[static_cast<std::size_t>(i + 1)]; }
};

struct Grid {
  std::array<std::int32_t, 3> cells{};  ///< mx, my, mz
  bool given = false;                   ///< the Grid file holds coordinates
  std::array<Axis, 3> axes;             ///< x, y, z; empty unless given
};

/// Reads the Grid file; an empty file leaves `grid.given` false.
void read_grid(frame::Log& log, frame::TextInput& file, Grid& grid);

/// Open fractions of one cell: volume and the three pairs of faces.
struct PorousCell {
  std::int32_t i, j, k;
  std::array<double, 7> fraction;
};
/// Cells that are not fully open; every other cell's fractions are 1.
struct Porous {
  std::vector<PorousCell> cells;
};

/// Reads the Porous file.
void tsrf_dummyb(frame::Log& log, frame::TextInput& file, const Grid& grid, Porous& porous);

}  // namespace tsrf_main01
