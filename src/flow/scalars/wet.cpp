#include "flow/scalars/wet.hpp"

#include <algorithm>
#include <cmath>

#include "flow/share.hpp"
#include "flow/terms/wall_friction.hpp"

namespace flow {

namespace {

/// A face of the rim and what it exchanges with its cell.
struct RimCell {
  const BoundaryFace& at;
  const Group& group;
  int axis;
  double half;  ///< half the width of the cell [m]
};

RimCell rim_cell(const Domain& domain, int axis, std::size_t number) {
  const auto a = static_cast<std::size_t>(axis);
  const BoundaryFace& at = domain.rim.faces[a][number];
  return {at, domain.rim.groups[static_cast<std::size_t>(at.group)], axis,
          0.5 * domain.grid.axis[a].dx(at.index[a])};
}

/// True where a law of the wall is asked for, `damp` also for vapour.
bool follows_law(const Group& group, bool damp) {
  return group.it == TemperatureAt::log_wall ||
         (damp && group.iy == SpeciesAt::given && group.iv == VelocityAt::log_wall);
}

/// True where something diffuses through a face: air neither leaves through it nor is free.
bool exchanges(const RimCell& cell, const State& state) {
  const double leaving = cell.at.side * state.ru[static_cast<std::size_t>(cell.axis)][cell.at.face];
  return cell.group.iv != VelocityAt::free && !(leaving > 0.0);
}

/// Speed of the cell's air along the face, against the wall's.
double speed_along(const RimCell& cell, const State& state) {
  const std::size_t c = cell.at.cell;
  double square = 0.0;
  for (int b = 0; b < 3; ++b) {
    const Field& ru = state.ru[static_cast<std::size_t>(b)];
    if (b == cell.axis) continue;
    const double u =
        ru.box().computed(b) ? 0.5 * (ru[c - ru.box().stride(b)] + ru[c]) / state.r[0][c] : 0.0;
    const double difference = cell.group.velocity[static_cast<std::size_t>(b)] - u;
    square += difference * difference;
  }
  return std::sqrt(square);
}

double by_law(const WallLaw& law, const RimCell& cell, const State& state, double friction) {
  const std::size_t c = cell.at.cell;
  return law.exchange_by(friction, cell.half, state.r[0][c], state.mu[c]);
}

double heat_exchange(const Domain& domain, const RimCell& cell, const State& state, const Wet& wet,
                     double friction) {
  if (!domain.settings.control.idift || !exchanges(cell, state)) return 0.0;
  if (cell.group.it == TemperatureAt::log_wall) return by_law(wet.heat, cell, state, friction);
  if (cell.group.it != TemperatureAt::given) return 0.0;
  return state.mu[cell.at.cell] / domain.settings.species.prlmnr / cell.half;
}

double vapour_exchange(const Domain& domain, const RimCell& cell, const State& state,
                       const Wet& wet, double friction) {
  if (!domain.settings.control.idift || !exchanges(cell, state)) return 0.0;
  if (cell.group.iy != SpeciesAt::given) return 0.0;
  if (cell.group.iv == VelocityAt::log_wall) return by_law(wet.vapour, cell, state, friction);
  return state.dif[cell.at.cell] / cell.half;
}

/// Calls `use(cell, factor of the face, part of it, 1/width)` for all faces of the rim.
template <class Use>
void for_rim(const Domain& domain, RimFactors& factors, Use&& use) {
  const Rim& rim = domain.rim;
  const auto rows = static_cast<std::size_t>(domain.grid.box.n[1]);
  share_planes(domain.crew, domain.grid.box, [&](std::size_t first, std::size_t last) {
    for (int axis = 0; axis < 3; ++axis) {
      const auto a = static_cast<std::size_t>(axis);
      const FaceRange range = rim.of_rows(a, first * rows, last * rows);
      for (std::size_t f = range.first; f < range.last; ++f) {
        const RimCell cell = rim_cell(domain, axis, f);
        use(cell, f, factors[a][f], rim.wetted[a][f],
            AxisMetric::at(domain.metrics[a].inv_width, cell.at.index[a]));
      }
    }
  });
}

RimFactors factors_of(const Rim& rim) {
  RimFactors factors;
  for (std::size_t a = 0; a < 3; ++a) factors[a].assign(rim.faces[a].size(), 0.0);
  return factors;
}

}  // namespace

Wet make_wet(const Domain& domain) {
  const Control& control = domain.settings.control;
  const Species& species = domain.settings.species;
  return {factors_of(domain.rim), factors_of(domain.rim), WallLaw(species.prlmnr, control.prturb),
          WallLaw(species.sclmnr, control.scturb), factors_of(domain.rim)};
}

void set_frictions(const Domain& domain, const State& state, Wet& wet) {
  if (!domain.settings.control.idift) return;
  const bool damp = domain.settings.species.count() > 1;
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    std::vector<double>& frictions = wet.friction[a];
    domain.crew.share(frictions.size(), kSharedCells / 8, [&](frame::Crew::Stretch part) {
      WallQueue walls(
          [&](std::size_t f, const WallLayer&, double friction) { frictions[f] = friction; });
      for (std::size_t f = part.first; f < part.last; ++f) {
        const RimCell cell = rim_cell(domain, axis, f);
        if (!follows_law(cell.group, damp) || !exchanges(cell, state)) continue;
        const std::size_t c = cell.at.cell;
        walls.add(
            f, {speed_along(cell, state), cell.half, std::max(state.mu[c], 1e-20) / state.r[0][c]});
      }
      walls.finish();
    });
  }
}

void add_wall_heat(const Domain& domain, const State& state, const ScalarStep& heat, Wet& wet) {
  const Field& q = *heat.by.advected.q;
  Field& dqdt = *heat.by.advected.dqdt;
  const RimFactors* const given = heat.by.advected.given;
  for_rim(domain, wet.fwtt,
          [&](const RimCell& cell, std::size_t f, double& fwtt, double part, double inv_width) {
            const std::size_t c = cell.at.cell;
            if (cell.group.it == TemperatureAt::flux) {
              const double factor = heat.factor == nullptr ? 1.0 : (*heat.factor)[c];
              dqdt[c] += part * cell.group.t / (state.cp[c] * factor) * inv_width;
              return;
            }
            const auto a = static_cast<std::size_t>(cell.axis);
            fwtt = part * heat_exchange(domain, cell, state, wet, wet.friction[a][f]);
            if (fwtt == 0.0) return;
            const double wall = cell.group.t * (given == nullptr ? 1.0 : (*given)[a][f]);
            dqdt[c] += fwtt * (wall - q[c]) * inv_width;
          });
}

void add_wall_vapour(const Domain& domain, const State& state, Wet& wet, Field& dqdt) {
  for_rim(domain, wet.fwty,
          [&](const RimCell& cell, std::size_t f, double& fwty, double part, double inv_width) {
            const std::size_t c = cell.at.cell;
            const double friction = wet.friction[static_cast<std::size_t>(cell.axis)][f];
            fwty = part * vapour_exchange(domain, cell, state, wet, friction);
            if (fwty == 0.0) return;
            dqdt[c] += fwty * (cell.group.ys[1] - state.ys[1][c]) * inv_width;
          });
}

}  // namespace flow
