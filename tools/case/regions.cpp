#include "regions.hpp"

#include <geos_c.h>

#include <memory>
#include <string>

#include "report.hpp"

namespace townskin_case {

namespace {

/// The library's state, with its last message.
class Geos {
 public:
  Geos() : handle_(GEOS_init_r()) {
    GEOSContext_setErrorMessageHandler_r(
        handle_, [](const char* text, void* to) { *static_cast<std::string*>(to) = text; },
        &message_);
  }
  ~Geos() { GEOS_finish_r(handle_); }
  Geos(const Geos&) = delete;
  Geos& operator=(const Geos&) = delete;

  struct Delete {
    GEOSContextHandle_t handle;
    void operator()(GEOSGeometry* geometry) const { GEOSGeom_destroy_r(handle, geometry); }
  };
  using Geometry = std::unique_ptr<GEOSGeometry, Delete>;

  /// Takes what the library returned; none is its word for a fault.
  Geometry own(GEOSGeometry* geometry) {
    if (geometry == nullptr) throw Fault("geometry : " + message_);
    return Geometry(geometry, Delete{handle_});
  }
  [[nodiscard]] GEOSContextHandle_t handle() const { return handle_; }

  Geometry of(const Region& region) {
    std::vector<GEOSGeometry*> parts;
    for (const Polygon2& polygon : region) parts.push_back(of(polygon).release());
    return own(GEOSGeom_createCollection_r(handle_, GEOS_MULTIPOLYGON, parts.data(),
                                           static_cast<unsigned>(parts.size())));
  }

  Geometry of(const Polygon2& polygon) {
    std::vector<GEOSGeometry*> holes;
    for (const Ring2& hole : polygon.holes) holes.push_back(ring(hole));
    return own(GEOSGeom_createPolygon_r(handle_, ring(polygon.outer), holes.data(),
                                        static_cast<unsigned>(holes.size())));
  }

  /// All polygons of a geometry; lines and points that an operation leaves have no area.
  void take(const GEOSGeometry* geometry, Region& region) {
    const int parts = GEOSGetNumGeometries_r(handle_, geometry);
    if (GEOSGeomTypeId_r(handle_, geometry) == GEOS_POLYGON) {
      if (GEOSisEmpty_r(handle_, geometry) == 0) region.push_back(polygon(geometry));
      return;
    }
    for (int p = 0; p < parts; ++p) {
      const GEOSGeometry* const part = GEOSGetGeometryN_r(handle_, geometry, p);
      if (part != geometry) take(part, region);
    }
  }

 private:
  GEOSGeometry* ring(const Ring2& points) {
    const auto size = static_cast<unsigned>(points.size()) + 1;
    GEOSCoordSequence* const row = GEOSCoordSeq_create_r(handle_, size, 2);
    for (unsigned p = 0; p < size; ++p) {
      const Point2& at = points[p % points.size()];
      GEOSCoordSeq_setXY_r(handle_, row, p, at.x, at.y);
    }
    return GEOSGeom_createLinearRing_r(handle_, row);
  }

  Ring2 points(const GEOSGeometry* ring, bool left) {
    const GEOSCoordSequence* const row = GEOSGeom_getCoordSeq_r(handle_, ring);
    unsigned size = 0;
    GEOSCoordSeq_getSize_r(handle_, row, &size);
    Ring2 out;
    double twice = 0.0;
    for (unsigned p = 0; p + 1 < size; ++p) {
      Point2 at;
      GEOSCoordSeq_getXY_r(handle_, row, p, &at.x, &at.y);
      out.push_back(at);
    }
    for (std::size_t p = 0; p < out.size(); ++p) {
      const Point2& next = out[(p + 1) % out.size()];
      twice +=
          (out[p].x - out[0].x) * (next.y - out[0].y) - (next.x - out[0].x) * (out[p].y - out[0].y);
    }
    if ((twice > 0.0) != left) return {out.rbegin(), out.rend()};
    return out;
  }

  Polygon2 polygon(const GEOSGeometry* geometry) {
    Polygon2 out;
    out.outer = points(GEOSGetExteriorRing_r(handle_, geometry), true);
    const int holes = GEOSGetNumInteriorRings_r(handle_, geometry);
    for (int h = 0; h < holes; ++h) {
      out.holes.push_back(points(GEOSGetInteriorRingN_r(handle_, geometry, h), false));
    }
    return out;
  }

  GEOSContextHandle_t handle_;
  std::string message_;
};

template <class Operation>
Region combine(const Region& a, const Region& b, Operation operation) {
  Geos geos;
  const auto left = geos.of(a);
  const auto right = geos.of(b);
  Region out;
  geos.take(geos.own(operation(geos.handle(), left.get(), right.get())).get(), out);
  return out;
}

}  // namespace

Region united(const std::vector<Polygon2>& polygons) {
  Geos geos;
  Region out;
  const auto all = geos.of(polygons);
  geos.take(geos.own(GEOSUnaryUnion_r(geos.handle(), all.get())).get(), out);
  return out;
}

Region without(const Region& region, const Region& taken) {
  return combine(region, taken, GEOSDifference_r);
}

Region common(const Region& a, const Region& b) { return combine(a, b, GEOSIntersection_r); }

std::vector<std::array<Point2, 3>> triangles_of(const Polygon2& polygon) {
  Geos geos;
  Region parts;
  const auto whole = geos.of(polygon);
  geos.take(geos.own(GEOSConstrainedDelaunayTriangulation_r(geos.handle(), whole.get())).get(),
            parts);
  std::vector<std::array<Point2, 3>> triangles;
  for (const Polygon2& part : parts) {
    triangles.push_back({part.outer[0], part.outer[1], part.outer[2]});
  }
  return triangles;
}

}  // namespace townskin_case
