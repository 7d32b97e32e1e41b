// Open fractions of the cells and of their faces, from the true shapes of the buildings.
//
// A building is what lies between its roofs and the ground; a roof that looks down takes away what
// stands below it. Read by the writer of the Porous file and by whatever asks whether a cell holds
// air.
#pragma once

#include "scene/cut_faces.hpp"

namespace townskin_case {

/// Fractions of the cells, i fastest, all from 0 (closed) to 1 (open).
struct Porous {
  std::array<std::int32_t, 3> cells{};
  std::vector<double> volume;
  /// By axis: of the face at the lower and at the upper end of each cell.
  std::array<std::array<std::vector<double>, 2>, 3> face;

  [[nodiscard]] std::size_t at(const std::array<std::int32_t, 3>& cell) const {
    return static_cast<std::size_t>(cell[0] - 1) +
           static_cast<std::size_t>(cells[0]) *
               (static_cast<std::size_t>(cell[1] - 1) +
                static_cast<std::size_t>(cells[1]) * static_cast<std::size_t>(cell[2] - 1));
  }
  [[nodiscard]] bool has(const std::array<std::int32_t, 3>& cell) const {
    return cell[0] >= 1 && cell[0] <= cells[0] && cell[1] >= 1 && cell[1] <= cells[1] &&
           cell[2] >= 1 && cell[2] <= cells[2];
  }
};

/// From the roofs, which `faces` holds. A face between two cells is closed where either side is.
Porous open_fractions(const CellGrid& grid, const std::vector<CutFace>& faces);

}  // namespace townskin_case
