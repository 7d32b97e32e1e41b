// From the coordinates of a file to metres east and north of a place on the ground.
//
// A transverse Mercator projection with its centre at the place: true to scale there (1e-8 within a
// kilometre), and y points to true north.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "report.hpp"
#include "shapes/geometry.hpp"

struct PJconsts;
struct pj_ctx;

namespace townskin_case {

/// [degree]
struct Place {
  double latitude = 0.0, longitude = 0.0;
};

/// A coordinate system of the data. One that PROJ does not know, or whose x and y are no position
/// on the ground, is a fault.
class CoordinateSystem {
 public:
  CoordinateSystem(const std::string& name, const Origin& origin);

  /// The place of a point; nothing where the system has none.
  [[nodiscard]] std::optional<Place> place(const Point2& point) const;
  /// False if the place lies outside the area that the system was made for.
  [[nodiscard]] bool meant_for(const Place& place) const;
  [[nodiscard]] const std::string& name() const { return name_; }
  /// Metres in a unit of its heights: of its own axis for them, else of x and y; 1 for degrees.
  [[nodiscard]] double height_unit() const { return height_unit_; }

 private:
  friend class LocalProjection;
  struct Free {
    void operator()(pj_ctx* context) const;
    void operator()(PJconsts* projection) const;
  };
  using Handle = std::unique_ptr<PJconsts, Free>;
  [[nodiscard]] Handle to(const std::string& target) const;

  std::string name_;
  std::unique_ptr<pj_ctx, Free> context_;
  Handle plane_, to_degrees_;
  double height_unit_ = 1.0;
};

/// Points of the system in metres about the centre.
class LocalProjection {
 public:
  LocalProjection(const CoordinateSystem& from, const Place& centre);
  /// Nothing where the point cannot be projected.
  [[nodiscard]] std::optional<Point2> operator()(const Point2& point) const;

 private:
  CoordinateSystem::Handle projection_;
};

/// The place of a point of the local projection about `centre`.
Place place_of_local(const Place& centre, const Point2& point);

}  // namespace townskin_case
