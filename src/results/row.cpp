#include "results/row.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
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

constexpr int kLeastPower = -323;
constexpr int kGreatestPower = 329;
constexpr int kGreatestExponent = std::numeric_limits<double>::max_exponent10;
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

Scaled power_of_ten(int k) { return kPowers[static_cast<std::size_t>(k - kLeastPower)]; }

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

/// A positive number as `digits` * 10^(exponent - Decimals).
struct Decimal {
  std::uint32_t digits;
  int exponent;
};

/// Decimal exponent of a number: the greatest e with 10^e not above it. At a number that is 10^e
/// but for its last bits either e or e - 1; both round to the same digits.
int decimal_exponent(Scaled number) {
  const int least = ((number.exponent + 63) * 315653) >> 20;  // that of the number's binade
  if (least + 1 > kGreatestExponent) return least;
  const Scaled next = power_of_ten(least + 1);
  const bool reached = (number.exponent > next.exponent) |
                       ((number.exponent == next.exponent) & (number.mantissa >= next.mantissa));
  return least + static_cast<int>(reached);
}

/// Rounds a positive finite number to Decimals + 1 digits. False when the product with the power
/// of ten lies too near to the middle of two results to be sure of its side.
template <int Decimals>
bool round_to(double value, Decimal& result) {
  constexpr std::uint32_t kLimit = Decimals == 5 ? 1000000 : 100000;
  const Scaled number = scaled(value);
  const int exponent = decimal_exponent(number);
  const Scaled power = power_of_ten(Decimals - exponent);
  const Wide product = static_cast<Wide>(number.mantissa) * power.mantissa;
  const int shift = -(number.exponent + power.exponent);
  const Wide half = static_cast<Wide>(1) << (shift - 1);
  const Wide fraction = product & ((half << 1) - 1);
  constexpr Wide kDoubt = static_cast<Wide>(1) << 65;  // the power's missing unit, and spare
  if (fraction <= half && fraction + kDoubt >= half) return false;
  result = {
      static_cast<std::uint32_t>(product >> shift) + static_cast<std::uint32_t>(fraction > half),
      exponent};
  if (result.digits == kLimit) result = {kLimit / 10, exponent + 1};
  return true;
}

/// Any value, by way of the plain form.
char* put_plain(char* to, double value, int decimals) {
  std::string text;
  frame::append_e13(text, value, decimals);
  return std::copy(text.begin(), text.end(), to);
}

constexpr auto kPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t n = 0; n < 100; ++n) {
    pairs[2 * n] = static_cast<char>('0' + n / 10);
    pairs[2 * n + 1] = static_cast<char>('0' + n % 10);
  }
  return pairs;
}();

void put_pair(char* to, std::uint32_t value) {
  std::memcpy(to, &kPairs[std::size_t{2} * value], 2);
}

template <int Decimals>
char* put_decimal(char* to, bool negative, Decimal number) {
  const auto exponent = static_cast<std::uint32_t>(std::abs(number.exponent));
  const bool wide = exponent >= 100;
  std::memset(to, ' ', 8);
  to += 13 - (Decimals + 6) - static_cast<int>(wide);
  if (negative) to[-1] = '-';
  const std::uint32_t head = number.digits / 10000;
  const std::uint32_t tail = number.digits % 10000;
  if constexpr (Decimals == 5) {
    to[0] = kPairs[std::size_t{2} * head];
    to[2] = kPairs[std::size_t{2} * head + 1];
  } else {
    to[0] = static_cast<char>('0' + head);
  }
  to[1] = '.';
  put_pair(to + Decimals - 2, tail / 100);
  put_pair(to + Decimals, tail % 100);
  to += Decimals + 2;
  *to++ = 'E';
  *to++ = number.exponent < 0 ? '-' : '+';
  if (wide) *to++ = static_cast<char>('0' + exponent / 100);
  put_pair(to, exponent % 100);
  return to + 2;
}

template <int Decimals>
char* put_e13(char* to, double value) {
  const double size = std::abs(value);
  Decimal number{};
  if (size == 0.0) return put_decimal<Decimals>(to, false, number);
  if (!std::isfinite(value) || !round_to<Decimals>(size, number)) {
    return put_plain(to, value, Decimals);
  }
  return put_decimal<Decimals>(to, std::signbit(value), number);
}

}  // namespace

void Row::integer(std::int32_t value, int width) {
  std::array<char, 12> digits;
  char* const last = digits.data() + digits.size();
  char* first = last;
  auto rest = static_cast<std::uint32_t>(value < 0 ? -static_cast<std::int64_t>(value) : value);
  do {
    *--first = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (value < 0) *--first = '-';
  char* to = text_.data() + size_;
  if (size_ > 0 && last - first >= width) *to++ = ' ';
  for (auto length = last - first; length < width; ++length) *to++ = ' ';
  to = std::copy(first, last, to);
  size_ = static_cast<std::size_t>(to - text_.data());
}

void Row::real(double value, int decimals) {
  char* to = text_.data() + size_;
  *to++ = ' ';
  if (!std::isfinite(value) && unsound_ < 0) unsound_ = reals_;
  ++reals_;
  size_ = static_cast<std::size_t>((decimals == 4 ? put_e13<4>(to, value) : put_e13<5>(to, value)) -
                                   text_.data());
}

}  // namespace tsrf_module_io
