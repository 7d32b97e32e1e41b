// Areas and middles of rings and polygons, in plan and in space.
#pragma once

#include <functional>

#include "shapes/geometry.hpp"

namespace townskin_case {

/// For tables of points.
struct PointHash {
  std::size_t operator()(const Point2& p) const {
    return std::hash<double>()(p.x) * 1000003U ^ std::hash<double>()(p.y);
  }
};

/// Area of the ring, positive where it turns to the left [m2]. Taken about its first point, so that
/// a place far from the origin loses no digits.
inline double signed_area(const Ring2& ring) {
  double twice = 0.0;
  for (std::size_t i = 2; i < ring.size(); ++i) {
    twice += (ring[i - 1].x - ring[0].x) * (ring[i].y - ring[0].y) -
             (ring[i].x - ring[0].x) * (ring[i - 1].y - ring[0].y);
  }
  return 0.5 * twice;
}

inline double perimeter(const Ring2& ring) {
  double sum = 0.0;
  for (std::size_t i = 0; i < ring.size(); ++i) {
    const Point2& next = ring[i + 1 < ring.size() ? i + 1 : 0];
    sum += std::hypot(next.x - ring[i].x, next.y - ring[i].y);
  }
  return sum;
}

inline double area(const Polygon2& polygon) {
  double sum = signed_area(polygon.outer);
  for (const Ring2& hole : polygon.holes) sum += signed_area(hole);
  return sum;
}

/// Adds the ring's signed area times its middle to `moment`.
inline void add_moment(const Ring2& ring, Point2& moment) {
  for (std::size_t i = 2; i < ring.size(); ++i) {
    const double part = 0.5 * ((ring[i - 1].x - ring[0].x) * (ring[i].y - ring[0].y) -
                               (ring[i].x - ring[0].x) * (ring[i - 1].y - ring[0].y));
    moment.x += part * (ring[0].x + ring[i - 1].x + ring[i].x) / 3.0;
    moment.y += part * (ring[0].y + ring[i - 1].y + ring[i].y) / 3.0;
  }
}

/// Its centre of area; the first point where it has no area.
inline Point2 middle(const Polygon2& polygon) {
  const double all = area(polygon);
  if (!(all > 0.0)) return polygon.outer.empty() ? Point2{} : polygon.outer.front();
  Point2 moment;
  add_moment(polygon.outer, moment);
  for (const Ring2& hole : polygon.holes) add_moment(hole, moment);
  return {moment.x / all, moment.y / all};
}

/// Area of a flat ring in space times its normal, by the ring's turn [m2].
inline Vector3 area_vector(const Ring3& ring) {
  Vector3 sum;
  for (std::size_t i = 2; i < ring.size(); ++i) {
    sum = sum + 0.5 * cross(ring[i - 1] - ring[0], ring[i] - ring[0]);
  }
  return sum;
}

/// Area of a flat face in space [m2].
inline double area(const Polygon3& face) {
  Vector3 sum = area_vector(face.outer);
  for (const Ring3& hole : face.holes) sum = sum + area_vector(hole);
  return length(sum);
}

}  // namespace townskin_case
