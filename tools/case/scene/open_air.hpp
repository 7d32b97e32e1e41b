// Which cells the outer air reaches: the flow model has no use for a pocket between walls.
//
// Made from the open fractions before anything else reads them, so that no surface gives its heat
// to a cell that nothing moves through.
#pragma once

#include "scene/porous.hpp"

namespace townskin_case {

/// The part of a face below which the flow holds it closed.
inline constexpr double kClosedFace = 0.02;

/// Closes the cells that no way through faces of at least `kClosedFace` joins to the air above the
/// city; returns their number, solid ones not counted.
std::size_t close_pockets(Porous& porous);

/// The cell itself if it is open or has an open one at a face, else the first open one above it.
std::array<std::int32_t, 3> open_cell(const Porous& porous, std::array<std::int32_t, 3> cell);

}  // namespace townskin_case
