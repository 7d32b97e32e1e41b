#include "flow/scalars/transport.hpp"

#include <algorithm>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

/// Rows of the sweep: one of each variable, those of heat behind them, the mass last.
constexpr std::size_t kMass = kSweepWidth - 1;

/// What goes through together, and the row of its heat (kMass: none).
struct Passenger {
  Transported of;
  Muscl muscl;
  std::size_t heat;
};

/// Fluxes above and below the cells of a row.
struct Fluxes {
  const double* above;
  const double* below;

  FLOW_INLINE double difference(std::size_t i) const { return above[i] - below[i]; }
};

template <class Width>
FLOW_INLINE void take(std::size_t count, const Fluxes& flux, const Fluxes& mass, const double* q,
                      Width inv_width, double* __restrict dqdt) {
  for (std::size_t i = 0; i < count; ++i) {
    dqdt[i] -= (flux.difference(i) - q[i] * mass.difference(i)) * inv_width[i];
  }
}

template <class Width>
FLOW_INLINE void take_with_heat(std::size_t count, const Fluxes& flux, const Fluxes& mass,
                                const Fluxes& heat, const double* q, const double* capacity,
                                Width inv_width, double* __restrict dqdt) {
  for (std::size_t i = 0; i < count; ++i) {
    const double carried = flux.difference(i) - q[i] * mass.difference(i);
    dqdt[i] -= (carried + heat.difference(i) / capacity[i]) * inv_width[i];
  }
}

/// The cells of a row, of one variable.
struct Cells {
  const double* q;
  const double* capacity;
  double* dqdt;
};

template <class Width>
FLOW_INLINE void take_row(std::size_t count, const Fluxes& flux, const Fluxes& mass,
                          const Fluxes& heat, const Cells& cells, Width inv_width) {
  if (cells.capacity == nullptr) {
    take(count, flux, mass, cells.q, inv_width, cells.dqdt);
  } else {
    take_with_heat(count, flux, mass, heat, cells.q, cells.capacity, inv_width, cells.dqdt);
  }
}

FLOW_CLONES void take_along(std::size_t count, const Fluxes& flux, const Fluxes& mass,
                            const Fluxes& heat, const Cells& cells, const double* inv_width) {
  take_row(count, flux, mass, heat, cells, inv_width);
}

FLOW_CLONES void take_across(std::size_t count, const Fluxes& flux, const Fluxes& mass,
                             const Fluxes& heat, const Cells& cells, double inv_width) {
  take_row(count, flux, mass, heat, cells, Same{inv_width});
}

Cells cells_of(const Passenger& one, std::size_t place) {
  const Field* const capacity = one.of.diffusivity.capacity;
  return {one.of.advected.q->data() + place, one.heat == kMass ? nullptr : capacity->data() + place,
          one.of.advected.dqdt->data() + place};
}

using Passengers = std::array<Passenger, kTransportWidth>;

/// Fills the first of the seats.
void seat(std::span<const Transported> all, Passengers& seated) {
  std::size_t heat = all.size();
  for (std::size_t v = 0; v < all.size(); ++v) {
    const Diffusivity& by = all[v].diffusivity;
    const bool warms = by.molecular != nullptr && by.capacity != nullptr;
    seated[v] = {all[v], Muscl(all[v].acrk), warms ? heat++ : kMass};
  }
}

/// What a sweep works on.
struct Sweep {
  const Domain& domain;
  const State& state;
  std::span<const Passenger> all;
  Tendency before;
  std::size_t rows;  ///< of fluxes, without the mass
};

/// Forms the fluxes of a row of faces.
void form(const Sweep& sweep, const FaceRow& row, const FluxRows& out) {
  const Domain& domain = sweep.domain;
  inner_mass_row(domain.rim, sweep.state.ru, row, out[kMass]);
  for (std::size_t v = 0; v < sweep.all.size(); ++v) {
    const Passenger& one = sweep.all[v];
    const Field& q = *one.of.advected.q;
    advected_row(one.muscl, q, row, out[kMass], out[v]);
    if (one.of.diffusivity.molecular == nullptr) continue;
    flw_cldif0(domain.metrics, domain.rim, sweep.state.mut, one.of.diffusivity, q, row,
               one.heat == kMass ? out[v] : out[one.heat]);
  }
}

Fluxes between(const FluxRows& above, const FluxRows& below, std::size_t row) {
  return {above[row], below[row]};
}

/// Where the tendencies begin, so does a row of cells.
void start(const Sweep& sweep, std::size_t place, std::size_t count) {
  if (sweep.before == Tendency::adds) return;
  for (const Passenger& one : sweep.all) std::fill_n(cells_of(one, place).dqdt, count, 0.0);
}

void sweep_all(const Sweep& sweep, SweepRows& rows) {
  const Box& box = sweep.state.mut.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  const auto begin = [&](std::size_t place, auto, auto) { start(sweep, place, n); };
  sweep_faces(
      sweep.domain.crew, box, rows, begin,
      [&](const FaceRow& row, const FluxRows& out, auto) { form(sweep, row, out); },
      [&](std::size_t place, const FluxRows& fluxes) {
        FluxRows above = fluxes;
        for (double*& row : above) ++row;
        for (std::size_t v = 0; v < sweep.all.size(); ++v) {
          take_along(n, between(above, fluxes, v), between(above, fluxes, kMass),
                     between(above, fluxes, sweep.all[v].heat), cells_of(sweep.all[v], place),
                     AxisMetric::from(sweep.domain.metrics[0].inv_width, 1));
        }
      },
      [&](int axis, std::int32_t index, std::size_t place, const FluxRows& fluxes,
          const FluxRows& before) {
        const auto& inv_width = sweep.domain.metrics[static_cast<std::size_t>(axis)].inv_width;
        for (std::size_t v = 0; v < sweep.all.size(); ++v) {
          take_across(n, between(fluxes, before, v), between(fluxes, before, kMass),
                      between(fluxes, before, sweep.all[v].heat), cells_of(sweep.all[v], place),
                      AxisMetric::at(inv_width, index));
        }
        for (std::size_t v = 0; v < sweep.rows; ++v) std::copy_n(fluxes[v], n, before[v]);
        std::copy_n(fluxes[kMass], n, before[kMass]);
      });
}

}  // namespace

void transport(frame::Log& log, const Domain& domain, const State& state,
               std::span<const Transported> all, Tendency before, SweepRows& rows) {
  const Box& box = domain.grid.box;
  Passengers seated{};
  seat(all, seated);
  const std::span<const Passenger> used = std::span(seated).first(all.size());
  const auto warm = std::ranges::count_if(used, [](auto& one) { return one.heat != kMass; });
  sweep_all({domain, state, used, before, all.size() + static_cast<std::size_t>(warm)}, rows);
  std::array<Carried, kTransportWidth> carried{};
  for (std::size_t v = 0; v < all.size(); ++v) {
    carried[v] = {all[v].advected, all[v].variable, seated[v].muscl};
  }
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    advect_rim(log, domain.crew, domain.metrics, domain.rim, state.ru,
               std::span(carried).first(all.size()), axis);
  }
}

}  // namespace flow
