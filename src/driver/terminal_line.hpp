// One updating line on the terminal: day, hour, residual, time left.
//
// Shown on standard error when that is a terminal, so that somebody who waits for a run sees how
// far it is; standard output and the log keep exactly their own lines. Owned by the driver.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "driver/progress.hpp"
#include "frame/updating_line.hpp"

namespace tsrf_main01 {

class TerminalLine {
 public:
  /// Shows on `terminal`, or nothing where that is null.
  TerminalLine(std::ostream* terminal, std::int64_t first, std::int64_t last)
      : line_(terminal), first_(first), last_(last) {}

  /// To be called after each step, with the model time at its end [s].
  void show(std::int64_t iter, double time, const progress::Data& progress);

 private:
  frame::UpdatingLine line_;
  std::int64_t first_;
  std::int64_t last_;
  std::int64_t hour_ = -1;  // what is shown now
};

}  // namespace tsrf_main01
