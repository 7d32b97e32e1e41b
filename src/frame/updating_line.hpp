// One line on a terminal that each new text writes over.
//
// Shown on standard error when that is a terminal, so that somebody who waits for a run sees how
// far it is; standard output and the log keep exactly their own lines.
#pragma once

#include <ostream>
#include <string_view>

namespace frame {

class UpdatingLine {
 public:
  /// Shows on `terminal`, or nothing where that is null.
  explicit UpdatingLine(std::ostream* terminal) : terminal_(terminal) {}
  /// What comes after the run begins a line of its own.
  ~UpdatingLine() {
    if (shown_) *terminal_ << '\n' << std::flush;
  }
  UpdatingLine(const UpdatingLine&) = delete;
  UpdatingLine& operator=(const UpdatingLine&) = delete;

  [[nodiscard]] bool on() const { return terminal_ != nullptr; }
  void show(std::string_view text) {
    if (!on()) return;
    shown_ = true;
    *terminal_ << '\r' << text << "    " << std::flush;
  }

 private:
  std::ostream* terminal_;
  bool shown_ = false;
};

}  // namespace frame
