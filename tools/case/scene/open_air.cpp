#include "scene/open_air.hpp"

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;

/// Calls `use(cell)` for all cells, i fastest.
template <class Use>
void for_cells(const Porous& porous, Use&& use) {
  Cell cell{};
  for (cell[2] = 1; cell[2] <= porous.cells[2]; ++cell[2]) {
    for (cell[1] = 1; cell[1] <= porous.cells[1]; ++cell[1]) {
      for (cell[0] = 1; cell[0] <= porous.cells[0]; ++cell[0]) use(cell);
    }
  }
}

/// The cell behind a side (0 to 5: west, east, south, north, below, above).
Cell behind(Cell cell, std::size_t side) {
  cell[side / 2] += side % 2 == 0 ? -1 : 1;
  return cell;
}

/// Marks what the air of the outermost cells reaches.
std::vector<char> reached_from_outside(const Porous& porous) {
  std::vector<char> reached(porous.volume.size());
  std::vector<Cell> next;
  const auto enter = [&](const Cell& cell) {
    char& mark = reached[porous.at(cell)];
    if (mark != 0 || porous.volume[porous.at(cell)] == 0.0) return;
    mark = 1;
    next.push_back(cell);
  };
  for_cells(porous, [&](const Cell& cell) {
    for (std::size_t side = 0; side < 6; ++side) {
      const double face = porous.face[side / 2][side % 2][porous.at(cell)];
      const bool of_ground = side == 4;
      if (!of_ground && face >= kClosedFace && !porous.has(behind(cell, side))) enter(cell);
    }
  });
  while (!next.empty()) {
    const Cell cell = next.back();
    next.pop_back();
    for (std::size_t side = 0; side < 6; ++side) {
      const Cell other = behind(cell, side);
      if (!porous.has(other)) continue;
      if (porous.face[side / 2][side % 2][porous.at(cell)] >= kClosedFace) enter(other);
    }
  }
  return reached;
}

bool open_or_beside(const Porous& porous, const Cell& cell) {
  const auto open = [&](const Cell& one) {
    return porous.has(one) && porous.volume[porous.at(one)] > 0.0;
  };
  bool any = open(cell);
  for (std::size_t side = 0; side < 6; ++side) any = any || open(behind(cell, side));
  return any;
}

}  // namespace

std::size_t close_pockets(Porous& porous) {
  const std::vector<char> reached = reached_from_outside(porous);
  std::size_t closed = 0;
  for_cells(porous, [&](const Cell& cell) {
    const std::size_t at = porous.at(cell);
    if (reached[at] != 0) return;
    closed += porous.volume[at] > 0.0 ? 1 : 0;
    porous.volume[at] = 0.0;
    for (std::size_t side = 0; side < 6; ++side) {
      porous.face[side / 2][side % 2][at] = 0.0;
      const Cell other = behind(cell, side);
      if (porous.has(other)) porous.face[side / 2][1 - side % 2][porous.at(other)] = 0.0;
    }
  });
  return closed;
}

Cell open_cell(const Porous& porous, Cell cell) {
  while (porous.has(cell) && !open_or_beside(porous, cell)) ++cell[2];
  return cell;
}

}  // namespace townskin_case
