// Corners and edges of neighbours that nearly touch are made to touch.
#pragma once

#include "city/roof_piece.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// Moves each corner onto the first one within the tolerance, and lets edges run through corners
/// that lie as near to them. Pieces that shrink to nothing go. Told by building, moves of more than
/// a millimetre.
void snap_pieces(const Geos& geos, std::vector<RoofPiece>& pieces, const std::vector<Draft>& drafts,
                 Report& report);

}  // namespace townskin_case
