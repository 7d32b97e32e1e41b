#include "city/footprint_heights.hpp"

#include <algorithm>
#include <cmath>

namespace townskin_case {
namespace {

constexpr double lowest = 0.5, highest = 1000.0;  // [m] that a height may be

Names joined(const Names& first, const Names& then) {
  Names all = first;
  all.insert(all.end(), then.begin(), then.end());
  return all;
}

const Names heights{"height",          "building:height", "height_ag", "measuredHeight",
                    "measured_height", "HEIGHT",          "Height"};
const Names eaves{"HEIGHT_WALL", "RelativeEavesHeight"};
const Names ridges{"HEIGHT_ROOF", "RelativeRidgeHeight"};
/// These count from the sea whatever stands in them.
const Names above_sea{"b3_h_dak_70p", "b3_h_dak_50p", "b3_h_dak_max",
                      "h_dak_70p",    "h_dak_50p",    "h_dak_max"};
const Names sea_eaves{"AbsoluteEavesHeight"}, sea_ridges{"AbsoluteRidgeHeight"};
const Names ground_levels{"b3_h_maaiveld", "h_maaiveld",    "base_elevation",    "ground_elevation",
                          "ground_height", "TerrainHeight", "min-height-surface"};
const Names storeys{"building:levels", "floors_ag", "storeysAboveGround", "b3_bouwlagen", "levels",
                    "num_floors",      "storeys"};

bool usable(double height) { return height >= lowest && height <= highest; }

/// Half way between eaves and ridge: as high as a block of the volume of a gabled house.
std::optional<double> half_way(std::optional<double> eave, std::optional<double> ridge) {
  if (eave && ridge) return *ridge >= *eave ? 0.5 * (*eave + *ridge) : *eave + 0.5 * *ridge;
  return eave ? eave : ridge;
}

struct Told {
  std::optional<double> height;  ///< as it stands
  std::optional<double> ground;  ///< level of the ground above the sea
  bool from_sea = false;         ///< certainly
  bool certain = false;          ///< certainly above the ground
};

Told told(const Attributes& attributes, const AttributeNames& names) {
  Told told;
  told.ground = first_length(attributes, joined(names.ground_level, ground_levels));
  told.height = first_length(attributes, joined(names.height, heights));
  if (told.height) return told;
  told.height = half_way(first_length(attributes, eaves), first_length(attributes, ridges));
  told.certain = told.height.has_value();
  if (told.height || !told.ground) return told;
  told.height = first_length(attributes, above_sea);
  if (!told.height) {
    told.height =
        half_way(first_length(attributes, sea_eaves), first_length(attributes, sea_ridges));
  }
  told.from_sea = told.height.has_value();
  return told;
}

/// True if the heights count from the sea: all of them lie above their ground, by what houses are
/// high, and the ground itself lies higher than houses are or varies as the heights do.
bool from_sea(const std::vector<Told>& all) {
  std::vector<double> grounds;
  for (const Told& one : all) {
    if (!one.height || one.certain || one.from_sea) continue;
    if (!one.ground || *one.height < *one.ground + lowest) return false;
    grounds.push_back(*one.ground);
  }
  if (grounds.empty()) return false;
  constexpr double higher_than_houses = 30.0;  // [m]
  std::nth_element(grounds.begin(),
                   grounds.begin() + static_cast<std::ptrdiff_t>(grounds.size() / 2),
                   grounds.end());
  return grounds[grounds.size() / 2] > higher_than_houses;
}

void warn_of_levels(const std::vector<Told>& all, const std::string& file, Report& report) {
  double low = HUGE_VAL, high = -HUGE_VAL;
  for (const Told& one : all) {
    if (!one.height || one.ground || one.certain) continue;
    low = std::min(low, *one.height);
    high = std::max(high, *one.height);
  }
  if (low > 60.0 && high > low) {
    report.warning(file +
                   ": all heights are above 60 m; if they count from the sea, the attribute "
                   "with the level of the ground must be named");
  }
}

}  // namespace

std::optional<double> told_storeys(const Attributes& attributes, const CityInput& input) {
  const auto count = first_length(attributes, joined(input.names.storeys, storeys));
  return count && *count >= 0.5 && *count <= 300.0 ? count : std::nullopt;
}

std::vector<double> footprint_heights(const std::vector<Feature>& features, const CityInput& input,
                                      Report& report) {
  std::vector<Told> all;
  for (const Feature& feature : features) all.push_back(told(feature.attributes, input.names));
  const bool sea = from_sea(all);
  if (!features.empty()) warn_of_levels(all, features.front().origin.file, report);
  std::vector<double> found;
  for (std::size_t i = 0; i < features.size(); ++i) {
    const Origin& origin = features[i].origin;
    if (all[i].height) {
      const bool minus = all[i].from_sea || (sea && !all[i].certain);
      const double height = *all[i].height - (minus ? all[i].ground.value_or(0.0) : 0.0);
      if (minus) report.repair("height above the sea made one above the ground", origin);
      if (usable(height)) {
        found.push_back(height);
        continue;
      }
      report.repair("unusable height set aside", origin);
    }
    if (const auto count = told_storeys(features[i].attributes, input)) {
      report.repair("height taken from the storeys", origin);
      found.push_back(*count * input.storey_height);
    } else {
      report.repair("no height: the default taken", origin);
      found.push_back(input.default_height);
    }
  }
  return found;
}

}  // namespace townskin_case
