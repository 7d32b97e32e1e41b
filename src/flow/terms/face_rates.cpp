#include "flow/terms/face_rates.hpp"

#include <algorithm>
#include <cmath>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

/// Fields at the lower cells of a row of faces; the upper ones are `s` further.
struct Rows {
  const double* q;
  const double* volume;  ///< open fraction
  const double* p;
  const double* r;
  const double* inner;
  std::size_t s;
  double gravity, ramb;
};

template <class Weight>
FLOW_INLINE void rate_row(std::size_t count, const Rows& at, Weight gap, Weight lower, Weight upper,
                          double* __restrict out) {
  const std::size_t s = at.s;
  for (std::size_t i = 0; i < count; ++i) {
    const double mean =
        lower[i] * (at.q[i] / at.volume[i]) + upper[i] * (at.q[i + s] / at.volume[i + s]);
    const double gradient = (at.p[i + s] - at.p[i]) * gap[i];
    const double density = lower[i] * at.r[i] + upper[i] * at.r[i + s];
    const double rate = mean - gradient + (density - at.ramb) * at.gravity;
    out[i] = at.inner[i] > 0.0 ? rate : 0.0;
  }
}

FLOW_CLONES void rates_along(std::size_t count, const Rows& at, const AxisMetric& x, double* out) {
  rate_row(count, at, AxisMetric::from(x.inv_gap, 0), AxisMetric::from(x.lower, 0),
           AxisMetric::from(x.upper, 0), out);
}

FLOW_CLONES void rates_across(std::size_t count, const Rows& at, const AxisMetric& metric,
                              std::int32_t f, double* out) {
  rate_row(count, at, Same{AxisMetric::at(metric.inv_gap, f)},
           Same{AxisMetric::at(metric.lower, f)}, Same{AxisMetric::at(metric.upper, f)}, out);
}

FLOW_CLONES void add_row(std::size_t count, double dt, const double* rate, double* ru) {
  for (std::size_t i = 0; i < count; ++i) ru[i] += dt * rate[i];
}

/// What damps the waves that the means do not see, at the faces of a row.
struct WaveRows {
  const double* u;                      ///< velocity on the faces
  const double* open;                   ///< fraction of each face
  const double* inner;                  ///< the same between two cells of air, else 0
  const double *r, *mu, *mut, *volume;  ///< at the lower cells
  std::size_t s;
  double viscous;  ///< 1, or 0 without viscous terms
};

/// Half of what a face differs by from the mean of those beside it.
FLOW_INLINE double crest(double own, double below, double above, double lower, double upper) {
  return 0.5 * (own - (lower * below + upper * above));
}

/// Weights of the faces of a row; of those before and of those behind them.
template <class Weight>
struct WaveWeights {
  Weight gap, lower, upper, lower_before, upper_before, lower_behind, upper_behind;
};

template <class Weight>
FLOW_INLINE void damp_row(std::size_t count, const WaveRows& at, const WaveWeights<Weight>& w,
                          double* __restrict out) {
  const std::size_t s = at.s;
  const double* const open = at.open - 2 * s;
  const double* const u = at.u - 2 * s;
  const double* const inner_before = at.inner - s;
  const double* const inner_behind = at.inner + s;
  for (std::size_t i = 0; i < count; ++i) {
    const double m0 = open[i] * u[i];
    const double m1 = open[i + s] * u[i + s];
    const double m2 = open[i + 2 * s] * u[i + 2 * s];
    const double m3 = open[i + 3 * s] * u[i + 3 * s];
    const double m4 = open[i + 4 * s] * u[i + 4 * s];
    const double own = crest(m2, m1, m3, w.lower[i], w.upper[i]);
    const double first = crest(m1, m0, m2, w.lower_before[i], w.upper_before[i]);
    const double last = crest(m3, m2, m4, w.lower_behind[i], w.upper_behind[i]);
    const double before = inner_before[i] > 0.0 ? first : own;
    const double behind = inner_behind[i] > 0.0 ? last : own;
    const double wave = crest(own, before, behind, w.lower[i], w.upper[i]);
    const double mu =
        w.lower[i] * (at.mu[i] + at.mut[i]) + w.upper[i] * (at.mu[i + s] + at.mut[i + s]);
    const double r = w.lower[i] * at.r[i] + w.upper[i] * at.r[i + s];
    const double volume = at.volume[i] < at.volume[i + s] ? at.volume[i + s] : at.volume[i];
    const double speed = r * std::fabs(at.u[i]) + at.viscous * mu * w.gap[i];
    const double change = 0.5 * speed * w.gap[i] * wave / volume;
    out[i] -= at.inner[i] > 0.0 ? change : 0.0;
  }
}

FLOW_CLONES void damp_along(std::size_t count, const WaveRows& at, const AxisMetric& x,
                            std::int32_t f, double* out) {
  damp_row<Each>(
      count, at,
      {AxisMetric::from(x.inv_gap, f), AxisMetric::from(x.lower, f), AxisMetric::from(x.upper, f),
       AxisMetric::from(x.lower, f - 1), AxisMetric::from(x.upper, f - 1),
       AxisMetric::from(x.lower, f + 1), AxisMetric::from(x.upper, f + 1)},
      out);
}

FLOW_CLONES void damp_across(std::size_t count, const WaveRows& at, const AxisMetric& metric,
                             std::int32_t f, double* out) {
  const auto value = [f](const std::vector<double>& of, std::int32_t ahead) {
    return Same{AxisMetric::at(of, f + ahead)};
  };
  damp_row<Same>(count, at,
                 {value(metric.inv_gap, 0), value(metric.lower, 0), value(metric.upper, 0),
                  value(metric.lower, -1), value(metric.upper, -1), value(metric.lower, 1),
                  value(metric.upper, 1)},
                 out);
}

