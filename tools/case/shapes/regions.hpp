// Sets of polygons in the plane: what is left of one when others have taken their part, triangles.
//
// Used where the ground is divided and faces are cut into triangles.
#pragma once

#include <vector>

#include "shapes/geometry.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// Polygons that do not overlap.
using Region = std::vector<Polygon2>;

/// Ground that is given away piece by piece: each taker gets what is left of what it asks for.
class Leftover {
 public:
  /// The whole without what is covered already; covered polygons may overlap.
  Leftover(const Polygon2& whole, const std::vector<Polygon2>& covered);

  /// What is left within the polygon; it is gone then.
  Region take(const Polygon2& wanted);
  [[nodiscard]] Region rest() const;

 private:
  Geos geos_;
  Geos::Shape left_;
};

/// Triangles that fill a polygon, turning to the left, with its points as corners.
std::vector<std::array<Point2, 3>> triangles_of(const Polygon2& polygon);

}  // namespace townskin_case
