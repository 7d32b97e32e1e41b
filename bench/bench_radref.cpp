// The exchange of both bands over 100,000 groups with 90 view factors each, 10 sweeps, beside its
// plain form: (source, destination, factor) entries in the order of the file, one band after the
// other.
#include <benchmark/benchmark.h>

#include <optional>

#include "random_exchange.hpp"
#include "ratio.hpp"

namespace {

void exchange(benchmark::State& state) {
  const RandomExchange district(100000, 90, 2);
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
  state.counters["sweeps"] = district.raddat.settings.LOPREF;
}
BENCHMARK(exchange)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
