// One line of a result file, built field by field.
//
// A district of 100,000 patches writes 600,000 reals an hour, so the fixed-width exponent form is
// made here by integer arithmetic; it gives the same bytes as frame::append_e13. Used by the line
// writers only.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "frame/log.hpp"
#include "frame/text_output.hpp"

namespace tsrf_module_io {

class Row {
 public:
  /// An integer, right-aligned in `width` columns. One that fills them stands behind a blank,
  /// unless it opens the line: two numbers never touch.
  void integer(std::int32_t value, int width);
  /// A blank and a real in exponent form, right-aligned in 13 columns; a zero without a sign.
  /// `decimals` is 4 or 5.
  void real(double value, int decimals = 5);
  /// False when a real of the line is not finite; `unsound` tells the place of the first such among
  /// its reals, from 0.
  [[nodiscard]] bool finite() const { return unsound_ < 0; }
  [[nodiscard]] std::size_t unsound() const { return static_cast<std::size_t>(unsound_); }
  /// Ends the line and hands it to the file.
  void end(frame::Log& log, frame::TextOutput& file) {
    end(file.buffer());
    file.row_done(log);
  }
  /// Ends the line and appends it to a text.
  void end(std::string& text) {
    text_[size_++] = '\n';
    text.append(text_.data(), size_);
    size_ = 0;
    reals_ = 0;
    unsound_ = -1;
  }

 private:
  // The longest line has 11 reals of 14 columns and 2 integers of at most 12.
  std::array<char, 256> text_;
  std::size_t size_ = 0;
  std::int32_t reals_ = 0;     // of the line so far
  std::int32_t unsound_ = -1;  // the first of them that is not finite
};

}  // namespace tsrf_module_io
