#include "page/pack.hpp"

#include <zlib.h>

#include <array>
#include <new>
#include <string_view>
#include <type_traits>
#include <vector>

namespace townskin_view {

namespace {

/// Level of deflate: higher ones take twice the time for two hundredths of the size.
constexpr int kLevel = 5;

template <typename T>
std::string pack_numbers(std::span<const T> numbers, std::size_t delta) {
  using Bits = std::make_unsigned_t<T>;
  const std::size_t count = numbers.size();
  std::vector<std::uint8_t> planes(count * sizeof(T));
  for (std::size_t n = 0; n < count; ++n) {
    auto bits = static_cast<Bits>(numbers[n]);
    if (delta > 0 && n >= delta) {
      bits = static_cast<Bits>(bits - static_cast<Bits>(numbers[n - delta]));
    }
    for (std::size_t plane = 0; plane < sizeof(T); ++plane) {
      planes[plane * count + n] = static_cast<std::uint8_t>(bits >> (8 * plane));
    }
  }
  return base64(deflated(planes));
}

}  // namespace

std::string pack(std::span<const std::uint8_t> numbers, std::size_t delta) {
  return pack_numbers(numbers, delta);
}
std::string pack(std::span<const std::uint16_t> numbers, std::size_t delta) {
  return pack_numbers(numbers, delta);
}
std::string pack(std::span<const std::int32_t> numbers, std::size_t delta) {
  return pack_numbers(numbers, delta);
}

std::string deflated(std::span<const std::uint8_t> bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::string packed(size, '\0');
  static const Bytef kNothing = 0;
  const int status =
      compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                bytes.empty() ? &kNothing : bytes.data(), static_cast<uLong>(bytes.size()), kLevel);
  if (status != Z_OK) throw std::bad_alloc();  // the only fault left with a buffer of that size
  packed.resize(size);
  return packed;
}

std::string base64(std::string_view bytes) {
  static constexpr std::string_view kSigns =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  const auto byte = [&](std::size_t n) {
    return n < bytes.size() ? static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[n])) : 0U;
  };
  for (std::size_t n = 0; n < bytes.size(); n += 3) {
    const std::uint32_t three = byte(n) << 16 | byte(n + 1) << 8 | byte(n + 2);
    const std::array<char, 4> signs{kSigns[three >> 18], kSigns[three >> 12 & 63U],
                                    n + 1 < bytes.size() ? kSigns[three >> 6 & 63U] : '=',
                                    n + 2 < bytes.size() ? kSigns[three & 63U] : '='};
    text.append(signs.data(), signs.size());
  }
  return text;
}

}  // namespace townskin_view
