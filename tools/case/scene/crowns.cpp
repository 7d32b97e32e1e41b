#include "scene/crowns.hpp"

#include <algorithm>

#include "scene/grid.hpp"
#include "scene/groups.hpp"

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;

constexpr int kPoints = 8;          ///< along each axis of a cell
constexpr double kHardlyAir = 0.5;  ///< open volume below which a cell has no leaves

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

/// The cell of the grid that holds a tree cell; indices beyond the grid stay beyond it.
Cell cell_around(const Leaves& leaves, const Cell& cell) {
  const auto coarse = [&leaves](std::int32_t index) {
    return index < 1 ? 0 : (index - 1) / leaves.division + 1;
  };
  return {coarse(cell[0]), coarse(cell[1]), cell[2]};
}

CellGrid tree_cells(const CellGrid& grid, std::int32_t division) {
  CellGrid fine = grid;
  for (const std::size_t axis : {std::size_t{0}, std::size_t{1}}) {
    fine.nodes[axis] = {grid.nodes[axis].front()};
    for (std::size_t n = 1; n < grid.nodes[axis].size(); ++n) {
      const double low = grid.nodes[axis][n - 1];
      const double high = grid.nodes[axis][n];
      for (std::int32_t part = 1; part < division; ++part) {
        fine.nodes[axis].push_back(low + (high - low) * part / division);
      }
      fine.nodes[axis].push_back(high);
    }
  }
  return fine;
}

void spread(const Porous& porous, const Tree& tree, Leaves& leaves) {
  const CellGrid& grid = leaves.cells;
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
        const Cell around = cell_around(leaves, cell);
        const double share = porous.has(around) ? share_within(grid, crown, cell) : 0.0;
        if (share == 0.0) continue;
        if (porous.volume[porous.at(around)] < kHardlyAir) {
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

Leaves spread_leaves(const City& city, const CellGrid& grid, const Porous& porous,
                     std::int32_t division, double least) {
  Leaves leaves;
  leaves.division = division;
  leaves.cells = tree_cells(grid, division);
  for (const Tree& tree : city.trees) spread(porous, tree, leaves);
  std::erase_if(leaves.density, [least](const auto& one) { return one.second < least; });
  return leaves;
}

void add_crowns(const Leaves& leaves, Scene& scene) {
  scene.tree_division = leaves.division;
  for (const auto& [cell, density] : leaves.density) {
    scene.leaves.push_back({cell, density});
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (const int end : {0, 1}) {
        Cell front = cell;
        front[axis] += end == 0 ? -1 : 1;
        if (leaves.density.contains(front)) continue;
        add_group(scene, PatchKind::tree, {{cell, side_ring(leaves.cells, cell, axis, end)}});
      }
    }
  }
}

}  // namespace townskin_case
