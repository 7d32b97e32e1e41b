// What the readers of the formats hand on: features with their shapes in the file's own
// coordinates, before anything is repaired or projected.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "city/attributes.hpp"
#include "city/city.hpp"
#include "shapes/geometry.hpp"

namespace townskin_case {

/// What the data call a face; `unknown` where they do not.
enum class FaceRole { unknown, roof, wall, ground };

/// Rings as they stand, the outer one first; z is 0 where the file has none.
struct RawPolygon {
  std::vector<Ring3> rings;
  FaceRole role = FaceRole::unknown;
};

struct Feature {
  Origin origin;
  Attributes attributes;
  std::vector<RawPolygon> polygons;
  std::vector<Vector3> points;
  bool solid = false;         ///< the polygons are faces of a body, not areas on the ground
  bool rings_closed = false;  ///< the format repeats the first point of a ring at its end
  std::string kind;           ///< of ground, where the format itself tells it
};

/// The features of one file, and what it says about its coordinates.
struct Layer {
  std::string file;
  std::optional<std::string> crs;  ///< as the file names it
  std::vector<Feature> features;   ///< of a city model: the buildings
  std::vector<Feature> ground;     ///< of a city model
  std::vector<Feature> plants;     ///< of a city model
};

}  // namespace townskin_case
