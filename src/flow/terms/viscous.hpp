// flw_cldifv: diffusion of momentum, the divergence of (mu + mut)(grad u + its transpose).
//
// Second order in space. The gradient across a face is that of the cell values; the transposed
// part is formed from the velocities on the faces, where the discrete continuity holds, so that it
// vanishes with a uniform viscosity and grid as it does in the equations. Second stage of the
// momentum predictor.
#pragma once

#include "flow/metrics.hpp"
#include "flow/rim.hpp"
#include "flow/state.hpp"
#include "flow/terms/face_sweep.hpp"
#include "flow/terms/velocities.hpp"
#include "flow/terms/wall_shear.hpp"

namespace flow {

/// Reads mu, mut and the velocities with their halos, and the coefficients of the rim's shear;
/// adds to the tendencies of the computed components. What the rim itself exerts comes from
/// add_wall_shear.
void flw_cldifv(const Metrics& metrics, const Rim& rim, const State& state,
                const Velocities& velocities, const ShearCoefficients& shear, SweepRows& rows,
                std::array<Field, 3>& dqdt);

/// The transposed part at the faces beside the rim: the sweep takes velocities from beyond it.
void correct_viscous_rim(const Metrics& metrics, const Rim& rim, const State& state,
                         const Velocities& velocities, const ShearCoefficients& shear,
                         std::array<Field, 3>& dqdt);

}  // namespace flow
