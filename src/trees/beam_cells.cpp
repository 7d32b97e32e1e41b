#include "trees/beam_cells.hpp"

#include <algorithm>

namespace jmk {

namespace {

using tsrf_module_jumoku::Beam;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::FourFractions;
using tsrf_module_jumoku::kFaces;
using tsrf_module_jumoku::opposite;
using tsrf_module_jumoku::slot;

/// Layers that go along together.
constexpr std::int32_t kTogether = 4;

#define PASS_SET beam_common
#define PASS_TARGET
#include "trees/beam_cells.inc"
#undef PASS_SET
#undef PASS_TARGET

#if defined(__x86_64__)
#define PASS_SET beam_avx2
#define PASS_TARGET [[gnu::target("avx2")]]
#include "trees/beam_cells.inc"
#undef PASS_SET
#undef PASS_TARGET
#endif

}  // namespace

Spread::Spread(const std::array<double, 3>& width, const std::array<double, 3>& speed) {
  std::array<double, 3> l{};
  for (std::size_t a = 0; a < 3; ++a) l[a] = speed[a] / width[a];
  path = 1.0 / std::max({l[0], l[1], l[2]});
  for (double& length : l) length *= path;
  for (std::size_t a = 0; a < 3; ++a) {
    const std::size_t b = (a + 1) % 3;
    const std::size_t c = (a + 2) % 3;
    weight[a] = width[b] * width[c] * speed[a];
    over[a] = {l[b] * (1.0 - 0.5 * l[c]), l[c] * (1.0 - 0.5 * l[b])};
  }
}

SweepTile sweep_tile_for(frame::InstructionSet set) {
#if defined(__x86_64__)
  if (set != frame::InstructionSet::common) return beam_avx2::sweep_tile;
#endif
  return beam_common::sweep_tile;
}

}  // namespace jmk
