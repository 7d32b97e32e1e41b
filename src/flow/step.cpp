#include "flow/step.hpp"

#include <algorithm>

#include "flow/companions.hpp"
#include "flow/density.hpp"
#include "flow/halo.hpp"
#include "flow/properties.hpp"
#include "flow/time_limit.hpp"
#include "frame/step_line.hpp"

namespace flow {

Domain domain_of(Run& run) {
  return {run.settings, run.grid,     run.work.metrics, run.boundary,
          run.work.rim, run.openings, run.urban,        run.crew};
}

namespace {

/// Halos of what the run starts from; an axis that is not computed carries no flow.
void fill_first_halos(Run& run) {
  State& state = run.state;
  const Ends& ends = run.boundary.ends;
  fill_halos(run.crew, state.p, ends);
  fill_halos(run.crew, state.t, ends);
  fill_halos(run.crew, state.mut, ends);
  for (Field& ys : state.ys) fill_halos(run.crew, ys, ends);
  for (Field& ak : state.ak) {
    if (!ak.empty()) fill_halos(run.crew, ak, ends);
  }
  for (int axis = 0; axis < 3; ++axis) {
    Field& ru = state.ru[static_cast<std::size_t>(axis)];
    if (run.grid.box.computed(axis)) {
      fill_face_halos(run.crew, ru, axis, ends);
    } else {
      std::fill(ru.all().begin(), ru.all().end(), 0.0);
    }
  }
}

/// The step that the momentum equation and the pressure step advance by.
double momentum_step(const Run& run) {
  const auto& control = run.settings.control;
  return control.implicit() ? control.momentum.dtmax : run.state.dt;
}

/// Temperature and species, and the density that they leave: level 2 becomes that of the step
/// before, so that the continuity equation sees what warming does to the air.
void temperature_and_species(frame::Log& log, frame::Accounts& accounts, Run& run) {
  const auto& control = run.settings.control;
  State& state = run.state;
  accounts.start(log, "temperature");
  jmk_cal_canopy();
  rad_cal_srftmp();
  sld_cltsld();
  const double dt = control.implicit() ? control.scalar.dtmax : state.dt;
  flw_cldtdt(log, domain_of(run), dt, run.work.scalars, run.work.system, state);
  flw_clrho(run.crew, run.settings, run.grid, state);
  accounts.end(log, "temperature");
}

void momentum_and_pressure(frame::Log& log, frame::Accounts& accounts, Run& run) {
  const double dt = momentum_step(run);
  accounts.start(log, "momentum");
  flw_cldvdt(log, domain_of(run), dt, run.work.momentum, run.state);
  accounts.end(log, "momentum");
  accounts.start(log, "pressure");
  const auto density = [&run] { set_density(run.crew, run.settings, run.grid, run.state); };
  const Field& drain = run.work.scalars.sources.drain;
  flw_clprs(log, run.crew, run.work.pressure, dt, drain.empty() ? nullptr : &drain, density,
            run.state);
  accounts.end(log, "pressure");
}

void eddy_viscosity(frame::Log& log, frame::Accounts& accounts, Run& run) {
  const Turbulence model = run.settings.control.iturb;
  if (model == Turbulence::none) return;
  accounts.start(log, "turbulence");
  if (model == Turbulence::k_epsilon) nlk_stress();
  set_eddy_viscosity(domain_of(run), run.work.momentum.velocities, run.work.turbulence, run.state);
  if (model == Turbulence::k_epsilon) mkc_clfbvt();
  accounts.end(log, "turbulence");
}

void turbulence(frame::Log& log, frame::Accounts& accounts, Run& run) {
  if (run.settings.control.iturb != Turbulence::k_epsilon) return;
  accounts.start(log, "turbulence");
  nlk_stress();
  StepWork& work = run.work;
  Exner& exner = work.scalars.exner;
  if (exner.used()) set_potential(run.crew, run.state.t, exner);
  flw_clkeps(log, domain_of(run), momentum_step(run), exner.used() ? exner.theta : run.state.t,
             work.momentum.velocities, work.momentum.rows, work.system, work.turbulence, run.state);
  accounts.end(log, "turbulence");
}

}  // namespace

void prepare(frame::Log& log, Run& run) {
  const Box& box = run.grid.box;
  StepWork& work = run.work;
  frame::allocating(log, "work fields", frame::bytes_of<double>(box.size(), 8), [&] {
    if (run.settings.control.itemp) {
      run.state.cp = Field(box);
      if (run.settings.species.count() > 1) run.state.dif = Field(box);
    }
    work.metrics = make_metrics(run.grid);
    run.openings.note_equal_rows();
    work.rim = make_rim(run.boundary, run.faces, run.openings);
    work.momentum = make_momentum(log, domain_of(run));
    work.turbulence = make_turbulence(log, domain_of(run));
    if (run.settings.control.itemp) work.scalars = make_scalars(log, domain_of(run));
    if (run.settings.control.itemp || run.settings.control.iturb == Turbulence::k_epsilon) {
      work.system = make_scalar_system(log, domain_of(run));
    }
    work.scratch.assign(3 * static_cast<std::size_t>(box.n[0]) * run.crew.hands(), 0.0);
  });
  work.pressure =
      make_pressure_step(log, run.settings, run.grid, run.openings, run.boundary, run.faces);
  fill_first_halos(run);
  set_density(run.crew, run.settings, run.grid, run.state);
  flw_clprop(run.crew, run.settings.species, run.state);
}

void put_normal_fluxes(Run& run) {
  set_normal_fluxes(run.crew, run.settings, run.grid, run.boundary, run.work.rim, run.state);
}

void advance(frame::Log& log, frame::Accounts& accounts, Run& run) {
  const auto& control = run.settings.control;
  State& state = run.state;
  // The density that temperatures left stands until they change.
  if (!control.itemp) flw_clrho(run.crew, run.settings, run.grid, state);
  flw_clprop(run.crew, run.settings.species, state);
  eddy_viscosity(log, accounts, run);
  state.dt = flw_cldelt(run.crew, control, run.work.metrics, run.openings, state, run.work.scratch);
  sld_limit_deltt();
  state.time += state.dt;
  ++state.iter;
  frame::report_step(log, state.iter, state.time, state.dt);
  stamp_wall_clock();
  if (control.itemp) temperature_and_species(log, accounts, run);
  if (!control.keeps_pressure) std::fill(state.p.all().begin(), state.p.all().end(), 0.0);
  momentum_and_pressure(log, accounts, run);
  turbulence(log, accounts, run);
  flw_clsolid(run.crew, run.work.rim, state);
}

}  // namespace flow
