// Where the sun stands in a run: the site's settings that bring it there, and its hours.
//
// The model's sun follows the clock of one meridian and, on a day that repeats, a declination that
// is given. The settings are turned such that the clock of the weather file shows the true sun.
#pragma once

#include <vector>

#include "shapes/geometry.hpp"
#include "weather/days.hpp"

namespace townskin_case {

/// What the control file tells of place and sun, in its own words.
struct SunMembers {
  double LAT = 0.0, LNG = 0.0;  ///< [degree]
  double SDECL = 0.0, SHANGLE = 0.0;
};

/// A place and its clock.
struct PlaceAndClock {
  double latitude = 0.0, longitude = 0.0;  ///< [degree]
  double zone = 0.0;                       ///< of the clock, hours ahead of UTC
};

/// Declination [degree] and equation of time [h, sundial less clock] at an hour of UTC. From the
/// Astronomical Almanac's approximation, good to 0.01 degrees from 1950 to 2050 (Michalsky 1988).
struct SolarDay {
  double declination = 0.0, equation_of_time = 0.0;
};
SolarDay solar_day(int year, int month, int day, double utc_hour);

SunMembers sun_members(const PlaceAndClock& place, const Days& days);

/// An hour for which the Sun file has fractions.
struct SunHour {
  int month = 0, day = 0;  ///< of dates
  int hour = 0;            ///< 1 to 24
  Vector3 sun;             ///< towards it; dark when it is not above the horizon
};
/// The hours with sun of each day and one dark hour at each end, as the run's own sun has them.
std::vector<SunHour> sun_hours(const SunMembers& settings, const Days& days);

/// Shares of the groups that the sun reaches, for each hour all groups: hours x groups values. All
/// are 0 in a dark hour.
struct Sunlit {
  std::vector<SunHour> hours;
  std::vector<float> fraction;
};

}  // namespace townskin_case
