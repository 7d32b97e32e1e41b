#include "flow/urban/set_flux.hpp"

#include <algorithm>
#include <cmath>

#include "inputs/moist_air.hpp"

namespace flow {

namespace {

constexpr double kHour = 3600.0;
constexpr std::int32_t kDay = 24;

/// Calls `use(cell, values)` for the cells of a table with their values at the time of the run.
template <class Use>
void for_values(const HourTable& table, const Urban& urban, const State& state, Use&& use) {
  if (table.empty()) return;
  const Moment now = moment_of(table.hours, urban.TIME0 + state.time);
  const CityValues* const before = table.at_hour(now.before);
  const CityValues* const after = table.at_hour(now.after);
  for (std::size_t c = 0; c < table.cells.size(); ++c) {
    CityValues value;
    for (std::size_t v = 0; v < value.size(); ++v) {
      value[v] = (1.0 - now.part) * before[c][v] + now.part * after[c][v];
    }
    use(table.cells[c], value);
  }
}

double saturated(double temperature, double pressure) {
  return moist_air::humidity_of(std::min(moist_air::satvap(temperature).es / pressure, 1.0));
}

}  // namespace

Moment moment_of(const std::vector<std::int32_t>& hours, double seconds_of_day) {
  const std::size_t count = hours.size();
  const bool round =
      count == static_cast<std::size_t>(kDay) && hours.back() - hours.front() == kDay - 1;
  double hour = seconds_of_day / kHour;
  if (round) {
    const double since = std::fmod(hour - hours.front(), kDay);
    hour = hours.front() + (since < 0.0 ? since + kDay : since);
  }
  const auto next = static_cast<std::size_t>(
      std::ranges::upper_bound(hours, hour, {}, [](std::int32_t h) { return double(h); }) -
      hours.begin());
  if (next == 0) return {0, 0, 0.0};
  if (next < count) {
    const double span = hours[next] - hours[next - 1];
    return {next - 1, next, (hour - hours[next - 1]) / span};
  }
  return round ? Moment{count - 1, 0, hour - hours.back()} : Moment{count - 1, count - 1, 0.0};
}

void kpc_set_flux(const Urban& urban, const State& state, Field& heat, Field* vapour) {
  for (const HourTable* table : {&urban.tdrg, &urban.heat}) {
    for (const std::size_t cell : table->cells) {
      heat[cell] = 0.0;
      if (vapour != nullptr) (*vapour)[cell] = 0.0;
    }
  }
  for_values(urban.tdrg, urban, state, [&](std::size_t cell, const CityValues& tdrg) {
    heat[cell] += tdrg[1] - tdrg[0] * state.t[cell];
    if (vapour == nullptr || !(tdrg[0] > 0.0) || !(tdrg[2] > 0.0)) return;
    const double excess = saturated(tdrg[1] / tdrg[0], state.pt) - state.ys[1][cell];
    (*vapour)[cell] += tdrg[2] / moist_air::kAirHeat * excess;
  });
  for_values(urban.heat, urban, state, [&](std::size_t cell, const CityValues& released) {
    heat[cell] += released[0];
    if (vapour != nullptr) (*vapour)[cell] += released[1] / moist_air::kLatentHeat;
  });
}

void kpc_set_exchange(const Urban& urban, const State& state, Field& exchange) {
  for_values(urban.tdrg, urban, state, [&](std::size_t cell, const CityValues& tdrg) {
    exchange[cell] = tdrg[0] / state.cp[cell];
  });
}

}  // namespace flow
