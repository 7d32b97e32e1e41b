#include "results/row.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "frame/numbers.hpp"

namespace tsrf_module_io {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kMostPower = 104;  // of ten, in the table
constexpr std::size_t kPowerCount = std::size_t{2} * kMostPower + 1;
constexpr int kFractionBits = 43;  // of a number's digits as they come out of the product

/// Where what belongs to a power of ten stands in the tables.
constexpr std::size_t place_of(int power) {
  const int place = power + kMostPower;
  return static_cast<std::size_t>(place);
}

/// mantissa * 2^exponent, the mantissa with its top bit set: at most one unit of it below 10^k.
struct Power {
  std::uint64_t mantissa;
  int exponent;
};

constexpr auto kPowers = [] {
  std::array<Power, kPowerCount> table{};
  constexpr Wide kTopBit = static_cast<Wide>(1) << 127;
  const auto fill = [&table](int step, auto&& next) {
    // 128 bits: the truncation of 100 steps stays far below the 64 bits that are kept.
    Wide mantissa = kTopBit;
    int exponent = -127;
    for (int k = 0; k >= -kMostPower && k <= kMostPower; k += step) {
      while ((mantissa & kTopBit) == 0) {
        mantissa <<= 1;
        --exponent;
      }
      table[place_of(k)] = {static_cast<std::uint64_t>(mantissa >> 64), exponent + 64};
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

/// What a decimal exponent e has to do with a number of it.
struct Scale {
  std::uint64_t next;        ///< bits of the double at 10^(e + 1), but for the last few
  std::array<char, 4> text;  ///< sign and digits of e
};

constexpr auto kScales = [] {
  std::array<Scale, kPowerCount> table{};
  for (int e = -kMostPower; e < kMostPower; ++e) {
    const Power next = kPowers[place_of(e + 1)];
    const int biased = next.exponent + 63 + 1023;
    const std::uint64_t fraction = (next.mantissa >> 11) & ((std::uint64_t{1} << 52) - 1);
    const int size = e < 0 ? -e : e;
    table[place_of(e)] = {(static_cast<std::uint64_t>(biased) << 52) | fraction,
                          {e < 0 ? '-' : '+', static_cast<char>('0' + size / 10 % 10),
                           static_cast<char>('0' + size % 10), ' '}};
  }
  return table;
}();

/// A positive number as `digits` * 10^(exponent - Decimals).
struct Decimal {
  std::uint32_t digits;
  int exponent;
};

/// Rounds a positive number to Decimals + 1 digits. False for one that is not finite or needs three
/// digits of exponent, and where the product with the power of ten lies too near to the middle of
/// two results to be sure of its side.
template <int Decimals>
bool round_to(std::uint64_t bits, Decimal& result) {
  constexpr int kBias = 1023;
  constexpr int kFirstBiased = kBias - 325;  // 10^-98 to 10^98
  constexpr int kLastBiased = kBias + 324;
  constexpr std::uint64_t kHidden = std::uint64_t{1} << 52;
  const auto biased = static_cast<int>(bits >> 52);
  if (biased < kFirstBiased || biased > kLastBiased) return false;
  // The exponent of the number's binade, or one more. Of a number that is 10^e but for its last
  // bits either e or e - 1 does; both round to the same digits.
  int exponent = ((biased - kBias) * 315653) >> 20;
  exponent += static_cast<int>(bits >= kScales[place_of(exponent)].next);
  const Power power = kPowers[place_of(Decimals - exponent)];
  const std::uint64_t mantissa = (bits & (kHidden - 1)) | kHidden;
  const int shift = biased - kBias - 52 + power.exponent + kFractionBits + 64;
  const auto product =
      static_cast<std::uint64_t>((static_cast<Wide>(mantissa << shift) * power.mantissa) >> 64);
  constexpr std::uint64_t kHalf = std::uint64_t{1} << (kFractionBits - 1);
  constexpr std::uint64_t kDoubt = 4;  // the power's missing unit and the product's, and spare
  if (((product - kHalf + kDoubt) & (2 * kHalf - 1)) <= kDoubt) return false;
  result = {static_cast<std::uint32_t>((product + kHalf) >> kFractionBits), exponent};
  constexpr std::uint32_t kLimit = Decimals == 5 ? 1000000 : 100000;
  if (result.digits == kLimit) result = {kLimit / 10, exponent + 1};
  return true;
}

/// Any value, by way of the plain form.
char* put_plain(char* to, double value, int decimals) {
  std::string text;
  frame::append_e13(text, value, decimals);
  *to++ = ' ';
  return std::copy(text.begin(), text.end(), to);
}

using Four = std::array<char, 4>;

constexpr char digit(std::size_t n) { return static_cast<char>('0' + n % 10); }

/// Three digits with a point behind the first, and with an E behind the last.
constexpr auto kHeads = [] {
  std::array<Four, 1000> table{};
  for (std::size_t n = 0; n < 1000; ++n) table[n] = {digit(n / 100), '.', digit(n / 10), digit(n)};
  return table;
}();
constexpr auto kTails = [] {
  std::array<Four, 1000> table{};
  for (std::size_t n = 0; n < 1000; ++n) table[n] = {digit(n / 100), digit(n / 10), digit(n), 'E'};
  return table;
}();

void put(char* to, const Four& text) { std::memcpy(to, text.data(), text.size()); }

/// A blank and the field of 13 columns, of a number of two digits of exponent. Writes a column
/// more.
template <int Decimals>
char* put_decimal(char* to, bool negative, Decimal number) {
  constexpr std::uint32_t kPart = Decimals == 5 ? 1000 : 100;
  constexpr int kFirst = 8 - Decimals;  // digit
  std::memset(to, ' ', 8);
  to[kFirst - 1] = negative ? '-' : ' ';
  put(to + 7, kTails[number.digits % kPart]);
  put(to + kFirst, kHeads[number.digits / kPart]);
  put(to + 11, kScales[place_of(number.exponent)].text);
  return to + 14;
}

template <int Decimals>
char* put_e13(char* to, double value) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  Decimal number{};
  if ((bits & ~kSign) == 0) return put_decimal<Decimals>(to, false, number);
  if (!round_to<Decimals>(bits & ~kSign, number)) return put_plain(to, value, Decimals);
  return put_decimal<Decimals>(to, (bits & kSign) != 0, number);
}

/// Four columns of a number below 10000, with zeros or blanks before it.
void put_four(char* to, std::uint32_t value, bool zeros) {
  const std::uint32_t high = value / 100;
  const std::uint32_t low = value % 100;
  to[0] = zeros || high >= 10 ? digit(high / 10) : ' ';
  to[1] = zeros || high > 0 ? digit(high) : ' ';
  to[2] = zeros || value >= 10 ? digit(low / 10) : ' ';
  to[3] = digit(low);
}

}  // namespace

void Row::integer(std::int32_t value, int width) {
  char* const field = text_.data() + size_;
  if (value >= 0 && value < 10000 && width > 4 && width <= 8) {
    std::memset(field, ' ', 8);
    put_four(field + width - 4, static_cast<std::uint32_t>(value), false);
    size_ += static_cast<std::size_t>(width);
    return;
  }
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
  if (!std::isfinite(value) && unsound_ < 0) unsound_ = reals_;
  ++reals_;
  size_ = static_cast<std::size_t>((decimals == 4 ? put_e13<4>(to, value) : put_e13<5>(to, value)) -
                                   text_.data());
}

}  // namespace tsrf_module_io
