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

}  // namespace frame
