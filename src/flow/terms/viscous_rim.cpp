#include <algorithm>
#include <span>

#include "flow/terms/viscous.hpp"

namespace flow {

namespace {

struct Fields {
  const Metrics& metrics;
  const Rim& rim;
  const State& state;
  const Velocities& velocities;
  const ShearCoefficients& shear;
};

/// A face of the rim, its axis, the viscosity beside it and the part of it that meets the air.
struct RimCell {
  const BoundaryFace& at;
  std::size_t axis;
  double viscosity;
  double wetted;
};

RimCell rim_cell(const Fields& of, std::size_t axis, std::size_t number) {
  const BoundaryFace& at = of.rim.faces[axis][number];
  return {at, axis, of.state.mu[at.cell] + of.state.mut[at.cell], of.rim.wetted[axis][number]};
}

double inv_width(const Fields& of, const RimCell& cell) {
  return AxisMetric::at(of.metrics[cell.axis].inv_width, cell.at.index[cell.axis]);
}

/// The cell stretches beyond the rim as it does before it.
void add_normal(const Fields& of, const RimCell& cell, Field& dqdt) {
  const Field& face = of.velocities.face[cell.axis];
  const std::size_t below = cell.at.cell - face.box().stride(static_cast<int>(cell.axis));
  const double stretching = (face[cell.at.cell] - face[below]) * inv_width(of, cell);
  dqdt[cell.at.cell] +=
      cell.wetted * (cell.at.side * cell.viscosity * stretching * inv_width(of, cell));
}

/// Gradient of the velocity through a free face towards its edge on `side` along axis t, times the
/// distance that it stands for. `wall` is the number of the face that meets the edge, or -1.
double edge_difference(const Fields& of, const RimCell& cell, std::size_t t, std::int32_t side,
                       std::int32_t wall) {
  const Field& face = of.velocities.face[cell.axis];
  const std::size_t stride = face.box().stride(static_cast<int>(t));
  const double own = face[cell.at.face];
  if (wall < 0) return face[side < 0 ? cell.at.face - stride : cell.at.face + stride] - own;
  const auto number = static_cast<std::size_t>(wall);
  const Group& group = of.rim.groups[static_cast<std::size_t>(of.rim.faces[t][number].group)];
  if (!group.gives_velocity()) return 0.0;
  const std::int32_t gap = side < 0 ? cell.at.index[t] - 1 : cell.at.index[t];
  const double rate = of.shear[t][number].along / std::max(cell.viscosity, 1e-20);
  return rate * (group.velocity[cell.axis] - own) / AxisMetric::at(of.metrics[t].inv_gap, gap);
}

void add_tangential(const Fields& of, const RimCell& cell, const FreeFace& free, std::size_t t,
                    Field& dqdt) {
  const double across = edge_difference(of, cell, t, 1, free.edge[t][1]) -
                        edge_difference(of, cell, t, -1, free.edge[t][0]);
  const double gradient = across * AxisMetric::at(of.metrics[t].inv_span, cell.at.index[t]);
  dqdt[cell.at.cell] +=
      cell.wetted * (cell.at.side * cell.viscosity * gradient * inv_width(of, cell));
}

/// The free faces of an axis in the planes from `first` up to, not including, `last`.
std::span<const FreeFace> free_in(const Rim& rim, std::size_t axis, std::size_t first,
                                  std::size_t last) {
  const auto plane = [&](const FreeFace& free) {
    return static_cast<std::size_t>(rim.faces[axis][free.number].index[2] - 1);
  };
  const auto begin = std::ranges::lower_bound(rim.free[axis], first, {}, plane);
  return {begin, std::ranges::lower_bound(begin, rim.free[axis].end(), last, {}, plane)};
}

void add_planes(const Fields& of, std::size_t first, std::size_t last, std::array<Field, 3>& dqdt) {
  const Rim& rim = of.rim;
  const Box& box = of.state.mu.box();
  const auto rows = static_cast<std::size_t>(box.n[1]);
  for (std::size_t a = 0; a < 3; ++a) {
    const FaceRange range = rim.of_rows(a, first * rows, last * rows);
    for (std::size_t f = range.first; f < range.last; ++f) {
      const Group& group = rim.groups[static_cast<std::size_t>(rim.faces[a][f].group)];
      if (group.gives_velocity()) continue;
      add_normal(of, rim_cell(of, a, f), dqdt[a]);
    }
    for (const FreeFace& free : free_in(rim, a, first, last)) {
      const RimCell cell = rim_cell(of, a, free.number);
      for (std::size_t t = 0; t < 3; ++t) {
        if (t == a || !box.computed(static_cast<int>(t))) continue;
        add_tangential(of, cell, free, t, dqdt[t]);
      }
    }
  }
}

}  // namespace

void add_rim_stress(frame::Crew& crew, const Metrics& metrics, const Rim& rim, const State& state,
                    const Velocities& velocities, const ShearCoefficients& shear,
                    std::array<Field, 3>& dqdt) {
  const Fields of{metrics, rim, state, velocities, shear};
  share_planes(crew, state.mu.box(),
               [&](std::size_t first, std::size_t last) { add_planes(of, first, last, dqdt); });
}

}  // namespace flow
