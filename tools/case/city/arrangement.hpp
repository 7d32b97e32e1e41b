// The plan cut into cells, each of one building and under one roof, or of the open ground.
#pragma once

#include <map>

#include "city/roof_piece.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// A place under one piece of roof: the highest there.
struct Cell {
  Polygon2 shape;
  std::int32_t piece = -1;  ///< index; -1: open ground, which cells keep that are closed in
};

/// An edge between two cells: the pieces that hold left and right of it, -1 for open ground.
struct Border {
  Point2 from, to;
  std::int32_t left = -1, right = -1;
};

struct Arrangement {
  std::vector<Cell> cells;
  std::vector<Border> borders;
  /// Area on which a lower building (first) lies within a higher one [m2].
  std::map<std::pair<std::int32_t, std::int32_t>, double> overlaps;
  std::vector<double> own_volume;  ///< of each building as if it stood alone [m3]
};

/// Where pieces overlap the highest holds; of pieces of one height the first. Cells narrower than
/// the tolerance go to the neighbour with the longest common edge.
Arrangement arrange(const Geos& geos, const std::vector<RoofPiece>& pieces, std::size_t buildings);

}  // namespace townskin_case
