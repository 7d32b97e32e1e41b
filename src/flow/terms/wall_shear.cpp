#include "flow/terms/wall_shear.hpp"

#include <algorithm>
#include <cmath>

namespace flow {

namespace {

constexpr double kTiny = 1e-20;  ///< no divisor is below it

/// Half the width of the cell at a face of the rim.
double half_cell(const GridTables& grid, int axis, const BoundaryFace& at) {
  const auto a = static_cast<std::size_t>(axis);
  return 0.5 * grid.axis[a].dx(at.index[a]);
}

/// A wall with the law of the wall is left to set_shear.
ShearCoefficient coefficient_of(const Group& group, int axis, const BoundaryFace& at, double half,
                                const State& state) {
  const double linear = state.mu[at.cell] / half;
  const double leaving = at.side * state.ru[static_cast<std::size_t>(axis)][at.face];
  switch (group.iv) {
    case VelocityAt::free:
      return {};
    case VelocityAt::slip:
      return {0.0, (state.mu[at.cell] + state.mut[at.cell]) / half};
    case VelocityAt::log_wall:
      return {0.0, linear};
    default:
      break;
  }
  if (leaving > 0.0) return {};  // what leaves is not held back
  return {linear, linear};
}

/// Sets the coefficients of the faces of a range.
void set_shear(const GridTables& grid, const Rim& rim, const State& state,
               const Velocities& velocities, int axis, const FaceRange& range,
               std::vector<ShearCoefficient>& shear) {
  const auto a = static_cast<std::size_t>(axis);
  const auto density = [&](std::size_t f) { return state.r[0][rim.faces[a][f].cell]; };
  WallQueue walls([&](std::size_t f, const WallLayer& layer, double friction) {
    shear[f].along = density(f) * friction * friction / std::max(layer.speed, kTiny);
  });
  for (std::size_t f = range.first; f < range.last; ++f) {
    const BoundaryFace& at = rim.faces[a][f];
    const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
    const double half = half_cell(grid, axis, at);
    shear[f] = coefficient_of(group, axis, at, half, state);
    if (group.iv != VelocityAt::log_wall) continue;
    walls.add(f, {speed_along(group, axis, at.cell, velocities), half,
                  std::max(state.mu[at.cell], kTiny) / density(f)});
  }
  walls.finish();
}

}  // namespace

double speed_along(const Group& group, int axis, std::size_t cell, const Velocities& velocities) {
  double square = 0.0;
  for (std::size_t b = 0; b < 3; ++b) {
    if (static_cast<int>(b) == axis) continue;
    const double difference = group.velocity[b] - velocities.cell[b][cell];
    square += difference * difference;
  }
  return std::sqrt(square);
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
    const FaceRange range = rim.of_rows(a, row, row + 1);
    set_shear(grid, rim, state, velocities, axis, range, shear[a]);
    for (std::size_t f = range.first; f < range.last; ++f) {
      const BoundaryFace& at = rim.faces[a][f];
      const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
      const ShearCoefficient& h = shear[a][f];
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
