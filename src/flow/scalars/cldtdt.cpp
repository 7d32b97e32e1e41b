#include "flow/scalars/cldtdt.hpp"

#include <algorithm>

#include "flow/companions.hpp"
#include "flow/properties.hpp"
#include "flow/row_kernel.hpp"
#include "flow/share.hpp"
#include "flow/urban/set_flux.hpp"

namespace flow {

namespace {

/// What a turbulent Prandtl or Schmidt number makes of the eddy viscosity.
double turbulent_factor(double number) { return number > 0.0 ? 1.0 / number : 0.0; }

/// What surfaces and buildings give off needs fields of its own.
ScalarSources make_sources(const Domain& domain) {
  const Box& box = domain.grid.box;
  ScalarSources sources;
  if (!domain.urban.heats()) return sources;
  sources.heat = Field(box);
  if (!domain.urban.tdrg.empty()) sources.exchange = Field(box);
  if (domain.settings.species.count() != 2) return sources;
  sources.vapour = sources.drain = Field(box);
  return sources;
}

void set_city_sources(const Urban& urban, const State& state, ScalarSources& sources) {
  if (!urban.heats()) return;
  kpc_set_flux(urban, state, sources.heat, sources.vapour.empty() ? nullptr : &sources.vapour);
  if (!sources.exchange.empty()) kpc_set_exchange(urban, state, sources.exchange);
}

/// Adds the heat that is brought in, over what a kg of q takes up.
void add_heat(const Domain& domain, const State& state, Scalars& work) {
  const Field& heat = work.sources.heat;
  if (heat.empty()) return;
  const auto n = static_cast<std::size_t>(domain.grid.box.n[0]);
  share_rows(domain.crew, domain.grid.box, [&](std::size_t place, std::int32_t, std::int32_t) {
    for (std::size_t c = place; c < place + n; ++c) {
      const double factor = work.exner.used() ? work.exner.function[c] : 1.0;
      work.dtdt[c] += heat[c] / (state.cp[c] * factor);
    }
  });
}

/// Adds the vapour that is brought in: it takes its part of the mixture, and thins the rest.
void add_vapour(frame::Crew& crew, const State& state, Scalars& work) {
  ScalarSources& sources = work.sources;
  if (sources.vapour.empty()) return;
  const Box& box = sources.vapour.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  share_rows(crew, box, [&](std::size_t place, std::int32_t, std::int32_t) {
    for (std::size_t c = place; c < place + n; ++c) {
      sources.drain[c] = -sources.vapour[c];
      work.dydt[c] += sources.vapour[c] * (1.0 - state.ys[1][c]);
    }
  });
}

ScalarStep heat_step(const Domain& domain, Scalars& work, State& state) {
  const Settings& settings = domain.settings;
  const bool potential = work.exner.used();
  ScalarStep step;
  step.q = &state.t;
  step.by.advected = {potential ? &work.exner.theta : &state.t, &work.dtdt, 0,
                      potential ? &work.exner.to_theta : nullptr};
  if (settings.control.idift) {
    step.by.diffusivity = {&state.mu, 1.0 / settings.species.prlmnr,
                           turbulent_factor(settings.control.prturb), &state.cp};
  }
  step.by.acrk = settings.control.acrkt;
  if (!work.sources.exchange.empty()) step.sink = &work.sources.exchange;
  step.transfer = &work.wet.fwtt;
  step.factor = potential ? &work.exner.function : nullptr;
  step.least = std::numeric_limits<double>::min();
  return step;
}

ScalarStep vapour_step(const Domain& domain, Scalars& work, State& state) {
  const Settings& settings = domain.settings;
  ScalarStep step;
  step.q = &state.ys[1];
  step.by.advected = {&state.ys[1], &work.dydt, 1};
  if (settings.control.idift) {
    step.by.diffusivity = {&state.dif, 1.0, turbulent_factor(settings.control.scturb)};
  }
  step.by.variable = Variable::species;
  step.by.acrk = settings.control.acrky;
  step.transfer = &work.wet.fwty;
  step.least = 0.0;
  step.most = 1.0;
  step.holds = true;
  return step;
}

FLOW_CLONES void leave_rest(std::size_t count, const double* second, double* first) {
  for (std::size_t i = 0; i < count; ++i) first[i] = 1.0 - second[i];
}

void advance_all(frame::Log& log, const Domain& domain, double dt,
                 std::span<const ScalarStep> steps, ScalarSystem& system, State& state) {
  const std::size_t bad = advance_scalars(log, domain, state, dt, steps, system);
  if (bad < steps.size()) {
    fail_at_first(log, bad == 0 ? "temperature <= 0 or not finite" : "mass fraction not finite",
                  domain.openings.fluid, steps[bad]);
  }
  if (steps.size() < 2) return;
  share_wide_rows(domain.crew, state.t.box(),
                  [&](std::size_t place, std::size_t count, auto, auto) {
                    leave_rest(count, state.ys[1].data() + place, state.ys[0].data() + place);
                  });
}

}  // namespace

Scalars make_scalars(frame::Log& log, const Domain& domain) {
  const Box& box = domain.grid.box;
  Scalars work{make_sources(domain), flw_init_exner(log, domain),
               make_wet(domain),     SweepRows(box, domain.crew.hands()),
               Field(box),           {}};
  if (domain.settings.species.count() > 1) work.dydt = Field(box);
  return work;
}

void check_specific_heat(frame::Log& log, const Control& control, const Species& species) {
  for (const double T : {control.start.t, control.ambient.t}) {
    for (std::size_t s = 0; s < species.count(); ++s) {
      const double cp = specific_heat(species, s, T);
      if (cp > 0.0) continue;
      log.data_error(frame::items("species,T,cp =", s + 1, T, cp), "cp must be > 0");
    }
  }
}

void flw_cldtdt(frame::Log& log, const Domain& domain, double dt, Scalars& work,
                ScalarSystem& system, State& state) {
  const frame::Tag tag(log, "(flw_cldtdt)");
  set_city_sources(domain.urban, state, work.sources);
  const bool damp = !work.dydt.empty();
  if (work.exner.used()) set_potential(domain.crew, state.t, work.exner);
  std::array<ScalarStep, 2> steps{heat_step(domain, work, state)};
  if (damp) steps[1] = vapour_step(domain, work, state);
  const std::size_t count = damp ? 2 : 1;
  const std::array<Transported, 2> all{steps[0].by, steps[1].by};
  transport(log, domain, state, std::span(all).first(count), Tendency::begins, work.rows);
  add_heat(domain, state, work);
  set_frictions(domain, state, work.wet);
  add_wall_heat(domain, state, steps[0], work.wet);
  if (damp) {
    add_vapour(domain.crew, state, work);
    add_wall_vapour(domain, state, work.wet, work.dydt);
  }
  unst_set_tmprlq();
  unst_set_tmprls();
  advance_all(log, domain, dt, std::span(steps).first(count), system, state);
}

}  // namespace flow
