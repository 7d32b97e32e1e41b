// tsrf_module_weather: the outside air and the measured radiation through time (Weather file).
//
// A dated series of eight items. Queried once a step at mid-step by tsrf_set_tqair; its current
// values feed the air state of all patches and the sky fluxes.
#pragma once

#include <array>
#include <cstdint>

#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"
#include "inputs/dated_series.hpp"

namespace tsrf_module_weather {

inline constexpr double kNotGiven = -999.0;

/// Current values.
struct Weather {
  double temperature = 0.0;   ///< [K]
  double pressure = 0.0;      ///< [Pa]
  double wind = 0.0;          ///< [m/s]
  double humidity = 0.0;      ///< specific [kg/kg]
  double Rhum = 0.0;          ///< relative [%]
  double SunRad = kNotGiven;  ///< global horizontal [W/m2], or -999
  double SunJdn = kNotGiven;  ///< direct normal [W/m2], or -999
  double SunJsh = kNotGiven;  ///< scattered horizontal [W/m2], or -999
  double AtmJsh = kNotGiven;  ///< atmospheric long-wave [W/m2], or -999
};

struct Data {
  dated_series::Series series;
  frame::PatchTable<double> values;  ///< a row of the eight items per stored line, as in the file
  bool has_SunRad = false;           ///< some line has SunRad > 0 (after the check pass)
  bool has_direct = false;
  bool has_AtmJsh = false;
  std::array<double, 8> line{};  ///< scratch: the line read last, what a null field keeps
  Weather now;
  frame::Origin origin;  ///< of `now`
};

/// Reads group TSRF_WEATHER.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// The check pass, run by the first query: every line of the file, and which items it gives.
void check_data(frame::Log& log, frame::TextInput& file, Data& data);
/// Brings data.now to `time` [s]. SunRad is a sum over the hour that ends at its line, so the later
/// line's value holds between two lines; everything else is interpolated.
void set_weather(frame::Log& log, frame::TextInput& file, double time,
                 tsrf_module_calendar::Data& calendar, Data& data);

}  // namespace tsrf_module_weather
