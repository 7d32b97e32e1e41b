// An explicit step of the flow without its pressure solve, on 128 cubed: how often the fields of
// the state could be read from memory in its time. Counter `ratio` is that number; the goal is
// less than 12. The parts of the step follow, each by itself.
#include <benchmark/benchmark.h>

#include <ctime>
#include <numbers>

#include "flow/monitors.hpp"
#include "flow/properties.hpp"
#include "flow/terms/advection.hpp"
#include "flow/terms/viscous.hpp"
#include "flow/time_limit.hpp"
#include "sample_flow.hpp"

namespace {

double seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// A box of swirls, walls all around.
struct Swirls : sample::FlowCase {
  explicit Swirls(std::int32_t n)
      : FlowCase({sample::equal(n), sample::equal(n), sample::equal(n)}) {
    control().gsfcg = 0.0;
    for (int axis = 0; axis < 3; ++axis) ends(axis, flow::VelocityAt::no_slip);
    start([](int axis, const flow::Vector& x) {
      const auto a = static_cast<std::size_t>(axis);
      constexpr double kTurn = 2.0 * std::numbers::pi;
      return std::sin(kTurn * x[a]) * std::cos(2.0 * kTurn * x[(a + 1) % 3]);
    });
  }
};

Swirls& swirls() {
  static Swirls one(128);
  return one;
}

/// Everything that a step does but the pressure solve.
void step(Swirls& x) {
  flow::Run& run = x.run;
  flow::flw_clrho(run.crew, run.settings, run.grid, run.state);
  flow::flw_clprop(run.crew, run.settings.species, run.state);
  run.state.dt = flow::flw_cldelt(run.crew, run.settings.control, run.work.metrics, run.openings,
                                  run.state, run.work.scratch);
  flow::flw_cldvdt(x.log, flow::domain_of(x.run), 1e-3 * run.state.dt, run.work.momentum,
                   run.state);
  flow::flw_clsolid(run.crew, run.work.rim, run.state);
  benchmark::DoNotOptimize(flow::take_monitors(run.crew, run.openings.fluid, run.state, false));
}

/// Adds up every value of a field, in eight lanes.
double read(const flow::Field& field) {
  constexpr std::size_t kLanes = 8;
  double sums[kLanes] = {};
  const auto all = field.all();
  for (std::size_t i = 0; i + kLanes <= all.size(); i += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) sums[l] += all[i + l];
  }
  double sum = 0.0;
  for (const double lane : sums) sum += lane;
  return sum;
}

void read_all(const flow::State& s) {
  double sum = 0.0;
  for (const auto* field :
       {&s.r[0], &s.r[1], &s.p, &s.t, &s.ys[0], &s.ru[0], &s.ru[1], &s.ru[2], &s.mu, &s.mut}) {
    sum += read(*field);
  }
  benchmark::DoNotOptimize(sum);
}

void explicit_step(benchmark::State& state) {
  Swirls& x = swirls();
  double reading = 0.0;
  double stepping = 0.0;
  for ([[maybe_unused]] auto turn : state) {
    double begun = seconds();
    read_all(x.run.state);
    reading += seconds() - begun;
    begun = seconds();
    step(x);
    const double time = seconds() - begun;
    stepping += time;
    state.SetIterationTime(time);
  }
  state.counters["read_ms"] = 1e3 * reading / static_cast<double>(state.iterations());
  state.counters["ratio"] = stepping / reading;
}
BENCHMARK(explicit_step)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(3.0);

void advection(benchmark::State& state) {
  Swirls& x = swirls();
  auto& m = x.run.work.momentum;
  std::array<flow::Advected, 3> all{};
  for (std::size_t b = 0; b < 3; ++b) all[b] = {&m.velocities.cell[b], &m.dqdt[b], b};
  for ([[maybe_unused]] auto turn : state) {
    flow::flw_cladv0(x.log, x.run.crew, x.run.work.metrics, x.run.work.rim, x.run.state.ru,
                     flow::Variable::momentum, all, 1.0 / 3.0, m.rows);
  }
}
BENCHMARK(advection)->Unit(benchmark::kMillisecond);

void diffusion(benchmark::State& state) {
  Swirls& x = swirls();
  auto& m = x.run.work.momentum;
  for ([[maybe_unused]] auto turn : state) {
    flow::flw_cldifv(x.run.crew, x.run.work.metrics, x.run.work.rim, x.run.state, m.velocities,
                     m.shear, m.rows, m.dqdt);
  }
}
BENCHMARK(diffusion)->Unit(benchmark::kMillisecond);

void velocities(benchmark::State& state) {
  Swirls& x = swirls();
  for ([[maybe_unused]] auto turn : state) {
    flow::set_velocities(x.run.crew, x.run.work.metrics, x.run.boundary.ends, x.run.state,
                         x.run.work.momentum.velocities);
  }
}
BENCHMARK(velocities)->Unit(benchmark::kMillisecond);

void density_and_limit(benchmark::State& state) {
  Swirls& x = swirls();
  flow::Run& run = x.run;
  for ([[maybe_unused]] auto turn : state) {
    flow::flw_clrho(run.crew, run.settings, run.grid, run.state);
    flow::flw_clprop(run.crew, run.settings.species, run.state);
    benchmark::DoNotOptimize(flow::flw_cldelt(run.crew, run.settings.control, run.work.metrics,
                                              run.openings, run.state, run.work.scratch));
  }
}
BENCHMARK(density_and_limit)->Unit(benchmark::kMillisecond);

void monitors(benchmark::State& state) {
  Swirls& x = swirls();
  for ([[maybe_unused]] auto turn : state) {
    benchmark::DoNotOptimize(
        flow::take_monitors(x.run.crew, x.run.openings.fluid, x.run.state, false));
  }
}
BENCHMARK(monitors)->Unit(benchmark::kMillisecond);

}  // namespace
