#include "city/city_model.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "city/city_surfaces.hpp"
#include "city/city_vertices.hpp"

namespace townskin_case {
namespace {

std::string type_of(const Json& object) { return text_member(object, "type").value_or(""); }

bool is_building(const Json& object) {
  const std::string type = type_of(object);
  return type == "Building" || type == "BuildingPart" || type == "BuildingUnit";
}

/// The object's geometries of the highest level up to `lod`; where all are above, of the lowest.
std::vector<const Json*> chosen_geometries(const Json& object, double lod) {
  std::vector<const Json*> chosen;
  const Json* all = array_member(object, "geometry");
  if (all == nullptr) return chosen;
  std::optional<double> best;
  for (const Json& geometry : *all) {
    const double level = lod_of(geometry);
    const bool fits = level <= lod;
    if (!best || (fits ? (*best > lod || level > *best) : level < *best)) best = level;
  }
  for (const Json& geometry : *all) {
    if (lod_of(geometry) == *best) chosen.push_back(&geometry);
  }
  return chosen;
}

/// The building that the object is a part of: up the chain of parents that are buildings.
std::string root_of(const Json& objects, std::string id) {
  for (int step = 0; step < 32; ++step) {
    const Json* parents = array_member(objects[id], "parents");
    if (parents == nullptr || parents->empty() || !parents->front().is_string()) break;
    const auto parent = parents->front().get<std::string>();
    const Json* object = member(objects, parent);
    if (object == nullptr || !is_building(*object)) break;
    id = parent;
  }
  return id;
}

std::string kind_of_ground(const std::string& type) {
  if (type == "Road" || type == "Railway" || type == "TransportSquare") return "asphalt";
  if (type == "WaterBody" || type == "Waterway") return "water";
  if (type == "PlantCover") return "grass";
  return "";
}

/// The objects of one model, or of one feature of a sequence, on their way into a layer.
struct ModelReader {
  const Json& objects;
  const std::vector<Vector3>& vertices;
  double lod;
  Layer& layer;
  Report& report;

  void add(const Json& object, Feature& feature, bool outlines) const {
    for (const Json* geometry : chosen_geometries(object, lod)) {
      if (outlines != (lod_of(*geometry) < 1.0)) continue;
      if (const auto why = add_surfaces(*geometry, vertices, feature)) {
        report.leave_out(*why, feature.origin);
      }
    }
  }

  /// A building of all its parts: their bodies, and only where it has none the outlines of level 0.
  void building(const std::string& id, const std::vector<std::string>& parts) const {
    Feature feature;
    feature.origin = {layer.file, id};
    feature.attributes = attributes_of(member(objects[id], "attributes"));
    for (const std::string& part : parts) {
      feature.attributes.merge(attributes_of(member(objects[part], "attributes")));
      add(objects[part], feature, false);
    }
    if (!feature.polygons.empty()) {
      feature.solid = true;
    } else {
      for (const std::string& part : parts) add(objects[part], feature, true);
    }
    if (feature.polygons.empty()) return report.leave_out("no geometry", feature.origin);
    layer.features.push_back(std::move(feature));
  }

  void other(const std::string& id, const Json& object) const {
    const std::string type = type_of(object);
    const bool plant = type == "SolitaryVegetationObject";
    Feature feature;
    feature.kind = kind_of_ground(type);
    if (!plant && feature.kind.empty() && type != "LandUse") return;
    feature.origin = {layer.file, id};
    feature.attributes = attributes_of(member(object, "attributes"));
    add(object, feature, false);
    if (feature.polygons.empty()) add(object, feature, true);
    if (feature.polygons.empty()) return;
    (plant ? layer.plants : layer.ground).push_back(std::move(feature));
  }

  void read() const {
    std::map<std::string, std::vector<std::string>> families;
    for (const auto& [id, object] : objects.items()) {
      if (!object.is_object()) {
        report.leave_out("no object", {layer.file, id});
      } else if (is_building(object)) {
        families[root_of(objects, id)].push_back(id);
      } else {
        other(id, object);
      }
    }
    for (const auto& [id, parts] : families) building(id, parts);
  }
};

void read_objects(const Json& root, const std::vector<Vector3>& vertices, double lod, Layer& layer,
                  Report& report) {
  const Json* objects = object_member(root, "CityObjects");
  if (objects == nullptr) Report::fault("a city model without CityObjects", {layer.file, ""});
  ModelReader{*objects, vertices, lod, layer, report}.read();
}

void check_version(const Json& root, const std::string& file, Report& report) {
  const auto version = text_member(root, "version").value_or("");
  if (!version.starts_with("1.") && !version.starts_with("2.")) {
    report.warning(file + ": CityJSON version '" + version + "' is read as 2.0");
  }
}

}  // namespace

bool is_city_model(const Json& root) { return type_of(root).starts_with("CityJSON"); }

Layer read_city_model(const Json& root, const std::string& file, double lod, Report& report) {
  Layer layer;
  layer.file = file;
  layer.crs = model_crs(root);
  check_version(root, file, report);
  const VertexTransform transform = transform_of(root, file);
  auto vertices = vertices_of(root, transform, file);
  undo_double_translation(root, transform, vertices, file, report);
  read_objects(root, vertices, lod, layer, report);
  return layer;
}

Layer read_city_sequence(const std::string& text, const std::string& file, double lod,
                         Report& report) {
  Layer layer;
  layer.file = file;
  VertexTransform transform;
  std::size_t number = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string line = text.substr(start, end - start);
    start = end + 1;
    ++number;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const Json root = parse_json(line, {file, "line " + std::to_string(number)});
    if (!is_city_model(root)) {
      Report::fault("no CityJSON", {file, "line " + std::to_string(number)});
    }
    if (type_of(root) == "CityJSON") {
      layer.crs = model_crs(root);
      check_version(root, file, report);
      transform = transform_of(root, file);
    }
    const bool own = member(root, "transform") != nullptr;
    const auto vertices = vertices_of(root, own ? transform_of(root, file) : transform, file);
    read_objects(root, vertices, lod, layer, report);
  }
  return layer;
}

}  // namespace townskin_case
