#include "flow/output/terminal_line.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace flow {

namespace {

constexpr std::int64_t kApart = 200;  // [ms]

std::int64_t milliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace

void TerminalLine::show(std::int32_t iter, double time) {
  if (!line_.on()) return;
  const std::int64_t now = milliseconds();
  if (iter < last_ && time < end_ && now - shown_ < kApart) return;
  shown_ = now;
  const auto steps = static_cast<double>(std::max<std::int64_t>(last_ - first_, 1));
  const double by_steps = static_cast<double>(iter - first_) / steps;
  const double done = 100.0 * std::clamp(std::max(by_steps, time / end_), 0.0, 1.0);
  std::array<char, 160> text{};
  std::snprintf(text.data(), text.size(),
                "step %lld of at most %lld, time %.5g s of at most %.5g s (%.0f %%)",
                static_cast<long long>(iter), static_cast<long long>(last_), time, end_, done);
  line_.show(text.data());
}

}  // namespace flow
