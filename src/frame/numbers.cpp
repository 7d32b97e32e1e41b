#include "frame/numbers.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace frame {

namespace {

constexpr std::size_t kBuffer = 64;

constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

void append_right(std::string& out, const char* first, const char* last, int width) {
  const auto length = static_cast<int>(last - first);
  if (length < width) out.append(static_cast<std::size_t>(width - length), ' ');
  out.append(first, last);
}

template <class Real>
void append_real(std::string& out, Real value) {
  std::array<char, kBuffer> buffer;
  if (value == 0) value = 0;
  const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + kBuffer, value);
  out.append(buffer.data(), end);
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// Checks the grammar of a free-form real and writes it with a plain `e` exponent; the result is
/// what from_chars reads. False when the token is no real.
bool normalise_real(std::string_view token, std::string& text) {
  text.clear();
  std::size_t i = 0;
  if (i < token.size() && (token[i] == '+' || token[i] == '-')) {
    if (token[i] == '-') text += '-';
    ++i;
  }
  std::size_t digits = 0;
  for (; i < token.size() && is_digit(token[i]); ++i, ++digits) text += token[i];
  if (i < token.size() && token[i] == '.') {
    if (digits == 0) text += '0';
    text += token[i++];
    for (; i < token.size() && is_digit(token[i]); ++i, ++digits) text += token[i];
    if (text.back() == '.') text += '0';
  }
  if (digits == 0) return false;
  if (i == token.size()) return true;
  const char c = token[i];
  const bool letter = c == 'e' || c == 'E' || c == 'd' || c == 'D';
  if (letter) ++i;
  text += 'e';
  if (i < token.size() && (token[i] == '+' || token[i] == '-')) {
    text += token[i++];
  } else if (!letter) {
    return false;
  }
  const std::size_t exponent = i;
  for (; i < token.size() && is_digit(token[i]); ++i) text += token[i];
  return i == token.size() && i > exponent;
}

/// Tells a real (normalised, beyond the range of its kind) that is too large from one that is too
/// small.
bool is_large(std::string_view text) {
  if (text.front() == '-') text.remove_prefix(1);
  const std::size_t mark = std::min(text.find('e'), text.size());
  std::string_view shift = mark == text.size() ? text : text.substr(mark + 1);
  if (!shift.empty() && shift.front() == '+') shift.remove_prefix(1);
  std::int64_t exponent = 0;
  if (mark < text.size()) {
    const auto [end, status] = std::from_chars(shift.data(), shift.data() + shift.size(), exponent);
    if (status == std::errc::result_out_of_range) return shift.front() != '-';
  }
  // Further out than any text has digits, and sums of it still fit.
  constexpr std::int64_t kFar = std::int64_t{1} << 62;
  exponent = std::clamp(exponent, -kFar, kFar);
  const std::string_view digits = text.substr(0, mark);
  const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
  const auto leading = static_cast<std::int64_t>(digits.find_first_not_of("0."));
  return exponent + point - leading > 0;  // far from the border: one place does not matter
}

template <class Real>
bool parse_real(std::string_view token, Real& value) {
  Real result = 0;
  const char* first = token.data();
  const char* last = first + token.size();
  // Most fields are plain; from_chars takes neither a leading '+' nor NaN that we would want.
  const auto [end, status] = std::from_chars(first, last, result);
  if (status == std::errc() && end == last && std::isfinite(result) && is_digit(last[-1])) {
    value = result;
    return true;
  }
  std::string text;
  if (!normalise_real(token, text)) return false;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), result);
  if (read.ec == std::errc::result_out_of_range) {
    if (is_large(text)) return false;
    result = text.front() == '-' ? -Real{0} : Real{0};
  } else if (read.ec != std::errc()) {
    return false;
  }
  value = result;
  return true;
}

}  // namespace

void append_number(std::string& out, std::int64_t value) {
  std::array<char, kBuffer> buffer;
  const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + kBuffer, value);
  out.append(buffer.data(), end);
}

void append_number(std::string& out, double value) { append_real(out, value); }
void append_number(std::string& out, float value) { append_real(out, value); }

void append_int(std::string& out, std::int64_t value, int width) {
  std::array<char, kBuffer> buffer;
  const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + kBuffer, value);
  append_right(out, buffer.data(), end, width);
}

void append_e13(std::string& out, double value, int decimals) {
  std::array<char, kBuffer> buffer;
  if (value == 0.0) value = +0.0;
  const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + kBuffer, value,
                                           std::chars_format::scientific, decimals);
  std::replace(buffer.data(), end, 'e', 'E');
  append_right(out, buffer.data(), end, 13);
}

bool parse_number(std::string_view token, std::int32_t& value) {
  if (token.size() > 1 && token.front() == '+' && is_digit(token[1])) token.remove_prefix(1);
  std::int32_t result = 0;
  const char* last = token.data() + token.size();
  const auto [end, status] = std::from_chars(token.data(), last, result);
  if (token.empty() || status != std::errc() || end != last) return false;
  value = result;
  return true;
}

const char* scan_plain(const char* first, const char* last, double& value) {
  const bool negative = first < last && *first == '-';
  const char* const begin = first + (negative ? 1 : 0);
  const char* at = begin;
  std::uint64_t digits = 0;  // may wrap around; too many are refused below
  const auto take_digits = [&] {
    const char* const from = at;
    for (; at < last && is_digit(*at); ++at) {
      digits = 10 * digits + static_cast<std::uint64_t>(*at - '0');
    }
    return at - from;
  };
  std::ptrdiff_t count = take_digits();
  std::ptrdiff_t decimals = 0;
  if (at < last && *at == '.') {
    ++at;
    decimals = take_digits();
    count += decimals;
  }
  // Whole numbers up to 2^53 and powers of ten up to 10^22 are exact, so that one product or
  // quotient of them is the real nearest to the text (W. D. Clinger, 1990).
  if (count == 0 || count > 18 || digits > (1ULL << 53)) return nullptr;
  std::int32_t power = 0;
  if (at < last && (*at == 'e' || *at == 'E')) {
    ++at;
    const bool plus = at < last && *at == '+';
    if (plus && last - at > 1 && !is_digit(at[1])) return nullptr;
    at = scan_plain(plus ? at + 1 : at, last, power);
    if (at == nullptr) return nullptr;
  }
  power -= static_cast<std::int32_t>(decimals);
  if (power < -22 || power > 22) return nullptr;
  const auto number = static_cast<double>(digits);
  const double scale = kPowersOfTen[static_cast<std::size_t>(std::abs(power))];
  const double result = power < 0 ? number / scale : number * scale;
  value = negative ? -result : result;
  return at;
}

const char* scan_plain(const char* first, const char* last, float& value) {
  double wide = 0;
  const char* behind = scan_plain(first, last, wide);
  // A second rounding goes astray only from the middle between two single-precision values.
  constexpr std::uint64_t kDropped = (1ULL << 29) - 1;
  constexpr std::uint64_t kMiddle = 1ULL << 28;
  if (behind == nullptr || (std::bit_cast<std::uint64_t>(wide) & kDropped) == kMiddle) {
    return nullptr;
  }
  value = static_cast<float>(wide);
  return behind;
}

bool parse_number(std::string_view token, double& value) { return parse_real(token, value); }
bool parse_number(std::string_view token, float& value) { return parse_real(token, value); }

}  // namespace frame
