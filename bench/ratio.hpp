// A fast form beside its plain form, turn by turn in one process.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

/// Runs `reset` and `plain`, `reset` and `fast` in turns. The benchmark's time is that of the fast
/// form in processor seconds, which other work on the machine does not blur; counters `plain_ms`
/// and `ratio` tell the plain form's and how many times longer it takes in the median turn.
template <class Reset, class Plain, class Fast>
void compare(benchmark::State& state, Reset&& reset, Plain&& plain, Fast&& fast) {
  const auto seconds = [&reset](auto& work) {
    reset();
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  };
  double plain_time = 0.0;
  std::vector<double> ratios;
  for ([[maybe_unused]] auto turn : state) {
    const double slow = seconds(plain);
    const double time = seconds(fast);
    plain_time += slow;
    ratios.push_back(slow / time);
    state.SetIterationTime(time);
  }
  const auto turns = static_cast<double>(state.iterations());
  state.counters["plain_ms"] = 1e3 * plain_time / turns;
  std::ranges::sort(ratios);
  state.counters["ratio"] = ratios[ratios.size() / 2];
}
