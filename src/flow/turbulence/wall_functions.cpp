#include "flow/turbulence/wall_functions.hpp"

#include <cmath>

#include "flow/terms/wall_shear.hpp"
#include "flow/turbulence/eddy_viscosity.hpp"

namespace flow {

namespace {

/// Mean of `value(wall)` over the walls of a cell, by their area.
template <class Value>
double mean_over(const WallCell& at, const WallFlows& walls, Value&& value) {
  double sum = 0.0;
  double area = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    for (const std::int32_t number : at.face[a]) {
      if (number < 0) continue;
      sum += at.area[a] * value(walls[a][static_cast<std::size_t>(number)]);
      area += at.area[a];
    }
  }
  return sum / area;
}

TurbulenceAt kind_at(const Rim& rim, std::size_t axis, std::int32_t number) {
  if (number < 0) return TurbulenceAt::free;
  const BoundaryFace& at = rim.faces[axis][static_cast<std::size_t>(number)];
  const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
  return is_wall(group, static_cast<int>(axis)) ? group.ik : TurbulenceAt::free;
}

bool has(const Rim& rim, const RimCell& cell, TurbulenceAt kind) {
  for (std::size_t a = 0; a < 3; ++a) {
    for (const std::int32_t number : cell.face[a]) {
      if (kind_at(rim, a, number) == kind) return true;
    }
  }
  return false;
}

}  // namespace

std::vector<WallCell> list_wall_cells(const Domain& domain, const Strain& strain) {
  std::vector<WallCell> cells;
  for (const RimCell& cell : strain.cells) {
    const bool holds_k = has(domain.rim, cell, TurbulenceAt::wall);
    if (!holds_k && !has(domain.rim, cell, TurbulenceAt::k_free)) continue;
    const TurbulenceAt kind = holds_k ? TurbulenceAt::wall : TurbulenceAt::k_free;
    WallCell at{cell.cell, holds_k, {}, {}};
    for (std::size_t a = 0; a < 3; ++a) {
      const double width = domain.grid.axis[a].dx(cell.index[a]);
      at.area[a] = domain.grid.volume(cell.index[0], cell.index[1], cell.index[2]) / width;
      for (std::size_t side = 0; side < 2; ++side) {
        const std::int32_t number = cell.face[a][side];
        at.face[a][side] = kind_at(domain.rim, a, number) == kind ? number : -1;
      }
    }
    cells.push_back(at);
  }
  return cells;
}

double wall_k(const WallCell& at, const WallFlows& walls) {
  return mean_over(at, walls, [](const WallFlow& wall) {
    return wall.friction * wall.friction / std::sqrt(kCmu);
  });
}

double wall_eps(const WallCell& at, const WallFlows& walls, double k) {
  if (at.holds_k) {
    return mean_over(at, walls, [](const WallFlow& wall) {
      return wall.friction * wall.friction * wall.friction / (kKarman * wall.y);
    });
  }
  const double root = std::sqrt(std::sqrt(kCmu) * k);
  const double cube = root * root * root;  // 0.09^0.75 k^1.5
  return mean_over(at, walls, [cube](const WallFlow& wall) { return cube / (kKarman * wall.y); });
}

}  // namespace flow
