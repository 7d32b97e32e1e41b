#include "city/placement.hpp"

#include <algorithm>
#include <unordered_map>

#include "city/clip.hpp"
#include "city/layers.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {
namespace {

constexpr double out_of_reach = 100e3;  // [m]

double median(std::vector<double> values) {
  const auto half = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), half, values.end());
  return *half;
}

/// Where most buildings lie, in the common coordinates.
Point2 rough_centre(const std::vector<Layer>& layers, std::size_t building_layers,
                    const Systems& systems) {
  std::vector<double> x, y;
  bool nowhere = false;
  for (std::size_t i = 0; i < building_layers; ++i) {
    for (const Feature& feature : layers[i].features) {
      const auto point = systems.common(i, box_middle(feature));
      if (!point || !std::isfinite(point->x) || !std::isfinite(point->y)) {
        nowhere = true;
        continue;
      }
      x.push_back(point->x);
      y.push_back(point->y);
    }
  }
  if (x.empty() && nowhere) {
    Report::fault("its coordinates are no places in their coordinate system",
                  {layers.front().file, ""});
  }
  if (x.empty()) Report::fault("no building", {layers.empty() ? "" : layers.front().file, ""});
  return {median(std::move(x)), median(std::move(y))};
}

/// Points of one layer into metres; faces share their points, and a look into a table is quicker.
class Projector {
 public:
  Projector(const LocalMetres& metres, std::size_t layer) : metres_(metres), layer_(layer) {}
  std::optional<Point2> operator()(const Point2& point) {
    const auto [known, fresh] = known_.try_emplace(point);
    if (fresh) known->second = metres_(layer_, point);
    return known->second;
  }

 private:
  const LocalMetres& metres_;
  std::size_t layer_;
  std::unordered_map<Point2, std::optional<Point2>, PointHash> known_;
};

/// False if a point of the feature cannot be brought into metres.
bool project(Feature& feature, Projector& projector, double height_unit) {
  const auto move = [&](Vector3& p) {
    const auto at = projector({p.x, p.y});
    if (!at || !(std::hypot(at->x, at->y) < out_of_reach)) return false;
    if (!(std::abs(p.z) < out_of_reach)) return false;
    p = {at->x, at->y, p.z * height_unit};
    return true;
  };
  for (RawPolygon& polygon : feature.polygons) {
    for (Ring3& ring : polygon.rings) {
      if (!std::all_of(ring.begin(), ring.end(), move)) return false;
    }
  }
  return std::all_of(feature.points.begin(), feature.points.end(), move);
}

void project_all(std::vector<Layer>& layers, const Systems& systems, const LocalMetres& metres,
                 Report& report) {
  for (std::size_t i = 0; i < layers.size(); ++i) {
    Projector projector(metres, i);
    for (auto* features : {&layers[i].features, &layers[i].ground, &layers[i].plants}) {
      std::erase_if(*features, [&](Feature& feature) {
        if (project(feature, projector, systems.height_unit(i))) return false;
        report.leave_out("a point that lies nowhere near", feature.origin);
        return true;
      });
    }
  }
}

}  // namespace

std::optional<Place> place_layers(std::vector<Layer>& layers, std::size_t building_layers,
                                  const CityInput& input, Report& report) {
  const Systems systems(layers, input, report);
  Point2 centre = rough_centre(layers, building_layers, systems);
  const Point2 middle = clip_layers(layers, building_layers, input, systems.about(centre), report);
  std::optional<Place> place;
  if (systems.placed()) {
    place = place_of_local({centre.y, centre.x}, middle);
    centre = {place->longitude, place->latitude};
    systems.check_place(*place, report);
  } else {
    // Whole metres, so that coordinates keep their digits.
    centre = {std::round(centre.x + middle.x), std::round(centre.y + middle.y)};
  }
  project_all(layers, systems, systems.about(centre), report);
  return place;
}

}  // namespace townskin_case
