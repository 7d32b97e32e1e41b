#include "frame/numbers.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <tuple>
#include <utility>

namespace frame {

namespace {

constexpr std::size_t kBuffer = 64;

void append_right(std::string& out, const char* first, const char* last, int width) {
  const auto length = static_cast<int>(last - first);
  if (length < width) out.append(static_cast<std::size_t>(width - length), ' ');
  out.append(first, last);
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

template <class Real>
bool parse_real(std::string_view token, Real& value) {
  Real result = 0;
  const char* first = token.data();
  const char* last = first + token.size();
  // Most fields are plain; from_chars takes neither a leading '+' nor NaN that we would want.
  auto [end, status] = std::from_chars(first, last, result);
  if (status == std::errc() && end == last && std::isfinite(result) && is_digit(last[-1])) {
    value = result;
    return true;
  }
  std::string text;
  if (!normalise_real(token, text)) return false;
  first = text.data();
  last = first + text.size();
  std::tie(end, status) = [&] {
    auto r = std::from_chars(first, last, result);
    return std::pair(r.ptr, r.ec);
  }();
  if (status == std::errc::result_out_of_range) {
    // Tells overflow from underflow, which from_chars does not.
    const double wide = std::strtod(text.c_str(), nullptr);
    if (std::abs(wide) > 1.0) return false;
    value = static_cast<Real>(wide);
    return true;
  }
  if (status != std::errc() || end != last) return false;
  value = result;
  return true;
}

}  // namespace

void append_number(std::string& out, std::int64_t value) {
  std::array<char, kBuffer> buffer;
  const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + kBuffer, value);
  out.append(buffer.data(), end);
}

void append_number(std::string& out, double value) {
  std::array<char, kBuffer> buffer;
  if (value == 0.0) value = +0.0;
  const auto [end, status] = std::to_chars(buffer.data(), buffer.data() + kBuffer, value);
  out.append(buffer.data(), end);
}

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

bool parse_number(std::string_view token, double& value) { return parse_real(token, value); }
bool parse_number(std::string_view token, float& value) { return parse_real(token, value); }

}  // namespace frame
