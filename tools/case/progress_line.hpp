// How far a piece of work is, with the time that it still takes, on one line of a terminal.
//
// Shown on standard error when that is a terminal, and only of work that lasts more than two
// seconds.
#pragma once

#include <chrono>
#include <cstdio>
#include <ostream>
#include <string>

#include "frame/updating_line.hpp"
#include "rays/parallel.hpp"

namespace townskin_case {

class ProgressLine {
 public:
  /// Shows on `terminal`, or nothing where that is null.
  ProgressLine(std::ostream* terminal, std::string what)
      : line_(terminal), what_(std::move(what)), start_(Clock::now()), shown_(start_) {}

  void show(std::size_t done, std::size_t total) {
    using std::chrono::duration;
    const Clock::time_point now = Clock::now();
    const double seconds = duration<double>(now - start_).count();
    if (!line_.on() || done == 0 || total == 0 || seconds < 2.0) return;
    if (shown_ != start_ && duration<double>(now - shown_).count() < 0.2) return;
    shown_ = now;
    const double part = static_cast<double>(done) / static_cast<double>(total);
    std::string text(96, '\0');
    const int length = std::snprintf(text.data(), text.size(), "%s: %.0f %%, %.0f s left",
                                     what_.c_str(), 100.0 * part, seconds / part - seconds);
    text.resize(static_cast<std::size_t>(length));
    line_.show(text);
  }
  [[nodiscard]] Progress progress() {
    return [this](std::size_t done, std::size_t total) { show(done, total); };
  }

 private:
  using Clock = std::chrono::steady_clock;
  frame::UpdatingLine line_;
  std::string what_;
  Clock::time_point start_, shown_;
};

}  // namespace townskin_case
