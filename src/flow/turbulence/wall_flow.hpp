// The flow along the walls, as turbulence sees it: the friction velocity of each face of the rim,
// and the gradient that the law of the wall has at the centre of the cell beside it.
//
// Set before each use from the velocities in hand, by the same law that gives the shear of the
// momentum predictor; read by the strain and by the wall functions.
#pragma once

#include <array>
#include <vector>

#include "flow/rim.hpp"
#include "flow/terms/velocities.hpp"

namespace flow {

struct WallFlow {
  double y = 0.0;         ///< distance of the centre [m]
  double friction = 0.0;  ///< friction velocity [m/s]; 0 where no wall holds the air back
  /// Gradient at the centre over the difference to the wall's velocity, in the logarithmic part of
  /// the law [1/m]; 0: none, the gradient follows from the velocities.
  double slope = 0.0;
};
using WallFlows = std::array<std::vector<WallFlow>, 3>;

/// A wall: the velocity is given and nothing passes.
[[nodiscard]] bool is_wall(const Group& group, int axis);

/// Takes the memory.
WallFlows make_wall_flows(const GridTables& grid, const Rim& rim);

/// Reads r level 1, mu and the velocities of the cells.
void set_wall_flows(frame::Crew& crew, const Rim& rim, const State& state,
                    const Velocities& velocities, WallFlows& walls);

}  // namespace flow
