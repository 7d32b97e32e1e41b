#include "flow/terms/momentum.hpp"

#include <algorithm>

#include "flow/terms/advection.hpp"
#include "flow/terms/face_rates.hpp"
#include "flow/terms/viscous.hpp"

namespace flow {

namespace {

/// Stages 1 and 2: shear of the rim, then diffusion. The drag of leaves will stand before them.
void add_stresses(const Domain& domain, Momentum& work, const State& state) {
  if (!domain.settings.control.ivisc) return;
  add_wall_shear(domain.grid, domain.metrics, domain.rim, state, work.velocities, work.shear,
                 work.dqdt);
  flw_cldifv(domain.metrics, domain.rim, state, work.velocities, work.shear, work.rows, work.dqdt);
}

/// Stage 3.
void add_advection(frame::Log& log, const Domain& domain, Momentum& work, const State& state) {
  std::array<Advected, 3> components{};
  std::size_t count = 0;
  for (std::size_t b = 0; b < 3; ++b) {
    if (!domain.grid.box.computed(static_cast<int>(b))) continue;
    components[count++] = {&work.velocities.cell[b], &work.dqdt[b], b};
  }
  flw_cladv0(log, domain.metrics, domain.rim, state.ru, Variable::momentum,
             std::span(components).first(count), domain.settings.control.acrkv, work.rows);
}

/// Stage 4 and the final assembly of one direction.
void advance_axis(frame::Log& log, const Domain& domain, int axis, double dt, Momentum& work,
                  State& state) {
  const auto a = static_cast<std::size_t>(axis);
  Field& dqdt = work.dqdt[a];
  if (domain.boundary.ends[a][0] == End::periodic) fill_halos(dqdt, domain.boundary.ends);
  if (domain.settings.control.implicit()) {
    advance_implicitly(log, domain, work.shear, axis, dt, work.rows.scratch, work.implicit, dqdt,
                       state);
  } else {
    advance_faces(domain, dqdt, axis, dt, work.rows.scratch, state);
  }
}

}  // namespace

Momentum make_momentum(frame::Log& log, const Domain& domain) {
  const Box& box = domain.grid.box;
  return {Velocities(box), make_shear(domain.rim), SweepRows(box),
          {Field(box), Field(box), Field(box)}, make_implicit_momentum(log, domain)};
}

void flw_cldvdt(frame::Log& log, const Domain& domain, double dt, Momentum& work, State& state) {
  const frame::Tag tag(log, "(flw_cldvdt)");
  set_velocities(domain.metrics, domain.boundary.ends, state, work.velocities);
  for (int axis = 0; axis < 3; ++axis) {
    if (!domain.grid.box.computed(axis)) continue;
    auto all = work.dqdt[static_cast<std::size_t>(axis)].all();
    std::fill(all.begin(), all.end(), 0.0);
  }
  add_stresses(domain, work, state);
  add_advection(log, domain, work, state);
  for (int axis = 0; axis < 3; ++axis) {
    if (domain.grid.box.computed(axis)) advance_axis(log, domain, axis, dt, work, state);
  }
  set_normal_fluxes(domain.settings, domain.grid, domain.boundary, domain.rim, state);
}

}  // namespace flow
