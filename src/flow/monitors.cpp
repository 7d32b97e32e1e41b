#include "flow/monitors.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <tuple>

#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

constexpr double kNone = -std::numeric_limits<double>::infinity();
constexpr std::size_t kBlock = 64;  ///< cells that are looked at together

/// Values of a block; those of cells that are not fluid are kNone.
using Block = double[kBlock];

/// square += the square of the velocity at the centres; `s` to the lower faces.
FLOW_CLONES void add_square(std::size_t count, const double* ru, std::size_t s, const double* r,
                            double* square) {
  for (std::size_t i = 0; i < count; ++i) {
    const double u = 0.5 * (ru[i - s] + ru[i]) / r[i];
    square[i] += u * u;
  }
}

/// out = sign * value in fluid cells; the sum of 0 * value, which is 0 if all are finite.
FLOW_CLONES double take(std::size_t count, const std::int32_t* fluid, double sign,
                        const double* value, double* out) {
  double lost[8] = {};
  for (std::size_t i = 0; i < kBlock; ++i) out[i] = kNone;
  for (std::size_t i = 0; i < count; ++i) out[i] = fluid[i] > 0 ? sign * value[i] : kNone;
  for (std::size_t i = 0; i < count; ++i) lost[i % 8] += fluid[i] > 0 ? 0.0 * value[i] : 0.0;
  double all = 0.0;
  for (const double lane : lost) all += lane;
  return all;
}

FLOW_CLONES double largest(const double* value) {
  double best[8];
  for (std::size_t l = 0; l < 8; ++l) best[l] = value[l];
  for (std::size_t i = 8; i < kBlock; i += 8) {
    for (std::size_t l = 0; l < 8; ++l) best[l] = best[l] < value[i + l] ? value[i + l] : best[l];
  }
  return *std::max_element(best, best + 8);
}

/// Keeps the largest value and its first cell.
void keep(const double* value, const Triple& first, Extreme& best) {
  const double here = largest(value);
  if (!(here > best.value)) return;
  const auto at = static_cast<std::int32_t>(std::find(value, value + kBlock, here) - value);
  best = {here, {first[0] + at, first[1], first[2]}};
}

/// What a block is taken from.
struct Cells {
  std::size_t place, count;
  Triple first;
};

void take_block(const Flags& fluid, const State& state, bool turbulent, const Cells& cells,
                Monitors& found) {
  const Box& box = fluid.box();
  const std::int32_t* const flags = fluid.data() + cells.place;
  Block square{};
  Block value;
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    add_square(cells.count, state.ru[static_cast<std::size_t>(axis)].data() + cells.place,
               box.stride(axis), state.r[0].data() + cells.place, square);
  }
  double lost = take(cells.count, flags, 1.0, square, value);
  keep(value, cells.first, found.velocity);
  const double* const t = state.t.data() + cells.place;
  lost += take(cells.count, flags, 1.0, t, value);
  keep(value, cells.first, found.warmest);
  take(cells.count, flags, -1.0, t, value);
  keep(value, cells.first, found.coldest);
  lost += take(cells.count, flags, 1.0, state.p.data() + cells.place, value);
  if (turbulent) {
    lost += take(cells.count, flags, 1.0, state.mut.data() + cells.place, value);
    keep(value, cells.first, found.mut);
  }
  for (const Field& ak : state.ak) {
    if (!ak.empty()) lost += take(cells.count, flags, 1.0, ak.data() + cells.place, value);
  }
  found.finite = found.finite && lost == 0.0;
}

Monitors nothing() {
  Monitors found;
  for (Extreme* extreme : {&found.velocity, &found.warmest, &found.coldest, &found.mut}) {
    extreme->value = kNone;
  }
  return found;
}

/// Of two equal values the first in the order of cells counts, in whatever order stretches end.
void join(const Monitors& more, Monitors& all) {
  const auto join_one = [](const Extreme& one, Extreme& best) {
    const auto order = [](const Triple& cell) { return std::tuple(cell[2], cell[1], cell[0]); };
    if (one.cell[0] == 0 || one.value < best.value) return;
    if (one.value > best.value || order(one.cell) < order(best.cell)) best = one;
  };
  join_one(more.velocity, all.velocity);
  join_one(more.warmest, all.warmest);
  join_one(more.coldest, all.coldest);
  join_one(more.mut, all.mut);
  all.finite = all.finite && more.finite;
}

}  // namespace

Monitors take_monitors(frame::Crew& crew, const Flags& fluid, const State& state, bool turbulent) {
  const Box& box = fluid.box();
  Monitors found = nothing();
  std::mutex joining;
  const auto ny = static_cast<std::size_t>(box.n[1]);
  const auto n = static_cast<std::size_t>(box.n[0]);
  crew.share(ny * static_cast<std::size_t>(box.n[2]), 4 * shared_rows(n),
             [&](frame::Crew::Stretch part) {
               Monitors here = nothing();
               for (std::size_t row = part.first; row < part.last; ++row) {
                 const auto j = static_cast<std::int32_t>(row % ny) + 1;
                 const auto k = static_cast<std::int32_t>(row / ny) + 1;
                 for (std::size_t i = 0; i < n; i += kBlock) {
                   const Cells cells{box.at(1, j, k) + i,
                                     std::min(kBlock, n - i),
                                     {static_cast<std::int32_t>(i) + 1, j, k}};
                   take_block(fluid, state, turbulent, cells, here);
                 }
               }
               const std::lock_guard lock(joining);
               join(here, found);
             });
  found.any = found.warmest.cell[0] > 0;
  found.velocity.value = std::sqrt(std::max(found.velocity.value, 0.0));
  found.coldest.value = -found.coldest.value;
  return found;
}

}  // namespace flow
