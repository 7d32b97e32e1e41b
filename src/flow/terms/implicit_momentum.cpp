#include "flow/terms/implicit_momentum.hpp"

#include <algorithm>

#include "flow/terms/face_rates.hpp"
#include "flow/terms/seven_rows.hpp"

namespace flow {

namespace {

/// Rows of one component.
struct RowsOf {
  const Domain& domain;
  const State& state;
  double dt;
  int axis;  ///< of the component
  SevenPoint& rows;
};

/// The unknown is r u: a neighbour's velocity is its unknown over its density.
FaceRates rates_of(const RowsOf& of, const InnerFace& face) {
  const State& state = of.state;
  const AxisMetric& metric = of.domain.metrics[static_cast<std::size_t>(face.axis)];
  const double mean =
      face_mean(of.domain, face, [&](std::size_t c) { return state.mu[c] + state.mut[c]; });
  // The transposed part doubles the normal stress.
  const double part = !of.domain.settings.control.ivisc ? 0.0 : face.axis == of.axis ? 2.0 : 1.0;
  const double viscosity = part * face.open * mean * AxisMetric::at(metric.inv_gap, face.index);
  const double forward = std::max(face.mass, 0.0) + viscosity;    // on the lower cell
  const double backward = std::max(-face.mass, 0.0) + viscosity;  // on the upper cell
  const double lower = state.r[0][face.lower];
  const double upper = state.r[0][face.upper];
  return {forward / lower, -backward / upper, backward / upper, -forward / lower};
}

/// Walls hold the change of the momentum back, what leaves carries it off.
void add_rim(const RowsOf& of, const ShearCoefficients& shear, int across) {
  const auto a = static_cast<std::size_t>(across);
  for (std::size_t f = 0; f < of.domain.rim.faces[a].size(); ++f) {
    const BoundaryFace& at = of.domain.rim.faces[a][f];
    const auto& coefficient = shear[a][f];
    const double h =
        of.domain.rim.wetted[a][f] * (across == of.axis ? coefficient.normal : coefficient.along);
    const double leaving = at.side * of.domain.rim.open[a][f] * of.state.ru[a][at.face];
    of.rows.diagonal[at.cell] += row_scale(of.domain, of.dt, across, at.cell, at.index[a]) *
                                 (h + std::max(leaving, 0.0)) / of.state.r[0][at.cell];
  }
}

void set_rows(const RowsOf& of, const ShearCoefficients& shear) {
  std::ranges::fill(of.rows.diagonal.all(), 1.0);
  add_inner_faces(of.domain, of.state.ru, of.dt, of.rows,
                  [&](const InnerFace& face) { return rates_of(of, face); });
  for (int across = 0; across < 3; ++across) {
    if (of.domain.grid.box.computed(across)) add_rim(of, shear, across);
  }
}

/// The right side: dt times the rate of a cell's momentum, the mean of its two faces.
void set_right_side(const Domain& domain, int axis, double dt, const Field& rate, Field& q) {
  const std::size_t s = q.box().stride(axis);
  const auto n = static_cast<std::size_t>(q.box().n[0]);
  for_rows(q.box(), [&](std::size_t place, auto, auto) {
    for (std::size_t c = place; c < place + n; ++c) {
      q[c] = domain.openings.fluid[c] > 0 ? dt * (0.5 * (rate[c - s] + rate[c])) : 0.0;
    }
  });
}

/// What the change of the fluxes of one axis is made of; `solved` is that of the cells' momentum.
struct Change {
  const Domain& domain;
  const Field& rate;
  const Field& diagonal;
  const Field& solved;
  int axis;
  double dt;

  /// Rate at the centre of the cell below face f.
  [[nodiscard]] double centre(std::size_t f) const {
    return 0.5 * (rate[f - rate.box().stride(axis)] + rate[f]);
  }
  /// By the parts of the cells below and above a face; `above` of f+s.
  [[nodiscard]] double of(std::size_t f, std::size_t above, double lower, double upper) const {
    const double lost = rate[f] - (lower * centre(f) + upper * centre(above));
    const double held = lower * diagonal[f] + upper * diagonal[above];
    return lower * solved[f] + upper * solved[above] + dt * lost / held;
  }
};

void set_change(const Change& from, Field& change) {
  const auto a = static_cast<std::size_t>(from.axis);
  const AxisMetric& metric = from.domain.metrics[a];
  const std::size_t s = change.box().stride(from.axis);
  const Field& inner = from.domain.rim.inner[a];
  for_face_rows(change.box(), from.axis,
                [&](std::size_t place, std::size_t count, std::int32_t j, std::int32_t k) {
                  for (std::size_t c = place; c < place + count; ++c) {
                    const std::int32_t f = from.axis == 0   ? static_cast<std::int32_t>(c - place)
                                           : from.axis == 1 ? j
                                                            : k;
                    change[c] = inner[c] <= 0.0 ? 0.0
                                                : from.of(c, c + s, AxisMetric::at(metric.lower, f),
                                                          AxisMetric::at(metric.upper, f));
                  }
                });
  for (const FreeFace& free : from.domain.rim.free[a]) {
    const BoundaryFace& at = from.domain.rim.faces[a][free.number];
    const double lost = from.rate[at.face] - from.centre(at.cell);
    change[at.face] = from.solved[at.cell] + from.dt * lost / from.diagonal[at.cell];
  }
}

}  // namespace

ImplicitMomentum make_implicit_momentum(frame::Log& log, const Domain& domain) {
  if (!domain.settings.control.implicit()) return {};
  return {SevenPoint(domain.grid.box),
          make_implicit_work(log, domain.openings.fluid, domain.boundary.periodic_y()),
          Field(domain.grid.box),
          {Field(domain.grid.box), Field(domain.grid.box), Field(domain.grid.box)}};
}

void solve_change(frame::Log& log, const Domain& domain, const Velocities& velocities,
                  const ShearCoefficients& shear, const Drag& drag, int axis, double dt,
                  std::span<double> scratch, ImplicitMomentum& work, const State& state,
                  Field& dqdt) {
  std::fill(work.rate.all().begin(), work.rate.all().end(), 0.0);
  set_face_rates(domain, dqdt, velocities, axis, state, scratch, work.rate);
  take_sink(drag, static_cast<std::size_t>(axis), 1.0, work.rate);
  set_right_side(domain, axis, dt, work.rate, dqdt);
  set_rows({domain, state, dt, axis, work.rows}, shear);
  add_drag_diagonal(drag, static_cast<std::size_t>(axis), dt, work.rows.diagonal);
  const auto& control = domain.settings.control;
  flw_imdqdt(log, work.rows, {control.itrbcg, control.epsbcg}, work.system, dqdt);
  fill_halos(domain.crew, dqdt, domain.boundary.ends);
  fill_halos(domain.crew, work.rows.diagonal, domain.boundary.ends);
  fill_face_halos(domain.crew, work.rate, axis, domain.boundary.ends);
  set_change({domain, work.rate, work.rows.diagonal, dqdt, axis, dt},
             work.change[static_cast<std::size_t>(axis)]);
}

void add_changes(const ImplicitMomentum& work, State& state) {
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    Field& ru = state.ru[a];
    if (!ru.box().computed(axis)) continue;
    for_face_rows(ru.box(), axis, [&](std::size_t place, std::size_t count, auto, auto) {
      for (std::size_t f = place; f < place + count; ++f) ru[f] += work.change[a][f];
    });
  }
}

}  // namespace flow
