// Temperature and species of a step, on 128 cubed. `transport` is the sweep of the temperature
// beside its plain form (counter `ratio`); `step` the whole of flw_cldtdt with two species;
// `momentum` the predictor for scale, and what the density and the properties take.
#include <benchmark/benchmark.h>

#include <numbers>

#include "flow/density.hpp"
#include "plain_flow.hpp"
#include "ratio.hpp"
#include "sample_heat.hpp"

namespace {

/// Damp, unevenly warm air in swirls, walls all around.
struct WarmSwirls : sample::HeatCase {
  explicit WarmSwirls(std::int32_t n)
      : HeatCase({sample::equal(n), sample::equal(n), sample::equal(n)}) {
    control().gsfcg = 0.0;
    control().prturb = control().scturb = 0.9;
    for (int axis = 0; axis < 3; ++axis) {
      wall(axis, -1, 301.0);
      wall(axis, 1, 299.0);
    }
    add_vapour(0.01);
    start([](int axis, const flow::Vector& x) {
      const auto a = static_cast<std::size_t>(axis);
      constexpr double kTurn = 2.0 * std::numbers::pi;
      return std::sin(kTurn * x[a]) * std::cos(2.0 * kTurn * x[(a + 1) % 3]);
    });
  }
};

WarmSwirls& swirls() {
  static WarmSwirls one(128);
  return one;
}

void step(benchmark::State& state) {
  WarmSwirls& x = swirls();
  for ([[maybe_unused]] auto turn : state) {
    flow::flw_cldtdt(x.log, flow::domain_of(x.run), 1e-6, x.run.work.scalars, x.run.work.system,
                     x.run.state);
  }
}
BENCHMARK(step)->Unit(benchmark::kMillisecond);

void transport(benchmark::State& state) {
  WarmSwirls& x = swirls();
  auto& fields = x.run.state;
  const flow::Transported one{{&fields.t, &x.run.work.scalars.dtdt},
                              {&fields.mu, 1.4, 1.1, &fields.cp}};
  compare(
      state, [] {},
      [&] {
        plain::transport(x.run.work.metrics, x.run.work.rim, fields, one, *one.advected.dqdt);
      },
      [&] {
        flow::transport(x.log, flow::domain_of(x.run), fields, std::span(&one, 1),
                        flow::Tendency::begins, x.run.work.scalars.rows);
      });
}
BENCHMARK(transport)->UseManualTime()->Unit(benchmark::kMillisecond);

void momentum(benchmark::State& state) {
  WarmSwirls& x = swirls();
  for ([[maybe_unused]] auto turn : state) {
    flow::flw_cldvdt(x.log, flow::domain_of(x.run), 1e-9, x.run.work.momentum, x.run.state);
  }
}
BENCHMARK(momentum)->Unit(benchmark::kMillisecond);

void properties(benchmark::State& state) {
  WarmSwirls& x = swirls();
  for ([[maybe_unused]] auto turn : state) {
    flow::flw_clprop(x.run.crew, x.run.settings.species, x.run.state);
  }
}
BENCHMARK(properties)->Unit(benchmark::kMillisecond);

void density(benchmark::State& state) {
  WarmSwirls& x = swirls();
  for ([[maybe_unused]] auto turn : state)
    flow::set_density(x.run.crew, x.run.settings, x.run.grid, x.run.state);
}
BENCHMARK(density)->Unit(benchmark::kMillisecond);

}  // namespace
