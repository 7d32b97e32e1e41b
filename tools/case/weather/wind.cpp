#include "weather/wind.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "inputs/moist_air.hpp"

namespace townskin_case {
namespace {

constexpr double kRadian = std::numbers::pi / 180.0;
constexpr double kFreezing = 273.15;

int longest_month(const std::vector<EpwHour>& hours) {
  std::array<std::size_t, 13> count{};
  for (const EpwHour& hour : hours) ++count[static_cast<std::size_t>(hour.month)];
  return static_cast<int>(std::ranges::max_element(count) - count.begin());
}

}  // namespace

double mean_direction(std::span<const EpwHour> hours) {
  double east = 0.0, north = 0.0;
  for (const EpwHour& hour : hours) {
    if (hour.direction < 0.0) continue;
    east += hour.wind * std::sin(hour.direction * kRadian);
    north += hour.wind * std::cos(hour.direction * kRadian);
  }
  if (east == 0.0 && north == 0.0) return -1.0;
  const double direction = std::atan2(east, north) / kRadian;
  return direction < 0.0 ? direction + 360.0 : direction;
}

Station station_at(const Days& days, int hour) {
  Station station;
  station.month = longest_month(days.hours);
  std::vector<EpwHour> same;
  for (const EpwHour& one : days.hours) {
    if (one.hour == hour && one.month == station.month) same.push_back(one);
  }
  const double weight = 1.0 / static_cast<double>(same.size());
  double humidity = 0.0;
  for (const EpwHour& one : same) {
    station.speed += weight * one.wind;
    station.temperature += weight * (one.temperature + kFreezing);
    station.pressure += weight * one.pressure;
    humidity += weight * one.humidity;
  }
  station.direction = mean_direction(same);
  const double vapour = 0.01 * humidity * moist_air::satvap(station.temperature).es;
  station.vapour = moist_air::humidity_of(vapour / station.pressure);
  return station;
}

}  // namespace townskin_case
