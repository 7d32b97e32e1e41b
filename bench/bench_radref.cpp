// The exchange of both bands over 100,000 groups with 90 view factors each, half near and half
// anywhere, 10 sweeps, beside its plain form: (source, destination, factor) entries in the order of
// the file, one band after the other. The files tell them by source, by destination and shuffled.
// Beside it what bounds a sweep, the core at work on a table in its cache and the memory that the
// table comes from, and the smallest district for which a second thread pays.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

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
    ->Iterations(7);
BENCHMARK_CAPTURE(exchange, by_destination, FileOrder::by_destination)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(7);
BENCHMARK_CAPTURE(exchange, shuffled, FileOrder::shuffled)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(7);

/// A district whose table stays in the core's cache.
void exchange_in_cache(benchmark::State& state) {
  const RandomExchange district(2000, 90, 1);
  tsrf_module_radref::Work work;
  work.prepare(district.raddat, 2);
  frame::Crew crew;
  ExchangeState fast(district);
  for ([[maybe_unused]] auto turn : state) fast.solve(district, crew, work, true);
  const auto entries = static_cast<double>(district.triples.size());
  state.counters["sweep_entries"] = benchmark::Counter(
      district.raddat.settings.LOPREF * entries, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(exchange_in_cache)->Unit(benchmark::kMillisecond);

/// The bytes of the large table, read and no more, by so many threads.
void table_alone(benchmark::State& state) {
  const std::vector<std::uint64_t> table(55'000'000 / sizeof(std::uint64_t), 1);
  frame::Crew crew({static_cast<std::size_t>(state.range(0))});
  constexpr std::size_t kPart = 1 << 15;
  std::vector<std::uint64_t> sums(table.size() / kPart + 1);
  for ([[maybe_unused]] auto turn : state) {
    crew.share(table.size(), kPart, [&](frame::Crew::Stretch part) {
      std::uint64_t sum = 0;
      for (std::size_t n = part.first; n < part.last; ++n) sum ^= table[n];
      sums[part.first / kPart] = sum;
    });
    benchmark::DoNotOptimize(sums.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(table.size() * sizeof(std::uint64_t)) *
                          state.iterations());
}
BENCHMARK(table_alone)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

/// One thread beside two, by the clock on the wall; argument: groups.
void two_threads(benchmark::State& state) {
  const RandomExchange district(static_cast<std::int32_t>(state.range(0)), 90, 1);
  tsrf_module_radref::Work work;
  work.prepare(district.raddat, 2);
  frame::Crew one, two({2});
  ExchangeState fast(district);
  std::array<double, 2> seconds{};
  for ([[maybe_unused]] auto turn : state) {
    for (frame::Crew* crew : {&one, &two}) {
      const auto start = std::chrono::steady_clock::now();
      fast.solve(district, *crew, work, true);
      const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
      seconds[crew == &one ? 0 : 1] += took.count();
      if (crew == &two) state.SetIterationTime(took.count());
    }
  }
  state.counters["ratio"] = seconds[0] / seconds[1];
}
BENCHMARK(two_threads)
    ->Arg(250)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->MinTime(0.3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
