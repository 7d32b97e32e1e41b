#include "city/geojson.hpp"

#include <nlohmann/json.hpp>

namespace townskin_case {
namespace {

/// Thrown within a feature whose coordinates are not what they must be.
struct Unreadable {
  std::string why;
};

Vector3 point_of(const Json& value) {
  if (!value.is_array() || value.size() < 2) throw Unreadable{"a point is no pair of numbers"};
  for (std::size_t i = 0; i < std::min<std::size_t>(value.size(), 3); ++i) {
    if (!value[i].is_number()) throw Unreadable{"a point is no pair of numbers"};
  }
  return {value[0].get<double>(), value[1].get<double>(),
          value.size() > 2 ? value[2].get<double>() : 0.0};
}

const Json& array_of(const Json& value) {
  if (!value.is_array()) throw Unreadable{"coordinates are no array"};
  return value;
}

RawPolygon polygon_of(const Json& coordinates) {
  RawPolygon polygon;
  for (const Json& points : array_of(coordinates)) {
    Ring3& ring = polygon.rings.emplace_back();
    for (const Json& point : array_of(points)) ring.push_back(point_of(point));
  }
  std::erase_if(polygon.rings, [](const Ring3& ring) { return ring.empty(); });
  return polygon;
}

void add_geometry(const Json& geometry, Feature& feature) {
  const auto type = text_member(geometry, "type").value_or("");
  if (type == "GeometryCollection") {
    const Json* parts = array_member(geometry, "geometries");
    if (parts == nullptr) throw Unreadable{"a collection without geometries"};
    for (const Json& part : *parts) add_geometry(part, feature);
    return;
  }
  const Json* found = member(geometry, "coordinates");
  if (found == nullptr) throw Unreadable{"a geometry without coordinates"};
  if (type == "Polygon") {
    feature.polygons.push_back(polygon_of(*found));
  } else if (type == "MultiPolygon") {
    for (const Json& part : array_of(*found)) feature.polygons.push_back(polygon_of(part));
  } else if (type == "Point") {
    feature.points.push_back(point_of(*found));
  } else if (type == "MultiPoint") {
    for (const Json& point : array_of(*found)) feature.points.push_back(point_of(point));
  }  // lines are nothing that a city is made of here
  std::erase_if(feature.polygons, [](const RawPolygon& polygon) { return polygon.rings.empty(); });
}

void add_feature(const Json& value, std::size_t number, Layer& layer, Report& report) {
  Feature feature;
  feature.rings_closed = true;
  feature.attributes = attributes_of(member(value, "properties"));
  feature.origin = {layer.file, name_of(value, feature.attributes, number)};
  const Json* geometry = object_member(value, "geometry");
  if (geometry == nullptr) return report.leave_out("no geometry", feature.origin);
  try {
    add_geometry(*geometry, feature);
  } catch (const Unreadable& unreadable) {
    return report.leave_out(unreadable.why, feature.origin);
  }
  if (feature.polygons.empty() && feature.points.empty()) {
    return report.leave_out("neither polygon nor point", feature.origin);
  }
  layer.features.push_back(std::move(feature));
}

/// What the `crs` member names: {"type": "name", "properties": {"name": ...}}.
std::optional<std::string> named_crs(const Json& root, const std::string& file) {
  const Json* crs = member(root, "crs");
  if (crs == nullptr) return std::nullopt;
  if (auto text = as_text(*crs)) return text;
  if (const Json* properties = object_member(*crs, "properties")) {
    for (const char* name : {"name", "code"}) {
      if (const Json* value = member(*properties, name)) {
        if (auto text = as_text(*value)) return text;
      }
    }
  }
  Report::fault("its crs member does not name a coordinate system", {file, ""});
}

}  // namespace

Layer read_geojson(const Json& root, const std::string& file, Report& report) {
  Layer layer;
  layer.file = file;
  layer.crs = named_crs(root, file);
  const auto type = text_member(root, "type").value_or("");
  if (type == "FeatureCollection") {
    const Json* features = array_member(root, "features");
    if (features == nullptr) Report::fault("a FeatureCollection without features", {file, ""});
    std::size_t number = 0;
    for (const Json& feature : *features) add_feature(feature, ++number, layer, report);
  } else if (type == "Feature") {
    add_feature(root, 1, layer, report);
  } else if (member(root, "coordinates") != nullptr || type == "GeometryCollection") {
    add_feature(Json{{"geometry", root}}, 1, layer, report);
  } else {
    Report::fault("neither GeoJSON nor CityJSON: type '" + type + "'", {file, ""});
  }
  return layer;
}

}  // namespace townskin_case
