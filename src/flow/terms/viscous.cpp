#include "flow/terms/viscous.hpp"

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

/// Viscosity on the faces of a row, by open fraction. `s` is the distance of the upper cells.
template <class Weight>
FLOW_INLINE void viscosity_row(std::size_t count, const double* mu, const double* mut,
                               std::size_t s, Weight lower, Weight upper, const double* inner,
                               double* __restrict out) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = inner[i] * (lower[i] * (mu[i] + mut[i]) + upper[i] * (mu[i + s] + mut[i + s]));
  }
}

/// Normal stress, with the sign of a flux: 2 du/dx, once from the cells, once from the faces.
template <class Weight>
FLOW_INLINE void normal_row(std::size_t count, const double* viscosity, const double* u,
                            const double* face, std::size_t s, Weight gap, Weight lower,
                            Weight upper, Weight width, Weight next_width, double* __restrict out) {
  const double* const before = face - s;
  const double* const next = face + s;
  for (std::size_t i = 0; i < count; ++i) {
    const double mean = lower[i] * ((face[i] - before[i]) * width[i]) +
                        upper[i] * ((next[i] - face[i]) * next_width[i]);
    out[i] = -viscosity[i] * ((u[i + s] - u[i]) * gap[i] + mean);
  }
}

/// Shear stress, with the sign of a flux: the gradient of u across the face, and that of the
/// velocity through the face along the direction of u, whose neighbours are `t` away.
template <class Gap, class Span>
FLOW_INLINE void shear_row(std::size_t count, const double* viscosity, const double* u,
                           std::size_t s, const double* face, std::size_t t, Gap gap, Span span,
                           double* __restrict out) {
  const double* const before = face - t;
  const double* const next = face + t;
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = -viscosity[i] * ((u[i + s] - u[i]) * gap[i] + (next[i] - before[i]) * span[i]);
  }
}

/// What a row of faces is formed from.
struct Source {
  const Metrics& metrics;
  const Rim& rim;
  const State& state;
  const Velocities& velocities;
  double* viscosity;  ///< a row of scratch
};

FLOW_CLONES void stress_along(const Source& from, const FaceRow& row, std::size_t component,
                              double* out) {
  const AxisMetric& x = from.metrics[0];
  const double* const u = from.velocities.cell[component].data() + row.place;
  const double* const face = from.velocities.face[0].data() + row.place;
  const Each gap = AxisMetric::from(x.inv_gap, 0);
  if (component == 0) {
    normal_row(row.count, from.viscosity, u, face, 1, gap, AxisMetric::from(x.lower, 0),
               AxisMetric::from(x.upper, 0), AxisMetric::from(x.inv_width, 0),
               AxisMetric::from(x.inv_width, 1), out);
  } else {
    const double span = AxisMetric::at(from.metrics[component].inv_span, row.index[component]);
    const std::size_t t = from.state.mu.box().stride(static_cast<int>(component));
    shear_row(row.count, from.viscosity, u, 1, face, t, gap, Same{span}, out);
  }
}

FLOW_CLONES void stress_across(const Source& from, const FaceRow& row, std::size_t component,
                               double* out) {
  const auto a = static_cast<std::size_t>(row.axis);
  const AxisMetric& metric = from.metrics[a];
  const std::int32_t f = row.index[a];
  const Box& box = from.state.mu.box();
  const std::size_t s = box.stride(row.axis);
  const double* const u = from.velocities.cell[component].data() + row.place;
  const double* const face = from.velocities.face[a].data() + row.place;
  const auto value = [f](const std::vector<double>& of, std::int32_t ahead = 0) {
    return Same{AxisMetric::at(of, f + ahead)};
  };
  const Same gap = value(metric.inv_gap);
  if (component == a) {
    normal_row(row.count, from.viscosity, u, face, s, gap, value(metric.lower), value(metric.upper),
               value(metric.inv_width), value(metric.inv_width, 1), out);
  } else if (component == 0) {
    const Each span = AxisMetric::from(from.metrics[0].inv_span, 1);
    shear_row(row.count, from.viscosity, u, s, face, 1, gap, span, out);
  } else {
    const Same span{AxisMetric::at(from.metrics[component].inv_span, row.index[component])};
    const std::size_t t = box.stride(static_cast<int>(component));
    shear_row(row.count, from.viscosity, u, s, face, t, gap, span, out);
  }
}

FLOW_CLONES void set_viscosity(const Source& from, const FaceRow& row) {
  const auto a = static_cast<std::size_t>(row.axis);
  const AxisMetric& metric = from.metrics[a];
  const std::int32_t f = row.index[a];
  const double* const mu = from.state.mu.data() + row.place;
  const double* const mut = from.state.mut.data() + row.place;
  const double* const inner = from.rim.inner_from(a, row.place);
  if (row.axis == 0) {
    viscosity_row(row.count, mu, mut, 1, AxisMetric::from(metric.lower, 0),
                  AxisMetric::from(metric.upper, 0), inner, from.viscosity);
  } else {
    viscosity_row(row.count, mu, mut, from.state.mu.box().stride(row.axis),
                  Same{AxisMetric::at(metric.lower, f)}, Same{AxisMetric::at(metric.upper, f)},
                  inner, from.viscosity);
  }
}

}  // namespace

void flw_cldifv(frame::Crew& crew, const Metrics& metrics, const Rim& rim, const State& state,
                const Velocities& velocities, const ShearCoefficients& shear, SweepRows& rows,
                std::array<Field, 3>& dqdt, RowStart begin) {
  const Box& box = state.mu.box();
  std::array<std::size_t, 3> component{};
  std::array<Field*, 3> tendency{};
  std::size_t count = 0;
  for (std::size_t b = 0; b < 3; ++b) {
    if (!box.computed(static_cast<int>(b))) continue;
    component[count] = b;
    tendency[count++] = &dqdt[b];
  }
  subtract_divergence(crew, box, metrics, std::span(tendency).first(count), rows, begin,
                      [&](const FaceRow& row, const FluxRows& out, double* viscosity) {
                        const Source from{metrics, rim, state, velocities, viscosity};
                        set_viscosity(from, row);
                        for (std::size_t v = 0; v < count; ++v) {
                          if (row.axis == 0) {
                            stress_along(from, row, component[v], out[v]);
                          } else {
                            stress_across(from, row, component[v], out[v]);
                          }
                        }
                      });
  correct_standing_faces(crew, metrics, rim, state, velocities, shear, dqdt);
  add_rim_stress(crew, metrics, rim, state, velocities, shear, dqdt);
}

}  // namespace flow
