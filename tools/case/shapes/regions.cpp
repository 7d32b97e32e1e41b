#include "shapes/regions.hpp"

#include "shapes/geos.hpp"

namespace townskin_case {

namespace {

std::vector<Ring2> rings_of(const Polygon2& polygon) {
  std::vector<Ring2> rings{polygon.outer};
  rings.insert(rings.end(), polygon.holes.begin(), polygon.holes.end());
  return rings;
}

Geos::Shape united(const Geos& geos, const std::vector<Polygon2>& polygons) {
  std::vector<std::vector<Ring2>> rings;
  for (const Polygon2& polygon : polygons) rings.push_back(rings_of(polygon));
  return geos.united(rings);
}

}  // namespace

Leftover::Leftover(const Polygon2& whole, const std::vector<Polygon2>& covered) {
  const Geos::Shape all = geos_.polygon(rings_of(whole));
  const Geos::Shape gone = united(geos_, covered);
  left_ = geos_.own(GEOSDifference_r(geos_.context(), all.get(), gone.get()));
}

Region Leftover::take(const Polygon2& wanted) {
  const Geos::Shape shape = geos_.polygon(rings_of(wanted));
  // The overlay looks at what lies near the shape alone; asking first whether both meet takes
  // longer.
  const Geos::Shape taken =
      geos_.own(GEOSIntersection_r(geos_.context(), left_.get(), shape.get()));
  Region region = geos_.polygons(taken.get());
  if (region.empty()) return region;
  left_ = geos_.own(GEOSDifference_r(geos_.context(), left_.get(), shape.get()));
  return region;
}

Region Leftover::rest() const { return geos_.polygons(left_.get()); }

std::vector<std::array<Point2, 3>> triangles_of(const Polygon2& polygon) {
  const Geos geos;
  const Geos::Shape whole = geos.polygon(rings_of(polygon));
  const Geos::Shape parts =
      geos.own(GEOSConstrainedDelaunayTriangulation_r(geos.context(), whole.get()));
  std::vector<std::array<Point2, 3>> triangles;
  for (const Polygon2& part : geos.polygons(parts.get())) {
    triangles.push_back({part.outer[0], part.outer[1], part.outer[2]});
  }
  return triangles;
}

}  // namespace townskin_case
