#include "flow/linear/iccg_passes.hpp"

namespace flow {

namespace {

/// A point (u, 0) or (u, last) that a row holds.
struct WrapPoint {
  bool here = false;
  std::size_t slot = 0;
  std::size_t other = 0;   ///< slot of the point that it is coupled to
  std::size_t number = 0;  ///< place in the arrays of Wrap
};

WrapPoint first_of(const IccgArrays& m, std::size_t w, std::size_t d) {
  if (d >= m.nu) return {};
  const DiagonalRow& far = m.rows[d + m.nv - 1];
  const std::size_t at = w * m.layer;
  return {true, at + m.rows[d].start, at + far.start + static_cast<std::size_t>(far.count) - 1,
          (w - 1) * m.nu + d};
}

WrapPoint last_of(const IccgArrays& m, std::size_t w, std::size_t d) {
  if (d + 1 < m.nv) return {};
  const std::size_t u = d + 1 - m.nv;
  const WrapPoint first = first_of(m, w, u);
  return {true, first.other, first.slot, first.number};
}

/// The direction of the points of a row that backward_wrapped sweeps anew.
struct WrapKeep {
  WrapPoint first, last;
  double p_first = 0.0, p_last = 0.0;
};

}  // namespace

#define PASS_PREFIX iccg
#define PASS_FILE "flow/linear/iccg_passes.inc"
#include "frame/pass_sets.inc"

IccgPasses iccg_passes(InstructionSet set) {
#if defined(__x86_64__)
  if (set == InstructionSet::avx512) {
    return {iccg_avx512::forward, iccg_avx512::backward, iccg_avx512::product};
  }
  if (set == InstructionSet::avx2) {
    return {iccg_avx2::forward, iccg_avx2::backward, iccg_avx2::product};
  }
#endif
  return {iccg_common::forward, iccg_common::backward, iccg_common::product};
}

}  // namespace flow
