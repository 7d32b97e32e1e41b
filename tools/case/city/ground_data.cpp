#include "city/ground_data.hpp"

#include <algorithm>
#include <map>

#include "city/ring_repairs.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {
namespace {

const std::map<std::string, Names>& words_by_kind() {
  static const std::map<std::string, Names> words = {
      {"asphalt", {"tarmac", "road", "highway", "parking", "paved", "chipseal"}},
      {"concrete", {"concrete:plates", "concrete:lanes", "cement"}},
      {"paving",
       {"paving_stones", "sett", "cobblestone", "pavement", "bricks", "brick", "pedestrian",
        "footway", "unhewn_cobblestone", "square"}},
      {"grass",
       {"meadow", "park", "lawn", "garden", "grassland", "village_green", "recreation_ground",
        "scrub", "heath", "forest", "wood", "vegetation", "farmland", "cemetery"}},
      {"bare soil",
       {"soil", "bare_soil", "ground", "dirt", "earth", "mud", "sand", "gravel", "fine_gravel",
        "bare_rock", "beach", "unpaved", "compacted"}},
      {"water",
       {"river", "riverbank", "stream", "canal", "lake", "pond", "basin", "reservoir", "dock",
        "waterway"}},
  };
  return words;
}

const Names usual{"kind",    "surface",  "ground",  "cover",   "landcover", "landuse", "natural",
                  "leisure", "waterway", "highway", "amenity", "type",      "class"};

std::optional<std::string> kind_of(const Feature& feature, const CityInput& input) {
  Names names = input.names.ground_kind;
  names.insert(names.end(), usual.begin(), usual.end());
  if (const auto words = first_text(feature.attributes, names); words && feature.kind.empty()) {
    return ground_kind(*words);
  }
  return feature.kind.empty() ? std::nullopt : std::optional(feature.kind);
}

/// All faces of a surface of a city model as areas, what is upright apart.
std::vector<Polygon2> area_of_faces(const Geos& geos, const Feature& feature) {
  std::vector<std::vector<Ring2>> faces;
  for (const RawPolygon& polygon : feature.polygons) {
    std::vector<Ring2> rings;
    for (const Ring3& raw : polygon.rings) {
      Ring2 ring;
      for (const Vector3& p : raw) ring.push_back({p.x, p.y});
      if (ring.size() >= 3) rings.push_back(std::move(ring));
    }
    if (!rings.empty() && std::abs(signed_area(rings.front())) > 1e-3) {
      const auto shape = geos.polygon(rings);
      if (GEOSisValid_r(geos.context(), shape.get()) == 1) faces.push_back(std::move(rings));
    }
  }
  return geos.polygons(geos.dissolved(faces).get());
}

}  // namespace

std::string ground_kind(const std::string& words) {
  std::string lower = words;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  for (const auto& [kind, synonyms] : words_by_kind()) {
    if (std::find(synonyms.begin(), synonyms.end(), lower) != synonyms.end()) return kind;
  }
  return lower;
}

void add_ground(const Geos& geos, const Feature& feature, const CityInput& input,
                std::vector<GroundArea>& ground, Report& report) {
  if (feature.polygons.empty()) return report.leave_out("no polygon", feature.origin);
  const auto kind = kind_of(feature, input);
  // A model has land of no known kind too: there the default stands.
  if (!feature.rings_closed && !(kind && words_by_kind().contains(*kind))) return;
  if (!kind) return report.leave_out("ground of no kind", feature.origin);
  std::vector<Polygon2> areas;
  if (feature.rings_closed) {
    for (const RawPolygon& outline : feature.polygons) {
      auto some = repaired_outline(geos, outline, true, feature.origin, report);
      std::move(some.begin(), some.end(), std::back_inserter(areas));
    }
  } else {
    areas = area_of_faces(geos, feature);
  }
  for (Polygon2& area : areas) ground.push_back({feature.origin, std::move(area), *kind});
}

}  // namespace townskin_case
