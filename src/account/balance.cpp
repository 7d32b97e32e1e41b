#include "account/balance.hpp"

#include <cmath>
#include <string>

#include "frame/numbers.hpp"
#include "inputs/calendar.hpp"

namespace tsrf_module_account {

namespace {

constexpr double kJoulesPerKilowattHour = 3.6e6;

/// Appends `text` and blanks up to `width`.
void append_padded(std::string& out, std::string_view text, std::size_t width) {
  out += text;
  out.append(text.size() < width ? width - text.size() : 0, ' ');
  out += ' ';
}

}  // namespace

void Balance::row(std::string_view name, double value) {
  const double kWh = value / kJoulesPerKilowattHour;
  const double day = std::floor(data_.from / tsrf_module_calendar::kSecondsPerDay);
  std::string& out = file_.buffer();
  frame::append_int(out, std::llround(day) + 1, 6);
  frame::append_int(out, std::llround(data_.seconds), 7);
  out += "  ";
  append_padded(out, name_, 9);
  append_padded(out, whose_, 9);
  append_padded(out, name, 24);
  frame::append_e13(out, kWh, 10);
  out += ' ';
  frame::append_e13(out, area_ > 0.0 ? kWh / area_ : 0.0, 5);
  out += '\n';
  file_.row_done(log_);
}

}  // namespace tsrf_module_account
