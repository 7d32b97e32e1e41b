// Weather of a year in the EPW format: what the hours of a place are like.
//
// The reader checks every row and fills what is missing; the days of a run are chosen from it
// (days.cpp) and put into the form of the Weather file (weather_lines.cpp).
#pragma once

#include <string>
#include <vector>

#include "report.hpp"

namespace townskin_case {

/// One row. Radiation is the mean of the hour that ends at `hour`, all else holds at `hour`.
struct EpwHour {
  int year = 0, month = 0, day = 0;
  int hour = 0;              ///< 1 to 24, standard time of the zone
  double temperature = 0.0;  ///< [deg C]
  double humidity = 0.0;     ///< relative [%]
  double pressure = 0.0;     ///< [Pa]
  double wind = 0.0;         ///< [m/s]
  double direction = -1.0;   ///< where the wind comes from, from north over east [degree]; -1: none
  double infrared = 0.0;     ///< of the sky on the horizontal [W/m2]; 0 throughout: not given
  double global = 0.0;       ///< on the horizontal [W/m2]
  double direct = 0.0;       ///< on a plane that faces the sun [W/m2]
  double scattered = 0.0;    ///< on the horizontal [W/m2]
};

struct Epw {
  std::string file;
  std::string place;                       ///< as the file calls it
  double latitude = 0.0, longitude = 0.0;  ///< [degree], north and east positive
  double zone = 0.0;                       ///< of the clock, hours ahead of UTC
  std::vector<EpwHour> hours;              ///< whole days; 29 February is left out
  bool has_infrared = false;
  bool has_direct = false;  ///< else `global` is all that it tells of the sun
};

/// Reads a file. Rows must follow each other hour by hour through the period that the line DATA
/// PERIODS tells; codes for missing values are filled by interpolation, and counted in the report.
Epw read_epw(const std::string& file, Report& report);

}  // namespace townskin_case
