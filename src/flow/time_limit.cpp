#include "flow/time_limit.hpp"

#include <algorithm>
#include <cmath>

#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// The upper faces of a row of cells along one axis; the lower ones are `s` before them.
struct Faces {
  const double* ru;
  const double* open;
  const double* open_below;
  std::size_t s;
};

FLOW_INLINE double larger(double a, double b) { return a < b ? b : a; }

/// Adds one axis. `diffusion` holds 4 (mu + mut), or 0.
template <class Row>
FLOW_INLINE void add_rate(std::size_t count, const Faces& at, const double* diffusion,
                          Row inv_width, Row narrow, double* __restrict rate) {
  for (std::size_t i = 0; i < count; ++i) {
    const double below = std::fabs(at.ru[i - at.s] * at.open_below[i]);
    const double above = std::fabs(at.ru[i] * at.open[i]);
    const double open = larger(at.open_below[i], at.open[i]);
    rate[i] +=
        larger(below, above) * inv_width[i] + diffusion[i] * (open / (narrow[i] * narrow[i]));
  }
}

FLOW_CLONES void add_along(std::size_t count, const Faces& at, const double* diffusion,
                           const AxisMetric& x, double* rate) {
  add_rate(count, at, diffusion, AxisMetric::from(x.inv_width, 1), AxisMetric::from(x.narrow, 1),
           rate);
}

FLOW_CLONES void add_across(std::size_t count, const Faces& at, const double* diffusion,
                            const AxisMetric& metric, std::int32_t index, double* rate) {
  add_rate(count, at, diffusion, Same{AxisMetric::at(metric.inv_width, index)},
           Same{AxisMetric::at(metric.narrow, index)}, rate);
}

FLOW_CLONES void set_diffusion(std::size_t count, double factor, const double* mu,
                               const double* mut, double* diffusion, double* rate) {
  for (std::size_t i = 0; i < count; ++i) {
    diffusion[i] = factor * (mu[i] + mut[i]);
    rate[i] = 0.0;
  }
}

FLOW_CLONES void keep_largest(std::size_t count, const std::int32_t* fluid, const double* rate,
                              const double* r, double* best) {
  for (std::size_t i = 0; i < count; ++i) {
    best[i] = larger(best[i], fluid[i] > 0 ? rate[i] / r[i] : 0.0);
  }
}

}  // namespace

double flw_cldelt(frame::Crew& crew, const Control& control, const Metrics& metrics,
                  const Openings& openings, const State& state, std::span<double> scratch) {
  if (control.implicit()) return std::min(control.momentum.dtmax, control.scalar.dtmax);
  const Box& box = state.mu.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  const double factor = control.ivisc || control.idift || control.idifk ? 4.0 : 0.0;
  // The rows of a hand: rate, diffusion, and the largest so far.
  const auto row_of = [&](std::size_t hand, std::size_t row) {
    return scratch.data() + (3 * hand + row) * n;
  };
  for (std::size_t hand = 0; hand < crew.hands(); ++hand) std::fill_n(row_of(hand, 2), n, 1e-20);
  share_rows(crew, box, [&](std::size_t place, std::int32_t j, std::int32_t k, std::size_t hand) {
    double* const rate = row_of(hand, 0);
    double* const diffusion = row_of(hand, 1);
    set_diffusion(n, factor, state.mu.data() + place, state.mut.data() + place, diffusion, rate);
    for (int axis = 0; axis < 3; ++axis) {
      if (!box.computed(axis)) continue;
      const auto a = static_cast<std::size_t>(axis);
      const std::size_t s = box.stride(axis);
      const Faces at{state.ru[a].data() + place, openings.gm_from(a, place),
                     openings.gm_from(a, place - s), s};
      if (axis == 0) {
        add_along(n, at, diffusion, metrics[0], rate);
      } else {
        add_across(n, at, diffusion, metrics[a], axis == 1 ? j : k, rate);
      }
    }
    keep_largest(n, openings.fluid_from(place), rate, state.r[0].data() + place, row_of(hand, 2));
  });
  double largest = 0.0;
  for (std::size_t hand = 0; hand < crew.hands(); ++hand) {
    largest = std::max(largest, *std::max_element(row_of(hand, 2), row_of(hand, 2) + n));
  }
  return std::min(control.smaller.dtmax, control.smaller.dtsafe / largest);
}

}  // namespace flow
