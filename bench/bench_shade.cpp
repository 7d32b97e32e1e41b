// Sunlit fractions of 100,000 patches: reading a block of the Sun file beside a stream and beside
// the reader of free-form records, and unpacking a block of 8-bit fractions beside the form that
// handles one bit at a time.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <sstream>

#include "radiation/bit_planes.hpp"
#include "radiation/shade.hpp"

namespace {

constexpr std::int32_t kPatches = 100000;

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Runs both forms turn by turn; the counter is the ratio of their shortest times.
template <class Fast, class Plain>
void compare(benchmark::State& state, Fast&& fast, Plain&& plain) {
  double fast_time = 1.0e9;
  double plain_time = 1.0e9;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    plain();
    plain_time = std::min(plain_time, seconds_since(start));
    start = std::chrono::steady_clock::now();
    fast();
    const double time = seconds_since(start);
    fast_time = std::min(fast_time, time);
    state.SetIterationTime(time);
  }
  state.counters["shortest_ms"] = 1e3 * fast_time;
  state.counters["times_plain"] = plain_time / fast_time;
}

/// The lines as they are, or with a comma in each, which sends them to the reader of records.
void read_block(benchmark::State& state, bool records) {
  tsrf_module_patch::Data patch;
  patch.mpatch = kPatches;
  std::string text = "title\n";
  for (std::int32_t p = 1; p <= kPatches; ++p) patch.PID.push_back(p);
  for (int hour = 1; hour <= 24; ++hour) {
    for (const std::int32_t PID : patch.PID) {
      text += frame::items(hour, PID, PID, (PID * hour % 101) / 100.0);
      text += '\n';
    }
  }
  patch.by_pid = frame::CodeIndex(patch.PID);
  std::istringstream stream(text);
  if (records) {
    for (std::size_t at = text.find('\n'); (at = text.find(' ', at)) != std::string::npos;
         at = text.find('\n', at)) {
      text[at] = ',';
    }
  }
  frame::TextInput file("Sun.txt", std::move(text));
  std::ostringstream screen;
  frame::Log log(screen, screen);
  tsrf_module_calendar::Data calendar;
  tsrf_module_shade::Data shade;
  frame::Crew crew;
  std::vector<double> fsun(kPatches);
  double time = 3600.0 * 36;
  tsrf_module_shade::set_shade(log, crew, &file, time, patch, calendar, shade, fsun);
  std::vector<float> column(kPatches);
  compare(
      state,
      [&] {
        time += 3600.0;  // one block further
        tsrf_module_shade::set_shade(log, crew, &file, time, patch, calendar, shade, fsun);
      },
      [&] {
        stream.clear();
        stream.seekg(6);
        int hour = 0;
        int index = 0;
        int PID = 0;
        for (int line = 0; line < kPatches; ++line) {
          float fraction = 0.0F;
          stream >> hour >> index >> PID >> fraction;
          column[static_cast<std::size_t>(patch.by_pid.find(PID))] = fraction;
        }
      });
}
BENCHMARK_CAPTURE(read_block, plain_lines, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
BENCHMARK_CAPTURE(read_block, records, true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

/// Fraction by fraction, bit by bit.
[[gnu::noinline]] void unpack_plain(int bits, int slot, const std::vector<std::int32_t>& words,
                                    std::vector<double>& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    int q = 0;
    for (int b = 0; b < bits; ++b) {
      const std::int32_t word = words[static_cast<std::size_t>(b) * values.size() + i];
      q += (1 << b) * (word / (1 << (slot - 1)) % 2);
    }
    values[i] = q / static_cast<double>((1 << bits) - 1);
  }
}

void unpack_block(benchmark::State& state) {
  constexpr std::int32_t kBits = 8;
  std::vector<std::int32_t> words(std::size_t{kPatches} * kBits);
  std::vector<double> values(kPatches);
  for (std::size_t i = 0; i < words.size(); ++i)
    words[i] = static_cast<std::int32_t>(i * 40503 % (1U << 30));
  std::ostringstream screen;
  frame::Log log(screen, screen);
  std::vector<double> plain_values(kPatches);
  compare(
      state,
      [&] { tsrf_utl::tsrf_utl_bitrdt(log, 1, kPatches, kPatches, kBits, 17, words, values); },
      [&] { unpack_plain(kBits, 17, words, plain_values); });
  if (values != plain_values) state.SkipWithError("the two forms differ");
}
BENCHMARK(unpack_block)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(50);

}  // namespace
