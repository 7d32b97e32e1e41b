#include "driver/progress.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>

namespace progress {

namespace {

constexpr double kTolerance = 1e-05;  // of the daily residual
constexpr double kNoResidual = 19.0;  // log10 above which no day has ended
constexpr std::int32_t kSecondsPerHour = 3600;

/// Seconds that grow over midnights, from a reading of the clock.
double seconds_now(const WallClock& now, Data& data) {
  if (data.noted &&
      (now.day != data.last.day || now.month != data.last.month || now.year != data.last.year)) {
    ++data.days;
  }
  data.noted = true;
  data.last = now;
  return ((static_cast<double>(data.days) * 24.0 + now.hour) * 60.0 + now.minute) * 60.0 +
         now.second;
}

std::int32_t within_32_bits(double value) {
  constexpr double kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::lround(std::clamp(value, -kMost, kMost)));
}

void write_row(frame::Log& log, frame::TextOutput& file, const WallClock& t, std::int32_t first,
               std::int32_t second) {
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%04d/%02d/%02d, %02d:%02d:%02d, %10d, %10d", t.year,
                t.month, t.day, t.hour, t.minute, t.second, first, second);
  file.line(log, text.data());
  file.flush(log);
}

}  // namespace

WallClock wall_clock() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

void note_start(Data& data) {
  data.start = seconds_now(data.clock(), data);
  data.improved = data.start;
}

void update(frame::Log& log, frame::TextOutput& file, std::int32_t sod1, double res, Data& data) {
  if (sod1 % kSecondsPerHour != 0) return;
  const WallClock clock = data.clock();
  const double now = seconds_now(clock, data);
  const double x = std::log10(std::max(res, kTolerance));
  const double elapsed = now - data.improved;
  const double estimate = data.best > x ? (std::log10(kTolerance) - x) / (x - data.best) * elapsed
                                        : 8640000.0 * elapsed;
  if (x < kNoResidual) {
    data.best = x;
    data.estimate = within_32_bits(estimate);
    data.improved = now;
    data.res = res;
  }
  write_row(log, file, clock, within_32_bits(now - data.start), data.estimate);
}

void write_closing_stamp(frame::Log& log, frame::TextOutput& file, const Data& data) {
  write_row(log, file, data.clock(), -1, -1);
}

}  // namespace progress
