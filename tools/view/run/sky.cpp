#include "run/sky.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

#include "inputs/calendar.hpp"
#include "inputs/weather.hpp"
#include "radiation/phydat.hpp"
#include "run/lines.hpp"

namespace townskin_view {

namespace {

constexpr double kHour = 3600.0;
constexpr double kCelsius = 273.15;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// Means of the rows of Sun & Sky by month (0: no dates), day (of a file of several days) and hour.
struct SkyRows {
  struct Sum {
    double direct = 0.0, scattered = 0.0, longwave = 0.0;
    std::int32_t count = 0;
  };
  std::map<std::tuple<std::int32_t, std::int32_t, std::int32_t>, Sum> at;
  std::map<std::int32_t, std::vector<std::int32_t>> days;  ///< of each month, those that have rows
};

SkyRows read_rows(const std::string& path, bool dated) {
  SkyRows rows;
  Lines lines(path);
  std::string_view line;
  std::int32_t day = 1, before = 0;
  while (lines.next(line)) {
    std::array<double, 6> row{};
    const std::size_t head = dated ? 3 : 1;
    if (numbers_of(line, std::span(row).first(head + 3)) < head + 3) continue;
    const auto hour = static_cast<std::int32_t>(std::clamp(row[head - 1], 0.0, 24.0));
    if (hour <= before) ++day;
    before = hour;
    const auto month = dated ? static_cast<std::int32_t>(std::clamp(row[0], 0.0, 12.0)) : 0;
    SkyRows::Sum& sum = rows.at[{month, dated ? 1 : day, hour}];
    sum.direct += row[head];
    sum.scattered += row[head + 1];
    sum.longwave += row[head + 2];
    ++sum.count;
    if (!dated) continue;
    const auto date = static_cast<std::int32_t>(std::clamp(row[1], 0.0, 31.0));
    std::vector<std::int32_t>& days = rows.days[month];
    if (days.empty() || days.back() != date) days.push_back(date);
  }
  return rows;
}

/// The weather series of a run, asked by model time.
class Air {
 public:
  Air(const RunFiles& files, QuietLog& quiet)
      : log_(quiet.log),
        control_(files.open(frame::kUnitControl)),
        file_(files.open(frame::kUnitWeather)) {
    tsrf_module_weather::inputdata(log_, *control_, weather_);
    if (!files.filnam.dated) return;
    tsrf_module_calendar::Date date{};
    std::ranges::copy(files.filnam.DATE0, date.begin());
    calendar_.origin = tsrf_module_calendar::date2sec({}, date);
  }
  /// Adds temperature, humidity and wind at a time to sums.
  void add(double time, std::array<double, 3>& sums) {
    tsrf_module_weather::set_weather(log_, *file_, time, calendar_, weather_);
    sums[0] += weather_.now.temperature - kCelsius;
    sums[1] += weather_.now.Rhum;
    sums[2] += weather_.now.wind;
  }
  /// Model time of a date of a dated run.
  [[nodiscard]] double time_of(std::int32_t year, std::int32_t month, std::int32_t day) const {
    return tsrf_module_calendar::date2sec(
        calendar_, {static_cast<double>(year), static_cast<double>(month), static_cast<double>(day),
                    0.0, 0.0, 0.0});
  }

