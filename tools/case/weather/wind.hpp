// The air that comes towards the city at one hour of the days.
#pragma once

#include <span>

#include "weather/days.hpp"

namespace townskin_case {

/// Wind and air of the weather station.
struct Station {
  int month = 0;             ///< of dates: the one whose mean it is
  double speed = 0.0;        ///< [m/s]
  double direction = -1.0;   ///< where it comes from, from north over east [degree]; -1: not told
  double temperature = 0.0;  ///< [K]
  double vapour = 0.0;       ///< mass of water in the air [kg/kg]
  double pressure = 0.0;     ///< [Pa]
};

/// The direction of the mean wind of some hours, each by its speed; -1 where none tells one.
double mean_direction(std::span<const EpwHour> hours);

/// At an hour, 1 to 24, of the day that repeats; of dates the mean over the days of that month
/// which has most of them, as the results of a month are.
Station station_at(const Days& days, int hour);

}  // namespace townskin_case
