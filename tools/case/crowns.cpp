#include "crowns.hpp"

#include <algorithm>

#include "grid.hpp"
#include "patches.hpp"

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;

constexpr int kPoints = 8;          ///< along each axis of a cell
constexpr double kHardlyAir = 0.5;  ///< open volume below which a cell has no leaves
constexpr double kClosed = 1e-6;    ///< open volume of a cell without air

/// A crown in the frame of the cells.
struct Crown {
  Vector3 middle;
  double radius, half_height;

  [[nodiscard]] bool holds(const Vector3& at) const {
    const double x = (at.x - middle.x) / radius;
    const double y = (at.y - middle.y) / radius;
    const double z = (at.z - middle.z) / half_height;
    return x * x + y * y + z * z <= 1.0;
  }
};

double node(const CellGrid& grid, std::size_t axis, std::int32_t n) {
  return grid.nodes[axis][static_cast<std::size_t>(n)];
}

/// Part of a cell that lies within the crown.
double share_within(const CellGrid& grid, const Crown& crown, const Cell& cell) {
  const auto place = [&](std::size_t axis, int point) {
    const double low = node(grid, axis, cell[axis] - 1);
    return low + (node(grid, axis, cell[axis]) - low) * (point + 0.5) / kPoints;
  };
  int within = 0;
  for (int x = 0; x < kPoints; ++x) {
    for (int y = 0; y < kPoints; ++y) {
      for (int z = 0; z < kPoints; ++z) {
        within += crown.holds({place(0, x), place(1, y), place(2, z)}) ? 1 : 0;
      }
    }
  }
  return static_cast<double>(within) / (kPoints * kPoints * kPoints);
}

void spread(const CellGrid& grid, const Porous& porous, const Tree& tree, Leaves& leaves) {
  const double half = 0.5 * (tree.height - tree.crown_base);
  if (!(half > 0.0) || !(tree.radius > 0.0)) return;
  const Vector3 foot = to_cells(grid, {tree.foot.x, tree.foot.y, 0.0});
  const Crown crown{{foot.x, foot.y, tree.crown_base + half}, tree.radius, half};
  const Vector3 reach{tree.radius, tree.radius, half};
  const auto cells = [&](const Vector3& at) {
    return Cell{cell_of(grid.nodes[0], at.x), cell_of(grid.nodes[1], at.y),
                cell_of(grid.nodes[2], at.z)};
  };
  const Cell low = cells(crown.middle - reach);
  const Cell high = cells(crown.middle + reach);
  Cell cell{};
  for (cell[2] = std::max(low[2], 1); cell[2] <= high[2]; ++cell[2]) {
    for (cell[1] = std::max(low[1], 1); cell[1] <= high[1]; ++cell[1]) {
      for (cell[0] = std::max(low[0], 1); cell[0] <= high[0]; ++cell[0]) {
        if (!porous.has(cell)) continue;
        const double share = share_within(grid, crown, cell);
        if (share == 0.0) continue;
        if (porous.volume[porous.at(cell)] < kHardlyAir) {
          ++leaves.cut;
        } else {
          leaves.density[cell] += share * tree.leaf_area;
        }
      }
    }
  }
}

/// The side of a cell at an end of an axis, turning to the left seen from outside the cell.
Ring3 side_ring(const CellGrid& grid, const Cell& cell, std::size_t axis, int end) {
  const std::size_t u = (axis + 1) % 3;
  const std::size_t v = (axis + 2) % 3;
  Ring3 ring;
  for (const auto& [a, b] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
    std::array<double, 3> at{};
    at[axis] = node(grid, axis, cell[axis] - 1 + end);
    at[u] = node(grid, u, cell[u] - 1 + a);
    at[v] = node(grid, v, cell[v] - 1 + b);
    ring.push_back({at[0], at[1], at[2]});
  }
  if (end == 0) std::ranges::reverse(ring);
  return ring;
}

}  // namespace

Leaves spread_leaves(const City& city, const CellGrid& grid, const Porous& porous, double least) {
  Leaves leaves;
  for (const Tree& tree : city.trees) spread(grid, porous, tree, leaves);
  std::erase_if(leaves.density, [least](const auto& one) { return one.second < least; });
  return leaves;
}

void add_crowns(const Leaves& leaves, const Porous& porous, Scene& scene) {
  for (const auto& [cell, density] : leaves.density) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (const int end : {0, 1}) {
        Cell front = cell;
        front[axis] += end == 0 ? -1 : 1;
        if (leaves.density.contains(front)) continue;
        const bool closed = porous.has(front) && porous.volume[porous.at(front)] < kClosed;
        if (closed || front[2] < 1) continue;
        const std::int32_t group =
            add_group(scene, PatchKind::tree, {{front, side_ring(scene.grid, cell, axis, end)}});
        const double area = scene.groups[static_cast<std::size_t>(group)].area;
        scene.patches.push_back({group, -1, area, "leaves"});
      }
    }
  }
}

}  // namespace townskin_case
