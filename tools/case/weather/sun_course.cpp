#include "weather/sun_course.hpp"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <numbers>

#include "inputs/calendar.hpp"
#include "radiation/phydat.hpp"

namespace townskin_case {
namespace {

constexpr double kRadian = std::numbers::pi / 180.0;
constexpr double kDegreesAnHour = 15.0;
constexpr double kClockMeridian = 135.0;  // the meridian whose clock a dated run keeps [degree]

/// Days from 2000-01-01 12:00 UTC to a date at 0:00 UTC (Fliegel and van Flandern 1968).
double days_since_2000(int year, int month, int day) {
  const int a = (month - 14) / 12;
  const int julian = (1461 * (year + 4800 + a)) / 4 + (367 * (month - 2 - 12 * a)) / 12 -
                     (3 * ((year + 4900 + a) / 100)) / 4 + day - 32075;
  return julian - 2451545.0 - 0.5;
}

/// The model's sun.
class Sun {
 public:
  Sun(const SunMembers& settings, bool dated) : dated_(dated), log_(std::cout, std::cerr) {
    data_.LAT = settings.LAT;
    data_.LNG = settings.LNG;
    data_.SDECL = settings.SDECL;
    data_.SHANGLE = settings.SHANGLE;
    data_.RANGLE = 0.0;
  }
  Vector3 at(int month, int day, int hour) {
    tsrf_module_phydat::SunVector sun;
    if (dated_) {
      const tsrf_module_calendar::Date date{
          1.0, static_cast<double>(month), static_cast<double>(day), static_cast<double>(hour), 0.0,
          0.0};
      const double time = tsrf_module_calendar::date2sec(calendar_, date);
      sun = tsrf_module_phydat::sunvec_mltday(log_, calendar_, data_, time);
    } else {
      sun = tsrf_module_phydat::sunvec_oneday(data_, hour);
    }
    return {sun.x, sun.y, sun.z};
  }

 private:
  bool dated_;
  frame::Log log_;
  tsrf_module_calendar::Data calendar_;
  tsrf_module_phydat::Data data_;
};

void add_day(Sun& sun, int month, int day, std::vector<SunHour>& hours) {
  constexpr int kHours = 24;
  std::vector<SunHour> of_day;
  for (int hour = 1; hour <= kHours; ++hour) {
    of_day.push_back({month, day, hour, sun.at(month, day, hour)});
  }
  const auto up = [&](int h) {
    return h >= 0 && h < kHours && of_day[static_cast<std::size_t>(h)].sun.z > 0.0;
  };
  const std::size_t before = hours.size();
  for (int h = 0; h < kHours; ++h) {
    if (up(h - 1) || up(h) || up(h + 1)) hours.push_back(of_day[static_cast<std::size_t>(h)]);
  }
  // A file of a day without sun has one hour, which tells so.
  if (hours.size() == before) hours.push_back(of_day[11]);
}

}  // namespace

SolarDay solar_day(int year, int month, int day, double utc_hour) {
  const double n = days_since_2000(year, month, day) + utc_hour / 24.0;
  const double mean_longitude = 280.460 + 0.9856474 * n;
  const double anomaly = (357.528 + 0.9856003 * n) * kRadian;
  const double longitude =
      (mean_longitude + 1.915 * std::sin(anomaly) + 0.020 * std::sin(2.0 * anomaly)) * kRadian;
  const double obliquity = (23.439 - 0.0000004 * n) * kRadian;
  const double right_ascension =
      std::atan2(std::cos(obliquity) * std::sin(longitude), std::cos(longitude)) / kRadian;
  const double turn = std::remainder(mean_longitude - right_ascension, 360.0);
  return {std::asin(std::sin(obliquity) * std::sin(longitude)) / kRadian, turn / kDegreesAnHour};
}

SunMembers sun_members(const PlaceAndClock& place, const Days& days) {
  const double ahead = place.longitude - kDegreesAnHour * place.zone;  // of the clock's meridian
  SunMembers settings{place.latitude, place.longitude, days.declination, 0.0};
  if (days.dated) {
    settings.LNG = kClockMeridian + ahead;
  } else {
    settings.SHANGLE = ahead + kDegreesAnHour * days.equation_of_time;
  }
  return settings;
}

std::vector<SunHour> sun_hours(const SunMembers& settings, const Days& days) {
  Sun sun(settings, days.dated);
  std::vector<SunHour> hours;
  CalendarDay day = days.first;
  for (;;) {
    add_day(sun, day.month, day.day, hours);
    if (!days.dated || day >= days.last) return hours;
    if (++day.day > tsrf_module_calendar::days_in(day.month)) day = {day.month + 1, 1};
  }
}

}  // namespace townskin_case