 private:
  frame::Log& log_;
  std::unique_ptr<frame::TextInput> control_, file_;
  tsrf_module_weather::Data weather_;
  tsrf_module_calendar::Data calendar_;
};

/// Mean air of an hour: the middle of its last step, or of all its steps on the days of a month.
std::array<double, 3> air_at(Air& air, const RunModel& run, const SkyRows& rows, const Hour& hour) {
  std::array<double, 3> sums{};
  std::int32_t count = 0;
  const auto add = [&](double time) {
    air.add(time, sums);
    ++count;
  };
  const auto days = rows.days.find(hour.month);
  if (!run.dated) {
    add(hour.hours * kHour - 0.5 * run.step);
  } else if (days != rows.days.end()) {
    const auto steps = static_cast<std::int64_t>(std::max(1.0, std::round(kHour / run.step)));
    for (const std::int32_t day : days->second) {
      const double start = air.time_of(run.year, hour.month, day) + (hour.hour - 1) * kHour;
      for (std::int64_t n = 0; n < steps; ++n) {
        add(start + (static_cast<double>(n) + 0.5) * run.step);
      }
    }
  }
  for (double& sum : sums) sum = count > 0 ? sum / count : kNone;
  return sums;
}

Field series(const RunModel& run, std::string_view name) {
  return {.quantity = &quantity(name), .size = 1, .hours = run.hours.size()};
}

void read_air(const RunFiles& files, QuietLog& quiet, const SkyRows& rows, RunModel& run) {
  std::array<Field, 3> fields{series(run, "air_temperature"), series(run, "relative_humidity"),
                              series(run, "wind_speed")};
  const std::string fault = quiet.fault_of([&] {
    Air air(files, quiet);
    for (std::size_t h = 0; h < run.hours.size(); ++h) {
      const std::array<double, 3> now = air_at(air, run, rows, run.hours[h]);
      run.sky[h].air = now[0];
      for (std::size_t n = 0; n < 3; ++n) fields[n].values.push_back(static_cast<float>(now[n]));
    }
  });
  if (!fault.empty()) {
    for (Sky& sky : run.sky) sky.air = kNone;
    return note(run, "The weather is not known", fault);
  }
  for (Field& field : fields) run.fields.push_back(std::move(field));
}

void read_sun(const RunFiles& files, QuietLog& quiet, RunModel& run) {
  if (run.dated) return;
  const auto control = files.open(frame::kUnitControl);
  const std::string fault = quiet.fault_of([&] {
    tsrf_module_phydat::Data site;
    tsrf_module_phydat::inputdata(quiet.log, *control, site);
    for (std::size_t h = 0; h < run.hours.size(); ++h) {
      const double hour = run.hours[h].hours - run.step / kHour;
      const tsrf_module_phydat::SunVector sun = tsrf_module_phydat::sunvec_oneday(site, hour);
      run.sky[h].sun = {sun.x, sun.y, sun.z};
    }
  });
  if (!fault.empty()) note(run, "Where the sun stands is not known", fault);
}

}  // namespace

void read_sky(const RunFiles& files, QuietLog& quiet, RunModel& run) {
  if (run.hours.empty()) return;
  const SkyRows rows = read_rows(files.path(frame::kUnitSunSky), run.dated);
  run.sky.assign(run.hours.size(), {.direct = kNone, .scattered = kNone, .longwave = kNone});
  std::array<Field, 3> fields{series(run, "direct_sun"), series(run, "scattered_sun"),
                              series(run, "sky_longwave")};
  bool any = false;
  for (std::size_t h = 0; h < run.hours.size(); ++h) {
    const Hour& hour = run.hours[h];
    const auto at = rows.at.find({hour.month, hour.day, hour.hour});
    Sky& sky = run.sky[h];
    if (at != rows.at.end()) {
      const SkyRows::Sum& sum = at->second;
      sky.direct = sum.direct / sum.count;
      sky.scattered = sum.scattered / sum.count;
      sky.longwave = sum.longwave / sum.count;
      any = true;
    }
    fields[0].values.push_back(static_cast<float>(sky.direct));
    fields[1].values.push_back(static_cast<float>(sky.scattered));
    fields[2].values.push_back(static_cast<float>(sky.longwave));
  }
  if (any) {
    for (Field& field : fields) run.fields.push_back(std::move(field));
  } else {
    note(run, "There is no Sun & Sky result", "");
  }
  read_sun(files, quiet, run);
  read_air(files, quiet, rows, run);
}

}  // namespace townskin_view
