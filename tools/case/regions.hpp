// Sets of polygons in the plane: what they have in common, what one leaves of another, triangles.
//
// Used where the ground is divided and faces are cut into triangles.
#pragma once

#include <vector>

#include "geometry.hpp"

namespace townskin_case {

/// A region is any number of polygons; what they cover twice counts once.
using Region = std::vector<Polygon2>;

/// What `taken` leaves of the region.
Region without(const Region& region, const Region& taken);
Region common(const Region& a, const Region& b);

/// Triangles that fill a polygon, turning to the left, with its points as corners.
std::vector<std::array<Point2, 3>> triangles_of(const Polygon2& polygon);

}  // namespace townskin_case
