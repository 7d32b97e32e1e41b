// Numbers as text, both ways.
//
// Everything that the program prints or reads as a number goes through these routines: reals on
// the log in the shortest form that reads back to the same bits, reals in result files in a
// fixed-width exponent form, and fields of input files as whole tokens in the free form that
// users' files have. Nothing here depends on the locale. Used by the log, the record reader, the
// namelist groups and the result writers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace frame {

/// Appends `value` as a plain integer.
void append_number(std::string& out, std::int64_t value);
/// Appends `value` in the shortest form (fixed or exponent) that reads back to the same bits; a
/// zero without a sign. A single-precision value is the shortest text that gives it back.
void append_number(std::string& out, double value);
void append_number(std::string& out, float value);

/// Appends `value` right-aligned in `width` columns (wider where it does not fit).
void append_int(std::string& out, std::int64_t value, int width);
/// Appends `value` in exponent form (one digit before the point, `decimals` after it, `E`, at
/// least two exponent digits), right-aligned in 13 columns; a zero without a sign.
void append_e13(std::string& out, double value, int decimals = 5);

/// Reads the whole of `token` as an integer. False on anything else: letters, a fraction, a value
/// that does not fit, an empty token. `value` is set only on success.
bool parse_number(std::string_view token, std::int32_t& value);
/// Reads the whole of `token` as a finite real: `1`, `.5`, `1.`, `+3`, `1.e3`, `1.5D0`, `1.5+3`.
/// NaN, infinities and values too large for the kind are refused; values too small become zero or
/// a denormal number. `value` is set only on success.
bool parse_number(std::string_view token, double& value);
/// The same for single precision, rounded once from the decimal text.
bool parse_number(std::string_view token, float& value);

/// The fast way in: reads the number at the start of `first`..`last` when it is of the plain kind
/// that files are full of (an optional minus; up to 9 digits of an integer, up to 18 of a real
/// with or without a point and an `e` exponent) and returns the place behind it; null when it is
/// not, `value` then being untouched. What is accepted has the bits that parse_number gives.
const char* scan_plain(const char* first, const char* last, double& value);
const char* scan_plain(const char* first, const char* last, float& value);
inline const char* scan_plain(const char* first, const char* last, std::int32_t& value) {
  const bool negative = first < last && *first == '-';
  const char* begin = first + (negative ? 1 : 0);
  const char* stop = last - begin > 9 ? begin + 9 : last;
  const char* at = begin;
  std::int32_t number = 0;
  for (; at < stop && *at >= '0' && *at <= '9'; ++at) number = 10 * number + (*at - '0');
  if (at == begin) return nullptr;
  value = negative ? -number : number;
  return at;
}

/// A plain number behind blanks, itself before a blank or the line's end: the place behind it, null
/// when the next field of the line is none.
template <class Number>
const char* scan_plain_field(const char* at, const char* last, Number& value) {
  while (at < last && (*at == ' ' || *at == '\t')) ++at;
  at = scan_plain(at, last, value);
  const bool ended =
      at != nullptr && at < last && (*at == ' ' || *at == '\t' || *at == '\n' || *at == '\r');
  return ended ? at : nullptr;
}

}  // namespace frame
