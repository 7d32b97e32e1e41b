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

void clear_row(const Domain& domain, std::size_t place, Momentum& work) {
  for_components(domain, [&](int, std::size_t a) {
    std::fill_n(work.dqdt[a].data() + place, domain.grid.box.n[0], 0.0);
  });
}

/// Stages 1 and 2: shear of the rim, then diffusion; the tendencies begin.
void begin_with_stresses(const Domain& domain, Momentum& work, const State& state) {
  const auto begin = [&](std::size_t place, std::int32_t j, std::int32_t k) {
    clear_row(domain, place, work);
    add_wall_shear(domain.grid, domain.metrics, domain.rim, state, work.velocities,
                   row_of(domain.grid.box, {1, j, k}), work.shear, work.dqdt);
  };
  flw_cldifv(domain.crew, domain.metrics, domain.rim, state, work.velocities, work.shear, work.rows,
             work.dqdt, begin);
}

/// Stage 3.
void add_advection(frame::Log& log, const Domain& domain, Momentum& work, const State& state) {
  const auto begin = [&](std::size_t place, auto, auto) { clear_row(domain, place, work); };
  const RowStart start = domain.settings.control.ivisc ? RowStart(kGoOn) : RowStart(begin);
  std::array<Advected, 3> components{};
  std::size_t count = 0;
  for_components(domain, [&](int, std::size_t b) {
    components[count++] = {&work.velocities.cell[b], &work.dqdt[b], b};
  });
  flw_cladv0(log, domain.crew, domain.metrics, domain.rim, state.ru, Variable::momentum,
             std::span(components).first(count), domain.settings.control.acrkv, work.rows, start);
}

/// Stage 4 and the final assembly.
void advance_fluxes(frame::Log& log, const Domain& domain, double dt, Momentum& work,
                    State& state) {
  for_components(domain, [&](int, std::size_t a) {
    const bool wraps = domain.boundary.ends[a][0] == End::periodic;
    if (wraps) fill_halos(domain.crew, work.dqdt[a], domain.boundary.ends);
  });
  if (!domain.settings.control.implicit()) {
    advance_faces(domain, work.dqdt, work.velocities, dt, work.rows, state);
    for_components(domain, [&](int, std::size_t a) { take_sink(work.drag, a, dt, state.ru[a]); });
    return;
  }
  for_components(domain, [&](int axis, std::size_t a) {
    solve_change(log, domain, work.velocities, work.shear, work.drag, axis, dt,
                 work.rows.of[0].scratch, work.implicit, state, work.dqdt[a]);
  });
  add_changes(work.implicit, state);
}

}  // namespace

Momentum make_momentum(frame::Log& log, const Domain& domain) {
  const Box& box = domain.grid.box;
  return {Velocities(box),
          make_shear(domain.rim),
          make_drag(domain),
          SweepRows(box, domain.crew.hands()),
          {Field(box), Field(box), Field(box)},
          make_implicit_momentum(log, domain)};
}

void flw_cldvdt(frame::Log& log, const Domain& domain, double dt, Momentum& work, State& state) {
  const frame::Tag tag(log, "(flw_cldvdt)");
  set_velocities(domain.crew, domain.metrics, domain.boundary.ends, state, work.velocities);
  flw_clvdrg(domain, state, work.velocities, dt, work.drag);
  if (domain.settings.control.ivisc) begin_with_stresses(domain, work, state);
  add_advection(log, domain, work, state);
  advance_fluxes(log, domain, dt, work, state);
  set_normal_fluxes(domain.crew, domain.settings, domain.grid, domain.boundary, domain.rim, state);
}

}  // namespace flow
