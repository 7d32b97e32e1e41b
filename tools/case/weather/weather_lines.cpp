#include "weather/weather_lines.hpp"

#include <algorithm>

namespace townskin_case {
namespace {

constexpr double kHectopascal = 100.0;             // Pa
constexpr double kMegajouleAnHour = 3600.0 / 1e6;  // of a W

/// What radiation a line has; the rest of it is of `at`.
struct Radiation {
  double global = 0.0, direct = 0.0, scattered = 0.0, infrared = 0.0;
};
Radiation radiation_of(const EpwHour& hour) {
  return {hour.global, hour.direct, hour.scattered, hour.infrared};
}
Radiation mean(const Radiation& a, const Radiation& b) {
  return {a.global, 0.5 * (a.direct + b.direct), 0.5 * (a.scattered + b.scattered),
          0.5 * (a.infrared + b.infrared)};
}

class Lines {
 public:
  Lines(bool dated, bool has_direct, bool has_infrared)
      : dated_(dated), has_direct_(has_direct), has_infrared_(has_infrared) {}

  void add(const EpwHour& date, int hour, int minute, const EpwHour& air, const Radiation& light) {
    WeatherLine line;
    if (dated_) line.month = date.month, line.day = date.day;
    line.hour = hour;
    line.minute = minute;
    line.Temp = air.temperature;
    line.Rhum = air.humidity;
    line.Press = air.pressure / kHectopascal;
    line.Wind = air.wind;
    if (has_direct_) {
      line.SunJdn = light.direct * kMegajouleAnHour;
      line.SunJsh = light.scattered * kMegajouleAnHour;
    } else {
      line.SunRad = light.global * kMegajouleAnHour;
    }
    if (has_infrared_) line.AtmJsh = light.infrared * kMegajouleAnHour;
    lines.push_back(line);
  }

  std::vector<WeatherLine> lines;

 private:
  bool dated_, has_direct_, has_infrared_;
};

EpwHour half_way(const EpwHour& a, const EpwHour& b) {
  EpwHour air = b;
  air.temperature = 0.5 * (a.temperature + b.temperature);
  air.humidity = 0.5 * (a.humidity + b.humidity);
  air.pressure = 0.5 * (a.pressure + b.pressure);
  air.wind = 0.5 * (a.wind + b.wind);
  return air;
}

/// The model takes a column of zeros for one that is not given: days without any sun, or without
/// the sun's disc, keep a trace of it.
void keep_a_trace(std::vector<WeatherLine>& lines, double WeatherLine::*column) {
  constexpr double kTrace = 1e-9;
  const auto given = [&](const WeatherLine& line) { return line.*column > 0.0; };
  if (std::ranges::none_of(lines, given)) lines.back().*column = kTrace;
}

}  // namespace

std::vector<WeatherLine> weather_lines(const Days& days, bool has_direct, bool has_infrared) {
  Lines lines(days.dated, has_direct, has_infrared);
  const std::vector<EpwHour>& hours = days.hours;
  const EpwHour before = days.dated ? days.before.value_or(hours.front()) : hours.back();
  const EpwHour after = days.dated ? days.after.value_or(hours.back()) : hours.front();
  if (days.dated) {  // the first midnight
    lines.add(hours.front(), 0, 0, before, mean(radiation_of(before), radiation_of(hours.front())));
  }
  for (std::size_t h = 0; h < hours.size(); ++h) {
    const EpwHour& last = h == 0 ? before : hours[h - 1];
    const EpwHour& hour = hours[h];
    const EpwHour& next = h + 1 == hours.size() ? after : hours[h + 1];
    lines.add(hour, hour.hour - 1, 30, half_way(last, hour), radiation_of(hour));
    lines.add(hour, hour.hour, 0, hour, mean(radiation_of(hour), radiation_of(next)));
  }
  if (has_direct) {
    keep_a_trace(lines.lines, &WeatherLine::SunJdn);
    keep_a_trace(lines.lines, &WeatherLine::SunJsh);
  } else {
    keep_a_trace(lines.lines, &WeatherLine::SunRad);
  }
  return std::move(lines.lines);
}

}  // namespace townskin_case
