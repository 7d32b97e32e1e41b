#include <cmath>
#include <numbers>

#include "city/faces.hpp"

namespace townskin_case {
namespace {

constexpr double same_line = 1e-3;       // [m] sideways
constexpr double same_direction = 1e-3;  // [radian]

double sideways(const Point2& origin, const Point2& along, const Point2& p) {
  return (p.x - origin.x) * along.y - (p.y - origin.y) * along.x;
}

double distance_along(const Point2& origin, const Point2& along, const Point2& p) {
  return (p.x - origin.x) * along.x + (p.y - origin.y) * along.y;
}

Ring3 raised(const Ring2& ring, const Point2& origin, const Point2& along) {
  Ring3 points;
  for (const Point2& p : ring) {
    points.push_back({origin.x + p.x * along.x, origin.y + p.x * along.y, p.y});
  }
  return points;
}

}  // namespace

std::size_t Walls::line_of(const Point2& from, const Point2& to) {
  const double span = std::hypot(to.x - from.x, to.y - from.y);
  const Point2 along{(to.x - from.x) / span, (to.y - from.y) / span};
  const Point2 zero = lines_.empty() ? from : lines_.front().origin;
  double angle = std::atan2(along.y, along.x);
  if (angle < 0.5 * same_direction - std::numbers::pi) angle += 2.0 * std::numbers::pi;
  const auto turn = std::llround(angle / same_direction);
  const auto off = std::llround(sideways(zero, along, from) / same_line);
  for (auto i = turn - 1; i <= turn + 1; ++i) {
    for (auto j = off - 1; j <= off + 1; ++j) {
      const auto found = by_direction_.find({i, j});
      if (found == by_direction_.end()) continue;
      const Line& line = lines_[found->second];
      if (std::abs(sideways(line.origin, line.along, from)) < same_line &&
          std::abs(sideways(line.origin, line.along, to)) < same_line) {
        return found->second;
      }
    }
  }
  by_direction_.try_emplace({turn, off}, lines_.size());
  lines_.push_back({from, along, {}});
  return lines_.size() - 1;
}

void Walls::add(const Point2& from, const Point2& to, const std::array<double, 2>& low,
                const std::array<double, 2>& high) {
  constexpr double meet = 1e-6;  // [m]
  Line& line = lines_[line_of(from, to)];
  const double s = distance_along(line.origin, line.along, from);
  const double e = distance_along(line.origin, line.along, to);
  Ring2 ring{{s, low[0]}, {e, low[1]}};
  if (high[1] - low[1] > meet) ring.push_back({e, high[1]});
  if (high[0] - low[0] > meet) ring.push_back({s, high[0]});
  if (ring.size() > 2) line.strips.push_back({std::move(ring)});
}

std::vector<Face> Walls::faces(const Geos& geos) const {
  std::vector<Face> faces;
  for (const Line& line : lines_) {
    if (line.strips.empty()) continue;
    for (const Polygon2& wall : geos.polygons(geos.united(line.strips).get())) {
      Face& face = faces.emplace_back();
      face.kind = FaceKind::wall;
      face.shape.outer = raised(wall.outer, line.origin, line.along);
      for (const Ring2& hole : wall.holes) {
        face.shape.holes.push_back(raised(hole, line.origin, line.along));
      }
    }
  }
  return faces;
}

}  // namespace townskin_case
