#include "city/crossings.hpp"

#include <algorithm>

namespace townskin_case {
namespace {

/// The part within the shape of the line on which the difference of two planes is 0.
void add_line(const Geos& geos, const GEOSGeometry* shape, const Plane& difference,
              std::vector<Segment2>& lines) {
  double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
  GEOSGeom_getXMin_r(geos.context(), shape, &west);
  GEOSGeom_getYMin_r(geos.context(), shape, &south);
  GEOSGeom_getXMax_r(geos.context(), shape, &east);
  GEOSGeom_getYMax_r(geos.context(), shape, &north);
  const double slope = std::hypot(difference.a, difference.b);
  const Point2 middle{0.5 * (west + east), 0.5 * (south + north)};
  const double off = difference.at(middle) / slope;
  const double reach = std::hypot(east - west, north - south);
  const Point2 normal{difference.a / slope, difference.b / slope};
  const Point2 foot{middle.x - off * normal.x, middle.y - off * normal.y};
  const auto line = geos.lines({{{{foot.x - reach * normal.y, foot.y + reach * normal.x},
                                  {foot.x + reach * normal.y, foot.y - reach * normal.x}}}});
  const auto within = geos.own(
      GEOSIntersection_r(geos.context(), GEOSGetGeometryN_r(geos.context(), line.get(), 0), shape));
  for (int i = 0; i < GEOSGetNumGeometries_r(geos.context(), within.get()); ++i) {
    const GEOSGeometry* part = GEOSGetGeometryN_r(geos.context(), within.get(), i);
    if (GEOSGeomTypeId_r(geos.context(), part) != GEOS_LINESTRING) continue;
    const Ring2 points = geos.points_of(part);
    if (points.size() < 2) continue;
    const Point2 &a = points.front(), &b = points.back();
    if (std::hypot(a.x - b.x, a.y - b.y) > near_enough) lines.push_back({a, b});
  }
}

Plane minus(const Plane& p, const Plane& q) { return {p.a - q.a, p.b - q.b, p.c - q.c}; }

/// True if the difference takes both signs on the polygons, by more than the tolerance.
bool changes_sign(const std::vector<Polygon2>& polygons, const Plane& difference) {
  double low = 0.0, high = 0.0;
  for (const Polygon2& polygon : polygons) {
    for (const Point2& p : polygon.outer) {
      low = std::min(low, difference.at(p));
      high = std::max(high, difference.at(p));
    }
  }
  return low < -near_enough && high > near_enough;
}

}  // namespace

std::vector<Segment2> crossing_lines(const Geos& geos, const std::vector<RoofPiece>& pieces,
                                     const PieceTree& tree) {
  std::vector<Segment2> lines;
  std::vector<std::pair<double, double>> spans;
  for (const RoofPiece& piece : pieces) spans.push_back(span_of(piece));
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const auto [low, high] = spans[i];
    const auto index = static_cast<std::int32_t>(i);
    if (low < -near_enough && high > near_enough) {
      const auto valid = geos.own(GEOSMakeValid_r(geos.context(), tree.shape(index)));
      add_line(geos, valid.get(), pieces[i].plane, lines);
    }
    for (const std::int32_t other : tree.beside(index)) {
      const auto j = static_cast<std::size_t>(other);
      if (j <= i || (pieces[i].plane.level() && pieces[j].plane.level())) continue;
      if (low >= spans[j].second - near_enough || spans[j].first >= high - near_enough) continue;
      const Plane difference = minus(pieces[i].plane, pieces[j].plane);
      const auto one = geos.own(GEOSMakeValid_r(geos.context(), tree.shape(index)));
      const auto two = geos.own(GEOSMakeValid_r(geos.context(), tree.shape(other)));
      const auto common = geos.own(GEOSIntersection_r(geos.context(), one.get(), two.get()));
      if (changes_sign(geos.polygons(common.get()), difference)) {
        add_line(geos, common.get(), difference, lines);
      }
    }
  }
  return lines;
}

}  // namespace townskin_case
