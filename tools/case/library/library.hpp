// Constructions and uses of buildings and ground: what things are made of and how rooms are used.
//
// Read from TOML files, in which every number has its source; those that are shipped stand in
// library/. Called by the program; furnish.cpp gives each group its build-up from here.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "report.hpp"

namespace townskin_case {

struct Layer {
  double thickness = 0.0;      ///< [m]
  double density = 0.0;        ///< [kg/m3]
  double heat_capacity = 0.0;  ///< [J/kg K]
  double conductivity = 0.0;   ///< [W/m K]
};

/// A build-up, from outside to inside; ground takes its first layer for the whole of its depth.
struct BuildUp {
  std::string name;
  std::vector<Layer> layers;
  double albedo = 0.0, emissivity = 0.0;
  double evaporation = 0.0;  ///< 0 dry to 1 wet
  double extinction = 0.0;   ///< of the sun in glass [1/m]
};

/// What a building is made of: build-ups by name, and the share of its walls that is glass.
struct BuildingKind {
  std::string wall, roof, window;
  double window_share = 0.0;
};

/// How rooms are used, hour by hour: the value for hour h (1 to 24) stands at h - 1.
struct Use {
  using Course = std::array<double, 24>;
  int code = 1;                 ///< `BldCD`: 5 and 6 give their heat off at walls, others at roofs
  Course sensible{}, latent{};  ///< internal heat [W/m2 of floor]
  Course ventilation{};         ///< [1/h]
  double cooled_to = 26.0, heated_to = 20.0;  ///< set points of summer and winter [deg C]
  double humidity = 50.0;                     ///< of the room [%]
  double conditioned = 1.0;                   ///< share of the floor
  double sensible_share = 1.0;                ///< of the heat that the plant gives off
  double cop = 3.0;
  bool releases = true;  ///< the plant gives its heat off to the air outside
  /// Of the plant, in minutes of the day; none: it never runs. From 0:00 to 24:00 it never stops.
  struct Plant {
    int start = 0, reached = 0, stop = 0;
  };
  std::optional<Plant> plant;
};

struct Library {
  std::map<std::string, BuildUp> build_ups;
  std::map<std::string, BuildingKind> buildings;
  std::map<std::string, std::string> ground;  ///< kind of ground in the city: build-up, or "water"
  std::map<std::string, Use> uses;
};

/// Reads constructions and uses. Faults name file and line: unknown keys, numbers out of range or
/// without a source, names that nothing has.
Library read_library(const std::string& constructions, const std::string& uses);

/// Where the shipped library stands: beside the program as it was built or as it is installed.
std::string shipped_library(const std::string& name);

}  // namespace townskin_case
