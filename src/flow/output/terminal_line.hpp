// One updating line on the terminal: step, time, how much is done.
//
// Owned by the driver; shown on standard error when that is a terminal.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "flow/settings.hpp"
#include "frame/updating_line.hpp"

namespace flow {

class TerminalLine {
 public:
  /// Shows on `terminal`, or nothing where that is null; `first` is the iteration of the start.
  TerminalLine(std::ostream* terminal, std::int32_t first, const Control& control)
      : line_(terminal), first_(first), last_(control.itere), end_(control.timee) {}

  /// To be called after each step, with the time at its end [s]; it writes a few times a second.
  void show(std::int32_t iter, double time);

 private:
  frame::UpdatingLine line_;
  std::int64_t first_, last_;
  double end_;
  std::int64_t shown_ = 0;  // when the line was last written [ms]
};

}  // namespace flow
