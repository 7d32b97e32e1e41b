#include "flow/scalars/cldtdt.hpp"

#include <algorithm>

#include "flow/companions.hpp"
#include "flow/properties.hpp"
#include "flow/row_kernel.hpp"
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
  sources.mass = {Field(), Field(box)};
  sources.drain = Field(box);
  return sources;
}

void set_city_sources(const Urban& urban, const State& state, ScalarSources& sources) {
  if (!urban.heats()) return;
  kpc_set_flux(urban, state, sources.heat, sources.mass.empty() ? nullptr : &sources.mass[1]);
  if (!sources.exchange.empty()) kpc_set_exchange(urban, state, sources.exchange);
}

/// rate = heat over what a kg of q takes up.
void start_heat(const Domain& domain, const State& state, Scalars& work) {
  const Field& heat = work.sources.heat;
  if (heat.empty()) {
    std::ranges::fill(work.dtdt.all(), 0.0);
    return;
  }
  const auto n = static_cast<std::size_t>(domain.grid.box.n[0]);
  for_rows(domain.grid.box, [&](std::size_t place, auto, auto) {
    for (std::size_t c = place; c < place + n; ++c) {
      const double factor = work.exner.used() ? work.exner.function[c] : 1.0;
      work.dtdt[c] = heat[c] / (state.cp[c] * factor);
    }
  });
}

/// What enters takes part of the mixture's mass, and thins the others.
void start_species(const Domain& domain, const State& state, Scalars& work) {
  for (Field& dydt : work.dydt) std::ranges::fill(dydt.all(), 0.0);
  ScalarSources& sources = work.sources;
  if (sources.mass.empty()) return;
  const auto n = static_cast<std::size_t>(domain.grid.box.n[0]);
  for_rows(domain.grid.box, [&](std::size_t place, auto, auto) {
    for (std::size_t c = place; c < place + n; ++c) {
      double sum = 0.0;
      for (const Field& mass : sources.mass) sum += mass.empty() ? 0.0 : mass[c];
      sources.drain[c] = -sum;
      for (std::size_t s = 1; s < state.ys.size(); ++s) {
        const double own = sources.mass[s].empty() ? 0.0 : sources.mass[s][c];
        work.dydt[s - 1][c] = own - state.ys[s][c] * sum;
      }
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
  if (!work.sources.exchange.empty()) step.sink = &work.sources.exchange;
  step.transfer = &work.wet.fwtt;
  step.factor = potential ? &work.exner.function : nullptr;
  step.least = std::numeric_limits<double>::min();
  return step;
}

ScalarStep species_step(const Domain& domain, Scalars& work, std::size_t s, State& state) {
  const Settings& settings = domain.settings;
  ScalarStep step;
  step.q = &state.ys[s];
  step.variable = Variable::species;
  step.by.advected = {&state.ys[s], &work.dydt[s - 1], s};
  if (settings.control.idift) {
    step.by.diffusivity = {&state.dif[s], 1.0, turbulent_factor(settings.control.scturb)};
  }
  step.transfer = &work.wet.fwty[s];
  step.least = 0.0;
  step.raises = true;
  return step;
}

void transport_species(frame::Log& log, const Domain& domain, Scalars& work, State& state) {
  for (std::size_t s = 1; s < state.ys.size(); ++s) {
    const Transported one = species_step(domain, work, s, state).by;
    transport(log, domain, state, Variable::species, std::span(&one, 1),
              domain.settings.control.acrky, work.rows);
  }
}

FLOW_CLONES void add_fraction(std::size_t count, const double* y, double* sum) {
  for (std::size_t i = 0; i < count; ++i) sum[i] += y[i];
}

FLOW_CLONES void leave_rest(std::size_t count, double* first) {
  for (std::size_t i = 0; i < count; ++i) first[i] = first[i] < 1.0 ? 1.0 - first[i] : 0.0;
}

/// The first species is what the others leave; where they are more than all, they share it.
void close_mixture(State& state) {
  if (state.ys.size() < 2) return;
  for_wide_rows(state.t.box(), [&](std::size_t place, std::size_t count, auto, auto) {
    double* const first = state.ys[0].data() + place;
    std::fill_n(first, count, 0.0);
    for (std::size_t s = 1; s < state.ys.size(); ++s) {
      add_fraction(count, state.ys[s].data() + place, first);
    }
    for (std::size_t i = 0; i < count; ++i) {
      if (first[i] <= 1.0) continue;
      for (std::size_t s = 1; s < state.ys.size(); ++s) state.ys[s][place + i] /= first[i];
    }
    leave_rest(count, first);
  });
}

void advance_all(frame::Log& log, const Domain& domain, double dt, Scalars& work,
                 ScalarSystem& system, State& state) {
  const Flags& fluid = domain.openings.fluid;
  const ScalarStep heat = heat_step(domain, work, state);
  if (!advance_scalar(log, domain, state, dt, heat, system)) {
    fail_at_first(log, "temperature <= 0 or not finite", fluid, state.t, heat.least);
  }
  for (std::size_t s = 1; s < state.ys.size(); ++s) {
    const ScalarStep step = species_step(domain, work, s, state);
    if (!advance_scalar(log, domain, state, dt, step, system)) {
      fail_at_first(log, "mass fraction not finite", fluid, state.ys[s], step.least);
    }
  }
  close_mixture(state);
}

}  // namespace

Scalars make_scalars(frame::Log& log, const Domain& domain) {
  const Box& box = domain.grid.box;
  const std::size_t others = domain.settings.species.count() - 1;
  return {make_sources(domain), flw_init_exner(log, domain),
          make_wet(domain),     SweepRows(box),
          Field(box),           std::vector<Field>(others, Field(box))};
}

void check_specific_heat(frame::Log& log, const Control& control, const Species& species) {
  for (const double T : {control.start.t, control.ambient.t}) {
    for (std::size_t s = 0; s < species.count(); ++s) {
      const double cp = specific_heat(species, s, T);
      if (cp > 0.0) continue;
      log.data_error(frame::items("species,T,cp =", s + 1, T, cp), "Cp must be > 0");
    }
  }
}

void flw_cldtdt(frame::Log& log, const Domain& domain, double dt, Scalars& work,
                ScalarSystem& system, State& state) {
  const frame::Tag tag(log, "(flw_cldtdt)");
  set_city_sources(domain.urban, state, work.sources);
  if (work.exner.used()) set_potential(state.t, work.exner);
  const Transported heat = heat_step(domain, work, state).by;
  start_heat(domain, state, work);
  start_species(domain, state, work);
  add_wall_heat(domain, state, *heat.advected.q, heat.advected.given,
                work.exner.used() ? &work.exner.function : nullptr, work.wet, work.dtdt);
  for (std::size_t s = 1; s < state.ys.size(); ++s) {
    add_wall_vapour(domain, state, s, work.wet, work.dydt[s - 1]);
  }
  transport(log, domain, state, Variable::temperature, std::span(&heat, 1),
            domain.settings.control.acrkt, work.rows);
  transport_species(log, domain, work, state);
  unst_set_tmprlq();
  unst_set_tmprls();
  advance_all(log, domain, dt, work, system, state);
}

}  // namespace flow
