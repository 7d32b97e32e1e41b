// Velocity at the centre of a cell, from the mass fluxes on its faces.
#pragma once

#include "flow/settings.hpp"
#include "flow/state.hpp"

namespace flow {

/// The three components at a place of the fields [m/s]: the mean flux of both faces over the
/// density, of second order on a uniform grid.
inline Vector velocity_at(const State& state, std::size_t place) {
  Vector u{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const Field& ru = state.ru[axis];
    const std::size_t below = place - ru.box().stride(static_cast<int>(axis));
    u[axis] = 0.5 * (ru[below] + ru[place]) / state.r[0][place];
  }
  return u;
}

}  // namespace flow
