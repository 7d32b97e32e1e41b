#include "flow/monitors.hpp"

#include <cmath>
#include <limits>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

constexpr double kNone = -std::numeric_limits<double>::infinity();

/// The square of the speed at the centres of a row.
FLOW_CLONES void add_square(std::size_t count, const double* ru, std::size_t s, const double* r,
                            double* square) {
  for (std::size_t i = 0; i < count; ++i) {
    const double u = 0.5 * (ru[i - s] + ru[i]) / r[i];
    square[i] += u * u;
  }
}

/// The largest value of the fluid cells of a row, by eight running ones.
FLOW_CLONES double largest(std::size_t count, const std::int32_t* fluid, const double* value) {
  constexpr std::size_t kLanes = 8;
  double best[kLanes];
  for (double& lane : best) lane = kNone;
  std::size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l) {
      const double here = fluid[i + l] > 0 ? value[i + l] : kNone;
      best[l] = best[l] < here ? here : best[l];
    }
  }
  double all = kNone;
  for (; i < count; ++i) {
    if (fluid[i] > 0 && all < value[i]) all = value[i];
  }
  for (const double lane : best) all = all < lane ? lane : all;
  return all;
}

/// The largest of `row(place, j, k)`'s values over the fluid cells, and its cell.
template <class Row>
Extreme search(const Flags& fluid, Row&& row) {
  const Box& box = fluid.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  Extreme best{kNone, {}};
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    const double* const value = row(place);
    const double here = largest(n, fluid.data() + place, value);
    if (!(here > best.value)) return;
    std::int32_t i = 1;
    while (fluid[place + static_cast<std::size_t>(i - 1)] <= 0 || value[i - 1] != here) ++i;
    best = {here, {i, j, k}};
  });
  if (best.value == kNone) best.value = 0.0;  // no cell of fluid
  return best;
}

}  // namespace

Monitors take_monitors(const Flags& fluid, const State& state, std::span<double> scratch) {
  const Box& box = fluid.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  double* const row = scratch.data();
  Monitors monitors;
  monitors.velocity = search(fluid, [&](std::size_t place) {
    for (std::size_t i = 0; i < n; ++i) row[i] = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
      if (!box.computed(axis)) continue;
      add_square(n, state.ru[static_cast<std::size_t>(axis)].data() + place, box.stride(axis),
                 state.r[0].data() + place, row);
    }
    return row;
  });
  monitors.velocity.value = std::sqrt(monitors.velocity.value);
  monitors.warmest = search(fluid, [&](std::size_t place) { return state.t.data() + place; });
  monitors.coldest = search(fluid, [&](std::size_t place) {
    for (std::size_t i = 0; i < n; ++i) row[i] = -state.t[place + i];
    return row;
  });
  monitors.coldest.value = -monitors.coldest.value;
  monitors.mut = search(fluid, [&](std::size_t place) { return state.mut.data() + place; });
  if (!state.ak[0].empty()) {
    const Triple& c = monitors.mut.cell;
    monitors.k = state.ak[0](c[0], c[1], c[2]);
    monitors.eps = state.ak[1](c[0], c[1], c[2]);
  }
  return monitors;
}

}  // namespace flow
