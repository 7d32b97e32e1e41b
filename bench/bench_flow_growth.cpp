// How the cost of a step grows with the box and falls with the cores: whole steps over a district
// (sample_city.hpp) and explicit steps in a box of walls, by wall clock; and what this machine's
// cores and memory do at most, from which docs/performance.md predicts more of them.
//
// TOWNSKIN_THREADS sets the hands; without it one works. `ns` is the time of a step a cell, the
// other counters that of its parts, in processor time.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "flow/row_kernel.hpp"
#include "sample_city.hpp"

namespace {

double seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Steps of a case until the benchmark has enough of them.
void take_steps(benchmark::State& state, sample::FlowCase& x,
                const std::vector<std::string>& accounts) {
  x.steps(3);
  std::vector<double> before;
  for (const std::string& account : accounts) before.push_back(x.accounts.seconds(account));
  const double begun = seconds();
  for ([[maybe_unused]] auto turn : state) x.steps(1);
  const double each =
      1e9 / (static_cast<double>(state.iterations()) * static_cast<double>(x.run.grid.box.cells()));
  state.counters["ns"] = each * (seconds() - begun);
  for (std::size_t n = 0; n < accounts.size(); ++n) {
    state.counters[accounts[n]] = each * (x.accounts.seconds(accounts[n]) - before[n]);
  }
}

void city(benchmark::State& state) {
  const auto x = std::make_unique<sample::City>(static_cast<std::int32_t>(state.range(0)));
  take_steps(state, *x, {"pressure", "momentum", "temperature", "turbulence"});
}
BENCHMARK(city)->ArgName("cells")->Arg(32)->Arg(64)->Arg(128)->Arg(192)->Iterations(6)->Unit(
    benchmark::kMillisecond);

/// No turbulence and no heat; one side is open, so that the pressure has something to do.
struct Swirls : sample::FlowCase {
  explicit Swirls(std::int32_t n)
      : FlowCase({sample::equal(n), sample::equal(n), sample::equal(n)}) {
    run.settings.records.iamg = 1;
    control().keeps_pressure = true;
    for (int axis = 0; axis < 3; ++axis) ends(axis, flow::VelocityAt::no_slip);
    run.boundary.groups[1].iv = flow::VelocityAt::free;
    run.boundary.groups[1].ip = flow::PressureAt::held;
    start([](int axis, const flow::Vector& at) {
      constexpr double kTurn = 2.0 * std::numbers::pi;
      const auto a = static_cast<std::size_t>(axis);
      return std::sin(kTurn * at[a]) * std::cos(2.0 * kTurn * at[(a + 1) % 3]);
    });
  }
};

void explicit_steps(benchmark::State& state) {
  const auto x = std::make_unique<Swirls>(static_cast<std::int32_t>(state.range(0)));
  take_steps(state, *x, {"pressure", "momentum"});
}
BENCHMARK(explicit_steps)
    ->ArgName("cells")
    ->Arg(64)
    ->Arg(128)
    ->Iterations(6)
    ->Unit(benchmark::kMillisecond);

/// Steps of one hand and of two in turns. Counter `ratio` is how many times faster two are.
template <class Case>
void by_two_hands(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  ::setenv("TOWNSKIN_THREADS", "2", 1);
  const auto two = std::make_unique<Case>(n);
  ::unsetenv("TOWNSKIN_THREADS");
  const auto one = std::make_unique<Case>(n);
  const auto time_of = [](Case& x) {
    const double begun = seconds();
    x.steps(1);
    return seconds() - begun;
  };
  one->steps(2);
  two->steps(2);
  double alone = 0.0;
  double together = 0.0;
  for ([[maybe_unused]] auto turn : state) {
    alone += time_of(*one);
    together += time_of(*two);
  }
  const double each = 1e9 / (static_cast<double>(state.iterations()) *
                             static_cast<double>(one->run.grid.box.cells()));
  state.counters["one"] = each * alone;
  state.counters["two"] = each * together;
  state.counters["ratio"] = alone / together;
}
/// Small boxes take more steps.
void hands(benchmark::internal::Benchmark* of) {
  of->ArgName("cells")->Unit(benchmark::kMillisecond);
}
BENCHMARK_TEMPLATE(by_two_hands, Swirls)->Apply(hands)->DenseRange(8, 32, 8)->Iterations(100);
BENCHMARK_TEMPLATE(by_two_hands, Swirls)->Apply(hands)->Arg(48)->Arg(64)->Arg(128)->Iterations(12);
BENCHMARK_TEMPLATE(by_two_hands, sample::City)
    ->Apply(hands)
    ->DenseRange(16, 32, 16)
    ->Iterations(50);
BENCHMARK_TEMPLATE(by_two_hands, sample::City)
    ->Apply(hands)
    ->Arg(48)
    ->Arg(64)
    ->Arg(128)
    ->Iterations(12);

/// Three vectors of 64 MB: `read` takes them, `triad` writes the first from the others; `sums` is
/// what stays in the nearest cache, multiplied and added. GB/s (a triad counts what is read before
/// it is written), and operations of 1e9 a second.
struct Limits {
  explicit Limits(std::size_t count) : a(count, 1.0), b(count, 2.0), c(count, 3.0) {}
  std::vector<double> a, b, c;
};

FLOW_CLONES void read_row(const double* from, std::size_t count, double* lanes) {
  for (std::size_t i = 0; i + 8 <= count; i += 8) {
    for (std::size_t l = 0; l < 8; ++l) lanes[l] += from[i + l];
  }
}
FLOW_CLONES void triad_row(double* a, const double* b, const double* c, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) a[i] = b[i] + 3.0 * c[i];
}

void machine(benchmark::State& state) {
  constexpr std::size_t kCount = std::size_t{8} << 20U;
  constexpr std::size_t kPiece = 4096;
  const auto limits = std::make_unique<Limits>(kCount);
  sample::FlowCase x({sample::equal(2), sample::equal(2), sample::equal(2)});
  frame::Crew& crew = x.run.crew;
  std::array<double, 3> time{};
  const auto clock = [](double& sum, auto&& work) {
    const double begun = seconds();
    work();
    sum += seconds() - begun;
  };
  const auto share = [&](auto&& work) {
    crew.share(kCount, kPiece, [&](frame::Crew::Stretch part) {
      for (std::size_t i = part.first; i < part.last; i += kPiece) work(i);
    });
  };
  for ([[maybe_unused]] auto turn : state) {
    clock(time[0], [&] {
      share([&](std::size_t i) {
        double lanes[8] = {};
        for (const auto* v : {&limits->a, &limits->b, &limits->c}) {
          read_row(v->data() + i, kPiece, lanes);
        }
        benchmark::DoNotOptimize(lanes);
      });
    });
    clock(time[1], [&] {
      share([&](std::size_t i) { triad_row(&limits->a[i], &limits->b[i], &limits->c[i], kPiece); });
    });
    clock(time[2], [&] {
      share([&](std::size_t) {
        double near[512] = {};
        for (int round = 0; round < 8 * static_cast<int>(kPiece) / 512; ++round) {
          triad_row(near, near, near, 512);
          benchmark::DoNotOptimize(near);
        }
      });
    });
  }
  const auto bytes = static_cast<double>(state.iterations()) * 8e-9 * kCount;
  state.counters["read"] = 3.0 * bytes / time[0];
  state.counters["triad"] = 4.0 * bytes / time[1];
  state.counters["sums"] = 2.0 * bytes / time[2];
}
BENCHMARK(machine)->Iterations(10)->Unit(benchmark::kMillisecond);

}  // namespace
