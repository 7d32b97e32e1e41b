// Damping of waves of two cells, which the velocities of the cells do not hold.
//
// Advection and diffusion of momentum act on the cells, whose velocity is the mean of two faces. A
// wave of two cells along the axis of the faces is not in it: nothing would take it from the faces
// again, and where edges leave such waves they would stay and feed turbulence. What is unseen of a
// face, the difference of its velocity from the mean of the cells beside it, changes its sign from
// face to face in such a wave, and keeps it in a smooth flow. Where it changes, it diffuses along
// the axis by half of mu + mut and by an eighth of what passes a cell; elsewhere nothing is done,
// so that the order of the scheme stays. Last stage of the momentum predictor.
#pragma once

#include "flow/terms/domain.hpp"
#include "flow/terms/face_sweep.hpp"
#include "flow/terms/velocities.hpp"

namespace flow {

/// Adds to the rates of the inner faces of a row. Reads r, mu, mut and the velocities with their
/// halos; the cells beside the rim let nothing through.
void damp_waves(const Domain& domain, const State& state, const Velocities& velocities,
                const FaceRow& row, double* rate);

}  // namespace flow
