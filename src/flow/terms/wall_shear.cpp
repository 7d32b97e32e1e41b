#include "flow/terms/wall_shear.hpp"

#include <algorithm>
#include <cmath>

namespace flow {

namespace {

constexpr double kTiny = 1e-20;  ///< no divisor is below it

double crossing() {
  double y = 11.0;
  for (int turn = 0; turn < 60; ++turn) y = std::log(y) / kKarman + kLogLaw;
  return y;
}

/// Half the width of the cell at a face of the rim.
double half_cell(const GridTables& grid, int axis, const BoundaryFace& at) {
  const auto a = static_cast<std::size_t>(axis);
  return 0.5 * grid.axis[a].dx(at.index[a]);
}

double log_coefficient(const Group& group, int axis, const BoundaryFace& at, double half,
                       const State& state, const Velocities& velocities) {
  const double speed = speed_along(group, axis, at.cell, velocities);
  const double r = state.r[0][at.cell];
  const double nu = std::max(state.mu[at.cell], kTiny) / r;
  const double friction = friction_velocity(speed, half, nu);
  return r * friction * friction / std::max(speed, kTiny);
}

ShearCoefficient coefficient_of(const Group& group, int axis, const BoundaryFace& at, double half,
                                const State& state, const Velocities& velocities) {
  const double linear = state.mu[at.cell] / half;
  const double leaving = at.side * state.ru[static_cast<std::size_t>(axis)][at.face];
  switch (group.iv) {
    case VelocityAt::free:
      return {};
    case VelocityAt::slip:
      return {0.0, (state.mu[at.cell] + state.mut[at.cell]) / half};
    case VelocityAt::log_wall:
      return {log_coefficient(group, axis, at, half, state, velocities), linear};
    default:
      break;
  }
  if (leaving > 0.0) return {};  // what leaves is not held back
  return {linear, linear};
}

}  // namespace

double wall_law_crossing() {
  static const double kCrossing = crossing();
  return kCrossing;
}

double speed_along(const Group& group, int axis, std::size_t cell, const Velocities& velocities) {
  double square = 0.0;
  for (std::size_t b = 0; b < 3; ++b) {
    if (static_cast<int>(b) == axis) continue;
    const double difference = group.velocity[b] - velocities.cell[b][cell];
    square += difference * difference;
  }
  return std::sqrt(square);
}

double friction_velocity(double speed, double y, double nu) {
  const double meeting = wall_law_crossing();
  const double reynolds = speed * y / nu;
  if (reynolds <= meeting * meeting) return std::sqrt(speed * nu / y);
  // Newton's method for s = y u/nu in s (ln(s)/kappa + B) = reynolds; the left side is convex and
  // the start lies below the root.
  double s = meeting;
  for (int turn = 0; turn < 50; ++turn) {
    const double law = std::log(s) / kKarman + kLogLaw;
    const double step = (reynolds - s * law) / (law + 1.0 / kKarman);
    s += step;
    if (std::fabs(step) <= 1e-8 * s) break;  // what is left is of its square
  }
  return s * nu / y;
}

ShearCoefficients make_shear(const Rim& rim) {
  ShearCoefficients shear;
  for (std::size_t a = 0; a < 3; ++a) shear[a].resize(rim.faces[a].size());
  return shear;
}

void add_wall_shear(const GridTables& grid, const Metrics& metrics, const Rim& rim,
                    const State& state, const Velocities& velocities, std::size_t row,
                    ShearCoefficients& shear, std::array<Field, 3>& dqdt) {
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    const auto [first, last] = rim.of_rows(a, row, row + 1);
    for (std::size_t f = first; f < last; ++f) {
      const BoundaryFace& at = rim.faces[a][f];
      const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
      const double half = half_cell(grid, axis, at);
      const auto h = shear[a][f] = coefficient_of(group, axis, at, half, state, velocities);
      const double per_volume =
          rim.wetted[a][f] * AxisMetric::at(metrics[a].inv_width, at.index[a]);
      for (std::size_t b = 0; b < 3; ++b) {
        if (!grid.box.computed(static_cast<int>(b))) continue;
        const double wall = group.iv == VelocityAt::slip ? 0.0 : group.velocity[b];
        const double stress = (a == b ? h.normal : h.along) * (wall - velocities.cell[b][at.cell]);
        dqdt[b][at.cell] += stress * per_volume;
      }
    }
  }
}

}  // namespace flow
