#include "city/city_surfaces.hpp"

#include <map>
#include <nlohmann/json.hpp>

namespace townskin_case {
namespace {

struct Unreadable {
  std::string why;
};

FaceRole role_of(const std::string& type) {
  static const std::map<std::string, FaceRole> roles = {
      {"RoofSurface", FaceRole::roof},     {"OuterFloorSurface", FaceRole::roof},
      {"GroundSurface", FaceRole::ground}, {"WallSurface", FaceRole::wall},
      {"Window", FaceRole::wall},          {"Door", FaceRole::wall},
  };
  const auto found = roles.find(type);
  return found == roles.end() ? FaceRole::unknown : found->second;
}

/// What reads the nested arrays of one geometry.
struct SurfaceReader {
  const std::vector<Vector3>& vertices;
  const Json* kinds;  // the semantics' surfaces, or nullptr
  Feature& feature;

  Ring3 ring(const Json& indices) const {
    if (!indices.is_array()) throw Unreadable{"a ring is no array"};
    Ring3 ring;
    for (const Json& index : indices) {
      if (!index.is_number_unsigned() || index.get<std::uint64_t>() >= vertices.size()) {
        throw Unreadable{"refers to a vertex that is not there"};
      }
      ring.push_back(vertices[index.get<std::size_t>()]);
    }
    return ring;
  }

  FaceRole role(const Json* value) const {
    if (kinds == nullptr || value == nullptr || !value->is_number_unsigned()) {
      return FaceRole::unknown;
    }
    const auto index = value->get<std::uint64_t>();
    return index < kinds->size() ? role_of(text_member((*kinds)[index], "type").value_or(""))
                                 : FaceRole::unknown;
  }

  void surface(const Json& rings, const Json* value) const {
    if (!rings.is_array()) throw Unreadable{"a surface is no array"};
    RawPolygon polygon;
    polygon.role = role(value);
    for (const Json& indices : rings) polygon.rings.push_back(ring(indices));
    std::erase_if(polygon.rings, [](const Ring3& points) { return points.empty(); });
    if (!polygon.rings.empty()) feature.polygons.push_back(std::move(polygon));
  }

  /// `levels` of arrays above the surfaces; `shells` is the level whose first element alone counts.
  void nested(const Json& parts, const Json* values, int levels, int shells) const {
    if (!parts.is_array()) throw Unreadable{"boundaries are no array"};
    for (std::size_t i = 0; i < parts.size(); ++i) {
      const Json* value =
          values != nullptr && values->is_array() && i < values->size() ? &(*values)[i] : nullptr;
      if (levels == 0) {
        surface(parts[i], value);
      } else {
        nested(parts[i], value, levels - 1, shells);
        if (levels == shells) break;
      }
    }
  }
};

}  // namespace

double lod_of(const Json& geometry) {
  const Json* value = member(geometry, "lod");
  if (value == nullptr) return 2.0;
  return length_of(as_text(*value).value_or("")).value_or(2.0);
}

std::optional<std::string> add_surfaces(const Json& geometry, const std::vector<Vector3>& vertices,
                                        Feature& feature) {
  const auto type = text_member(geometry, "type").value_or("");
  static const std::map<std::string, int> levels = {{"MultiSurface", 0},
                                                    {"CompositeSurface", 0},
                                                    {"Solid", 1},
                                                    {"MultiSolid", 2},
                                                    {"CompositeSolid", 2}};
  const auto level = levels.find(type);
  if (level == levels.end()) return "a geometry of type '" + type + "'";
  const Json* boundaries = array_member(geometry, "boundaries");
  if (boundaries == nullptr) return "a geometry without boundaries";
  const Json* semantics = object_member(geometry, "semantics");
  const SurfaceReader reader{
      vertices, semantics != nullptr ? array_member(*semantics, "surfaces") : nullptr, feature};
  const std::size_t before = feature.polygons.size();
  try {
    reader.nested(*boundaries, semantics != nullptr ? array_member(*semantics, "values") : nullptr,
                  level->second, 1);
  } catch (const Unreadable& unreadable) {
    feature.polygons.resize(before);
    return unreadable.why;
  }
  if (level->second > 0) feature.solid = true;
  return std::nullopt;
}

}  // namespace townskin_case
