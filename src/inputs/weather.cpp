#include "inputs/weather.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <tuple>

#include "inputs/moist_air.hpp"

namespace tsrf_module_weather {

namespace {

using frame::items;

constexpr dated_series::Words kWords{"Weather",       "(tsrf_module_weather)",
                                     "(set_weather)", "%%% read weather : date=",
                                     "Weather",       "Weather",
                                     "line no. ="};

/// The items of a line, in the order of the file.
enum Item : std::size_t { kTemp, kRhum, kPress, kSunRad, kWind, kSunJdn, kSunJsh, kAtmJsh, kItems };
using Line = decltype(Data::line);
static_assert(std::tuple_size_v<Line> == kItems);

struct Column {
  std::string_view name;
  bool (*good)(double);
  std::string_view rule;
};
bool not_negative(double value) { return value >= 0.0; }
constexpr std::array<Column, kItems> kColumns{{
    {"Temp", [](double value) { return value > -273.0; }, "it must be > -273"},
    // A thousandth above 100 is rounding in the data.
    {"Rhum", [](double value) { return value >= 0.0 && value <= 100.001; },
     "it must be >= 0 and <= 100"},
    {"Press", [](double value) { return value > 0.0; }, "it must be > 0"},
    {"SunRad", not_negative, "it must be >= 0"},
    {"Wind", not_negative, "it must be >= 0"},
    {"SunJdn", not_negative, "it must be >= 0"},
    {"SunJsh", not_negative, "it must be >= 0"},
    {"AtmJsh", not_negative, "it must be >= 0"},
}};

constexpr double kZeroCelsius = 273.15;
constexpr double kPascal = 100.0;             ///< of a hPa
constexpr double kWatt = 277.77777777777777;  ///< of a MJ/h

frame::ReadStatus read_line(frame::TextInput& file, dated_series::IntDate& date, Data& data) {
  return file.read(dated_series::on_record(data.series.settings, date),
                   std::span<double>(data.line));
}

void check_line(frame::Log& log, const frame::TextInput& file, const Line& line,
                std::int64_t number) {
  for (std::size_t item = 0; item < kItems; ++item) {
    const Column& column = kColumns[item];
    if (column.good(line[item])) continue;
    frame::attempt(log, &file, [&] {
      log.data_error(items(dated_series::of_data(column.name, kWords.data), line[item]),
                     column.rule, items("line no. =", number));
    });
  }
}

/// What a file gives is known when all of it was seen.
struct Given {
  bool SunRad = false, SunJdn = false, SunJsh = false, AtmJsh = false;
  double last_gap = 0.0;           ///< last AtmJsh that is not positive
  std::int64_t last_gap_line = 0;  ///< 0: none

  void note(const Line& line, std::int64_t number) {
    SunRad = SunRad || line[kSunRad] > 0.0;
    SunJdn = SunJdn || line[kSunJdn] > 0.0;
    SunJsh = SunJsh || line[kSunJsh] > 0.0;
    AtmJsh = AtmJsh || line[kAtmJsh] > 0.0;
    if (line[kAtmJsh] <= 0.0) {
      last_gap = line[kAtmJsh];
      last_gap_line = number;
    }
  }
};

void check_given(frame::Log& log, const Given& given) {
  frame::attempt(log, [&] {
    if (given.SunJdn != given.SunJsh) {
      log.data_error(given.SunJdn ? "lack of SunJsh in Weather data"
                                  : "lack of SunJdn in Weather data");
    }
    if (given.SunRad && given.SunJdn) log.data_error("SunJdn in Weather data can not be specified");
    if (!given.SunRad && !given.SunJdn) log.data_error("lack of SunRad in Weather data");
  });
  if (given.AtmJsh && given.last_gap_line > 0) {
    log.data_error(items("AtmJsh in Weather data =", given.last_gap), "it must be > 0",
                   items("line no. =", given.last_gap_line));
  }
}

/// The current values from the two lines round the time.
Weather weather_between(const Data& data, std::span<const double> lower,
                        std::span<const double> upper, double weight) {
  const auto mixed = [&](Item item) { return dated_series::mix(weight, lower[item], upper[item]); };
  Weather now;
  now.temperature = mixed(kTemp) + kZeroCelsius;
  now.pressure = mixed(kPress) * kPascal;
  now.wind = mixed(kWind);
  now.Rhum = mixed(kRhum);
  if (data.has_SunRad) {
    now.SunRad = upper[kSunRad] * kWatt;
  } else {
    now.SunJdn = mixed(kSunJdn) * kWatt;
    now.SunJsh = mixed(kSunJsh) * kWatt;
  }
  if (data.has_AtmJsh) now.AtmJsh = mixed(kAtmJsh) * kWatt;
  const double e = now.Rhum * 0.01 * moist_air::satvap(now.temperature).es;
  now.humidity = moist_air::humidity_of(e / now.pressure);
  return now;
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_weather)(inputdata)");
  dated_series::Settings settings = data.series.settings;
  frame::Group group("TSRF_WEATHER", dated_series::members(settings, dated_series::Hour::optional));
  group.read(log, control);
  data.series.settings = settings;
}

void check_data(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_weather)(check_data)");
  Given given;
  const auto check = [&](dated_series::Counter& at, dated_series::IntDate& date) {
    const frame::ReadStatus status = read_line(file, date, data);
    if (status == frame::ReadStatus::ok) {
      dated_series::note_record(log, file, kWords, at);
      check_line(log, file, data.line, at.line);
      given.note(data.line, at.line);
    }
    return status;
  };
  dated_series::check_pass(log, file, kWords, kItems, check, data.series);
  check_given(log, given);
  data.has_SunRad = given.SunRad;
  data.has_direct = given.SunJdn;
  data.has_AtmJsh = given.AtmJsh;
}

void set_weather(frame::Log& log, frame::TextInput& file, double time,
                 tsrf_module_calendar::Data& calendar, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_weather)(set_weather)");
  const auto check = [&] { check_data(log, file, data); };
  const auto prepare = [&](std::int32_t slots) {
    data.values = frame::PatchTable<double>(kItems, slots);
  };
  const auto read = [&](std::int32_t slot, dated_series::IntDate& date) {
    const frame::ReadStatus status = read_line(file, date, data);
    std::copy(data.line.begin(), data.line.end(), data.values.row(slot).begin());
    return status;
  };
  const dated_series::Source source{kWords, check, prepare, read, frame::bytes_of<double>(kItems)};
  const auto [lower, upper, weight] =
      dated_series::find(log, file, time, calendar, source, data.series);
  const std::vector<std::size_t>& places = data.series.places;
  data.origin = {
      &file, {places[static_cast<std::size_t>(lower)], places[static_cast<std::size_t>(upper)]}};
  data.now = weather_between(data, data.values.row(lower), data.values.row(upper), weight);
}

}  // namespace tsrf_module_weather
