#include "flow/turbulence/strain.hpp"

namespace flow {

namespace {

/// What the derivative at a centre sees on one side of it.
struct Side {
  double distance = 0.0;    ///< of the value [m]
  double difference = 0.0;  ///< of the value there to the cell's own
  bool law = false;         ///< a wall whose law gives the gradient itself
  double gradient = 0.0;
};

struct Fields {
  const Domain& domain;
  const Strain& strain;
  const Velocities& velocities;
};

/// Side 0 (lower) or 1 of a cell along an axis, for one component.
Side side_of(const Fields& of, const RimCell& cell, std::size_t axis, std::size_t component,
             std::size_t side) {
  const Field& q = of.velocities.cell[component];
  const AxisTable& table = of.domain.grid.axis[axis];
  const std::int32_t own = cell.index[axis];
  const std::int32_t number = cell.face[axis][side];
  if (number == RimCell::kAir) {
    const std::size_t stride = q.box().stride(static_cast<int>(axis));
    const std::size_t next = side == 0 ? cell.cell - stride : cell.cell + stride;
    return {table.dxc(side == 0 ? own - 1 : own), q[next] - q[cell.cell]};
  }
  if (number == RimCell::kClosed) return {table.dx(own), 0.0};
  const auto f = static_cast<std::size_t>(number);
  const BoundaryFace& at = of.domain.rim.faces[axis][f];
  const Group& group = of.domain.rim.groups[static_cast<std::size_t>(at.group)];
  const bool leaves = at.side * group.velocity[axis] > 0.0;
  if (!group.gives_velocity() || leaves) return {table.dx(own), 0.0};
  const double difference = group.velocity[component] - q[cell.cell];
  const double slope = of.strain.walls[axis][f].slope;
  // The velocity grows from the wall inwards, which is against the direction of its side.
  return {0.5 * table.dx(own), difference, slope > 0.0, at.side * slope * difference};
}

/// Derivative of a component along another axis: that of the law where a wall has one, the mean of
/// two such, else of second order from the values of both sides.
double derivative(const Fields& of, const RimCell& cell, std::size_t component, std::size_t axis) {
  const Side low = side_of(of, cell, axis, component, 0);
  const Side high = side_of(of, cell, axis, component, 1);
  if (low.law && high.law) return 0.5 * (low.gradient + high.gradient);
  if (low.law) return low.gradient;
  if (high.law) return high.gradient;
  const double below = low.distance;
  const double above = high.distance;
  return below / (above * (below + above)) * high.difference -
         above / (below * (below + above)) * low.difference;
}

}  // namespace

double strain_at(const Domain& domain, const Strain& strain, const Velocities& velocities,
                 const RimCell& cell) {
  const Fields of{domain, strain, velocities};
  const Box& box = domain.grid.box;
  double sum = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    if (!box.computed(static_cast<int>(a))) continue;
    const Field& face = velocities.face[a];
    const double stretching =
        (face[cell.cell] - face[cell.cell - box.stride(static_cast<int>(a))]) *
        AxisMetric::at(domain.metrics[a].inv_width, cell.index[a]);
    sum += 2.0 * (stretching * stretching);
    for (std::size_t b = a + 1; b < 3; ++b) {
      if (!box.computed(static_cast<int>(b))) continue;
      const double d = derivative(of, cell, a, b) + derivative(of, cell, b, a);
      sum += d * d;
    }
  }
  return sum;
}

}  // namespace flow
