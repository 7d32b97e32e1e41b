// The site: everything that the user states, from the site file and the flags of the command.
//
// A site file is TOML; what it leaves out has the defaults that stand here, and flags win over it.
// Every part of the tool receives the piece of it that is its own.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "days.hpp"

namespace townskin_case {

using Names = std::vector<std::string>;

/// Which of the library's entries a building takes, by one of its attributes.
struct Choice {
  std::string attribute;                              ///< empty: all take the default
  std::string fallback;                               ///< the default
  std::map<std::string, std::string> table;           ///< text of the attribute: entry
  std::vector<std::pair<double, std::string>> up_to;  ///< by number: the first that is not below
};

struct SiteInput {
  Names buildings, ground, trees;             ///< files
  std::string weather;                        ///< file
  std::string crs;                            ///< empty: as the data tell
  std::optional<double> latitude, longitude;  ///< [degree], where no data tell
  double lod = 3.0;  ///< highest level of detail of a city model that is taken
};

struct SiteHeights {
  Names attributes;            ///< names that go before the usual ones
  std::string above = "auto";  ///< "ground", "sea", or what the data show
  double storey = 3.0;         ///< [m]
  double fallback = 6.0;       ///< of buildings of which nothing is known [m]
};

struct SiteTrees {
  Names height{"height"}, crown_base{"crown_base"}, crown_radius{"crown_radius"},
      crown_diameter{"crown_diameter"}, leaf_area{"leaf_area_density"};
  double leaf_area_density = 1.0;  ///< where the data tell none [m2/m3]
  std::int32_t division = 1;       ///< tree cells to a cell of the grid
};

struct SiteGround {
  Names attributes{"kind", "surface", "landuse"};  ///< that tell the kind of an area
  std::string fallback = "asphalt";                ///< the kind of all other ground
  std::map<std::string, std::string> kinds;        ///< kind in the data: kind in the library
};

struct SiteGrid {
  std::array<double, 3> cell{4.0, 4.0, 3.0};       ///< [m]
  double margin = 12.0;                            ///< of open ground around the buildings [m]
  double above = 6.0;                              ///< air above the tallest roof [m]
  std::optional<std::array<double, 4>> rectangle;  ///< west, south, east, north of the centre [m]
  std::optional<double> radius;                    ///< about the centre [m]
  bool rotate_along_streets = false;
  double rotate = 0.0;       ///< of the cells, to the left [degree]
  bool far_boundary = true;  ///< a surface around the district takes what leaves it low
  double sliver = 0.1;       ///< share of a cell's face below which a piece joins a neighbour
};

struct SiteRays {
  std::int64_t rays = 1024;      ///< of a group
  std::int64_t partners = 128;   ///< that a group keeps
  std::int64_t sun_points = 16;  ///< on a group, for its sunlit fraction
  std::int64_t seed = 1;
  std::int64_t threads = 0;  ///< 0: one for each processor
};

struct SiteRun {
  DayChoice days;
  double step = 300.0;          ///< [s]
  std::int64_t most_days = 60;  ///< of a day that repeats, should it never settle
  double convection = 11.6;     ///< coefficient outside [W/m2 K]
};

struct Site {
  SiteInput input;
  SiteHeights heights;
  SiteTrees trees;
  SiteGround ground;
  SiteGrid grid;
  SiteRays rays;
  SiteRun run;
  std::string constructions, uses;  ///< library files; empty: those that are shipped
  Choice construction{.attribute = {}, .fallback = "brick_cavity", .table = {}, .up_to = {}};
  Choice use{.attribute = {}, .fallback = "house", .table = {}, .up_to = {}};
};

/// Reads a site file. Its own files are named from where it stands. Faults name file and line.
Site read_site(const std::string& file);

// Values that both the file and the flags give.
/// One to three sizes: dx, dy (as dx where it lacks), dz.
void set_cell(std::span<const double> sizes, SiteGrid& grid);
/// "auto" or an angle [degree]; false for anything else.
bool set_rotation(const std::string& text, SiteGrid& grid);
/// Steps of whole seconds that end with every hour.
bool fits_hour(double step);

}  // namespace townskin_case
