#include "flow/terms/momentum.hpp"

#include <algorithm>

#include "flow/terms/advection.hpp"
#include "flow/terms/face_rates.hpp"
#include "flow/terms/viscous.hpp"

namespace flow {

namespace {

template <class Use>
void for_components(const Domain& domain, Use&& use) {
  for (int axis = 0; axis < 3; ++axis) {
    if (domain.grid.box.computed(axis)) use(axis, static_cast<std::size_t>(axis));
  }
}

/// Stages 1 and 2: shear of the rim, then diffusion.
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
  for_components(domain, [&](int, std::size_t b) {
    components[count++] = {&work.velocities.cell[b], &work.dqdt[b], b};
  });
  flw_cladv0(log, domain.metrics, domain.rim, state.ru, Variable::momentum,
             std::span(components).first(count), domain.settings.control.acrkv, work.rows);
}

/// Stage 4 and the final assembly.
void advance_fluxes(frame::Log& log, const Domain& domain, double dt, Momentum& work,
                    State& state) {
  for_components(domain, [&](int, std::size_t a) {
    const bool wraps = domain.boundary.ends[a][0] == End::periodic;
    if (wraps) fill_halos(work.dqdt[a], domain.boundary.ends);
  });
  if (!domain.settings.control.implicit()) {
    advance_faces(domain, work.dqdt, work.velocities, dt, work.rows.scratch, state);
    for_components(domain, [&](int, std::size_t a) { take_sink(work.drag, a, dt, state.ru[a]); });
    return;
  }
  for_components(domain, [&](int axis, std::size_t a) {
    solve_change(log, domain, work.velocities, work.shear, work.drag, axis, dt, work.rows.scratch,
                 work.implicit, state, work.dqdt[a]);
  });
  add_changes(work.implicit, state);
}

}  // namespace

Momentum make_momentum(frame::Log& log, const Domain& domain) {
  const Box& box = domain.grid.box;
  return {Velocities(box),
          make_shear(domain.rim),
          make_drag(domain),
          SweepRows(box),
          {Field(box), Field(box), Field(box)},
          make_implicit_momentum(log, domain)};
}

void flw_cldvdt(frame::Log& log, const Domain& domain, double dt, Momentum& work, State& state) {
  const frame::Tag tag(log, "(flw_cldvdt)");
  set_velocities(domain.metrics, domain.boundary.ends, state, work.velocities);
  for_components(domain, [&](int, std::size_t a) {
    std::fill(work.dqdt[a].all().begin(), work.dqdt[a].all().end(), 0.0);
  });
  flw_clvdrg(domain, state, work.velocities, dt, work.drag);
  add_stresses(domain, work, state);
  add_advection(log, domain, work, state);
  advance_fluxes(log, domain, dt, work, state);
  set_normal_fluxes(domain.settings, domain.grid, domain.boundary, domain.rim, state);
}

}  // namespace flow
