// Pieces of one surface, gathered by cell.
#pragma once

#include <map>
#include <vector>

#include "scene/pieces.hpp"

namespace townskin_case {

struct Part {
  std::vector<Piece> pieces;
  double area = 0.0;  ///< [m2]
};
using Parts = std::map<std::array<std::int32_t, 3>, Part>;

/// The pieces of a surface of one normal by cell. What covers less than the share `sliver` of a
/// cell's side joins its largest neighbour, so that no area is lost.
Parts parts_of(const CellGrid& grid, const std::vector<Piece>& pieces, const Vector3& normal,
               double sliver);

}  // namespace townskin_case
