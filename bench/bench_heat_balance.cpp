// The surface balance: 1,000,000 patches, a fifth of the materials wet, against the plain form.
//
// Each turn starts from the same temperatures. Counter `ratio` of the fast form is the time of the
// plain form over its own, measured turn by turn in this process.
#include <benchmark/benchmark.h>

#include <iostream>

#include "plain_surface.hpp"
#include "ratio.hpp"
#include "sample_surfaces.hpp"
#include "surface/heat_balance.hpp"

namespace {

void balance(benchmark::State& state, double wet_share) {
  sample::District d(1000000, 7, wet_share);
  const tsrf_module_patch::Data patch;
  frame::Log log(std::cout, std::cerr);
  frame::Crew crew;
  const auto start = d.state.tlyr;
  compare(
      state, [&] { d.state.tlyr = start; },
      [&] { plain::tsrf_therm1d(d.srfprp, d.skyvf, d.Rl, d.Rs, d.state); },
      [&] {
        tsrf_therm1d::tsrf_therm1d(log, crew, 1, patch, d.srfprp, d.skyvf, d.Rl, d.Rs, d.state);
      });
}

void dry(benchmark::State& state) { balance(state, 0.0); }
void mixed(benchmark::State& state) { balance(state, 0.2); }
void wet(benchmark::State& state) { balance(state, 1.0); }

}  // namespace

BENCHMARK(dry)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(mixed)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(wet)->Unit(benchmark::kMillisecond)->UseManualTime();
