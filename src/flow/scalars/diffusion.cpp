#include "flow/row_kernel.hpp"
#include "flow/scalars/transport.hpp"

namespace flow {

namespace {

/// Fields at the lower cells of a row of faces; the upper ones are `s` further.
struct Rows {
  const double* q;
  const double* molecular;
  const double* mut;
  const double* capacity;
  const double* inner;
  std::size_t s;
  double part, turbulent;
};

FLOW_INLINE double coefficient(const Rows& at, std::size_t i) {
  return at.part * at.molecular[i] + at.turbulent * at.mut[i];
}

template <bool kWithCapacity, class Weight>
FLOW_INLINE void diffuse_row(std::size_t count, const Rows& at, Weight gap, Weight lower,
                             Weight upper, double* __restrict flux) {
  const std::size_t s = at.s;
  for (std::size_t i = 0; i < count; ++i) {
    double here = coefficient(at, i);
    double next = coefficient(at, i + s);
    if constexpr (kWithCapacity) {
      here *= at.capacity[i];
      next *= at.capacity[i + s];
    }
    const double mean = at.inner[i] * (lower[i] * here + upper[i] * next);
    const double diffused = mean * ((at.q[i + s] - at.q[i]) * gap[i]);
    flux[i] = kWithCapacity ? -diffused : flux[i] - diffused;
  }
}

template <bool kWithCapacity>
FLOW_INLINE void diffuse(std::size_t count, const Rows& at, const AxisMetric& metric,
                         const FaceRow& row, double* flux) {
  if (row.axis == 0) {
    diffuse_row<kWithCapacity, Each>(count, at, AxisMetric::from(metric.inv_gap, 0),
                                     AxisMetric::from(metric.lower, 0),
                                     AxisMetric::from(metric.upper, 0), flux);
  } else {
    const std::int32_t f = row.index[static_cast<std::size_t>(row.axis)];
    diffuse_row<kWithCapacity>(count, at, Same{AxisMetric::at(metric.inv_gap, f)},
                               Same{AxisMetric::at(metric.lower, f)},
                               Same{AxisMetric::at(metric.upper, f)}, flux);
  }
}

FLOW_CLONES void diffuse_plain(const Rows& at, const AxisMetric& metric, const FaceRow& row,
                               double* flux) {
  diffuse<false>(row.count, at, metric, row, flux);
}

FLOW_CLONES void diffuse_heat(const Rows& at, const AxisMetric& metric, const FaceRow& row,
                              double* flux) {
  diffuse<true>(row.count, at, metric, row, flux);
}

}  // namespace

void flw_cldif0(const Metrics& metrics, const Rim& rim, const Field& mut, const Diffusivity& by,
                const Field& q, const FaceRow& row, double* flux) {
  const auto a = static_cast<std::size_t>(row.axis);
  const Rows at{q.data() + row.place,
                by.molecular->data() + row.place,
                mut.data() + row.place,
                by.capacity == nullptr ? nullptr : by.capacity->data() + row.place,
                rim.inner_from(a, row.place),
                q.box().stride(row.axis),
                by.part,
                by.turbulent};
  if (by.capacity == nullptr) {
    diffuse_plain(at, metrics[a], row, flux);
  } else {
    diffuse_heat(at, metrics[a], row, flux);
  }
}

}  // namespace flow
