// One step of 100,000 columns against the plain form: all explicit, mixed, all implicit.
//
// Counter `ratio` is the time of the plain form over that of the fast one, turn by turn in this
// process.
#include <benchmark/benchmark.h>

#include <iostream>

#include "plain_surface.hpp"
#include "ratio.hpp"
#include "sample_surfaces.hpp"
#include "surface/conduction.hpp"

namespace {

void columns(benchmark::State& state) {
  sample::District d(100000, 7);
  frame::Log log(std::cout, std::cerr);
  frame::Crew crew;
  const frame::PatchTable<double> no_source(d.state.mpatch, d.state.mzg);
  solid1d::Work work;
  solid1d::set_columns(log, d.state, {}, work);
  const auto start = d.state.tlyr;
  const auto dt = static_cast<double>(state.range(0));
  compare(
      state, [&] { d.state.tlyr = start; }, [&] { plain::solid1d(dt, no_source, d.state); },
      [&] { solid1d::solid1d(crew, dt, no_source, d.state, work); });
  std::size_t implicit = 0;
  for (const solid1d::Kind& kind : work.kinds) implicit += kind.implicit ? 1 : 0;
  state.counters["implicit_kinds"] = static_cast<double>(implicit);
}

}  // namespace

BENCHMARK(columns)
    ->ArgName("dt")
    ->Arg(10)
    ->Arg(600)
    ->Arg(36000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
