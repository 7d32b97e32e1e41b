#include <algorithm>

#include "flow/companions.hpp"
#include "flow/halo.hpp"
#include "flow/row_kernel.hpp"
#include "flow/scalars/transport.hpp"
#include "flow/terms/seven_rows.hpp"
#include "flow/turbulence/turbulence.hpp"

namespace flow {

namespace {

/// What the step needs besides the state.
struct Step {
  const Domain& domain;
  double dt;
  const Velocities& velocities;
  const Field& temperature;
  TurbulenceWork& work;
};

double lowest(const Domain& domain, std::size_t item) {
  return item == 0 ? domain.settings.ambient.aklw : domain.settings.ambient.aelw;
}

/// Coefficient of diffusion of k (item 0) or epsilon (1): mu plus mut times this.
double turbulent_part(std::size_t item) { return 1.0 / (item == 0 ? kSigmaK : kSigmaE); }

Transported transported(const Domain& domain, std::size_t item, TurbulenceWork& work,
                        const State& state) {
  Transported one;
  one.advected = {&state.ak[item], &work.dqdt[item], item};
  one.variable = Variable::turbulence;
  one.acrk = domain.settings.control.acrke;
  if (domain.settings.control.idifk) one.diffusivity = {&state.mu, 1.0, turbulent_part(item)};
  return one;
}

/// Diffusion and advection.
void add_transport(frame::Log& log, const Domain& domain, SweepRows& rows, TurbulenceWork& work,
                   const State& state) {
  std::array<Transported, 2> both;
  for (std::size_t item = 0; item < 2; ++item) {
    both[item] = transported(domain, item, work, state);
  }
  transport(log, domain, state, both, Tendency::begins, rows);
}

/// Diffusion from walls whose k and epsilon are given, over the half cell.
void add_given_walls(const Domain& domain, TurbulenceWork& work, const State& state) {
  if (!domain.settings.control.idifk) return;
  for (const RimPlace& place : work.giving_walls) {
    const BoundaryFace& at = domain.rim.faces[place.axis][place.number];
    const Group& group = domain.rim.groups[static_cast<std::size_t>(at.group)];
    const std::array<double, 2> given{group.k, group.eps};
    const double inv_width =
        AxisMetric::at(domain.metrics[place.axis].inv_width, at.index[place.axis]);
    for (std::size_t item = 0; item < 2; ++item) {
      const double diffusivity = state.mu[at.cell] + turbulent_part(item) * state.mut[at.cell];
      const double transfer =
          domain.rim.wetted[place.axis][place.number] * diffusivity * 2.0 * inv_width;
      work.transfer[item][place.axis][place.number] = transfer;
      work.dqdt[item][at.cell] += transfer * inv_width * (given[item] - state.ak[item][at.cell]);
    }
  }
}

/// A row of one quantity and what changes it.
struct QuantityRow {
  const std::int32_t* fluid;
  const double *r, *volume;
  double least_volume;
  const double *dqdt, *gain, *sink;

