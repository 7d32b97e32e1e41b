#include "flow/terms/face_rates.hpp"

#include <algorithm>

#include "flow/row_kernel.hpp"
#include "flow/terms/face_waves.hpp"

namespace flow {

namespace {

/// Fields at the lower cells of a row of faces; the upper ones are `s` further.
struct Rows {
  const double* q;
  const double* volume;  ///< open fraction
  const double* next_volume;
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
        lower[i] * (at.q[i] / at.volume[i]) + upper[i] * (at.q[i + s] / at.next_volume[i]);
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

/// Rates of the row of faces at `place`; `f` is their index along an axis across the row.
void set_rates(const Domain& domain, const Field& dqdt, int axis, const State& state,
               const Field& velocity, std::size_t place, std::size_t count, std::int32_t f,
               double* out) {
  const auto a = static_cast<std::size_t>(axis);
  const std::size_t s = dqdt.box().stride(axis);
  const Rows at{dqdt.data() + place,
                domain.openings.gmc_from(place),
                domain.openings.gmc_from(place + s),
                state.p.data() + place,
                state.r[0].data() + place,
                domain.rim.inner_from(a, place),
                s,
                domain.settings.control.gravity[a],
                domain.settings.ambient.ramb};
  if (axis == 0) {
    rates_along(count, at, domain.metrics[0], out);
    damp_waves(domain, state, velocity, {0, place + 1, count - 1, {1, 1, 1}}, out + 1);
  } else {
    rates_across(count, at, domain.metrics[a], f, out);
    if (f > 0) damp_waves(domain, state, velocity, {axis, place, count, {1, f, f}}, out);
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
                   const Velocities& velocities, double dt, SweepRows& rows, State& state) {
  const Box& box = domain.grid.box;
  const auto n = static_cast<std::size_t>(box.n[0]);
  const auto advance = [&](int axis, std::size_t place, std::size_t count, std::int32_t f,
                           double* rate) {
    const auto a = static_cast<std::size_t>(axis);
    set_rates(domain, dqdt[a], axis, state, velocities.face[a], place, count, f, rate);
    add_row(count, dt, rate, state.ru[a].data() + place);
  };
  // All axes row by row: they share density, pressure and volume.
  share_rows(domain.crew, box,
             [&](std::size_t place, std::int32_t j, std::int32_t k, std::size_t hand) {
               double* const rate = rows.of[hand].scratch.data();
               if (box.computed(0)) advance(0, place - 1, n + 1, 0, rate);
               for (const int axis : {1, 2}) {
                 const std::int32_t f = axis == 1 ? j : k;
                 if (!box.computed(axis)) continue;
                 if (f == 1) advance(axis, place - box.stride(axis), n, 0, rate);
                 advance(axis, place, n, f, rate);
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
