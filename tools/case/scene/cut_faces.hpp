// The outdoor faces of all buildings, cut along the grid.
//
// One pass over the city; the pieces serve the open fractions of the cells and the patches alike.
#pragma once

#include "city/city.hpp"
#include "scene/pieces.hpp"

namespace townskin_case {

/// A face of a building and its pieces.
struct CutFace {
  std::int32_t building = 0;  ///< index into the city's buildings
  FaceKind kind = FaceKind::wall;
  Vector3 normal;  ///< in the frame of the cells, of length 1
  std::vector<Piece> pieces;
};

/// A face without area is left out.
std::vector<CutFace> cut_faces(const City& city, const CellGrid& grid);

}  // namespace townskin_case
