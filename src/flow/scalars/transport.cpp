#include "flow/scalars/transport.hpp"

#include <algorithm>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

/// Rows of the sweep: the variables' own fluxes first, the mass behind them all.
constexpr std::size_t kHeat = 1;  ///< what diffuses of a variable with a capacity
constexpr std::size_t kMass = kSweepWidth - 1;

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

Cells cells_of(const Transported& one, std::size_t place) {
  const Field* const capacity = one.diffusivity.molecular == nullptr ? nullptr  //
                                                                     : one.diffusivity.capacity;
  return {one.advected.q->data() + place, capacity == nullptr ? nullptr : capacity->data() + place,
          one.advected.dqdt->data() + place};
}

/// Rows that `all` fill.
bool is_used(std::span<const Transported> all, std::size_t row) {
  return row < all.size() || row == kMass || cells_of(all[0], 0).capacity != nullptr;
}

/// Forms the fluxes of a row of faces.
void form(const Domain& domain, const State& state, std::span<const Transported> all,
          const Muscl& muscl, const FaceRow& row, const FluxRows& out) {
  inner_mass_row(domain.rim, state.ru, row, out[kMass]);
  for (std::size_t v = 0; v < all.size(); ++v) {
    const Field& q = *all[v].advected.q;
    const Diffusivity& by = all[v].diffusivity;
    advected_row(muscl, q, row, out[kMass], out[v]);
    if (by.molecular == nullptr) continue;
    flw_cldif0(domain.metrics, domain.rim, state.mut, by, q, row,
               by.capacity == nullptr ? out[v] : out[kHeat]);
  }
}

}  // namespace

void transport(frame::Log& log, const Domain& domain, const State& state, Variable variable,
               std::span<const Transported> all, double acrk, SweepRows& rows) {
  const Box& box = state.mut.box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  const Muscl muscl(acrk);
  const auto between = [](const FluxRows& above, const FluxRows& below, std::size_t v) {
    return Fluxes{above[v], below[v]};
  };
  sweep_faces(
      box, rows,
      [&](const FaceRow& row, const FluxRows& out) { form(domain, state, all, muscl, row, out); },
      [&](std::size_t place, const FluxRows& fluxes) {
        const FluxRows above{fluxes[0] + 1, fluxes[1] + 1, fluxes[2] + 1};
        for (std::size_t v = 0; v < all.size(); ++v) {
          take_along(n, between(above, fluxes, v), between(above, fluxes, kMass),
                     between(above, fluxes, kHeat), cells_of(all[v], place),
                     AxisMetric::from(domain.metrics[0].inv_width, 1));
        }
      },
      [&](int axis, std::int32_t index, std::size_t place, const FluxRows& fluxes,
          const FluxRows& before) {
        const auto& inv_width = domain.metrics[static_cast<std::size_t>(axis)].inv_width;
        for (std::size_t v = 0; v < all.size(); ++v) {
          take_across(n, between(fluxes, before, v), between(fluxes, before, kMass),
                      between(fluxes, before, kHeat), cells_of(all[v], place),
                      AxisMetric::at(inv_width, index));
        }
        for (std::size_t v = 0; v < kSweepWidth; ++v) {
          if (is_used(all, v)) std::copy_n(fluxes[v], n, before[v]);
        }
      });
  std::array<Advected, kTransportWidth> advected{};
  for (std::size_t v = 0; v < all.size(); ++v) advected[v] = all[v].advected;
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    advect_rim(log, domain.metrics, domain.rim, state.ru, variable,
               std::span(advected).first(all.size()), muscl, axis);
  }
}

}  // namespace flow
