#include "driver/terminal_line.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace tsrf_main01 {

namespace {
constexpr double kSecondsPerHour = 3600.0;
constexpr std::int64_t kHoursPerDay = 24;
}  // namespace

TerminalLine::~TerminalLine() {
  if (terminal_ != nullptr && hour_ >= 0) *terminal_ << '\n' << std::flush;
}

void TerminalLine::show(std::int64_t iter, double time, const progress::Data& progress) {
  if (terminal_ == nullptr) return;
  const auto hour = static_cast<std::int64_t>(std::floor(time / kSecondsPerHour));
  if (hour == hour_) return;
  hour_ = hour;
  const std::int64_t steps = last_ - first_ + 1;
  const double done = 100.0 * static_cast<double>(iter - first_ + 1) / static_cast<double>(steps);
  std::array<char, 160> text{};
  std::snprintf(
      text.data(), text.size(), "\rday %lld, hour %2lld, step %lld of at most %lld (%.0f %%)",
      static_cast<long long>(hour / kHoursPerDay) + 1, static_cast<long long>(hour % kHoursPerDay),
      static_cast<long long>(iter), static_cast<long long>(last_), done);
  *terminal_ << text.data();
  if (progress.res < 1.0) {
    std::snprintf(text.data(), text.size(), ", residual %.2E, some %lld s left", progress.res,
                  static_cast<long long>(progress.estimate));
    *terminal_ << text.data();
  }
  *terminal_ << "    " << std::flush;
}

}  // namespace tsrf_main01
