// GEOS in small: its handles owned, its failures as exceptions, polygons in and out.
#pragma once

#define GEOS_USE_ONLY_R_API
#include <geos_c.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "shapes/geometry.hpp"

namespace townskin_case {

/// A step that GEOS gave up.
class GeosFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using Segment2 = std::array<Point2, 2>;

/// A context of GEOS; not shared by threads. Shapes must not outlive it.
class Geos {
 public:
  struct Free {
    GEOSContextHandle_t context;
    void operator()(GEOSGeometry* shape) const { GEOSGeom_destroy_r(context, shape); }
  };
  using Shape = std::unique_ptr<GEOSGeometry, Free>;

  Geos();
  ~Geos();
  Geos(const Geos&) = delete;
  Geos& operator=(const Geos&) = delete;

  [[nodiscard]] GEOSContextHandle_t context() const { return context_; }
  /// Takes what a routine of GEOS gave; nullptr is a failure.
  [[nodiscard]] Shape own(GEOSGeometry* shape) const;

  [[nodiscard]] Shape point(const Point2& at) const;
  [[nodiscard]] Shape polygon(const std::vector<Ring2>& rings) const;
  [[nodiscard]] Shape lines(const std::vector<Segment2>& segments) const;
  [[nodiscard]] Shape collection(std::vector<Shape> shapes) const;
  /// Polygons that meet edge by edge, or not at all, without the edges between them.
  [[nodiscard]] Shape dissolved(const std::vector<std::vector<Ring2>>& polygons) const;
  /// Any polygons as one.
  [[nodiscard]] Shape united(const std::vector<std::vector<Ring2>>& polygons) const;

  /// All polygons in the shape; outer rings turn to the left, holes to the right.
  [[nodiscard]] std::vector<Polygon2> polygons(const GEOSGeometry* shape) const;
  [[nodiscard]] Ring2 points_of(const GEOSGeometry* line) const;

 private:
  [[nodiscard]] Shape all_of(const std::vector<std::vector<Ring2>>& polygons) const;
  [[nodiscard]] GEOSCoordSequence* sequence(const Point2* points, std::size_t count,
                                            bool close) const;
  GEOSContextHandle_t context_;
  std::string message_;
};

}  // namespace townskin_case
