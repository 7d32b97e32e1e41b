// Points, rings and polygons: the words in which the parts of the tool talk about shapes.
#pragma once

#include <array>
#include <cmath>
#include <vector>

namespace townskin_case {

struct Point2 {
  double x = 0.0, y = 0.0;  ///< east, north [m]
  bool operator==(const Point2&) const = default;
};

/// A point or a direction.
struct Vector3 {
  double x = 0.0, y = 0.0, z = 0.0;  ///< east, north, up [m]

  bool operator==(const Vector3&) const = default;
  friend Vector3 operator+(const Vector3& a, const Vector3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend Vector3 operator-(const Vector3& a, const Vector3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  friend Vector3 operator*(double f, const Vector3& a) { return {f * a.x, f * a.y, f * a.z}; }
};
inline double dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector3 cross(const Vector3& a, const Vector3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const Vector3& a) { return std::sqrt(dot(a, a)); }

using Ring2 = std::vector<Point2>;
using Ring3 = std::vector<Vector3>;

/// A region of the ground: the outer ring turns to the left, holes to the right; the first point is
/// not repeated at the end of a ring.
struct Polygon2 {
  Ring2 outer;
  std::vector<Ring2> holes;
};

/// A flat face in space: seen from outside the outer ring turns to the left, holes to the right.
struct Polygon3 {
  Ring3 outer;
  std::vector<Ring3> holes;
};

}  // namespace townskin_case
