#include "regions.hpp"

#include "geos.hpp"

namespace townskin_case {

namespace {

std::vector<Ring2> rings_of(const Polygon2& polygon) {
  std::vector<Ring2> rings{polygon.outer};
  rings.insert(rings.end(), polygon.holes.begin(), polygon.holes.end());
  return rings;
}

Geos::Shape shape_of(const Geos& geos, const Region& region) {
  std::vector<std::vector<Ring2>> polygons;
  for (const Polygon2& polygon : region) polygons.push_back(rings_of(polygon));
  return geos.united(polygons);
}

template <class Operation>
Region combine(const Region& a, const Region& b, Operation operation) {
  const Geos geos;
  const Geos::Shape left = shape_of(geos, a);
  const Geos::Shape right = shape_of(geos, b);
  return geos.polygons(geos.own(operation(geos.context(), left.get(), right.get())).get());
}

}  // namespace

Region without(const Region& region, const Region& taken) {
  return combine(region, taken, GEOSDifference_r);
}

Region common(const Region& a, const Region& b) { return combine(a, b, GEOSIntersection_r); }

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
