// From the kinds of surfaces to what they are made of: gives each group of the scene its patches.
//
// A building's construction and use are chosen by its attributes, its walls are divided into wall
// and glass, and the ground takes the build-up of its kind. Called by the program when the city is
// cut; the writers take the numbers from here.
#pragma once

#include <vector>

#include "city/city.hpp"
#include "library/library.hpp"
#include "report.hpp"
#include "scene/scene.hpp"
#include "site/site.hpp"

namespace townskin_case {

/// What room balances sum by: `pos` of the file of materials.
enum class Position : std::int32_t { roof = 1, wall = 2, window = 3 };

/// A build-up under a number of this run.
struct Material {
  std::int32_t surface = 0;  ///< `SurfID`
  Position position = Position::wall;
  std::int32_t construction = 1;  ///< `Strct`
  BuildUp build_up;
};

/// A construction and a use as they come together in some building.
struct Profile {
  std::string construction, use;  ///< the library's names
  std::int32_t number = 0;        ///< `Strct`, from 1
  BuildingKind kind;
  Use rooms;
};

/// What a run is made of.
struct Stock {
  std::vector<Material> materials;
  std::vector<Profile> profiles;
  std::vector<std::int32_t> profile;  ///< of each building of the city: index into `profiles`
};

/// Fills the patches of the scene. Names of the site that the library does not have are faults.
Stock furnish(const City& city, const Library& library, const Site& site, Scene& scene,
              Report& report);

/// The entry that a building with these attributes takes.
std::string choose(const Choice& choice, const std::map<std::string, std::string>& attributes,
                   bool& by_default);

}  // namespace townskin_case
