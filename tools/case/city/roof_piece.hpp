// Pieces of roofs: what a building is made of before buildings are put beside each other.
//
// A building is the space between the ground and the highest of its pieces at each place. So it
// does not matter whether a body is closed, which way its faces turn, or whether it has walls at
// all; what stands under an overhang is lost.
#pragma once

#include <optional>
#include <vector>

#include "city/city.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {

/// Corners nearer than this are one, narrower gaps are closed, lower steps are no walls [m].
constexpr double near_enough = 0.05;

/// z = a x + b y + c
struct Plane {
  double a = 0.0, b = 0.0, c = 0.0;
  [[nodiscard]] double at(const Point2& p) const { return a * p.x + b * p.y + c; }
  [[nodiscard]] bool level() const { return a == 0.0 && b == 0.0; }
};

struct RoofPiece {
  std::int32_t building = 0;
  std::int32_t surface = 0;  ///< pieces of a building in one plane have one number
  FaceKind kind = FaceKind::roof;
  Plane plane;
  std::vector<Ring2> rings;  ///< in plan, the outer one first
};

/// A building on its way: what is known of it, and its pieces.
struct Draft {
  Building building;
  std::vector<RoofPiece> pieces;
  std::optional<double> body_volume;  ///< of a body with a consistent sense of its faces [m3]
};

/// The lowest and the highest place of the piece.
inline std::pair<double, double> span_of(const RoofPiece& piece) {
  double low = HUGE_VAL, high = -HUGE_VAL;
  for (const Point2& p : piece.rings.front()) {
    low = std::min(low, piece.plane.at(p));
    high = std::max(high, piece.plane.at(p));
  }
  return {low, high};
}

}  // namespace townskin_case
