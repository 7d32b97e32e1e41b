#include "shapes/geos.hpp"

#include <algorithm>
#include <cmath>

#include "shapes/plan.hpp"

namespace townskin_case {
namespace {

void keep_message(const char* message, void* into) { *static_cast<std::string*>(into) = message; }

}  // namespace

Geos::Geos() : context_(GEOS_init_r()) {
  GEOSContext_setErrorMessageHandler_r(context_, keep_message, &message_);
}

Geos::~Geos() { GEOS_finish_r(context_); }

Geos::Shape Geos::own(GEOSGeometry* shape) const {
  if (shape == nullptr) throw GeosFailure(message_.empty() ? "out of memory" : message_);
  return {shape, Free{context_}};
}

GEOSCoordSequence* Geos::sequence(const Point2* points, std::size_t count, bool close) const {
  std::vector<double> flat;
  flat.reserve(2 * (count + 1));
  for (std::size_t i = 0; i < count + (close ? 1 : 0); ++i) {
    flat.push_back(points[i % count].x);
    flat.push_back(points[i % count].y);
  }
  return GEOSCoordSeq_copyFromBuffer_r(context_, flat.data(),
                                       static_cast<unsigned>(flat.size() / 2), 0, 0);
}

Geos::Shape Geos::point(const Point2& at) const {
  return own(GEOSGeom_createPointFromXY_r(context_, at.x, at.y));
}

Geos::Shape Geos::polygon(const std::vector<Ring2>& rings) const {
  if (rings.empty()) return own(GEOSGeom_createEmptyPolygon_r(context_));
  std::vector<GEOSGeometry*> made;
  for (const Ring2& ring : rings) {
    made.push_back(GEOSGeom_createLinearRing_r(context_, sequence(ring.data(), ring.size(), true)));
    if (made.back() == nullptr) {
      made.pop_back();
      for (GEOSGeometry* part : made) GEOSGeom_destroy_r(context_, part);
      throw GeosFailure(message_);
    }
  }
  return own(GEOSGeom_createPolygon_r(context_, made.front(), made.data() + 1,
                                      static_cast<unsigned>(made.size() - 1)));
}

Geos::Shape Geos::lines(const std::vector<Segment2>& segments) const {
  std::vector<Shape> made;
  made.reserve(segments.size());
  for (const Segment2& segment : segments) {
    made.push_back(own(GEOSGeom_createLineString_r(context_, sequence(segment.data(), 2, false))));
  }
  return collection(std::move(made));
}

Geos::Shape Geos::collection(std::vector<Shape> shapes) const {
  std::vector<GEOSGeometry*> parts;
  parts.reserve(shapes.size());
  for (Shape& shape : shapes) parts.push_back(shape.release());
  return own(GEOSGeom_createCollection_r(context_, GEOS_GEOMETRYCOLLECTION, parts.data(),
                                         static_cast<unsigned>(parts.size())));
}

Geos::Shape Geos::all_of(const std::vector<std::vector<Ring2>>& polygons) const {
  std::vector<Shape> shapes;
  shapes.reserve(polygons.size());
  for (const auto& rings : polygons) shapes.push_back(polygon(rings));
  return collection(std::move(shapes));
}

Geos::Shape Geos::dissolved(const std::vector<std::vector<Ring2>>& polygons) const {
  const Shape all = all_of(polygons);
  GEOSGeometry* quick = GEOSCoverageUnion_r(context_, all.get());
  if (quick != nullptr) {
    Shape shape = own(quick);
    double before = 0.0, after = 0.0;
    GEOSArea_r(context_, all.get(), &before);
    GEOSArea_r(context_, quick, &after);
    // Polygons that do meet in another way show in the area, or do not make a valid shape.
    if (std::abs(after - before) <= 1e-12 * before && GEOSisValid_r(context_, quick) == 1) {
      return shape;
    }
  }
  return own(GEOSUnaryUnion_r(context_, all.get()));
}

Geos::Shape Geos::united(const std::vector<std::vector<Ring2>>& polygons) const {
  return own(GEOSUnaryUnion_r(context_, all_of(polygons).get()));
}

Ring2 Geos::points_of(const GEOSGeometry* line) const {
  const GEOSCoordSequence* points = GEOSGeom_getCoordSeq_r(context_, line);
  unsigned count = 0;
  if (points == nullptr || GEOSCoordSeq_getSize_r(context_, points, &count) == 0) return {};
  Ring2 ring(count);
  for (unsigned i = 0; i < count; ++i) {
    GEOSCoordSeq_getXY_r(context_, points, i, &ring[i].x, &ring[i].y);
  }
  return ring;
}

std::vector<Polygon2> Geos::polygons(const GEOSGeometry* shape) const {
  std::vector<Polygon2> found;
  const auto ring_of = [this](const GEOSGeometry* ring, bool left) {
    Ring2 points = points_of(ring);
    if (!points.empty()) points.pop_back();
    if ((signed_area(points) > 0.0) != left) std::reverse(points.begin(), points.end());
    return points;
  };
  if (GEOSGeomTypeId_r(context_, shape) == GEOS_POLYGON) {
    if (GEOSisEmpty_r(context_, shape) != 0) return found;
    Polygon2& polygon = found.emplace_back();
    polygon.outer = ring_of(GEOSGetExteriorRing_r(context_, shape), true);
    for (int i = 0; i < GEOSGetNumInteriorRings_r(context_, shape); ++i) {
      polygon.holes.push_back(ring_of(GEOSGetInteriorRingN_r(context_, shape, i), false));
    }
  } else if (GEOSGeomTypeId_r(context_, shape) >= GEOS_MULTIPOINT) {
    for (int i = 0; i < GEOSGetNumGeometries_r(context_, shape); ++i) {
      auto part = polygons(GEOSGetGeometryN_r(context_, shape, i));
      std::move(part.begin(), part.end(), std::back_inserter(found));
    }
  }
  return found;
}

}  // namespace townskin_case
