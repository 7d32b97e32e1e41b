// A whole step over a district: k-epsilon, heat and blocks on the floor, explicit. Counter `ratio`
// is the time of the step without its pressure solve over that of reading 736 bytes a cell, one
// sweep for each equation; the goal is less than 4. `ns` is that step's time a cell, `floor` that
// of the reading, `whole` that of the step with the pressure solved to 1e-8.
#include <benchmark/benchmark.h>

#include <ctime>
#include <vector>

#include "sample_city.hpp"

namespace {

double seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// Reads 92 numbers a cell.
struct Floor {
  explicit Floor(std::int32_t n)
      : values(92 * static_cast<std::size_t>(n) * static_cast<std::size_t>(n) *
                   static_cast<std::size_t>(n),
               1.0) {}
  [[nodiscard]] double read() const {
    double lanes[8] = {};
    for (std::size_t c = 0; c + 8 <= values.size(); c += 8) {
      for (std::size_t l = 0; l < 8; ++l) lanes[l] += values[c + l];
    }
    double sum = 0.0;
    for (const double lane : lanes) sum += lane;
    return sum;
  }
  std::vector<double> values;
};

void step_over_a_city(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  sample::City city(n);
  const Floor floor(n);
  city.steps(3);
  double reading = 0.0;
  double whole = 0.0;
  double pressure = 0.0;
  for ([[maybe_unused]] auto turn : state) {
    double begun = seconds();
    benchmark::DoNotOptimize(floor.read());
    reading += seconds() - begun;
    city.steps(1);  // what the caches hold is what a step leaves there
    const double solved = city.accounts.seconds("pressure");
    begun = seconds();
    city.steps(1);
    whole += seconds() - begun;
    pressure += city.accounts.seconds("pressure") - solved;
  }
  const double each = 1e9 / (static_cast<double>(state.iterations()) *
                             static_cast<double>(city.run.grid.box.cells()));
  state.counters["floor"] = each * reading;
  state.counters["ns"] = each * (whole - pressure);
  state.counters["whole"] = each * whole;
  state.counters["ratio"] = (whole - pressure) / reading;
}
BENCHMARK(step_over_a_city)
    ->ArgName("cells")
    ->Arg(64)
    ->Arg(128)
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);

}  // namespace
