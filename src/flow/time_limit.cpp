#include "flow/time_limit.hpp"

#include <algorithm>
#include <cmath>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

/// The upper faces of a row of cells along one axis; the lower ones are `s` before them.
struct Faces {
  const double* ru;
  const double* open;
  std::size_t s;
};

FLOW_INLINE double larger(double a, double b) { return a < b ? b : a; }

/// Adds one axis. `diffusion` holds 4 (mu + mut), or 0.
template <class Row>
FLOW_INLINE void add_rate(std::size_t count, const Faces& at, const double* diffusion,
                          Row inv_width, Row narrow, double* __restrict rate) {
  for (std::size_t i = 0; i < count; ++i) {
    const double below = std::fabs(at.ru[i - at.s] * at.open[i - at.s]);
    const double above = std::fabs(at.ru[i] * at.open[i]);
    const double open = larger(at.open[i - at.s], at.open[i]);
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

/// Leaves hold the air back at the rate adrg |u|; `rate` gains it times the density. `s` are the
/// distances of the lower faces.
FLOW_CLONES void add_drag(std::size_t count, const std::array<const double*, 3>& ru,
                          const std::array<std::size_t, 3>& s, const double* adrg, double* rate) {
  for (std::size_t i = 0; i < count; ++i) {
    double square = 0.0;
    for (std::size_t a = 0; a < 3; ++a) {
      const double flux = larger(std::fabs(ru[a][i - s[a]]), std::fabs(ru[a][i]));
      square += flux * flux;
    }
    rate[i] += adrg[i] * std::sqrt(square);
  }
}

/// What passes the faces of a cell passes its open volume.
FLOW_CLONES void keep_largest(std::size_t count, const std::int32_t* fluid, const double* rate,
                              const double* r, const double* volume, double* best) {
  for (std::size_t i = 0; i < count; ++i) {
    best[i] = larger(best[i], fluid[i] > 0 ? rate[i] / (r[i] * volume[i]) : 0.0);
  }
}

}  // namespace

double flw_cldelt(const Control& control, const Metrics& metrics, const Openings& openings,
                  const Urban& urban, const State& state, std::span<double> scratch) {
  if (control.implicit()) return std::min(control.momentum.dtmax, control.scalar.dtmax);
  const Box& box = state.mu.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  const double factor = control.ivisc || control.idift || control.idifk ? 4.0 : 0.0;
  double* const rate = scratch.data();
  double* const diffusion = rate + n;
  double* const best = diffusion + n;
  std::fill_n(best, n, 1e-20);
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    set_diffusion(n, factor, state.mu.data() + place, state.mut.data() + place, diffusion, rate);
    for (int axis = 0; axis < 3; ++axis) {
      if (!box.computed(axis)) continue;
      const auto a = static_cast<std::size_t>(axis);
      const Faces at{state.ru[a].data() + place, openings.gm[a].data() + place, box.stride(axis)};
      if (axis == 0) {
        add_along(n, at, diffusion, metrics[0], rate);
      } else {
        add_across(n, at, diffusion, metrics[a], axis == 1 ? j : k, rate);
      }
    }
    if (!urban.adrg.empty()) {
      add_drag(n, {&state.ru[0][place], &state.ru[1][place], &state.ru[2][place]},
               {box.stride(0), box.stride(1), box.stride(2)}, &urban.adrg[place], rate);
    }
    keep_largest(n, openings.fluid.data() + place, rate, state.r[0].data() + place,
                 openings.gmc.data() + place, best);
  });
  const double largest = *std::max_element(best, best + n);
  return std::min(control.smaller.dtmax, control.smaller.dtsafe / largest);
}

}  // namespace flow
