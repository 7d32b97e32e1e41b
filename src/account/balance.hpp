// One balance of a day's statement, row by row.
#pragma once

#include <string_view>

#include "account/account.hpp"
#include "frame/text_output.hpp"

namespace tsrf_module_account {

/// Writes its terms as they come and what they leave.
class Balance {
 public:
  /// `area` [m2] is what the second column is for; 0: none.
  Balance(frame::Log& log, frame::TextOutput& file, const Data& data, std::string_view name,
          std::string_view whose, double area)
      : log_(log), file_(file), data_(data), name_(name), whose_(whose), area_(area) {}

  /// A gain, or a negative loss [J].
  void term(std::string_view name, double value) {
    sum_ += value;
    row(name, value);
  }
  void close() { row("remainder", sum_); }

 private:
  void row(std::string_view name, double value);

  frame::Log& log_;
  frame::TextOutput& file_;
  const Data& data_;
  std::string_view name_, whose_;
  double area_;
  double sum_ = 0.0;
};

}  // namespace tsrf_module_account
