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
  const double *face, *open;
  const double *inner_before, *inner, *inner_next;
  const double *r, *mu, *mut, *volume;  ///< at the cells below
  std::size_t s;
  double viscous;
  /// Weights of the means on the faces before, here and next.
  std::array<Weight, 3> lower, upper;
  std::array<Weight, 2> width;  ///< inverse, of the cells below and above
  Weight gap;                   ///< inverse

  /// Volume that passes a face, by its area; all that is not closed is open whole unless `partly`.
  template <bool partly>
  FLOW_INLINE double passing(std::size_t f) const {
    return partly ? open[f] * face[f] : face[f];
  }
  /// What the means of the cells do not hold of it.
  template <std::size_t at>
  FLOW_INLINE double unseen(std::size_t i, double before, double own, double behind) const {
    return 0.5 * (own - (lower[at][i] * before + upper[at][i] * behind));
  }
  /// Exchange of the faces on both sides of a cell; `speeds` is the sum of theirs.
  FLOW_INLINE double exchange(std::size_t c, double inv_width, double speeds) const {
    return viscous * (mu[c] + mut[c]) * inv_width + 0.5 * kAdvectivePart * r[c] * speeds;
  }
};

/// The difference of two values of different sign that a wave of equal ones would have; else 0.
FLOW_INLINE double alternation(double before, double behind) {
  const double first = std::fabs(before);
  const double second = std::fabs(behind);
  const double size = first < second ? first : second;
  return size * (std::copysign(1.0, behind) - std::copysign(1.0, before));
}

template <bool partly, class Weight>
FLOW_INLINE void damp_row(std::size_t count, const Rows<Weight>& at, double* __restrict rate) {
  const std::size_t s = at.s;
  for (std::size_t i = 0; i < count; ++i) {
    const double m0 = at.template passing<partly>(i - 2 * s);
    const double m1 = at.template passing<partly>(i - s);
    const double m2 = at.template passing<partly>(i);
    const double m3 = at.template passing<partly>(i + s);
    const double m4 = at.template passing<partly>(i + 2 * s);
    const double before = at.template unseen<0>(i, m0, m1, m2);
    const double own = at.template unseen<1>(i, m1, m2, m3);
    const double behind = at.template unseen<2>(i, m2, m3, m4);
    const double below =
        at.exchange(i, at.width[0][i], std::fabs(at.face[i - s]) + std::fabs(at.face[i])) *
        alternation(before, own);
    const double above =
        at.exchange(i + s, at.width[1][i], std::fabs(at.face[i]) + std::fabs(at.face[i + s])) *
        alternation(own, behind);
    const double in = at.inner_before[i] > 0.0 ? below : 0.0;
    const double out = at.inner_next[i] > 0.0 ? above : 0.0;
    double change = (out - in) * at.gap[i];
    if constexpr (partly) {
      change /= at.volume[i] < at.volume[i + s] ? at.volume[i + s] : at.volume[i];
    }
    rate[i] += at.inner[i] > 0.0 ? change : 0.0;
  }
}

/// `value(row of a metric, ahead)` gives the weights of the faces or cells that many on.
template <class Value>
auto rows_of(const Domain& domain, const State& state, const Field& velocity, const FaceRow& row,
             Value&& value) {
  const auto a = static_cast<std::size_t>(row.axis);
  const AxisMetric& metric = domain.metrics[a];
  const std::size_t s = velocity.box().stride(row.axis);
  const auto of = [&row](const Field& field) { return field.data() + row.place; };
  using Weight = decltype(value(metric.lower, 0));
  return Rows<Weight>{of(velocity),
                      of(domain.openings.gm[a]),
                      domain.rim.inner_from(a, row.place - s),
                      domain.rim.inner_from(a, row.place),
                      domain.rim.inner_from(a, row.place + s),
                      of(state.r[0]),
                      of(state.mu),
                      of(state.mut),
                      of(domain.openings.gmc),
                      s,
                      domain.settings.control.ivisc ? kViscousPart : 0.0,
                      {value(metric.lower, -1), value(metric.lower, 0), value(metric.lower, 1)},
                      {value(metric.upper, -1), value(metric.upper, 0), value(metric.upper, 1)},
                      {value(metric.inv_width, 0), value(metric.inv_width, 1)},
                      value(metric.inv_gap, 0)};
}

FLOW_CLONES void damp_along(std::size_t count, const Rows<Each>& at, double* rate) {
  damp_row<false>(count, at, rate);
}
FLOW_CLONES void damp_along_partly(std::size_t count, const Rows<Each>& at, double* rate) {
  damp_row<true>(count, at, rate);
}

FLOW_CLONES void damp_across(std::size_t count, const Rows<Same>& at, double* rate) {
  damp_row<false>(count, at, rate);
}
FLOW_CLONES void damp_across_partly(std::size_t count, const Rows<Same>& at, double* rate) {
  damp_row<true>(count, at, rate);
}

}  // namespace

void damp_waves(const Domain& domain, const State& state, const Field& velocity, const FaceRow& row,
                double* rate) {
  const std::int32_t f = row.index[static_cast<std::size_t>(row.axis)];
  const bool partly = domain.rim.partly[static_cast<std::size_t>(row.axis)];
  if (row.axis == 0) {
    const auto each = [f](const std::vector<double>& of, std::int32_t ahead) {
      return AxisMetric::from(of, f + ahead);
    };
    (partly ? damp_along_partly : damp_along)(row.count,
                                              rows_of(domain, state, velocity, row, each), rate);
  } else {
    const auto same = [f](const std::vector<double>& of, std::int32_t ahead) {
      return Same{AxisMetric::at(of, f + ahead)};
    };
    (partly ? damp_across_partly : damp_across)(row.count,
                                                rows_of(domain, state, velocity, row, same), rate);
  }
}

}  // namespace flow
