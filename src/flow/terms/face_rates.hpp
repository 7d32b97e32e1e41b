// Rates of change of the mass fluxes on the faces.
//
// The last stage of the momentum predictor: the tendencies of the two cells beside a face in the
// mean that is linear between their centres, the gradient of the pressure, and gravity on the
// density that exceeds the ambient one. At a free face of the rim the cell's own tendency and the
// gradient over its half towards the pressure of the condition.
//
// A flux is that of the open part of its face, and pressure acts on all air alike: on a partly open
// face the gradient counts whole, as in the correction of the pressure step. Tendencies are forces
// and fluxes per whole volume of a cell and divide by the open fraction of it.
// Waves of two cells are damped here (face_waves.hpp).
#pragma once

#include <span>

#include "flow/terms/domain.hpp"
#include "flow/terms/face_sweep.hpp"
#include "flow/terms/velocities.hpp"

namespace flow {

/// Brings ru of the computed axes forward by dt [s] at inner and free faces. Reads p, r level 1,
/// mu, mut, the velocities that the step began with, and the tendencies `dqdt` of the centres, with
/// halos along a periodic axis. Second order.
/// `rows` has a row of scratch for each hand.
void advance_faces(const Domain& domain, const std::array<Field, 3>& dqdt,
                   const Velocities& velocities, double dt, SweepRows& rows, State& state);

/// The rates of one axis as a field, 0 at faces that are neither inner nor free.
void set_face_rates(const Domain& domain, const Field& dqdt, const Velocities& velocities, int axis,
                    const State& state, std::span<double> scratch, Field& rate);

}  // namespace flow
