#include "flow/terms/face_waves.hpp"

#include <cmath>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

constexpr double kViscousPart = 0.5;
constexpr double kAdvectivePart = 0.125;

/// A row of faces; cells and faces further along the axis are `s` away.
template <class Weight>
struct Rows {
  const double *cell, *face, *r, *mu, *mut, *inner;
  std::size_t s;
  double viscous;
  /// Weights of the means on the faces before, here and next.
  std::array<Weight, 3> lower, upper;
  std::array<Weight, 2> width;  ///< inverse, of the cells below and above
  Weight gap;                   ///< inverse

  /// What the cells do not hold of a face; `step` is -1, 0 or 1 faces on.
  template <int step>
  FLOW_INLINE double unseen(std::size_t i) const {
    constexpr auto at = static_cast<std::size_t>(step + 1);
    const std::size_t f = step < 0 ? i - s : step > 0 ? i + s : i;
    return face[f] - (lower[at][i] * cell[f] + upper[at][i] * cell[f + s]);
  }
  /// Exchange of the faces on both sides of a cell.
  FLOW_INLINE double exchange(std::size_t c, double inv_width) const {
    return viscous * (mu[c] + mut[c]) * inv_width + kAdvectivePart * r[c] * std::fabs(cell[c]);
  }
};

/// The difference of two values of different sign that a wave of equal ones would have; else 0.
FLOW_INLINE double alternation(double before, double behind) {
  const double first = std::fabs(before);
  const double second = std::fabs(behind);
  const double size = first < second ? first : second;
  return size * (std::copysign(1.0, behind) - std::copysign(1.0, before));
}

template <class Weight>
FLOW_INLINE void damp_row(std::size_t count, const Rows<Weight>& at, double* __restrict rate) {
  const std::size_t s = at.s;
  for (std::size_t i = 0; i < count; ++i) {
    const double here = at.template unseen<0>(i);
    const double below =
        at.exchange(i, at.width[0][i]) * alternation(at.template unseen<-1>(i), here);
    const double above =
        at.exchange(i + s, at.width[1][i]) * alternation(here, at.template unseen<1>(i));
    const double in = at.inner[i - s] > 0.0 ? below : 0.0;
    const double out = at.inner[i + s] > 0.0 ? above : 0.0;
    rate[i] += at.inner[i] > 0.0 ? (out - in) * at.gap[i] : 0.0;
  }
}

/// `value(row of a metric, ahead)` gives the weights of the faces or cells that many on.
template <class Value>
auto rows_of(const Domain& domain, const State& state, const Velocities& velocities,
             const FaceRow& row, Value&& value) {
  const auto a = static_cast<std::size_t>(row.axis);
  const AxisMetric& metric = domain.metrics[a];
  using Weight = decltype(value(metric.lower, 0));
  return Rows<Weight>{velocities.cell[a].data() + row.place,
                      velocities.face[a].data() + row.place,
                      state.r[0].data() + row.place,
                      state.mu.data() + row.place,
                      state.mut.data() + row.place,
                      domain.rim.inner[a].data() + row.place,
                      state.mu.box().stride(row.axis),
                      domain.settings.control.ivisc ? kViscousPart : 0.0,
                      {value(metric.lower, -1), value(metric.lower, 0), value(metric.lower, 1)},
                      {value(metric.upper, -1), value(metric.upper, 0), value(metric.upper, 1)},
                      {value(metric.inv_width, 0), value(metric.inv_width, 1)},
                      value(metric.inv_gap, 0)};
}

FLOW_CLONES void damp_along(std::size_t count, const Rows<Each>& at, double* rate) {
  damp_row(count, at, rate);
}

FLOW_CLONES void damp_across(std::size_t count, const Rows<Same>& at, double* rate) {
  damp_row(count, at, rate);
}

}  // namespace

void damp_waves(const Domain& domain, const State& state, const Velocities& velocities,
                const FaceRow& row, double* rate) {
  const std::int32_t f = row.index[static_cast<std::size_t>(row.axis)];
  if (row.axis == 0) {
    const auto each = [f](const std::vector<double>& of, std::int32_t ahead) {
      return AxisMetric::from(of, f + ahead);
    };
    damp_along(row.count, rows_of(domain, state, velocities, row, each), rate);
  } else {
    const auto same = [f](const std::vector<double>& of, std::int32_t ahead) {
      return Same{AxisMetric::at(of, f + ahead)};
    };
    damp_across(row.count, rows_of(domain, state, velocities, row, same), rate);
  }
}

}  // namespace flow
