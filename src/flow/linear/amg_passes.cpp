#include "flow/linear/amg_passes.hpp"

#include <algorithm>

namespace flow {

namespace {

/// Where the cells of one part of a row stand, and their neighbours.
struct HalfRow {
  std::size_t here = 0;
  std::size_t back = 0, ahead = 0;  ///< along x
  std::size_t south = 0, north = 0, below = 0, above = 0;
  /// The same for what the matrix has there, in the rows that stand for these.
  std::size_t of_here = 0, of_ahead = 0, of_north = 0, of_above = 0;
};

/// `part` 0: even i.
inline HalfRow half_row(const AmgLevel& m, std::size_t j, std::size_t k, std::size_t part) {
  const auto ny = static_cast<std::size_t>(m.n[1]);
  const auto nz = static_cast<std::size_t>(m.n[2]);
  const std::size_t number = j + ny * k;
  const std::size_t row = m.stride * number;
  const std::size_t layer = m.stride * ny;
  const std::size_t odd = m.odd();
  HalfRow h;
  h.here = part == 0 ? row : row + odd;
  h.back = part == 0 ? row + odd - 1 : row;
  h.ahead = part == 0 ? row + odd : row + 1;
  h.south = j > 0 ? h.here - m.stride : h.here + layer - m.stride;
  h.north = j + 1 < ny ? h.here + m.stride : h.here + m.stride - layer;
  h.below = k > 0 ? h.here - layer : h.here + layer * (nz - 1);
  h.above = k + 1 < nz ? h.here + layer : h.here - layer * (nz - 1);
  const auto way = [&](std::size_t of) { return static_cast<std::size_t>(m.ways[of]); };
  h.of_here = h.here - way(number);
  h.of_ahead = h.ahead - way(number);
  h.of_north = h.north - way(j + 1 < ny ? number + 1 : number + 1 - ny);
  h.of_above = h.above - way(k + 1 < nz ? number + ny : number - ny * (nz - 1));
  return h;
}

/// The part of a row that holds the cells of a colour.
inline std::size_t part_of(std::size_t colour, std::size_t j, std::size_t k) {
  return (colour + j + k) & 1U;
}

/// Where the row of the coarser level that a row belongs to stands in `between`.
inline std::size_t row_between(const AmgLevel& m, const AmgLevel& coarse, std::size_t j,
                               std::size_t k) {
  const auto row =
      static_cast<std::size_t>(m.merge[1].parent[j]) +
      static_cast<std::size_t>(coarse.n[1]) * static_cast<std::size_t>(m.merge[2].parent[k]);
  return coarse.natural * row;
}

/// True for the rows that `wrap` couples, the first and the last.
inline bool wrapped_row(const AmgLevel& m, std::size_t j) {
  return !m.wrap.empty() && (j == 0 || j + 1 == static_cast<std::size_t>(m.n[1]));
}

#define PASS_PREFIX amg
#define PASS_FILE "flow/linear/amg_passes.inc"
#include "frame/pass_sets.inc"

}  // namespace

AmgPasses amg_passes(InstructionSet set) {
#if defined(__x86_64__)
  if (set == InstructionSet::avx512) {
    return {amg_avx512::down, amg_avx512::up, amg_avx512::take, amg_avx512::renew};
  }
  if (set == InstructionSet::avx2)
    return {amg_avx2::down, amg_avx2::up, amg_avx2::take, amg_avx2::renew};
#endif
  return {amg_common::down, amg_common::up, amg_common::take, amg_common::renew};
}

}  // namespace flow
