#include "results/row.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string>

#include "frame/numbers.hpp"

namespace tsrf_module_io {

namespace {

__extension__ using Wide = unsigned __int128;

/// mantissa * 2^exponent, the mantissa with its top bit set.
struct Scaled {
  std::uint64_t mantissa;
  int exponent;
};

constexpr int kLeastPower = -304;
constexpr int kGreatestPower = 329;
constexpr Wide kTopBit = static_cast<Wide>(1) << 127;

/// Powers of ten, each at most one unit of the mantissa below its true value.
constexpr auto kPowers = [] {
  std::array<Scaled, kGreatestPower - kLeastPower + 1> table{};
  const auto fill = [&table](int step, auto&& next) {
    // 128 bits: the truncation of 330 steps stays far below the 64 bits that are kept.
    Wide mantissa = kTopBit;
    int exponent = -127;
    for (int k = 0; k >= kLeastPower && k <= kGreatestPower; k += step) {
      while ((mantissa & kTopBit) == 0) {
        mantissa <<= 1;
        --exponent;
      }
      table[static_cast<std::size_t>(k - kLeastPower)] = {
          static_cast<std::uint64_t>(mantissa >> 64), exponent + 64};
      next(mantissa, exponent);
    }
  };
  fill(1, [](Wide& mantissa, int& exponent) {
    mantissa = (mantissa >> 3) * 5;
    exponent += 4;
  });
  fill(-1, [](Wide& mantissa, int& exponent) {
    mantissa /= 5;
    exponent -= 1;
  });
  return table;
}();

/// The bits of a positive finite number, denormal ones included.
Scaled scaled(double value) {
  constexpr int kFractionBits = 52;
  constexpr int kBias = 1075;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const auto biased = static_cast<int>(bits >> kFractionBits);
  std::uint64_t mantissa = bits & ((std::uint64_t{1} << kFractionBits) - 1);
  if (biased != 0) mantissa |= std::uint64_t{1} << kFractionBits;
  const int shift = std::countl_zero(mantissa);
  return {mantissa << shift, std::max(biased, 1) - kBias - shift};
}

/// A positive number as `digits` * 10^(exponent - decimals).
struct Decimal {
  std::uint32_t digits;
  int exponent;
};

/// Rounds a positive finite number to decimals + 1 digits. False when the product with the power
/// of ten lies too near to the middle of two results to be sure of its side.
bool round_to(double value, int decimals, std::uint32_t limit, Decimal& result) {
  const Scaled number = scaled(value);
  // Digits before the point of 2^b, less one: at most one below those of the number.
  int exponent = ((number.exponent + 63) * 315653) >> 20;
  for (;; ++exponent) {
    const Scaled power = kPowers[static_cast<std::size_t>(decimals - exponent - kLeastPower)];
    const Wide product = static_cast<Wide>(number.mantissa) * power.mantissa;
    const int shift = -(number.exponent + power.exponent);
    auto digits = static_cast<std::uint32_t>(product >> shift);
    if (digits >= limit) continue;
    const Wide half = static_cast<Wide>(1) << (shift - 1);
    const Wide fraction = product & ((half << 1) - 1);
    constexpr Wide kDoubt = static_cast<Wide>(1) << 65;  // the power's missing unit, and spare
    if (fraction <= half && fraction + kDoubt >= half) return false;
    if (fraction > half) ++digits;
    if (digits == limit) {
      digits /= 10;
      ++exponent;
    }
    result = {digits, exponent};
    return true;
  }
}

/// The same for any value, by way of the plain form.
char* put_plain(char* to, double value, int decimals) {
  std::string text;
  frame::append_e13(text, value, decimals);
  return std::copy(text.begin(), text.end(), to);
}

char* put_two_digits(char* to, int value) {
  to[0] = static_cast<char>('0' + value / 10);
  to[1] = static_cast<char>('0' + value % 10);
  return to + 2;
}

char* put_decimal(char* to, bool negative, Decimal number, int decimals) {
  const int size = static_cast<int>(negative) + decimals + 6 +
                   static_cast<int>(number.exponent <= -100 || number.exponent >= 100);
  to = std::fill_n(to, std::max(13 - size, 0), ' ');
  if (negative) *to++ = '-';
  for (int i = decimals; i > 0; --i) {
    to[i + 1] = static_cast<char>('0' + number.digits % 10);
    number.digits /= 10;
  }
  to[0] = static_cast<char>('0' + number.digits);
  to[1] = '.';
  to += decimals + 2;
  *to++ = 'E';
  *to++ = number.exponent < 0 ? '-' : '+';
  int exponent = std::abs(number.exponent);
  if (exponent >= 100) {
    *to++ = static_cast<char>('0' + exponent / 100);
    exponent %= 100;
  }
  return put_two_digits(to, exponent);
}

char* put_e13(char* to, double value, int decimals) {
  const std::uint32_t limit = decimals == 5 ? 1000000U : 100000U;
  const double size = value < 0.0 ? -value : value;
  Decimal number{};
  if (size == 0.0) return put_decimal(to, false, number, decimals);
  if (!(size <= std::numeric_limits<double>::max()) || (decimals != 5 && decimals != 4) ||
      !round_to(size, decimals, limit, number)) {
    return put_plain(to, value, decimals);
  }
  return put_decimal(to, value < 0.0, number, decimals);
}

}  // namespace

void Row::integer(std::int32_t value, int width) {
  std::array<char, 12> digits;
  const char* last = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  const auto length = static_cast<int>(last - digits.data());
  char* to = std::fill_n(text_.data() + size_, std::max(width - length, 0), ' ');
  to = std::copy(static_cast<const char*>(digits.data()), last, to);
  size_ = static_cast<std::size_t>(to - text_.data());
}

void Row::real(double value, int decimals) {
  char* to = text_.data() + size_;
  *to++ = ' ';
  size_ = static_cast<std::size_t>(put_e13(to, value, decimals) - text_.data());
}

}  // namespace tsrf_module_io
