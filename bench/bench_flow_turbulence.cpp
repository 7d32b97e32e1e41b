// What turbulence costs a step, on 128 cubed with blocks on the floor: k and epsilon, the eddy
// viscosity of both models, and the strain beside its plain form, cell by cell. Counter `ns` is the
// time a cell; `reads` how often the ten fields of the state could be read in it.
#include <benchmark/benchmark.h>

#include <ctime>
#include <numbers>

#include "flow/turbulence/eddy_viscosity.hpp"
#include "sample_flow.hpp"

namespace {

double seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// Swirls over a floor of blocks, one cell of nine filled below a quarter of the height.
struct District : sample::FlowCase {
  District(std::int32_t n, flow::Turbulence model)
      : FlowCase({sample::equal(n), sample::equal(n), sample::equal(n)}) {
    control().gsfcg = 0.0;
    set_viscosity(1e-5);
    if (model == flow::Turbulence::k_epsilon) set_k_epsilon(0.1, 0.1);
    control().iturb = model;
    for (int axis = 0; axis < 3; ++axis) ends(axis, flow::VelocityAt::log_wall);
    flow::Group block;
    block.last = run.grid.box.n;
    block.iv = flow::VelocityAt::log_wall;
    run.boundary.groups.push_back(block);
    for (auto& group : run.boundary.groups) group.ik = flow::TurbulenceAt::wall;
    const auto built = [n](std::int32_t i) { return i / (n / 16) % 3 == 1; };
    for (std::int32_t k = 1; k <= n / 4; ++k) {
      for (std::int32_t j = 1; j <= n; ++j) {
        for (std::int32_t i = 1; i <= n; ++i) {
          if (built(i) && built(j)) run.openings.fluid(i, j, k) = 0;
        }
      }
    }
    start([](int axis, const flow::Vector& x) {
      const auto a = static_cast<std::size_t>(axis);
      constexpr double kTurn = 2.0 * std::numbers::pi;
      return std::sin(kTurn * x[a]) * std::cos(2.0 * kTurn * x[(a + 1) % 3]);
    });
    flow::set_eddy_viscosity(flow::domain_of(run), run.work.momentum.velocities,
                             run.work.turbulence, run.state);
  }
  [[nodiscard]] double read() const {
    double sum = 0.0;
    const flow::State& s = run.state;
    for (const auto* field :
         {&s.r[0], &s.r[1], &s.p, &s.t, &s.ys[0], &s.ru[0], &s.ru[1], &s.ru[2], &s.mu, &s.mut}) {
      double lanes[8] = {};
      for (std::size_t c = 0; c + 8 <= field->all().size(); c += 8) {
        for (std::size_t l = 0; l < 8; ++l) lanes[l] += (*field)[c + l];
      }
      for (const double lane : lanes) sum += lane;
    }
    return sum;
  }
};

District& district(flow::Turbulence model) {
  static District k_epsilon(128, flow::Turbulence::k_epsilon);
  static District les(128, flow::Turbulence::les);
  return model == flow::Turbulence::les ? les : k_epsilon;
}

/// Times `work(x)`, beside reading the state.
template <class Work>
void measure(benchmark::State& state, District& x, Work&& work) {
  double reading = 0.0;
  double working = 0.0;
  for ([[maybe_unused]] auto turn : state) {
    double begun = seconds();
    benchmark::DoNotOptimize(x.read());
    reading += seconds() - begun;
    begun = seconds();
    work(x);
    const double time = seconds() - begun;
    working += time;
    state.SetIterationTime(time);
  }
  const auto cells = static_cast<double>(x.run.grid.box.cells());
  state.counters["ns"] = 1e9 * working / static_cast<double>(state.iterations()) / cells;
  state.counters["reads"] = working / reading;
}

void k_and_epsilon(benchmark::State& state) {
  measure(state, district(flow::Turbulence::k_epsilon), [](District& x) {
    flow::StepWork& work = x.run.work;
    flow::flw_clkeps(x.log, flow::domain_of(x.run), 1e-6, x.run.state.t, work.momentum.velocities,
                     work.momentum.rows, work.system, work.turbulence, x.run.state);
  });
}
BENCHMARK(k_and_epsilon)->UseManualTime()->Unit(benchmark::kMillisecond);

void eddy_viscosity(benchmark::State& state) {
  const auto model = static_cast<flow::Turbulence>(state.range(0));
  measure(state, district(model), [](District& x) {
    flow::set_eddy_viscosity(flow::domain_of(x.run), x.run.work.momentum.velocities,
                             x.run.work.turbulence, x.run.state);
  });
}
BENCHMARK(eddy_viscosity)
    ->ArgName("iturb")
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// The plain form takes each cell by itself.
void strain(benchmark::State& state) {
  const bool plain = state.range(0) != 0;
  measure(state, district(flow::Turbulence::les), [plain](District& x) {
    const flow::Domain domain = flow::domain_of(x.run);
    const auto& velocities = x.run.work.momentum.velocities;
    flow::Strain& of = x.run.work.turbulence.strain;
    const flow::Box& box = x.run.grid.box;
    flow::for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
      if (!plain) {
        flow::set_strain_row(domain, of, velocities, place, j, k, of.rows[0].data());
      } else {
        for (std::int32_t i = 1; i <= box.n[0]; ++i) {
          const flow::RimCell cell{
              place + static_cast<std::size_t>(i) - 1, {i, j, k}, {{{-1, -1}, {-1, -1}, {-1, -1}}}};
          of.rows[0][static_cast<std::size_t>(i) - 1] =
              flow::strain_at(domain, of, velocities, cell);
        }
      }
      benchmark::DoNotOptimize(of.rows[0].data());
    });
  });
}
BENCHMARK(strain)->ArgName("plain")->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void wall_flows(benchmark::State& state) {
  measure(state, district(flow::Turbulence::k_epsilon), [](District& x) {
    flow::set_wall_flows(x.run.crew, x.run.work.rim, x.run.state, x.run.work.momentum.velocities,
                         x.run.work.turbulence.strain.walls);
  });
}
BENCHMARK(wall_flows)->UseManualTime()->Unit(benchmark::kMillisecond);

void start_of_large_eddies(benchmark::State& state) {
  measure(state, district(flow::Turbulence::les), [](District& x) {
    benchmark::DoNotOptimize(flow::mixing_length_squares(flow::domain_of(x.run)));
  });
}
BENCHMARK(start_of_large_eddies)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
