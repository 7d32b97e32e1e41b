#include "flow/turbulence/wall_flow.hpp"

#include <algorithm>
#include <cmath>

#include "flow/share.hpp"
#include "flow/terms/wall_shear.hpp"

namespace flow {

namespace {

constexpr double kTiny = 1e-20;  ///< no divisor is below it

void set_flow(const Group& group, double speed, double nu, WallFlow& wall) {
  wall.slope = 0.0;
  if (group.iv != VelocityAt::log_wall) {
    wall.friction = std::sqrt(speed * nu / wall.y);
    return;
  }
  wall.friction = friction_velocity(speed, wall.y, nu);
  if (wall.friction * wall.y / nu <= wall_law_crossing()) return;
  wall.slope = wall.friction / (kKarman * wall.y * speed);
}

}  // namespace

bool is_wall(const Group& group, int axis) {
  return group.gives_velocity() && group.velocity[static_cast<std::size_t>(axis)] == 0.0;
}

WallFlows make_wall_flows(const GridTables& grid, const Rim& rim) {
  WallFlows walls;
  for (std::size_t a = 0; a < 3; ++a) {
    for (const BoundaryFace& at : rim.faces[a]) {
      walls[a].push_back({0.5 * grid.axis[a].dx(at.index[a])});
    }
  }
  return walls;
}

void set_wall_flows(frame::Crew& crew, const Rim& rim, const State& state,
                    const Velocities& velocities, WallFlows& walls) {
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    crew.each(rim.faces[a].size(), kSharedCells / 8, [&](std::size_t f) {
      const BoundaryFace& at = rim.faces[a][f];
      const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
      if (!is_wall(group, axis)) return;
      const double nu = std::max(state.mu[at.cell], kTiny) / state.r[0][at.cell];
      set_flow(group, speed_along(group, axis, at.cell, velocities), nu, walls[a][f]);
    });
  }
}

}  // namespace flow
