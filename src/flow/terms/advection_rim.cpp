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

double given_at(const Group& group, Variable variable, std::size_t item) {
  switch (variable) {
    case Variable::temperature:
      return group.t;
    case Variable::species:
      return group.ys[item];
    default:
      return item == 0 ? group.k : group.eps;
  }
}

RimValue scalar_at(const Group& group, Variable variable, std::size_t item) {
  if (!gives_value(group, variable)) return {RimValue::level};
  return {RimValue::given, given_at(group, variable, item)};
}

void check(frame::Log& log, Variable variable, int axis) {
  if (variable >= Variable::momentum && variable <= Variable::turbulence) return;
  log.stop_with(
      frame::kStatusAbnormal,
      "### program error -" + std::string(1, static_cast<char>('1' + axis)) + "- (flw_cladv0)");
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
  std::int32_t index = own - at.side;
  if (index < 1) index += n;
  if (index > n) index -= n;
  const auto shift = static_cast<std::ptrdiff_t>(box.stride(axis)) * (index - own);
  return {at.cell + static_cast<std::size_t>(shift), index};
}

/// The mass that passes a face of the rim and the opposite face of its cell.
struct Passage {
  const BoundaryFace& at;
  std::size_t stride;
  double leaving;  ///< out of the air
  double onward;   ///< from the cell into the next one
  double inv_width;
};

Passage passage_of(const Rim& rim, const Field& ru, const AxisMetric& metric, int axis,
                   std::size_t f) {
  const auto a = static_cast<std::size_t>(axis);
  const BoundaryFace& at = rim.faces[a][f];
  const std::size_t stride = ru.box().stride(axis);
  const std::size_t opposite = at.side < 0 ? at.cell : at.cell - stride;
  return {at, stride, at.side * rim.open[a][f] * ru[at.face],
          -at.side * rim.inner[a][opposite] * ru[opposite],
          AxisMetric::at(metric.inv_width, at.index[a])};
}

/// `level` is what the cell's own mass carries: 0 in conservative form.
void carry_out(const Passage& through, const RimValue& value, double level,
               const Advected& advected) {
  const double own = (*advected.q)[through.at.cell];
  const bool carries_given = through.leaving < 0.0 && value.kind == RimValue::given;
  (*advected.dqdt)[through.at.cell] -=
      through.leaving * ((carries_given ? value.value : own) - level) * through.inv_width;
}

/// If the cell is upwind of its opposite face, the slope that the sweep took for it had the value
/// beyond the rim in it.
void mend_slope(const AxisMetric& metric, int axis, const Passage& through, const RimValue& value,
                const Carried& carried) {
  const Field& q = *carried.of.q;
  const BoundaryFace& at = through.at;
  const double own = q[at.cell];
  const double beyond = q[at.side < 0 ? at.cell - through.stride : at.cell + through.stride];
  const double ahead = q[at.side < 0 ? at.cell + through.stride : at.cell - through.stride] - own;
  const double change = limited_slope(carried.muscl, ahead, -difference_across(value, own)) -
                        limited_slope(carried.muscl, ahead, own - beyond);
  const Neighbour next = cell_onward(q.box(), axis, at);
  Field& dqdt = *carried.of.dqdt;
  dqdt[at.cell] -= through.onward * change * through.inv_width;
  dqdt[next.cell] += through.onward * change * AxisMetric::at(metric.inv_width, next.index);
}

}  // namespace

bool gives_value(const Group& group, Variable variable) {
  switch (variable) {
    case Variable::momentum:
      return group.gives_velocity();
    case Variable::temperature:
      return group.it == TemperatureAt::given || group.it == TemperatureAt::log_wall;
    case Variable::species:
      return group.iy == SpeciesAt::given;
    default:
      return group.ik == TurbulenceAt::given;
  }
}

/// What the faces of a range change.
static void advect_range(const Metrics& metrics, const Rim& rim, const std::array<Field, 3>& ru,
                         std::span<const Carried> carried, int axis, const FaceRange& range) {
  const auto a = static_cast<std::size_t>(axis);
  for (std::size_t f = range.first; f < range.last; ++f) {
    const Passage through = passage_of(rim, ru[a], metrics[a], axis, f);
    if (through.leaving == 0.0 && !(through.onward > 0.0)) continue;
    const Group& group = rim.groups[static_cast<std::size_t>(through.at.group)];
    for (const Carried& one : carried) {
      const bool momentum = one.variable == Variable::momentum;
      RimValue value = momentum ? momentum_at(group, axis, one.of.item)
                                : scalar_at(group, one.variable, one.of.item);
      if (one.of.given != nullptr) value.value *= (*one.of.given)[a][f];
      if (through.leaving != 0.0) {
        carry_out(through, value, momentum ? 0.0 : (*one.of.q)[through.at.cell], one.of);
      }
      if (through.onward > 0.0) mend_slope(metrics[a], axis, through, value, one);
    }
  }
}

void advect_rim(frame::Log& log, frame::Crew& crew, const Metrics& metrics, const Rim& rim,
                const std::array<Field, 3>& ru, std::span<const Carried> carried, int axis) {
  for (const Carried& one : carried) check(log, one.variable, axis);
  const Box& box = ru[0].box();
  const auto a = static_cast<std::size_t>(axis);
  const auto rows = static_cast<std::size_t>(box.n[1]);
  if (axis < 2) {
    share_planes(crew, box, [&](std::size_t first, std::size_t last) {
      advect_range(metrics, rim, ru, carried, axis, rim.of_rows(a, first * rows, last * rows));
    });
    return;
  }
  // A face passes something on to the next plane: what stands above one another stays together.
  crew.share(rows, shared_rows(box.cells() / rows / 8), [&](frame::Crew::Stretch part) {
    for (std::size_t row = 0; row < rows * static_cast<std::size_t>(box.n[2]); row += rows) {
      advect_range(metrics, rim, ru, carried, axis,
                   rim.of_rows(a, row + part.first, row + part.last));
    }
  });
}

}  // namespace flow
