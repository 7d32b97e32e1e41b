// The hours of a weather year as lines of the Weather file.
#pragma once

#include <vector>

#include "weather/days.hpp"

namespace townskin_case {

/// A line, in the units of the file.
struct WeatherLine {
  int month = 0, day = 0, hour = 0, minute = 0;
  double Temp = 0.0, Rhum = 0.0, Press = 0.0;
  double SunRad = 0.0, Wind = 0.0, SunJdn = 0.0, SunJsh = 0.0, AtmJsh = 0.0;
};

/// A line each half hour. The model draws straight lines between them: what holds at the full hour
/// stands there and its mean at the half hours, and radiation, the mean of an hour, stands in the
/// hour's middle and half way between neighbours at the full hours. Where the direct light is not
/// known both lines of an hour hold its global radiation, which is not interpolated.
std::vector<WeatherLine> weather_lines(const Days& days, bool has_direct, bool has_infrared);

}  // namespace townskin_case
