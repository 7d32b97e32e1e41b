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

#include "city/city_input.hpp"
#include "weather/days.hpp"

namespace townskin_case {

/// Which of the library's entries a building takes, by one of its attributes.
struct Choice {
  std::string attribute;                              ///< empty: all take the default
  std::string fallback;                               ///< the default
  std::map<std::string, std::string> table;           ///< text of the attribute: entry
  std::vector<std::pair<double, std::string>> up_to;  ///< by number: the first that is not below
};

struct SiteGround {
  std::string fallback = "asphalt";          ///< the kind of ground that no data tell of
  std::map<std::string, std::string> kinds;  ///< kind in the data: kind in the library
};

struct SiteGrid {
  std::array<double, 3> cell{4.0, 4.0, 3.0};  ///< [m]
  double margin = 12.0;                       ///< of open ground around the buildings [m]
  double above = 6.0;                         ///< air above the tallest roof [m]
  bool rotate_along_streets = false;
  double rotate = 0.0;             ///< of the cells, to the left [degree]
  bool far_boundary = true;        ///< a surface around the district takes what leaves it low
  std::int32_t tree_division = 1;  ///< tree cells to a cell, along x and along y
  double sliver = 0.1;             ///< share of a cell's face below which a piece joins a neighbour
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
  std::int64_t most_days = 80;  ///< of a day that repeats, should it never settle
  double convection = 11.6;     ///< coefficient outside [W/m2 K]
};

/// The air flow that townskin_flow computes after the surfaces.
struct SiteFlow {
  std::int64_t hour = 15;                 ///< whose weather and surfaces it has, 1 to 24
  std::optional<double> wind, direction;  ///< of the station [m/s], [degree]; else the weather's
  double roughness = 0.5;                 ///< of the land around [m]
  double seconds = 600.0;                 ///< of flow up to the hour
  double step = 2.0;                      ///< [s]
};

struct Site {
  CityInput city;
  std::string weather;                        ///< file
  std::optional<double> latitude, longitude;  ///< [degree], where no data tell
  SiteGround ground;
  SiteGrid grid;
  SiteRays rays;
  SiteRun run;
  SiteFlow flow;
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
