// Reading a view-factor file (four integers and a real a line) record by record, beside the plain
// form: extraction from a stream.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>

#include "frame/numbers.hpp"
#include "frame/text_input.hpp"

namespace {

constexpr int kLines = 1'000'000;
constexpr const char* kName = "/tmp/townskin_bench_reading.txt";

void make_file() {
  std::mt19937 random(1);
  std::string text = "# PE SrcPgID PE DstPgID FormFct\n";
  for (int i = 0; i < kLines; ++i) {
    text += "0 ";
    frame::append_number(text, std::int64_t{1 + i / 90});
    text += " 0 ";
    frame::append_number(text, static_cast<std::int64_t>(1 + random() % 12000));
    text += ' ';
    frame::append_number(text, static_cast<float>(1 + random() % 262144) / 262144.0F);
    text += '\n';
  }
  std::ofstream(kName) << text;
}

double sum_of_records() {
  frame::TextInput file(kName);
  file.skip_line();
  std::int32_t a = 0, source = 0, b = 0, destination = 0;
  float factor = 0;
  double sum = 0;
  while (file.read(a, source, b, destination, factor) == frame::ReadStatus::ok) {
    sum += factor * static_cast<float>(source - destination);
  }
  return sum;
}

double sum_of_stream() {
  std::ifstream file(kName);
  file.ignore(1000, '\n');
  std::int32_t a = 0, source = 0, b = 0, destination = 0;
  float factor = 0;
  double sum = 0;
  while (file >> a >> source >> b >> destination >> factor) {
    sum += factor * static_cast<float>(source - destination);
  }
  return sum;
}

double seconds(double (*form)(), double& sum) {
  const auto start = std::chrono::steady_clock::now();
  sum = form();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The two forms in turns, so that the machine's mood strikes both; least times of the runs.
void reading(benchmark::State& state) {
  make_file();
  double least = 1e9, least_plain = 1e9;
  for (auto _ : state) {
    double sum = 0, plain = 0;
    least_plain = std::min(least_plain, seconds(sum_of_stream, plain));
    const double time = seconds(sum_of_records, sum);
    least = std::min(least, time);
    state.SetIterationTime(time);
    if (sum != plain) state.SkipWithError("the two forms read different values");
  }
  state.counters["ns_per_line"] = 1e9 * least / kLines;
  state.counters["ratio"] = least_plain / least;
  std::remove(kName);
}
BENCHMARK(reading)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

}  // namespace
