#include "city/systems.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>

#include "city/layers.hpp"

namespace townskin_case {
namespace {

/// No city in metres is as small as a degree, and none in degrees as large.
bool only_degrees(const Layer& layer) {
  if (layer.features.empty()) return false;
  Point2 low{HUGE_VAL, HUGE_VAL}, high{-HUGE_VAL, -HUGE_VAL};
  for (const Feature& feature : layer.features) {
    const Point2 p = box_middle(feature);
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  // One building alone: its own size decides.
  const auto& polygons = layer.features.front().polygons;
  if (!polygons.empty() && !polygons.front().rings.empty()) {
    for (const Vector3& p : polygons.front().rings.front()) {
      low = {std::min(low.x, p.x), std::min(low.y, p.y)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
  }
  return low.x >= -180.0 && high.x <= 180.0 && low.y >= -90.0 && high.y <= 90.0 &&
         high.x - low.x < 1.0 && high.y - low.y < 1.0;
}

std::string name_of_system(const Layer& layer, const CityInput& input) {
  if (!input.crs.empty()) return input.crs;
  if (layer.crs) return *layer.crs;
  return only_degrees(layer) ? "OGC:CRS84" : "";
}

}  // namespace

std::optional<Point2> LocalMetres::operator()(std::size_t layer, const Point2& point) const {
  if (projections_[layer]) return (*projections_[layer])(point);
  return Point2{point.x - shift_.x, point.y - shift_.y};
}

Systems::Systems(const std::vector<Layer>& layers, const CityInput& input, Report& report) {
  std::map<std::string, std::shared_ptr<const CoordinateSystem>> by_name;
  std::vector<std::string> names;
  std::string first;
  for (const Layer& layer : layers) {
    names.push_back(name_of_system(layer, input));
    if (first.empty()) first = names.back();
  }
  placed_ = !first.empty();
  if (!placed_) report.warning("no file names a coordinate system: coordinates count as metres");
  for (std::size_t i = 0; i < layers.size(); ++i) {
    if (placed_ && names[i].empty()) {
      names[i] = first;
      report.warning(layers[i].file + ": names no coordinate system; " + first + " is taken");
    }
    auto& system = by_name[names[i]];
    if (!system && placed_) {
      const bool stated = !input.crs.empty();
      system = std::make_shared<CoordinateSystem>(
          names[i], stated ? Origin{"", ""} : Origin{layers[i].file, ""});
    }
    systems_.push_back(system);
    const bool outlines = std::any_of(layers[i].features.begin(), layers[i].features.end(),
                                      [](const Feature& feature) { return !feature.solid; });
    if (system && outlines && system->height_unit() != 1.0) {
      report.warning(layers[i].file + ": its coordinates are not in metres; heights among its " +
                     "attributes still count as metres where they name no unit");
    }
  }
}

std::optional<Point2> Systems::common(std::size_t layer, const Point2& point) const {
  if (!placed_) return point;
  const auto place = systems_[layer]->place(point);
  if (!place) return std::nullopt;
  return Point2{place->longitude, place->latitude};
}

LocalMetres Systems::about(const Point2& common_centre) const {
  LocalMetres metres;
  metres.projections_.resize(systems_.size());
  metres.shift_ = common_centre;
  std::map<const CoordinateSystem*, std::shared_ptr<const LocalProjection>> made;
  for (std::size_t i = 0; placed_ && i < systems_.size(); ++i) {
    auto& projection = made[systems_[i].get()];
    if (!projection) {
      projection =
          std::make_shared<LocalProjection>(*systems_[i], Place{common_centre.y, common_centre.x});
    }
    metres.projections_[i] = projection;
  }
  return metres;
}

double Systems::height_unit(std::size_t layer) const {
  return placed_ ? systems_[layer]->height_unit() : 1.0;
}

void Systems::check_place(const Place& place, Report& report) const {
  std::set<std::string> told;
  for (const auto& system : systems_) {
    if (!system || system->meant_for(place) || !told.insert(system->name()).second) continue;
    std::array<char, 200> text{};
    std::snprintf(text.data(), text.size(),
                  "%.60s is not made for %.4f N, %.4f E, where it puts the city; if the city is "
                  "elsewhere, --crs must name the right system",
                  system->name().c_str(), place.latitude, place.longitude);
    report.warning(text.data());
  }
}

}  // namespace townskin_case
