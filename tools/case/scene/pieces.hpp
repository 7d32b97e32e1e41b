// Cutting flat convex pieces along the planes of the grid.
//
// What is cut stays convex and its parts fill it exactly; a point on a plane has the plane's own
// coordinate, so that pieces of two cells meet without a gap. Used for roofs, walls and ground.
#pragma once

#include <vector>

#include "scene/scene.hpp"

namespace townskin_case {

/// A convex piece of a face in one cell, in the frame of the cells.
struct Piece {
  std::array<std::int32_t, 3> cell{};  ///< that it lies in, from 1; 0 and n+1 are outside
  Ring3 ring;
};

/// The point on which the piece would balance.
Vector3 centroid(const Ring3& ring);

/// Cuts a convex ring along the planes of all axes and adds the parts. A part that lies in a plane
/// belongs to the cell in the direction of `front`, the air before it.
void cut_along(const CellGrid& grid, const Ring3& ring, const Vector3& front,
               std::vector<Piece>& pieces);

}  // namespace townskin_case
