#include "flow/output/monitor.hpp"

#include <cmath>
#include <limits>

#include "flow/output/velocity.hpp"

namespace flow {

namespace {

/// The largest of many values, and its place.
struct Largest {
  double value = -std::numeric_limits<double>::infinity();
  std::size_t place = 0;

  void offer(double candidate, std::size_t at) {
    if (candidate > value) {
      value = candidate;
      place = at;
    }
  }
};

struct Extremes {
  Largest speed2, t, minus_t, mut;
  double sum = 0.0;  // of all values: not finite when one is not
};

Extremes extremes_of(const State& state, const Flags& fluid, bool turbulent) {
  Extremes found;
  const Box& box = fluid.box();
  for_rows(box, [&](std::size_t row, std::int32_t, std::int32_t) {
    const std::size_t behind = row + static_cast<std::size_t>(box.n[0]);
    for (std::size_t at = row; at < behind; ++at) {
      if (fluid[at] <= 0) continue;
      const Vector u = velocity_at(state, at);
      const double speed2 = u[0] * u[0] + u[1] * u[1] + u[2] * u[2];
      found.speed2.offer(speed2, at);
      found.t.offer(state.t[at], at);
      found.minus_t.offer(-state.t[at], at);
      if (turbulent) found.mut.offer(state.mut[at], at);
      found.sum += speed2 + state.t[at] + state.p[at];
    }
  });
  return found;
}

/// The cell of a place in a field.
Triple cell_of(const Box& box, std::size_t place) {
  const auto index = [](std::size_t position) {
    return static_cast<std::int32_t>(position) - kHalo + 1;
  };
  const std::size_t row = place / box.extent(0);
  return {index(place % box.extent(0)), index(row % box.extent(1)), index(row / box.extent(1))};
}

}  // namespace

void print_monitor(frame::Log& log, const State& state, const Flags& fluid, Turbulence model) {
  const Extremes found = extremes_of(state, fluid, model != Turbulence::none);
  if (!std::isfinite(found.sum)) {
    log.fail("### error : the flow has values that are not finite",
             frame::items("iter,time,dt =", state.iter, state.time, state.dt));
  }
  if (!std::isfinite(found.t.value)) return;  // no cell is fluid
  const auto print = [&](std::string_view label, std::size_t place, auto... values) {
    const Triple cell = cell_of(fluid.box(), place);
    log.line(label, values..., cell[0], cell[1], cell[2]);
  };
  print("max. vel.  =", found.speed2.place, std::sqrt(found.speed2.value));
  print("max. temp. =", found.t.place, found.t.value);
  print("min. temp. =", found.minus_t.place, -found.minus_t.value);
  if (model == Turbulence::none) return;
  print("max. mut   =", found.mut.place, found.mut.value);
  if (model != Turbulence::k_epsilon) return;
  const std::size_t at = found.mut.place;
  print("     k & e =", at, state.ak[0][at], state.ak[1][at]);
}

}  // namespace flow
