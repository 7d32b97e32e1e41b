// The city as its data tell it, repaired and in metres: what all further parts work on.
//
// x points east and y to true north from the site's centre, z up from flat ground at 0. Filled from
// GeoJSON or CityJSON (read_city.cpp); cut into patches by the scene.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "report.hpp"
#include "shapes/geometry.hpp"

namespace townskin_case {

enum class FaceKind { roof, wall };

/// An outdoor face of a building: flat, with what stands against other buildings cut away.
struct Face {
  Polygon3 shape;
  FaceKind kind = FaceKind::wall;
};

struct Building {
  Origin origin;
  std::vector<Face> faces;
  std::vector<Polygon2> footprint;  ///< the ground that it covers; footprints do not overlap
  double floor_area = 0.0;          ///< of one storey: that of the footprint [m2]
  double height = 0.0;              ///< of its highest point [m]
  double storeys = 0.0;             ///< as the data tell, or from the height
  double volume = 0.0;              ///< [m3]
  std::map<std::string, std::string> attributes;  ///< as text, for the choice of uses
};

/// Ground of a kind, such as "asphalt"; where areas overlap the later holds.
struct GroundArea {
  Origin origin;
  Polygon2 area;
  std::string kind;
};

struct Tree {
  Origin origin;
  Point2 foot;
  double height = 0.0;      ///< of the top [m]
  double crown_base = 0.0;  ///< [m]
  double radius = 0.0;      ///< of the crown, an ellipsoid of revolution [m]
  double leaf_area = 0.0;   ///< leaf area density [m2/m3]
};

struct City {
  std::vector<Building> buildings;
  std::vector<GroundArea> ground;
  std::vector<Tree> trees;
  bool placed = false;                     ///< latitude and longitude are known from the data
  double latitude = 0.0, longitude = 0.0;  ///< of the origin [degree]
};

}  // namespace townskin_case
