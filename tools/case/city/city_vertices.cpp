#include "city/city_vertices.hpp"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace townskin_case {
namespace {

std::optional<std::vector<double>> numbers_of(const Json* value, std::size_t count) {
  if (value == nullptr || !value->is_array() || value->size() < count) return std::nullopt;
  std::vector<double> numbers;
  for (const Json& number : *value) {
    if (!number.is_number()) return std::nullopt;
    numbers.push_back(number.get<double>());
  }
  return numbers;
}

/// How far the middle of the points lies from the middle of the extent, in x and y.
double distance_to_extent(const std::vector<Vector3>& points, const Vector3& shift,
                          const std::vector<double>& extent) {
  Vector3 low = points.front(), high = points.front();
  for (const Vector3& point : points) {
    low = {std::min(low.x, point.x), std::min(low.y, point.y), 0.0};
    high = {std::max(high.x, point.x), std::max(high.y, point.y), 0.0};
  }
  const double x = 0.5 * (low.x + high.x) - shift.x - 0.5 * (extent[0] + extent[3]);
  const double y = 0.5 * (low.y + high.y) - shift.y - 0.5 * (extent[1] + extent[4]);
  return std::hypot(x, y);
}

}  // namespace

VertexTransform transform_of(const Json& root, const std::string& file) {
  const Json* transform = member(root, "transform");
  if (transform == nullptr) return {};
  const auto scale = numbers_of(member(*transform, "scale"), 3);
  const auto translate = numbers_of(member(*transform, "translate"), 3);
  if (!scale || !translate) {
    Report::fault("its transform lacks three numbers of scale and translate", {file, ""});
  }
  return {{(*scale)[0], (*scale)[1], (*scale)[2]},
          {(*translate)[0], (*translate)[1], (*translate)[2]}};
}

std::vector<Vector3> vertices_of(const Json& root, const VertexTransform& transform,
                                 const std::string& file) {
  const Json* list = array_member(root, "vertices");
  if (list == nullptr) Report::fault("a city model without vertices", {file, ""});
  std::vector<Vector3> vertices;
  vertices.reserve(list->size());
  for (const Json& value : *list) {
    const auto v = numbers_of(&value, 3);
    if (!v) {
      Report::fault("vertex " + std::to_string(vertices.size()) + " is no three numbers",
                    {file, ""});
    }
    vertices.push_back({(*v)[0] * transform.scale.x + transform.translate.x,
                        (*v)[1] * transform.scale.y + transform.translate.y,
                        (*v)[2] * transform.scale.z + transform.translate.z});
  }
  return vertices;
}

bool undo_double_translation(const Json& root, const VertexTransform& transform,
                             std::vector<Vector3>& vertices, const std::string& file,
                             Report& report) {
  const Json* metadata = object_member(root, "metadata");
  if (metadata == nullptr || vertices.empty()) return false;
  const auto extent = numbers_of(member(*metadata, "geographicalExtent"), 6);
  if (!extent) return false;
  const double size = std::hypot((*extent)[3] - (*extent)[0], (*extent)[4] - (*extent)[1]);
  const double off = distance_to_extent(vertices, {}, *extent);
  if (off <= 2.0 * size) return false;
  if (distance_to_extent(vertices, transform.translate, *extent) > 2.0 * size) {
    report.warning(file + ": its points lie far from the geographicalExtent that it states");
    return false;
  }
  for (Vector3& vertex : vertices) vertex = vertex - transform.translate;
  report.repair("translation applied twice taken back", {file, "vertices"});
  return true;
}

std::optional<std::string> model_crs(const Json& root) {
  const Json* metadata = object_member(root, "metadata");
  if (metadata == nullptr) return std::nullopt;
  if (auto text = text_member(*metadata, "referenceSystem"); text && !text->empty()) return text;
  const Json* crs = object_member(*metadata, "crs");
  const Json* code = crs != nullptr ? member(*crs, "epsg") : nullptr;
  return code != nullptr ? as_text(*code) : std::nullopt;
}

}  // namespace townskin_case
