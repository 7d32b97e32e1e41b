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
void flw_cldifv(frame::Crew& crew, const Metrics& metrics, const Rim& rim, const State& state,
                const Velocities& velocities, const ShearCoefficients& shear, SweepRows& rows,
                std::array<Field, 3>& dqdt, RowStart begin = kGoOn);

/// The transposed part beside the rim. On the faces that stand on the rim: the sweep took
/// velocities from beyond it for their gradient across it.
void correct_standing_faces(frame::Crew& crew, const Metrics& metrics, const Rim& rim,
                            const State& state, const Velocities& velocities,
                            const ShearCoefficients& shear, std::array<Field, 3>& dqdt);
/// On the rim itself, where the sweep takes nothing: at slip walls the normal part, as a mirror
/// gives it; at free faces all, so that a flow that is the same along the axis is not disturbed.
void add_rim_stress(frame::Crew& crew, const Metrics& metrics, const Rim& rim, const State& state,
                    const Velocities& velocities, const ShearCoefficients& shear,
                    std::array<Field, 3>& dqdt);

}  // namespace flow
