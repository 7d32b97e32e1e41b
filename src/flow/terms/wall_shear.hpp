// Shear that the walls exert on the air beside them.
//
// A wall holds the air back by its shear stress: by the molecular viscosity over the half cell, or
// by the law of the wall, which stands for the steep profile that a cell cannot resolve. Faces
// where air leaves or is free exert nothing; a slip wall takes up the normal stress alone. First
// stage of the momentum predictor; the diffusion of momentum uses the coefficients again.
#pragma once

#include "flow/metrics.hpp"
#include "flow/rim.hpp"
#include "flow/state.hpp"
#include "flow/terms/velocities.hpp"
#include "flow/terms/wall_friction.hpp"

namespace flow {

/// Speed [m/s] of the air in a cell along a wall normal to `axis`, seen from the wall.
double speed_along(const Group& group, int axis, std::size_t cell, const Velocities& velocities);

/// Coefficients of a face of the rim, stress over difference of velocities [Pa s/m].
struct ShearCoefficient {
  double along = 0.0;   ///< of the two components along the face
  double normal = 0.0;  ///< of the component normal to it
};
using ShearCoefficients = std::array<std::vector<ShearCoefficient>, 3>;

/// Takes the memory of the coefficients.
ShearCoefficients make_shear(const Rim& rim);

/// For the faces of a row of cells, numbered from 0, k outer: reads r, ru, mu, mut and the
/// velocities; writes the coefficients and adds the force of the rim, per volume, to the tendencies
/// of the computed components. The stress is first order in the half
/// cell, which keeps the velocity second order.
void add_wall_shear(const GridTables& grid, const Metrics& metrics, const Rim& rim,
                    const State& state, const Velocities& velocities, std::size_t row,
                    ShearCoefficients& shear, std::array<Field, 3>& dqdt);

}  // namespace flow
