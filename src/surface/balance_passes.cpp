#include "surface/balance_passes.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "inputs/moist_air.hpp"
#include "surface/heat_balance.hpp"

namespace tsrf_therm1d {

namespace {

using moist_air::kVapourDeficit;
using moist_air::kVapourRatio;

constexpr int kMostRounds = 100;
constexpr double kRelativeStep = 1e-10;

/// Patches of a block, and those that go through the rounds abreast.
constexpr std::size_t kBlock = 256;
constexpr std::size_t kChunk = 32;

using Lanes = std::array<double, kBlock>;

/// What the search works on; nothing but the last group changes from round to round.
struct Search {
  alignas(64) Lanes absorbed;    ///< short-wave plus long-wave
  alignas(64) Lanes emission;    ///< per T^4
  alignas(64) Lanes hc;          ///< convective coefficient
  alignas(64) Lanes air;         ///< temperature of the air
  alignas(64) Lanes conduction;  ///< conductance to the first cell
  alignas(64) Lanes below;       ///< temperature of the first cell
  alignas(64) Lanes wetness;     ///< latent heat per difference of humidity
  alignas(64) Lanes humidity;    ///< of the air
  alignas(64) Lanes pressure;

  alignas(64) Lanes T;
  alignas(64) Lanes latent;
  alignas(64) std::array<std::int64_t, kBlock> open;  ///< -1 while a patch is open, then 0
};

/// The patches of a block and the terms of their balance that no temperature changes.
struct Block {
  std::size_t first = 0;  ///< the first patch
  std::size_t count = 0;
  alignas(64) Lanes shortwave;
  alignas(64) Lanes longwave;
  Search all;
};

/// The wet patches of a block, drawn together.
struct Wet {
  std::size_t count = 0;
  std::array<std::size_t, kBlock> lane;  ///< in the block
  Search search;
};

#define PASS_PREFIX balance
#define PASS_FILE "surface/balance_passes.inc"
#include "frame/pass_sets.inc"

}  // namespace

Solve solve_for(frame::InstructionSet set) {
#if defined(__x86_64__)
  if (set == frame::InstructionSet::avx512) return balance_avx512::solve;
  if (set == frame::InstructionSet::avx2) return balance_avx2::solve;
#endif
  return balance_common::solve;
}

}  // namespace tsrf_therm1d
