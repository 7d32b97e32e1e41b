#include "flow/turbulence/wall_flow.hpp"

#include <algorithm>
#include <cmath>

#include "flow/share.hpp"
#include "flow/terms/wall_shear.hpp"

namespace flow {

namespace {

constexpr double kTiny = 1e-20;  ///< no divisor is below it

/// The flow along a wall that follows the law.
void set_by_law(const WallLayer& layer, double friction, WallFlow& wall) {
  wall.friction = friction;
  wall.slope = 0.0;
  if (friction * layer.y / layer.nu <= wall_law_crossing()) return;
  wall.slope = friction / (kKarman * layer.y * layer.speed);
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
    crew.share(rim.faces[a].size(), kSharedCells / 8, [&](frame::Crew::Stretch part) {
      WallQueue by_law([&](std::size_t f, const WallLayer& layer, double friction) {
        set_by_law(layer, friction, walls[a][f]);
      });
      for (std::size_t f = part.first; f < part.last; ++f) {
        const BoundaryFace& at = rim.faces[a][f];
        const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
        if (!is_wall(group, axis)) continue;
        WallFlow& wall = walls[a][f];
        const double nu = std::max(state.mu[at.cell], kTiny) / state.r[0][at.cell];
        const double speed = speed_along(group, axis, at.cell, velocities);
        if (group.iv == VelocityAt::log_wall) {
          by_law.add(f, {speed, wall.y, nu});
        } else {
          wall.friction = std::sqrt(speed * nu / wall.y);
          wall.slope = 0.0;
        }
      }
      by_law.finish();
    });
  }
}

}  // namespace flow
