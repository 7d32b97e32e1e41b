// What the user says about the city's data.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace townskin_case {

/// Names of attributes that are looked at before the usual ones.
struct AttributeNames {
  std::vector<std::string> height, ground_level, storeys, ground_kind;
  std::vector<std::string> tree_height, crown_base, crown_radius, crown_diameter, leaf_area;
};

/// What trees are like where the data do not say.
struct TreeDefaults {
  double height = 8.0;             ///< [m] where nothing tells its size
  double radius_of_height = 0.3;   ///< crown radius as a share of the height
  double base_of_height = 0.25;    ///< height of the crown's base as a share of the height
  double leaf_area_density = 0.8;  ///< [m2/m3]
};

struct CityInput {
  std::vector<std::string> buildings, ground, trees;  ///< files
  std::string crs;   ///< of all files, whatever they say; empty: as they say
  double lod = 9.0;  ///< highest level of detail that is used
  AttributeNames names;
  double storey_height = 3.0;   ///< [m]
  double default_height = 6.0;  ///< [m]
  TreeDefaults tree;
  /// Whole buildings are kept whose middle lies in the rectangle (west, south, east, north) or the
  /// circle, and trees likewise; ground stays whole. Both are in the coordinates of the first file
  /// of buildings, the radius in m. Without a centre the circle stands where most buildings are
  /// (the median of their places).
  std::optional<std::array<double, 4>> clip_rectangle;
  std::optional<double> clip_radius;
  std::optional<std::array<double, 2>> clip_centre;
};

}  // namespace townskin_case
