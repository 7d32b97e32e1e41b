// The exchange of both bands over 100,000 groups with 90 view factors each, half near and half
// anywhere, 10 sweeps, beside its plain form: (source, destination, factor) entries in the order of
// the file, one band after the other. The files tell them by source, by destination and shuffled.
#include <benchmark/benchmark.h>

#include <optional>

#include "random_exchange.hpp"
#include "ratio.hpp"

namespace {

void exchange(benchmark::State& state, FileOrder order) {
  const RandomExchange district(100000, 90, 2, order);
  tsrf_module_radref::Work work;
  work.prepare(district.raddat, 2);
  frame::Crew crew;
  std::optional<ExchangeState> plain;
  std::optional<ExchangeState> fast;
  compare(
      state,
      [&] {
        plain.emplace(district);
        fast.emplace(district);
      },
      [&] { plain->solve_plain(district); }, [&] { fast->solve(district, crew, work, true); });
  const double sweeps = district.raddat.settings.LOPREF;
  const auto entries = static_cast<double>(district.triples.size());
  state.counters["sweep_entries"] =
      benchmark::Counter(sweeps * entries, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["bytes_entry"] =
      static_cast<double>(district.raddat.view_factors.bytes()) / entries;
}
BENCHMARK_CAPTURE(exchange, by_source, FileOrder::by_source)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(exchange, by_destination, FileOrder::by_destination)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(exchange, shuffled, FileOrder::shuffled)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace
