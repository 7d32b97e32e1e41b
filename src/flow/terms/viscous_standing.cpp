#include <algorithm>

#include "flow/terms/viscous.hpp"

namespace flow {

namespace {

/// A face of the rim as the faces that stand on it see it.
struct Ground {
  int axis;
  const BoundaryFace& at;
  const Group& group;
  double rate;     ///< gradient over difference of velocities at the wall [1/m]
  double inv_gap;  ///< of the distance to the centre beyond [1/m]
  double weight;   ///< of the gradient at the rim in the mean over a standing face's two edges
};

/// What the sweep works on.
struct Sweep {
  const Metrics& metrics;
  const Rim& rim;
  const State& state;
  const Velocities& velocities;
  std::size_t first, last;  ///< planes of cells, from 0, that take something: up to, not including
  [[nodiscard]] bool takes(std::int32_t k) const {
    return static_cast<std::size_t>(k) > first && static_cast<std::size_t>(k) <= last;
  }
};

Ground ground_of(const Sweep& sweep, int axis, const BoundaryFace& at, double shear) {
  const auto a = static_cast<std::size_t>(axis);
  const std::int32_t own = at.index[a];
  const double viscosity = sweep.state.mu[at.cell] + sweep.state.mut[at.cell];
  const double inv_gap = AxisMetric::at(sweep.metrics[a].inv_gap, at.side < 0 ? own - 1 : own);
  // Half of the edge belongs to each of the two cells beside a standing face.
  const double weight = 0.5 * AxisMetric::at(sweep.metrics[a].inv_span, own) / inv_gap;
  return {axis,
          at,
          sweep.rim.groups[static_cast<std::size_t>(at.group)],
          shear / std::max(viscosity, 1e-20),
          inv_gap,
          weight};
}

/// The gradient across the rim of the velocity through a standing face, less what the sweep took
/// for it.
double change_of_gradient(const Ground& ground, const Field& face, std::size_t standing,
                          int along) {
  const std::size_t stride = face.box().stride(ground.axis);
  const double own = face[standing];
  const double beyond = face[ground.at.side < 0 ? standing - stride : standing + stride];
  const double wall = ground.group.velocity[static_cast<std::size_t>(along)];
  const double gradient = ground.group.gives_velocity() ? ground.rate * (wall - own) : 0.0;
  return ground.at.side * (gradient - (beyond - own) * ground.inv_gap);
}

/// Viscosity on a face, by open fraction; `lower` is the index of the face along its axis.
double viscosity_on(const Sweep& sweep, int along, std::size_t standing, std::int32_t lower) {
  const auto t = static_cast<std::size_t>(along);
  const State& state = sweep.state;
  const std::size_t next = standing + state.mu.box().stride(along);
  return sweep.rim.inner[t][standing] *
         (AxisMetric::at(sweep.metrics[t].lower, lower) *
              (state.mu[standing] + state.mut[standing]) +
          AxisMetric::at(sweep.metrics[t].upper, lower) * (state.mu[next] + state.mut[next]));
}

/// Takes a flux through the face `lower` of an axis to the cells on both sides; `k` is the plane of
/// the face of the rim.
void carry(const Sweep& sweep, int along, std::size_t standing, std::int32_t lower, std::int32_t k,
           double flux, Field& dqdt) {
  const auto t = static_cast<std::size_t>(along);
  const Box& box = dqdt.box();
  const std::size_t round = box.stride(along) * static_cast<std::size_t>(box.n[t]);
  const bool low_end = lower == 0;  // of a periodic axis
  const bool high_end = lower == box.n[t];
  const std::size_t next = standing + box.stride(along);
  const auto& inv_width = sweep.metrics[t].inv_width;
  if (sweep.takes(along == 2 ? lower : k)) {
    dqdt[low_end ? standing + round : standing] -= flux * AxisMetric::at(inv_width, lower);
  }
  if (sweep.takes(along == 2 ? lower + 1 : k)) {
    dqdt[high_end ? next - round : next] += flux * AxisMetric::at(inv_width, lower + 1);
  }
}

void correct_standing(const Sweep& sweep, const Ground& ground, int along, Field& dqdt) {
  const std::size_t stride = dqdt.box().stride(along);
  const std::int32_t own = ground.at.index[static_cast<std::size_t>(along)];
  for (const std::int32_t lower : {own - 1, own}) {
    const std::size_t standing = lower < own ? ground.at.cell - stride : ground.at.cell;
    const double viscosity = viscosity_on(sweep, along, standing, lower);
    if (viscosity <= 0.0) continue;
    const Field& face = sweep.velocities.face[static_cast<std::size_t>(along)];
    const double change = change_of_gradient(ground, face, standing, along);
    carry(sweep, along, standing, lower, ground.at.index[2], -viscosity * ground.weight * change,
          dqdt);
  }
}

}  // namespace

/// What the planes of a sweep take, also of the faces one plane below and above.
static void correct_planes(const Sweep& sweep, const ShearCoefficients& shear,
                           std::array<Field, 3>& dqdt) {
  const Box& box = dqdt[0].box();
  const auto rows = static_cast<std::size_t>(box.n[1]);
  const std::size_t from = sweep.first - std::min<std::size_t>(sweep.first, 1);
  const std::size_t to = std::min(sweep.last + 1, static_cast<std::size_t>(box.n[2]));
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    const FaceRange range = sweep.rim.of_rows(a, from * rows, to * rows);
    for (std::size_t f = range.first; f < range.last; ++f) {
      const Ground ground = ground_of(sweep, axis, sweep.rim.faces[a][f], shear[a][f].along);
      for (int along = 0; along < 3; ++along) {
        if (along == axis || !box.computed(along)) continue;
        correct_standing(sweep, ground, along, dqdt[a]);
      }
    }
  }
}

void correct_standing_faces(frame::Crew& crew, const Metrics& metrics, const Rim& rim,
                            const State& state, const Velocities& velocities,
                            const ShearCoefficients& shear, std::array<Field, 3>& dqdt) {
  share_planes(crew, state.mu.box(), [&](std::size_t first, std::size_t last) {
    correct_planes({metrics, rim, state, velocities, first, last}, shear, dqdt);
  });
}

}  // namespace flow
