// Pieces of one surface, gathered by cell.
#pragma once

#include <map>
#include <vector>

#include "pieces.hpp"

namespace townskin_case {

/// Share of the side of a cell below which what is gathered there is a sliver.
inline constexpr double kLeastShare = 0.05;

struct Part {
  std::vector<Piece> pieces;
  double area = 0.0;  ///< [m2]
};
using Parts = std::map<std::array<std::int32_t, 3>, Part>;

/// The pieces of a surface of one normal by cell. A sliver joins its largest neighbour, so that no
/// patch is one and no area is lost.
Parts parts_of(const CellGrid& grid, const std::vector<Piece>& pieces, const Vector3& normal);

}  // namespace townskin_case
