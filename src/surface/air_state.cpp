#include "surface/air_state.hpp"

#include <algorithm>
#include <array>

namespace tsrf_set_tqair {

void tsrf_set_tqair(frame::Log& log, frame::TextInput& weather_file, double time, double dtmax,
                    tsrf_module_calendar::Data& calendar, tsrf_module_weather::Data& weather,
                    tsrf_module_data::Data& state) {
  const frame::Tag tag(log, "(tsrf_set_tqair)");
  tsrf_module_weather::set_weather(log, weather_file, time + 0.5 * dtmax, calendar, weather);
  const tsrf_module_weather::Weather& now = weather.now;
  state.air_origin = weather.origin;
  const std::array<double, 4> air = {now.pressure, now.temperature, now.humidity, now.wind};
  for (std::int32_t row = 0; row < 4; ++row) {
    std::ranges::fill(state.airst.row(row), air[static_cast<std::size_t>(row)]);
  }
}

}  // namespace tsrf_set_tqair