  [[nodiscard]] FLOW_INLINE double open(std::size_t i) const {
    return volume[i] < least_volume ? least_volume : volume[i];
  }
};

/// The sink is taken at the end of the step: q stays positive.
FLOW_CLONES void advance_row(std::size_t count, double dt, const QuantityRow& at, double least,
                             double* q) {
  for (std::size_t i = 0; i < count; ++i) {
    const double rate = at.dqdt[i] / at.open(i) + at.gain[i];
    const double next = (at.r[i] * q[i] + dt * rate) / (at.r[i] + dt * at.sink[i]);
    const double held = next < least ? least : next;
    q[i] = at.fluid[i] > 0 ? held : q[i];
  }
}

/// For an implicit step: the whole rate of q and the sink, both per volume of the whole cell.
FLOW_CLONES void rate_row(std::size_t count, const QuantityRow& at, const double* q, double* dqdt,
                          double* sink) {
  for (std::size_t i = 0; i < count; ++i) {
    dqdt[i] += at.open(i) * (at.gain[i] - at.sink[i] * q[i]);
    sink[i] = at.open(i) * at.sink[i];
  }
}

/// Explicit steps go forward at once, implicit ones keep rate and sink.
void take_row(const Step& step, std::size_t place, const SourceRows& sources, State& state) {
  const Domain& domain = step.domain;
  const std::size_t n = sources.gs.size();
  for (std::size_t item = 0; item < 2; ++item) {
    double* const dqdt = step.work.dqdt[item].data() + place;
    double* const q = state.ak[item].data() + place;
    const QuantityRow at{domain.openings.fluid_from(place),
                         state.r[0].data() + place,
                         domain.openings.gmc_from(place),
                         held_fraction(domain),
                         dqdt,
                         sources.gain[item].data(),
                         sources.sink[item].data()};
    if (domain.settings.control.implicit()) {
      rate_row(n, at, q, dqdt, step.work.sink[item].data() + place);
    } else {
      advance_row(n, step.dt, at, lowest(domain, item), q);
    }
  }
}

void add_sources(const Step& step, State& state) {
  const Domain& domain = step.domain;
  for_strain(domain, state, step.velocities, step.work.strain,
             [&](const double* strain, std::size_t place, std::int32_t j, std::int32_t k,
                 std::size_t hand) {
               SourceRows& sources = step.work.sources[hand];
               const CellRow row{place, j, k};
               flw_cldspf(state, row, strain, sources);
               set_buoyancy(domain, step.work.strain, state, step.temperature, row, sources);
               set_sources(state, row, sources);
               flw_clkdrg(domain, state, step.velocities, row, kDragGain, kDragScale, sources);
               take_row(step, place, sources, state);
             });
}

/// The wall routine: calls `hold(cell, value)` with what walls hold of an item; epsilon behind k.
template <class Hold>
void for_held(const Domain& domain, std::size_t item, const TurbulenceWork& work,
              const State& state, Hold&& hold) {
  const double least = lowest(domain, item);
  domain.crew.each(work.wall_cells.size(), kSharedCells / 8, [&](std::size_t n) {
    const WallCell& at = work.wall_cells[n];
    if (item == 0 && !at.holds_k) return;
    const double value = item == 0 ? wall_k(at, work.strain.walls)
                                   : wall_eps(at, work.strain.walls, state.ak[0][at.cell]);
    hold(at.cell, std::max(value, least));
  });
}

/// The implicit step of one item. A wall holds its cell by a sink beyond all others.
void solve(frame::Log& log, const Step& step, std::size_t item, ScalarSystem& system,
           State& state) {
  constexpr double kHold = 1e20;  // [kg/m3 s]
  TurbulenceWork& work = step.work;
  Field& q = state.ak[item];
  for_held(step.domain, item, work, state, [&](std::size_t cell, double value) {
    work.sink[item][cell] = kHold;
    work.dqdt[item][cell] = kHold * (value - q[cell]);
  });
  ScalarStep scalar;
  scalar.q = &q;
  scalar.by = transported(step.domain, item, work, state);
  scalar.sink = &work.sink[item];
  scalar.transfer = &work.transfer[item];
  scalar.least = lowest(step.domain, item);
  scalar.holds = true;
  // What is not finite is found behind the step, with the other fields.
  static_cast<void>(
      advance_scalars(log, step.domain, state, step.dt, std::span(&scalar, 1), system));
}

}  // namespace

void flw_clkeps(frame::Log& log, const Domain& domain, double dt, const Field& temperature,
                Velocities& velocities, SweepRows& rows, ScalarSystem& system, TurbulenceWork& work,
                State& state) {
  const frame::Tag tag(log, "(flw_clkeps)");
  set_velocities(domain.crew, domain.metrics, domain.boundary.ends, state, velocities);
  add_transport(log, domain, rows, work, state);
  add_given_walls(domain, work, state);
  const Step step{domain, dt, velocities, temperature, work};
  add_sources(step, state);
  unst_set_tmprls();
  for (std::size_t item = 0; item < 2; ++item) {
    Field& q = state.ak[item];
    if (domain.settings.control.implicit()) solve(log, step, item, system, state);
    for_held(domain, item, work, state, [&q](std::size_t cell, double value) { q[cell] = value; });
    fill_halos(domain.crew, q, domain.boundary.ends);
  }
}

}  // namespace flow
