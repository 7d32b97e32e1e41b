// A whole step over a district: k-epsilon, heat and blocks on the floor, explicit. Counter `ratio`
// is the time of the step without its pressure solve over that of reading 736 bytes a cell, one
// sweep for each equation; the goal is less than 4. `ns` is that step's time a cell, `floor` that
// of the reading, `whole` that of the step with the pressure solved to 1e-8.
#include <benchmark/benchmark.h>

#include <ctime>
#include <numbers>
#include <vector>

#include "sample_flow.hpp"

namespace {

double seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// A wind over blocks of a quarter of the height, one of nine places built upon; the floor and the
/// blocks are warmer than the air.
struct City : sample::FlowCase {
  explicit City(std::int32_t n)
      : FlowCase({sample::equal(n, 2.0 * n), sample::equal(n, 2.0 * n), sample::equal(n, 2.0 * n)},
                 true) {
    flow::Control& c = control();
    c.gsfcg = 0.95;
    run.settings.records.iamg = 1;
    c.itemp = c.idift = true;
    c.acrkt = c.acrke = 1.0 / 3.0;
    c.prturb = c.scturb = 0.9;
    c.gravity = {0.0, 0.0, -9.8};
    c.keeps_pressure = true;
    set_viscosity(1.8e-5);
    set_k_epsilon(0.1, 0.01);
    end(0, -1, flow::VelocityAt::given).velocity = {3.0, 0.0, 0.0};
    end(0, 1, flow::VelocityAt::free);
    warm(end(2, -1, flow::VelocityAt::log_wall));
    end(2, 1, flow::VelocityAt::slip);
    flow::Group block;
    block.last = run.grid.box.n;
    block.iv = flow::VelocityAt::log_wall;
    warm(run.boundary.groups.emplace_back(block));
    build(n);
    start([](int axis, const flow::Vector& x) {
      return (axis == 0 ? 3.0 : 0.0) + 0.3 * std::sin(0.1 * x[2] + 0.05 * x[0]);
    });
  }

 private:
  static void warm(flow::Group& group) {
    group.it = flow::TemperatureAt::log_wall;
    group.ik = flow::TurbulenceAt::wall;
    group.t = 310.0;
  }
  void build(std::int32_t n) {
    const auto built = [n](std::int32_t i) { return (i - 1) / (n / 16) % 3 == 1; };
    flow::Openings& open = run.openings;
    for (std::int32_t k = 1; k <= n / 4; ++k) {
      for (std::int32_t j = 1; j <= n; ++j) {
        for (std::int32_t i = 1; i <= n; ++i) {
          if (built(i) && built(j)) open.fluid(i, j, k) = 0;
        }
      }
    }
  }
};

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
  City city(n);
  const Floor floor(n);
  city.steps(3);
  double reading = 0.0;
  double whole = 0.0;
  const double before = city.accounts.seconds("pressure");
  for ([[maybe_unused]] auto turn : state) {
    double begun = seconds();
    benchmark::DoNotOptimize(floor.read());
    reading += seconds() - begun;
    begun = seconds();
    city.steps(1);
    whole += seconds() - begun;
  }
  const double pressure = city.accounts.seconds("pressure") - before;
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
