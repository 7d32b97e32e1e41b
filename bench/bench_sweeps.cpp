// What a number of sweeps leaves of the reflections in street canyons, against the direct solution:
// per cent of the sun that the road or a wall absorbs, whichever is worst. Counters n1 to n50: by
// number of sweeps. The tables of docs/sweeps.md come from here.
#include <benchmark/benchmark.h>

#include <string>

#include "radiation/phydat.hpp"
#include "sample_street_canyon.hpp"

namespace {

using Reals = sample::StreetCanyon::Reals;
using Faces = sample::StreetCanyon::Faces;

constexpr std::array kSweeps{1, 2, 3, 5, 8, 10, 15, 20, 30, 50};

sample::StreetCanyon canyon_of(const benchmark::State& state) {
  return {static_cast<double>(state.range(0)) / 100.0, static_cast<double>(state.range(1)) / 100.0};
}

void note(benchmark::State& state, const std::string& name, int sweeps, double error) {
  state.counters[name + std::to_string(sweeps)] = error;
}

/// An overcast sky over a street that was dark before: the first step of a run.
void from_dark(benchmark::State& state) {
  for ([[maybe_unused]] auto turn : state) {
    sample::StreetCanyon canyon = canyon_of(state);
    const auto E = canyon.light(1.0, 0.0, 90.0);
    const auto truth = canyon.direct(E);
    for (const int sweeps : kSweeps) {
      canyon.J.assign(canyon.J.size(), 0.0);
      note(state, "n", sweeps, sample::worst_error(canyon.swept(E, sweeps), truth));
    }
  }
}

/// A clear day at an equinox, the sun's way across the street, each step from the radiosities of
/// the one before. n: sum of the day; worst: a step's, per cent of the face's mean of the day.
void clear_day(benchmark::State& state) {
  const double hours = static_cast<double>(state.range(2)) / 3600.0;
  tsrf_module_phydat::Data site;
  site.PPA = 0.7;
  for ([[maybe_unused]] auto turn : state) {
    const sample::StreetCanyon canyon = canyon_of(state);
    std::vector<std::pair<Reals, Faces>> steps;  // light, and what the faces absorb of it
    Faces day{};
    for (double hour = 0.5 * hours; hour < 12.0; hour += hours) {  // from the sun's rise on
      const double elevation = 15.0 * hour;
      const auto sky =
          tsrf_module_phydat::solar_split(site, std::sin(elevation * std::numbers::pi / 180.0));
      const Reals E = canyon.light(sky.scattered, sky.direct, elevation);
      steps.emplace_back(E, canyon.direct(E));
      sample::add(day, steps.back().second);
    }
    for (const int sweeps : kSweeps) {
      sample::StreetCanyon run = canyon_of(state);
      Faces sum{};
      double worst = 0.0;
      for (const auto& [E, truth] : steps) {
        const Faces found = run.swept(E, sweeps);
        sample::add(sum, found);
        for (std::size_t f = 0; f < found.size(); ++f) {
          const double error = std::abs(found[f] - truth[f]) * static_cast<double>(steps.size());
          worst = std::max(worst, 100.0 * error / day[f]);
        }
      }
      note(state, "n", sweeps, sample::worst_error(sum, day));
      note(state, "worst", sweeps, worst);
    }
  }
}

void streets(benchmark::internal::Benchmark* b, std::vector<std::int64_t> steps) {
  for (const int h : {50, 100, 200, 400}) {
    for (const int albedo : {10, 30, 50, 80}) {
      for (const std::int64_t step : steps) {
        step > 0 ? b->Args({h, albedo, step}) : b->Args({h, albedo});
      }
    }
  }
}
BENCHMARK(from_dark)->ArgNames({"hw%", "albedo%"})->Apply([](auto* b) {
                                                    streets(b, {0});
                                                  }) -> Iterations(1);
BENCHMARK(clear_day)
    ->ArgNames({"hw%", "albedo%", "dt"})
    ->Apply([](auto* b) {
      streets(b, {3600, 300});
    }) -> Iterations(1);

}  // namespace
