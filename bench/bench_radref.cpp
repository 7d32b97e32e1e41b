// The exchange sweep over 100,000 groups with 90 view factors each, both bands, beside its plain
// form: (source, destination, factor) entries in the order of the file, one band after the other.
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>

#include "random_exchange.hpp"

namespace {

const RandomExchange& district() {
  static const RandomExchange exchange(100000, 90, 2);
  return exchange;
}

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void exchange_sweep(benchmark::State& state) {
  const RandomExchange& exchange = district();
  tsrf_module_radref::Work work;
  work.resize(exchange.raddat.NPGID, 2);
  double fast = 0.0;
  double plain = 0.0;
  for (auto _ : state) {
    ExchangeState by_plain(exchange);
    auto start = std::chrono::steady_clock::now();
    by_plain.solve_plain(exchange);
    plain += seconds_since(start);
    ExchangeState by_fast(exchange);
    start = std::chrono::steady_clock::now();
    by_fast.solve(exchange, work, true);
    const double time = seconds_since(start);
    fast += time;
    state.SetIterationTime(time);
    if (by_fast.incident != by_plain.incident) state.SkipWithError("the two forms differ");
  }
  const double sweeps = static_cast<double>(state.iterations()) * exchange.raddat.settings.LOPREF;
  state.counters["ms_per_sweep"] = 1e3 * fast / sweeps;
  state.counters["plain_ms_per_sweep"] = 1e3 * plain / sweeps;
  state.counters["times_plain"] = plain / fast;
}
BENCHMARK(exchange_sweep)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