/// For the faces from `f` > 0 on along the row (axis 0) or at `f` across it. The first face of a
/// periodic axis is left out: it takes what the last one, which is the same, becomes.
void damp_waves(const Domain& domain, int axis, const State& state, const Field& velocity,
                std::size_t place, std::size_t count, std::int32_t f, double* out) {
  const auto a = static_cast<std::size_t>(axis);
  const WaveRows at{velocity.data() + place,
                    domain.openings.gm[a].data() + place,
                    domain.rim.inner[a].data() + place,
                    state.r[0].data() + place,
                    state.mu.data() + place,
                    state.mut.data() + place,
                    domain.openings.gmc.data() + place,
                    velocity.box().stride(axis),
                    domain.settings.control.ivisc ? 1.0 : 0.0};
  if (axis == 0) {
    damp_along(count, at, domain.metrics[0], f, out);
  } else {
    damp_across(count, at, domain.metrics[a], f, out);
  }
}

/// Rates of the row of faces at `place`; `f` is their index along an axis across the row.
void set_rates(const Domain& domain, const Field& dqdt, int axis, const State& state,
               const Field& velocity, std::size_t place, std::size_t count, std::int32_t f,
               double* out) {
  const auto a = static_cast<std::size_t>(axis);
  const Rows at{dqdt.data() + place,
                domain.openings.gmc.data() + place,
                state.p.data() + place,
                state.r[0].data() + place,
                domain.rim.inner[a].data() + place,
                dqdt.box().stride(axis),
                domain.settings.control.gravity[a],
                domain.settings.ambient.ramb};
  if (axis == 0) {
    rates_along(count, at, domain.metrics[0], out);
    damp_waves(domain, axis, state, velocity, place + 1, count - 1, 1, out + 1);
  } else {
    rates_across(count, at, domain.metrics[a], f, out);
    if (f > 0) damp_waves(domain, axis, state, velocity, place, count, f, out);
  }
}

/// Pressure that a condition holds at a face: the given one, or the column of the ambient air over
/// the first node above it.
double held_pressure(const Domain& domain, const Group& group, int axis, const BoundaryFace& at) {
  if (group.ip != PressureAt::column) return group.pb;
  const auto& ambient = domain.settings.ambient;
  const Vector x = face_centre(domain.grid, axis, at);
  double sum = group.pb;
  for (std::size_t a = 0; a < 3; ++a) {
    sum += (ambient.density - ambient.ramb) * domain.settings.control.gravity[a] *
           (x[a] - domain.grid.axis[a].x(1));
  }
  return sum;
}

/// ubx_bc_grdprs: what moves the flux at a free face of the rim.
double free_rate(const Domain& domain, const Field& dqdt, int axis, const BoundaryFace& at,
                 const State& state) {
  const auto a = static_cast<std::size_t>(axis);
  const Group& group = domain.rim.groups[static_cast<std::size_t>(at.group)];
  const double half = 0.5 * domain.grid.axis[a].dx(at.index[a]);
  const double beyond = held_pressure(domain, group, axis, at);
  const double gradient = at.side * (beyond - state.p[at.cell]) / half;
  return dqdt[at.cell] / domain.openings.gmc[at.cell] - gradient +
         (state.r[0][at.cell] - domain.settings.ambient.ramb) * domain.settings.control.gravity[a];
}

/// Calls `use(face, rate)` for the free faces of the rim.
template <class Use>
void for_free_rates(const Domain& domain, const Field& dqdt, int axis, const State& state,
                    Use&& use) {
  const auto a = static_cast<std::size_t>(axis);
  for (const FreeFace& free : domain.rim.free[a]) {
    const BoundaryFace& at = domain.rim.faces[a][free.number];
    use(at.face, free_rate(domain, dqdt, axis, at, state));
  }
}

}  // namespace

void advance_faces(const Domain& domain, const std::array<Field, 3>& dqdt,
                   const Velocities& velocities, double dt, std::span<double> scratch,
                   State& state) {
  const Box& box = domain.grid.box;
  const auto n = static_cast<std::size_t>(box.n[0]);
  const auto advance = [&](int axis, std::size_t place, std::size_t count, std::int32_t f) {
    const auto a = static_cast<std::size_t>(axis);
    set_rates(domain, dqdt[a], axis, state, velocities.face[a], place, count, f, scratch.data());
    add_row(count, dt, scratch.data(), state.ru[a].data() + place);
  };
  // All axes row by row: they share density, pressure and volume.
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    if (box.computed(0)) advance(0, place - 1, n + 1, 0);
    for (const int axis : {1, 2}) {
      const std::int32_t f = axis == 1 ? j : k;
      if (!box.computed(axis)) continue;
      if (f == 1) advance(axis, place - box.stride(axis), n, 0);
      advance(axis, place, n, f);
    }
  });
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    for_free_rates(domain, dqdt[a], axis, state,
                   [&](std::size_t face, double rate) { state.ru[a][face] += dt * rate; });
  }
}

void set_face_rates(const Domain& domain, const Field& dqdt, const Velocities& velocities, int axis,
                    const State& state, std::span<double> scratch, Field& rate) {
  for_face_rows(
      dqdt.box(), axis, [&](std::size_t place, std::size_t count, std::int32_t j, std::int32_t k) {
        set_rates(domain, dqdt, axis, state, velocities.face[static_cast<std::size_t>(axis)], place,
                  count, axis == 1 ? j : k, scratch.data());
        std::copy_n(scratch.data(), count, rate.data() + place);
      });
  for_free_rates(domain, dqdt, axis, state,
                 [&](std::size_t face, double value) { rate[face] = value; });
}

}  // namespace flow
