#include "city/clip.hpp"

#include <algorithm>

#include "city/layers.hpp"

namespace townskin_case {
namespace {

constexpr double farthest = 50e3;  // [m]

/// The area that the user wants.
struct Area {
  std::vector<Point2> corners;  ///< of the rectangle, turning to the left; or none
  std::optional<double> radius;
  Point2 centre;

  [[nodiscard]] bool holds(const Point2& p) const {
    if (radius && std::hypot(p.x - centre.x, p.y - centre.y) > *radius) return false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const Point2 &a = corners[i], &b = corners[(i + 1) % corners.size()];
      if ((b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x) < 0.0) return false;
    }
    return true;
  }
  [[nodiscard]] bool given() const { return radius || !corners.empty(); }
};

Area area_of(const CityInput& input, const LocalMetres& metres) {
  const auto local = [&](double x, double y) {
    const auto point = metres(0, {x, y});
    if (!point) Report::fault("the clipping area cannot be projected", {});
    return *point;
  };
  Area area;
  area.radius = input.clip_radius;
  if (input.clip_rectangle) {
    const auto& [west, south, east, north] = *input.clip_rectangle;
    if (!(west < east && south < north)) {
      Report::fault("a clipping rectangle must be west, south, east, north", {});
    }
    area.corners = {local(west, south), local(east, south), local(east, north), local(west, north)};
    area.centre = local(0.5 * (west + east), 0.5 * (south + north));
  }
  if (input.clip_centre) area.centre = local((*input.clip_centre)[0], (*input.clip_centre)[1]);
  return area;
}

}  // namespace

Point2 clip_layers(std::vector<Layer>& layers, std::size_t building_layers, const CityInput& input,
                   const LocalMetres& metres, Report& report) {
  const Area area = area_of(input, metres);
  Point2 low{HUGE_VAL, HUGE_VAL}, high{-HUGE_VAL, -HUGE_VAL};
  for (std::size_t i = 0; i < layers.size(); ++i) {
    const bool files_of_ground = i >= building_layers && i < building_layers + input.ground.size();
    const auto far_off = [&](const Feature& feature) {
      const auto at = metres(i, box_middle(feature));
      if (at && std::hypot(at->x, at->y) < farthest) return false;
      report.leave_out("50 km or more from the middle of the buildings", feature.origin);
      return true;
    };
    const auto out = [&](const Feature& feature) {
      return far_off(feature) || (!files_of_ground && !area.holds(*metres(i, box_middle(feature))));
    };
    std::erase_if(layers[i].features, out);
    std::erase_if(layers[i].ground, far_off);
    std::erase_if(layers[i].plants, out);
    if (i >= building_layers) continue;
    for (const Feature& feature : layers[i].features) {
      const Point2 at = *metres(i, box_middle(feature));
      low = {std::min(low.x, at.x), std::min(low.y, at.y)};
      high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
  }
  if (low.x > high.x) Report::fault("no building within the area that is asked for", {});
  return area.given() ? area.centre : Point2{0.5 * (low.x + high.x), 0.5 * (low.y + high.y)};
}

}  // namespace townskin_case
