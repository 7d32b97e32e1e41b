#include <string>

#include "flow/terms/advection.hpp"

namespace flow {

namespace {

/// What a variable is at a face of the rim.
struct RimValue {
  enum Kind { given, level, odd } kind;  ///< level: that of the cell; odd: 0, by mirror
  double value = 0.0;
};

RimValue momentum_at(const Group& group, int axis, std::size_t component) {
  if (group.gives_velocity()) return {RimValue::given, group.velocity[component]};
  const bool normal = component == static_cast<std::size_t>(axis);
  if (group.iv == VelocityAt::slip && normal) return {RimValue::odd};
  return {RimValue::level};
}

RimValue scalar_at(const Group& group, Variable variable, std::size_t item) {
  switch (variable) {
    case Variable::temperature:
      if (group.it == TemperatureAt::given || group.it == TemperatureAt::log_wall) {
        return {RimValue::given, group.t};
      }
      break;
    case Variable::species:
      if (group.iy == SpeciesAt::given) return {RimValue::given, group.ys[item]};
      break;
    default:
      if (group.ik == TurbulenceAt::given) {
        return {RimValue::given, item == 0 ? group.k : group.eps};
      }
      break;
  }
  return {RimValue::level};
}

void check(frame::Log& log, Variable variable, int axis) {
  if (variable >= Variable::momentum && variable <= Variable::turbulence) return;
  log.stop_with(frame::kStatusAbnormal, "### program error -" +
                                            std::string(1, static_cast<char>('1' + axis)) +
                                            "- (flw_cladv0)");
}

/// Twice the way from the centre to the face: what a mirrored cell beyond it would differ by.
double difference_across(const RimValue& at, double q) {
  return at.kind == RimValue::level ? 0.0 : 2.0 * (at.value - q);
}

/// The cell on the other side of the cell at the rim; behind a periodic end it is at the other one.
struct Neighbour {
  std::size_t cell;
  std::int32_t index;
};

Neighbour cell_onward(const Box& box, int axis, const BoundaryFace& at) {
  const std::int32_t n = box.n[static_cast<std::size_t>(axis)];
  const std::int32_t own = at.index[static_cast<std::size_t>(axis)];
  const std::int32_t index = (own - at.side - 1 + n) % n + 1;
  const auto shift = static_cast<std::ptrdiff_t>(box.stride(axis)) * (index - own);
  return {at.cell + static_cast<std::size_t>(shift), index};
}

}  // namespace

void advect_rim(frame::Log& log, const Metrics& metrics, const Rim& rim,
                const std::array<Field, 3>& ru, Variable variable, const Advected& advected,
                const Muscl& muscl, int axis) {
  check(log, variable, axis);
  const auto a = static_cast<std::size_t>(axis);
  const Field& q = *advected.q;
  const std::size_t stride = q.box().stride(axis);
  for (std::size_t f = 0; f < rim.faces[a].size(); ++f) {
    const BoundaryFace& at = rim.faces[a][f];
    const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
    const RimValue value = variable == Variable::momentum
                               ? momentum_at(group, axis, advected.item)
                               : scalar_at(group, variable, advected.item);
    const double own = q[at.cell];
    const double inv_width = AxisMetric::at(metrics[a].inv_width, at.index[a]);

    // Through the face itself.
    const double leaving = at.side * rim.open[a][f] * ru[a][at.face];
    const bool carries_given = leaving < 0.0 && value.kind == RimValue::given;
    (*advected.dqdt)[at.cell] -= leaving * (carries_given ? value.value : own) * inv_width;

    // Through the opposite face, if the cell is upwind of it: the slope that the sweep took had the
    // value beyond the rim in it.
    const std::size_t opposite = at.side < 0 ? at.cell : at.cell - stride;
    const double onward = -at.side * rim.inner[a][opposite] * ru[a][opposite];
    if (!(onward > 0.0)) continue;
    const std::size_t next = at.side < 0 ? at.cell + stride : at.cell - stride;
    const std::size_t beyond = at.side < 0 ? at.cell - stride : at.cell + stride;
    const double ahead = q[next] - own;
    const double change = limited_slope(muscl, ahead, -difference_across(value, own)) -
                          limited_slope(muscl, ahead, own - q[beyond]);
    const Neighbour neighbour = cell_onward(q.box(), axis, at);
    (*advected.dqdt)[at.cell] -= onward * change * inv_width;
    (*advected.dqdt)[neighbour.cell] +=
        onward * change * AxisMetric::at(metrics[a].inv_width, neighbour.index);
  }
}

}  // namespace flow
