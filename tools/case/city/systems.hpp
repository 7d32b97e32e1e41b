// The coordinate systems of all layers together, and their common way to local metres.
#pragma once

#include <memory>

#include "city/city_input.hpp"
#include "city/features.hpp"
#include "city/projection.hpp"

namespace townskin_case {

/// Takes points of each layer to metres about one centre.
class LocalMetres {
 public:
  /// Nothing where the point cannot be projected.
  [[nodiscard]] std::optional<Point2> operator()(std::size_t layer, const Point2& point) const;

 private:
  friend class Systems;
  std::vector<std::shared_ptr<const LocalProjection>> projections_;  ///< by layer; or none:
  Point2 shift_;                                                     ///< metres already
};

/// Each layer has the system that the user states, else its own; coordinates that can only be
/// degrees are degrees. A layer without any takes that of the first other; where none has one all
/// count as metres. Both are warnings.
class Systems {
 public:
  Systems(const std::vector<Layer>& layers, const CityInput& input, Report& report);

  /// True if the systems tell where on earth the layers lie.
  [[nodiscard]] bool placed() const { return placed_; }
  /// Degrees (longitude, latitude) where placed, else the point itself.
  [[nodiscard]] std::optional<Point2> common(std::size_t layer, const Point2& point) const;
  [[nodiscard]] LocalMetres about(const Point2& common_centre) const;
  [[nodiscard]] double height_unit(std::size_t layer) const;
  /// Warns of systems that are not meant for the place.
  void check_place(const Place& place, Report& report) const;

 private:
  bool placed_ = false;
  std::vector<std::shared_ptr<const CoordinateSystem>> systems_;  ///< by layer
};

}  // namespace townskin_case
