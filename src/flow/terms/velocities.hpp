// Velocities from the mass fluxes, as the terms of momentum need them.
//
// The unknowns are the fluxes on the faces; advection and diffusion act on the velocities of the
// cells, and the transposed part of the stress on those of the faces. All are made in one sweep at
// the start of the predictor. Second order.
#pragma once

#include "flow/halo.hpp"
#include "flow/metrics.hpp"
#include "flow/state.hpp"

namespace flow {

struct Velocities {
  std::array<Field, 3> cell;  ///< at the centres, halos filled [m/s]
  std::array<Field, 3> face;  ///< on the faces of their axis, halos filled [m/s]

  Velocities() = default;
  explicit Velocities(const Box& box);
};

/// Reads r level 1 and ru, halos filled; writes all of `velocities` along the computed axes.
void set_velocities(frame::Crew& crew, const Metrics& metrics, const Ends& ends, const State& state,
                    Velocities& velocities);

}  // namespace flow
