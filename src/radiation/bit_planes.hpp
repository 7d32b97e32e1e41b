// Fractions packed into bit planes.
//
// A fraction 0..1 is kept as a whole number of NBIT bits; bit b of all fractions of one date
// stands in plane b, a plane being one word a patch. A word has 30 slots, one a date, so that NBIT
// planes hold 30 dates. Used by the sunlit fractions of dated runs, which keep whole months.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "frame/log.hpp"

namespace tsrf_utl {

inline constexpr std::int32_t kMostBits = 30;
inline constexpr std::int32_t kSlots = 30;

/// Packs (`direction` < 0) `n` fractions of `values` into slot `slot` (from 1) of the planes in
/// `words`, whose bits there must be 0; plane b (from 0) begins at word b m. Otherwise unpacks
/// them. `NBIT` or `slot` beyond 1..30 stops the run.
void tsrf_utl_bitrdt(frame::Log& log, std::int32_t direction, std::size_t n, std::size_t m,
                     std::int32_t NBIT, std::int32_t slot, std::span<std::int32_t> words,
                     std::span<double> values);

}  // namespace tsrf_utl
