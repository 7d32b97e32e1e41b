// Lines on which the planes of overlapping roofs cross, and those on which roofs reach the ground.
#pragma once

#include "city/piece_tree.hpp"

namespace townskin_case {

/// In plan, where the pieces lie over each other. Planes nearer to each other than the tolerance
/// all over their common area do not cross.
std::vector<Segment2> crossing_lines(const Geos& geos, const std::vector<RoofPiece>& pieces,
                                     const PieceTree& tree);

}  // namespace townskin_case
