// A fast form beside its plain form, turn by turn in one process.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

/// Runs `reset` and `plain`, `reset` and `fast` in turns. The benchmark's time is that of the fast
/// form; counters `plain_ms` and `ratio` tell the plain form's and how many times longer it takes.
template <class Reset, class Plain, class Fast>
void compare(benchmark::State& state, Reset&& reset, Plain&& plain, Fast&& fast) {
  using Clock = std::chrono::steady_clock;
  const auto seconds = [&reset](auto& work) {
    reset();
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
  };
  double plain_time = 0.0;
  double fast_time = 0.0;
  for ([[maybe_unused]] auto turn : state) {
    plain_time += seconds(plain);
    const double time = seconds(fast);
    fast_time += time;
    state.SetIterationTime(time);
  }
  const auto turns = static_cast<double>(state.iterations());
  state.counters["plain_ms"] = 1e3 * plain_time / turns;
  state.counters["ratio"] = plain_time / fast_time;
}
