#include "driver/terminal_line.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

namespace tsrf_main01 {

namespace {
constexpr double kSecondsPerHour = 3600.0;
constexpr std::int64_t kHoursPerDay = 24;
}  // namespace

void TerminalLine::show(std::int64_t iter, double time, const progress::Data& progress) {
  if (!line_.on()) return;
  const auto hour = static_cast<std::int64_t>(std::floor(time / kSecondsPerHour));
  if (hour == hour_) return;
  hour_ = hour;
  const std::int64_t steps = last_ - first_ + 1;
  const double done = 100.0 * static_cast<double>(iter - first_ + 1) / static_cast<double>(steps);
  std::array<char, 160> text{};
  std::snprintf(
      text.data(), text.size(), "day %lld, hour %2lld, step %lld of at most %lld (%.0f %%)",
      static_cast<long long>(hour / kHoursPerDay) + 1, static_cast<long long>(hour % kHoursPerDay),
      static_cast<long long>(iter), static_cast<long long>(last_), done);
  std::string line = text.data();
  if (progress.res < 1.0) {
    std::snprintf(text.data(), text.size(), ", residual %.2E, some %lld s left", progress.res,
                  static_cast<long long>(progress.estimate));
    line += text.data();
  }
  line_.show(line);
}

}  // namespace tsrf_main01
