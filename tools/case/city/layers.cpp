#include "city/layers.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "city/city_model.hpp"
#include "city/geojson.hpp"

namespace townskin_case {

Layer read_layer(const std::string& file, const CityInput& input, Report& report) {
  const std::string text = read_text(file);
  if (file.ends_with(".jsonl")) return read_city_sequence(text, file, input.lod, report);
  const Json root = parse_json(text, {file, ""});
  return is_city_model(root) ? read_city_model(root, file, input.lod, report)
                             : read_geojson(root, file, report);
}

Point2 box_middle(const Feature& feature) {
  Point2 low{HUGE_VAL, HUGE_VAL}, high{-HUGE_VAL, -HUGE_VAL};
  const auto stretch = [&](const Vector3& p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  };
  for (const RawPolygon& polygon : feature.polygons) {
    for (const Ring3& ring : polygon.rings) std::for_each(ring.begin(), ring.end(), stretch);
  }
  std::for_each(feature.points.begin(), feature.points.end(), stretch);
  return {0.5 * (low.x + high.x), 0.5 * (low.y + high.y)};
}

}  // namespace townskin_case
