#include "radiation/bit_planes.hpp"

#include <algorithm>
#include <array>

namespace tsrf_utl {

namespace {

/// Fractions that are worked on at a time: their whole numbers stay in the nearest cache while all
/// planes are passed.
constexpr std::size_t kChunk = 1024;
using Chunk = std::array<std::int32_t, kChunk>;

double scale_of(std::int32_t NBIT) { return static_cast<double>((1 << NBIT) - 1); }

/// Nearest integer of x >= 0, halves up.
std::int32_t nearest(double x) {
  const auto whole = static_cast<std::int32_t>(x);
  return whole + static_cast<std::int32_t>(x - whole >= 0.5);
}

void pack(std::size_t m, std::int32_t NBIT, std::int32_t slot, std::int32_t* words,
          std::span<const double> values) {
  const double scale = scale_of(NBIT);
  Chunk q;
  for (std::size_t i = 0; i < values.size(); ++i) q[i] = nearest(values[i] * scale);
  for (std::int32_t b = 0; b < NBIT; ++b) {
    std::int32_t* plane = words + static_cast<std::size_t>(b) * m;
    for (std::size_t i = 0; i < values.size(); ++i) plane[i] += ((q[i] >> b) & 1) << (slot - 1);
  }
}

void unpack(std::size_t m, std::int32_t NBIT, std::int32_t slot, const std::int32_t* words,
            std::span<double> values) {
  const double scale = scale_of(NBIT);
  const std::int32_t shift = slot - 1;
  Chunk q;
  std::fill_n(q.begin(), values.size(), 0);
  for (std::int32_t b = NBIT - 1; b >= 0; --b) {
    const std::int32_t* plane = words + static_cast<std::size_t>(b) * m;
    for (std::size_t i = 0; i < values.size(); ++i) q[i] = 2 * q[i] + ((plane[i] >> shift) & 1);
  }
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = q[i] / scale;
}

}  // namespace

void tsrf_utl_bitrdt(frame::Log& log, std::int32_t direction, std::size_t n, std::size_t m,
                     std::int32_t NBIT, std::int32_t slot, std::span<std::int32_t> words,
                     std::span<double> values) {
  if (NBIT < 1 || NBIT > kMostBits || slot < 1 || slot > kSlots) {
    log.program_error("### program error -1- (tsrf_utl_bitrdt)");
  }
  for (std::size_t first = 0; first < n; first += kChunk) {
    const std::span<double> some = values.subspan(first, std::min(kChunk, n - first));
    if (direction < 0) {
      pack(m, NBIT, slot, words.data() + first, some);
    } else {
      unpack(m, NBIT, slot, words.data() + first, some);
    }
  }
}

}  // namespace tsrf_utl
