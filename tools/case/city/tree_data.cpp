#include "city/tree_data.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "shapes/plan.hpp"

namespace townskin_case {
namespace {

std::optional<double> length_between(const Attributes& attributes, Names names, const Names& usual,
                                     double low, double high) {
  names.insert(names.end(), usual.begin(), usual.end());
  const auto length = first_length(attributes, names);
  return length && *length >= low && *length <= high ? length : std::nullopt;
}

/// Crown radius as the attributes tell it: itself, by the diameter or by the area.
std::optional<double> told_radius(const Attributes& attributes, const AttributeNames& names) {
  constexpr double widest = 50.0;  // [m]
  if (const auto radius = length_between(attributes, names.crown_radius,
                                         {"crown_radius", "radius_crown"}, 0.05, widest)) {
    return radius;
  }
  if (const auto diameter =
          length_between(attributes, names.crown_diameter,
                         {"crown_diameter", "diameter_crown", "crownDiameter", "crown_width"}, 0.1,
                         2.0 * widest)) {
    return 0.5 * *diameter;
  }
  const auto size = length_between(attributes, {}, {"crown_area"}, 0.01, 8e3);
  return size ? std::optional(std::sqrt(*size / std::numbers::pi)) : std::nullopt;
}

/// A tree of the feature's attributes, with the radius that its outline has.
Tree tree_of(const Feature& feature, std::optional<double> outline_radius, const CityInput& input,
             Report& report) {
  const Attributes& attributes = feature.attributes;
  const TreeDefaults& usual = input.tree;
  const auto radius = outline_radius ? outline_radius : told_radius(attributes, input.names);
  auto height = length_between(attributes, input.names.tree_height,
                               {"height", "tree_height", "Height", "est_height"}, 0.5, 130.0);
  if (!height) {
    report.repair(radius ? "tree's height taken from its crown" : "tree's default size taken",
                  feature.origin);
    height = radius ? std::max(0.5, *radius / usual.radius_of_height) : usual.height;
  } else if (!radius) {
    report.repair("tree's crown taken from its height", feature.origin);
  }
  Tree tree;
  tree.origin = feature.origin;
  tree.height = *height;
  tree.radius = radius ? *radius : usual.radius_of_height * *height;
  const auto base = length_between(attributes, input.names.crown_base,
                                   {"crown_base", "crown_base_height"}, 0.0, 130.0);
  tree.crown_base = base.value_or(usual.base_of_height * *height);
  if (tree.crown_base > 0.95 * tree.height) {
    report.repair("crown base above the top set aside", feature.origin);
    tree.crown_base = usual.base_of_height * *height;
  }
  tree.leaf_area =
      length_between(attributes, input.names.leaf_area, {"leaf_area_density", "lad"}, 0.0, 20.0)
          .value_or(usual.leaf_area_density);
  return tree;
}

Polygon2 outline_of(const RawPolygon& polygon) {
  Polygon2 outline;
  for (const Vector3& p : polygon.rings.front()) outline.outer.push_back({p.x, p.y});
  if (signed_area(outline.outer) < 0.0) std::reverse(outline.outer.begin(), outline.outer.end());
  return outline;
}

/// The box around all faces of a plant in space gives what its attributes do not.
void add_plant(const Feature& plant, const CityInput& input, std::vector<Tree>& trees,
               Report& report) {
  Vector3 low{HUGE_VAL, HUGE_VAL, HUGE_VAL}, high{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
  for (const RawPolygon& polygon : plant.polygons) {
    for (const Vector3& p : polygon.rings.front()) {
      low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
  }
  Feature told = plant;
  if (high.z - low.z > 0.5) told.attributes.try_emplace("height", std::to_string(high.z - low.z));
  const double radius = 0.25 * (high.x - low.x + high.y - low.y);
  trees.push_back(
      tree_of(told, radius > 0.05 ? std::optional(radius) : std::nullopt, input, report));
  trees.back().foot = {0.5 * (low.x + high.x), 0.5 * (low.y + high.y)};
}

}  // namespace

void add_trees(const Feature& feature, const CityInput& input, std::vector<Tree>& trees,
               Report& report) {
  const bool of_model = !feature.rings_closed && !feature.polygons.empty();
  if (of_model) return add_plant(feature, input, trees, report);
  for (const Vector3& point : feature.points) {
    trees.push_back(tree_of(feature, std::nullopt, input, report));
    trees.back().foot = {point.x, point.y};
  }
  for (const RawPolygon& polygon : feature.polygons) {
    if (polygon.rings.empty()) continue;
    const Polygon2 outline = outline_of(polygon);
    const double size = area(outline);
    if (!(size > 0.01)) {
      report.leave_out("crown without area", feature.origin);
      continue;
    }
    trees.push_back(tree_of(feature, std::sqrt(size / std::numbers::pi), input, report));
    trees.back().foot = middle(outline);
  }
}

}  // namespace townskin_case
