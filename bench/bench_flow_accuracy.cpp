// The cavity on fine grids against its published centre lines: each benchmark marches one cavity to
// its steady state by implicit steps. Counters: largest and root mean square differences of u and
// v, per cent of the lid's speed, and steps. The same of the cavity with a warm and a cold side:
// mean Nusselt number, and its difference from the published one, per cent. The tables of
// docs/flow_method.md come from here.
#include <benchmark/benchmark.h>

#include "sample_building.hpp"
#include "sample_cavity.hpp"
#include "sample_heat.hpp"

namespace {

void cavity(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const auto reynolds = static_cast<std::size_t>(state.range(1));
  for ([[maybe_unused]] auto turn : state) {
    sample::Cavity x(cells, sample::kReynolds[reynolds]);
    x.control().intstp = -1;
    x.control().momentum.dtmax = x.control().scalar.dtmax = 0.1;
    x.control().epscg = x.control().epsbcg = 1e-2;  // of changes that vanish themselves
    x.control().gsfcg = 0.95;
    x.start();
    x.settle(1e-5, 20);
    const auto [u, v] = x.deviation(reynolds);
    state.counters["u"] = 100.0 * u.largest;
    state.counters["v"] = 100.0 * v.largest;
    state.counters["u_rms"] = 100.0 * u.root_mean_square;
    state.counters["v_rms"] = 100.0 * v.root_mean_square;
    state.counters["steps"] = x.run.state.iter;
  }
}
BENCHMARK(cavity)
    ->ArgNames({"cells", "reynolds_number"})
    ->Args({64, 0})
    ->Args({96, 0})
    ->Args({128, 0})
    ->Args({64, 1})
    ->Args({96, 1})
    ->Args({128, 1})
    ->Args({64, 2})
    ->Args({96, 2})
    ->Args({128, 2})
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

void building(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  for ([[maybe_unused]] auto turn : state) {
    sample::Building x(cells);
    x.control().intstp = -1;
    x.control().momentum.dtmax = x.control().scalar.dtmax = 0.5 / cells;
    x.control().epscg = x.control().epsbcg = 1e-2;
    x.begin();
    double before = 0.0;
    double rear = -1.0;
    while (x.run.state.time < 40.0 || std::fabs(rear - before) > 5e-3) {
      before = rear;
      for (const double end = x.run.state.time + 10.0; x.run.state.time < end;) x.steps(1);
      rear = x.reattachment(0.0, 0.5, 14.0);
    }
    state.counters["roof"] = x.reattachment(2.0, -0.5, 0.5);
    state.counters["rear"] = rear;
    state.counters["time"] = x.run.state.time;
    state.counters["cells"] = static_cast<double>(x.run.grid.box.cells());
  }
}
BENCHMARK(building)->ArgName("cells")->Arg(6)->Arg(8)->Arg(12)->Iterations(1)->Unit(
    benchmark::kSecond);

void warm_cavity(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const auto& published = sample::kConvection[static_cast<std::size_t>(state.range(1))];
  const bool stretched = state.range(2) != 0;
  for ([[maybe_unused]] auto turn : state) {
    sample::WarmCavity x(stretched ? sample::clustered(cells, 1.8) : sample::equal(cells),
                         published.rayleigh, 0, 2);
    x.take_long_steps();
    x.start();
    x.settle(1e-4);
    state.counters["Nu"] = x.nusselt(-1);
    state.counters["off"] = 100.0 * (x.nusselt(-1) / published.nusselt - 1.0);
    state.counters["steps"] = x.run.state.iter;
  }
}
BENCHMARK(warm_cavity)
    ->ArgNames({"cells", "rayleigh_number", "stretched"})
    ->ArgsProduct({{20, 40, 80}, {0, 1, 2}, {0, 1}})
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

}  // namespace
