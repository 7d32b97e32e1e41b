// Any bytes as the file of a dated series: a query gives finite values or a reported fault.
#include <array>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "buildings/aircon.hpp"
#include "inputs/weather.hpp"
#include "inputs/wtrtmp.hpp"
#include "radiation/shade.hpp"

namespace {

struct Run {
  std::ostringstream screen;
  frame::Log log{screen, screen};
  tsrf_module_calendar::Data calendar;
  tsrf_module_patch::Data patch;
  dated_series::Settings settings;

  void weather(frame::TextInput& file, double time) {
    tsrf_module_weather::Data data;
    data.series.settings = settings;
    for (const double later : {0.0, 5.0e3, -3.0e6, 4.0e7}) {
      tsrf_module_weather::set_weather(log, file, time + later, calendar, data);
      if (!std::isfinite(data.now.temperature)) std::abort();
    }
  }
  void water(frame::TextInput& file, double time) {
    tsrf_module_wtrtmp::Data data;
    data.series.settings = settings;
    tsrf_module_wtrtmp::read_wtrtmp(log, file, patch, data);
    tsrf_module_wtrtmp::set_wtrtmp(log, file, time, patch, calendar, data);
  }
  void shade(frame::TextInput& file, double time) {
    tsrf_module_shade::Data data;
    data.series.settings = settings;
    std::array<double, 2> fsun{};
    frame::Crew crew;
    for (const double later : {0.0, 5.0e3, -3.0e5}) {
      tsrf_module_shade::set_shade(log, crew, &file, time + later, patch, calendar, data, fsun);
      if (!(fsun[0] >= 0.0 && fsun[1] <= 1.0)) std::abort();
    }
  }
  void rooms(frame::TextInput& file, double time) {
    tsrf_module_rmheat::Data data;
    tsrf_module_aircon::Data aircon;
    data.series.settings = settings;
    tsrf_module_rmheat::read_rmheat(log, file, data);
    tsrf_module_aircon::read_aircon(log, file, data, aircon);
    tsrf_module_rmheat::set_rmheat(log, file, time, calendar, data);
    tsrf_module_aircon::set_aircon(log, file, data, data.pairs.BCD, data.pairs.Strct, aircon);
  }
};

}  // namespace

/// The first two bytes choose series, window and date elements.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size < 2) return 0;
  Run run;
  run.patch.mpatch = 2;
  run.patch.PID = {1, 2};
  run.patch.type = {4, 4};
  run.patch.by_pid = frame::CodeIndex(run.patch.PID);
  run.settings.NSTRDT = data[0] / 4 % 2 == 0 ? 2 : 24;
  run.settings.LDATE = {1 + data[1] % 4, 4 + data[1] / 4 % 3};
  frame::TextInput file("fuzz", std::string(reinterpret_cast<const char*>(data) + 2, size - 2));
  constexpr std::array kSeries{&Run::weather, &Run::water, &Run::shade, &Run::rooms};
  try {
    (run.*kSeries[data[0] % 4])(file, 1.0e5 * (data[0] / 8));
  } catch (const frame::Failure&) {
    if (run.screen.str().find("### ") == std::string::npos) std::abort();
  } catch (const frame::Stop&) {
    if (run.screen.str().find("### program error") == std::string::npos) std::abort();
  }
  return 0;
}
