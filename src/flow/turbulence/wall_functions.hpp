// k and epsilon in the cells beside walls.
//
// The profile next to a wall is too steep for the cells; there the law of the wall tells what the
// transport equations cannot (Launder and Spalding 1974). Called behind each step of k and epsilon.
#pragma once

#include "flow/turbulence/strain.hpp"

namespace flow {

/// A cell beside walls that hold k and epsilon.
struct WallCell {
  std::size_t cell = 0;
  bool holds_k = false;  ///< by `ik` 3, else epsilon alone, by `ik` 4
  /// Faces that take part, by axis: number in the rim's list; -1: none.
  std::array<std::array<std::int32_t, 2>, 3> face{};
  std::array<double, 3> area{};  ///< of the cell's faces, by their normal [m2]
};

/// Cells with a wall whose group has `ik` 3 or 4; faces with 4 do not count beside one with 3.
/// Where nothing holds the air back (slip, openings, inlets) neither has a meaning.
std::vector<WallCell> list_wall_cells(const Domain& domain, const Strain& strain);

/// With `ik` 3 k = u*^2/sqrt(0.09); the mean over the walls of the cell, weighed by their area.
[[nodiscard]] double wall_k(const WallCell& at, const WallFlows& walls);
/// With `ik` 3 eps = u*^3/(0.42 y), with `ik` 4 0.09^0.75 k^1.5/(0.42 y); the mean as above.
[[nodiscard]] double wall_eps(const WallCell& at, const WallFlows& walls, double k);

}  // namespace flow
