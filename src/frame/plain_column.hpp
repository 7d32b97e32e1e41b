// Columns of whole numbers in the lines of a large file.
//
// Neighbouring lines mostly have numbers of as many digits, and a reader that takes them to be so
// need not look for their ends: it turns the digits into a number as one word (three products
// instead of one a digit; D. Lemire, 2022) and goes on with the next field before it is known that
// they were digits. Used by the readers of large files, a column for each field of a line.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "frame/numbers.hpp"

namespace frame {

class PlainColumn {
 public:
  /// Reads the field at `at`; the place behind it and one blank, null when there is no plain number
  /// before a blank on the line. What is accepted is what scan_plain_field accepts, its bits too.
  const char* read(const char* at, const char* last, std::int32_t& value) {
    if (width_ > 0 && last - at > kMostDigits) {
      std::uint64_t word = 0;
      std::memcpy(&word, at, sizeof word);
      word ^= 0x3030303030303030U;          // digits become 0 to 9, all others more
      word <<= 8 * (kMostDigits - width_);  // zeros before the digits
      const std::uint64_t others = ((word + 0x7676767676767676U) | word) & 0x8080808080808080U;
      if (others == 0 && is_blank(at[width_])) {
        word = word * 10 + (word >> 8);
        constexpr std::uint64_t kPair = 0x000000ff000000ffU;
        word = (word & kPair) * 0x000f424000000064U + ((word >> 16) & kPair) * 0x0000271000000001U;
        value = static_cast<std::int32_t>(word >> 32);
        return at + width_ + 1;
      }
    }
    return find(at, last, value);
  }

 private:
  static_assert(std::endian::native == std::endian::little);
  static constexpr int kMostDigits = 8;  // of a word
  static bool is_blank(char c) { return c == ' ' || c == '\t'; }

  const char* find(const char* at, const char* last, std::int32_t& value) {
    while (at < last && is_blank(*at)) ++at;
    const char* const behind = scan_plain(at, last, value);
    if (behind == nullptr || behind == last || !is_blank(*behind)) return nullptr;
    width_ = behind - at > kMostDigits ? 0 : static_cast<int>(behind - at);
    return behind + 1;
  }

  int width_ = 0;  ///< of the number before, a sign with it; 0: none, or too long
};

}  // namespace frame
