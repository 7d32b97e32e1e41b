// Damping of waves of two cells, which the velocities of the cells do not hold.
//
// Advection and diffusion of momentum act on the cells, whose velocity is the mean of two faces. A
// wave of two cells along the axis of the faces is not in it: nothing would take it from the faces
// again, and where obstacles leave such waves they would stand and feed turbulence. What is unseen
// of a face, half the difference of what passes it from the mean of the faces beside it, changes
// its sign from face to face in such a wave, and keeps it in a smooth flow. Where it changes, it
// diffuses along the axis by half of mu + mut and by an eighth of the flux of its faces; elsewhere
// nothing is done, so that the order of the scheme stays. Last stage of the momentum predictor.
#pragma once

#include "flow/terms/domain.hpp"
#include "flow/terms/face_sweep.hpp"

namespace flow {

/// Adds to the rates of the inner faces of a row, the first of which is not before face 1: face 0
/// of a periodic axis takes what the last one becomes. `velocity` is that on the faces of the axis,
/// halos filled; reads r, mu, mut. The cells beside the rim let nothing through.
void damp_waves(const Domain& domain, const State& state, const Field& velocity, const FaceRow& row,
                double* rate);

}  // namespace flow
