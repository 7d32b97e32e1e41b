// The sun of the data against the sun of the model.
#include <algorithm>
#include <cmath>
#include <optional>

#include "check/doubts.hpp"
#include "inputs/calendar.hpp"

namespace check {

namespace {

using frame::items;
using tsrf_main01::Run;
using tsrf_module_shade::LitBlock;

constexpr double kHour = 3600.0;
constexpr double kDay = 86400.0;
constexpr double kHigh = 0.0872;          // sine of 5 degrees: of a sun that cannot be missed
constexpr double kHorizon = -0.0262;      // sine of -1.5 degrees: what rounds to a risen sun
constexpr double kMostOff = 0.8 * kHour;  // of the middle of a day's radiation from noon
constexpr int kMostDays = 31;             // of a run that are looked at
constexpr int kSteps = 48;                // of a day

/// Whether the model knows where its sun is.
bool has_sun(const Run& run) {
  using tsrf_module_phydat::kNotGiven;
  const tsrf_module_phydat::Data& site = run.radiation.phydat;
  return site.LAT != kNotGiven && (run.inputs.filnam.dated ? site.LNG : site.SDECL) != kNotGiven;
}

/// Sine of the sun's altitude.
double sun_at(Run& run, double time) {
  return run.inputs.filnam.dated
             ? tsrf_module_phydat::sunvec_mltday(run.desk.log, run.inputs.calendar,
                                                 run.radiation.phydat, time)
                   .z
             : tsrf_module_phydat::sunvec_oneday(run.radiation.phydat, time / kHour).z;
}

void add(Run& run, std::vector<std::string> lines, const frame::TextInput& file, std::int64_t line,
         std::string hint) {
  run.desk.log.findings().add({.fault = false,
                               .lines = std::move(lines),
                               .file = file.name(),
                               .line = line,
                               .hint = std::move(hint)});
}

double seconds_of(const dated_series::IntDate& date) {
  return date[3] * kHour + date[4] * 60.0 + date[5];
}

/// Each hour of Sun data is held against the model's sun, and each hour of sun against the data.
void look_at_hours(const std::vector<LitBlock>& blocks, Run& run) {
  const frame::TextInput& file = run.desk.units.input(frame::kUnitSun);
  std::vector<double> times;
  for (const LitBlock& block : blocks) {
    times.push_back(seconds_of(block.date));
    const double height = sun_at(run, times.back());
    const std::string date = items("date in Sun data =", dated_series::text(block.date),
                                   ", sine of the sun's altitude =", height);
    if (block.lit && height < kHorizon) {
      add(run, {date, "no patch can have sun"}, file, file.line_at(block.place),
          "DATE_AND_PLACE or the hours of the data are amiss");
    } else if (!block.lit && height > kHigh) {
      add(run, {date, "some patch must have sun"}, file, file.line_at(block.place),
          "DATE_AND_PLACE or the hours of the data are amiss");
    }
  }
  std::ranges::sort(times);
  std::string lacking;
  for (double hour = 1.0; hour < 24.0 && !times.empty(); hour += 1.0) {
    const auto next = std::ranges::lower_bound(times, hour * kHour);
    const double after = next == times.end() ? kDay : *next - hour * kHour;
    const double before = next == times.begin() ? kDay : hour * kHour - *(next - 1);
    const bool near =
        std::min(after, before) < 0.75 * kHour || std::max(after, before) <= 2.0 * kHour - 1.0;
    if (!near && sun_at(run, hour * kHour) > kHigh) lacking += items("", hour);
  }
  if (lacking.empty()) return;
  add(run, {"hours in Sun data lack :" + lacking, "all hours with sun must be there"}, file, 0,
      "what lies between is interpolated");
}

/// The same for the days of a month, which are told together.
void look_at_month(const SunMonth& sun, Run& run) {
  const double start = tsrf_module_calendar::date2sec(
      run.inputs.calendar, {0.0, static_cast<double>(sun.month), 1.0, 0.0, 0.0, 0.0});
  std::string first, file;
  std::int64_t amiss = 0;
  for (std::size_t b = 0; b < sun.lit.size(); ++b) {
    const double height = sun_at(run, start + sun.times[b]);
    if (sun.lit[b] ? height >= kHorizon : height <= kHigh) continue;
    if (++amiss > 1) continue;
    const auto day = static_cast<int>(sun.times[b] / kDay);
    file = run.radiation.shade.day_name(sun.month, day + 1);
    first = items("the first : day", day + 1, "hour", (sun.times[b] - day * kDay) / kHour,
                  sun.lit[b] ? "has sun" : "has none", ", sine of the sun's altitude =", height);
  }
  if (amiss == 0) return;
  run.desk.log.findings().add(
      {.fault = false,
       .lines = {items("hours in Sun data of month", sun.month,
                       "that the model's sun is not in =", amiss, "of", sun.lit.size()),
                 first},
       .file = file,
       .hint = "DATE_AND_PLACE or the hours of the data are amiss"});
}

/// Global radiation of the weather at `time` [W/m2].
double radiation_at(Run& run, double time, double height) {
  tsrf_module_weather::set_weather(run.desk.log, run.desk.units.input(frame::kUnitWeather), time,
                                   run.inputs.calendar, run.inputs.weather);
  const tsrf_module_weather::Weather& now = run.inputs.weather.now;
  if (run.inputs.weather.has_SunRad) return now.SunRad;
  return now.SunJdn * std::max(height, 0.0) + now.SunJsh;
}

/// How much later the middle of the radiation of a day lies than that of its sun [s].
std::optional<double> lateness(Run& run, double midnight) {
  double radiation = 0.0, radiation_time = 0.0, sun = 0.0, sun_time = 0.0;
  for (int step = 0; step < kSteps; ++step) {
    const double time = (step + 0.5) * kDay / kSteps;
    const double height = sun_at(run, midnight + time);
    const double flux = radiation_at(run, midnight + time, height);
    radiation += flux;
    radiation_time += flux * time;
    sun += std::max(height, 0.0);
    sun_time += std::max(height, 0.0) * time;
  }
  if (!(radiation > 0.0) || !(sun > 0.0)) return std::nullopt;
  return radiation_time / radiation - sun_time / sun;
}

void look_at_noon(Run& run) {
  dated_series::reset(run.inputs.weather.series);  // the first query takes the memory
  const double length = run.inputs.control.itere * run.inputs.control.dtmax;
  const auto days = static_cast<int>(std::clamp(std::ceil(length / kDay), 1.0, double{kMostDays}));
  double sum = 0.0;
  int count = 0;
  for (int day = 0; day < days; ++day) {
    const auto late = lateness(run, day * kDay);
    if (!late) continue;
    sum += *late;
    ++count;
  }
  if (count == 0 || std::abs(sum / count) < kMostOff) return;
  add(run,
      {items("middle of the day's radiation in Weather data, hours behind the model's noon =",
             std::round(100.0 * sum / count / kHour) / 100.0),
       "it must be within an hour"},
      run.desk.units.input(frame::kUnitWeather), 0,
      "an hour or a time zone off? SunRad is the sum of the hour that ends at its line");
}

}  // namespace

void doubt_sun(const Parts& parts, Run& run) {
  if (!has_sun(run)) return;
  if (parts.sun) look_at_hours(parts.blocks, run);
  for (const SunMonth& sun : parts.months) look_at_month(sun, run);
  if (parts.weather) frame::attempt(run.desk.log, [&] { look_at_noon(run); });
}

}  // namespace check
