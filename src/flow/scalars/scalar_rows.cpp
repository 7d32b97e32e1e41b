#include "flow/scalars/scalar_rows.hpp"

#include <algorithm>

#include "flow/terms/seven_rows.hpp"

namespace flow {

namespace {

struct RowsOf {
  const Domain& domain;
  const State& state;
  double dt;
  const ScalarStep& step;
};

double capacity_at(const Diffusivity& by, std::size_t cell) {
  return by.capacity == nullptr ? 1.0 : (*by.capacity)[cell];
}

/// Diffusion over distance, by open fraction.
double conductance(const RowsOf& of, const InnerFace& face) {
  const Diffusivity& by = of.step.by.diffusivity;
  if (by.molecular == nullptr) return 0.0;
  const AxisMetric& metric = of.domain.metrics[static_cast<std::size_t>(face.axis)];
  const double mean = face_mean(of.domain, face, [&](std::size_t c) {
    return capacity_at(by, c) * (by.part * (*by.molecular)[c] + by.turbulent * of.state.mut[c]);
  });
  return face.open * mean * AxisMetric::at(metric.inv_gap, face.index);
}

/// In the advective form a cell feels what comes in, less its own value.
FaceRates rates_of(const RowsOf& of, const InnerFace& face) {
  const Diffusivity& by = of.step.by.diffusivity;
  const double diffused = conductance(of, face);
  const double lower = std::max(-face.mass, 0.0) + diffused / capacity_at(by, face.lower);
  const double upper = std::max(face.mass, 0.0) + diffused / capacity_at(by, face.upper);
  return {lower, -lower, upper, -upper};
}

void add_rim(const RowsOf& of, int axis, SevenPoint& rows) {
  const auto a = static_cast<std::size_t>(axis);
  const Rim& rim = of.domain.rim;
  for (std::size_t f = 0; f < rim.faces[a].size(); ++f) {
    const BoundaryFace& at = rim.faces[a][f];
    const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
    double rate = of.step.transfer == nullptr ? 0.0 : (*of.step.transfer)[a][f];
    const double leaving = at.side * rim.open[a][f] * of.state.ru[a][at.face];
    if (gives_value(group, of.step.by.variable)) rate += std::max(-leaving, 0.0);
    rows.diagonal[at.cell] += row_scale(of.domain, of.dt, axis, at.cell, at.index[a]) * rate;
  }
}

/// What the cells hold, and their right sides in the place of the tendency.
void start_rows(const RowsOf& of, SevenPoint& rows) {
  Field& q = *of.step.by.advected.dqdt;
  const double least = held_fraction(of.domain);
  for_rows(q.box(), [&](std::size_t place, auto, auto) {
    const std::size_t end = place + static_cast<std::size_t>(q.box().n[0]);
    for (std::size_t c = place; c < end; ++c) {
      const double scale = of.dt / std::max(of.domain.openings.gmc[c], least);
      const double sink = of.step.sink == nullptr ? 0.0 : (*of.step.sink)[c];
      rows.diagonal[c] = of.state.r[0][c] + scale * sink;
      q[c] *= scale;
    }
  });
}

}  // namespace

void solve_scalar(frame::Log& log, const Domain& domain, const State& state, double dt,
                  const ScalarStep& step, ScalarSystem& implicit) {
  const RowsOf of{domain, state, dt, step};
  start_rows(of, implicit.rows);
  add_inner_faces(domain, state.ru, dt, implicit.rows,
                  [&](const InnerFace& face) { return rates_of(of, face); });
  for (int axis = 0; axis < 3; ++axis) {
    if (domain.grid.box.computed(axis)) add_rim(of, axis, implicit.rows);
  }
  const auto& control = domain.settings.control;
  flw_imdqdt(log, implicit.rows, {control.itrbcg, control.epsbcg}, implicit.system,
             *step.by.advected.dqdt);
}

}  // namespace flow
