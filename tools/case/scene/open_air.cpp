#include "scene/open_air.hpp"

#include <algorithm>

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;
constexpr std::size_t kSides = 6;  // west, east, south, north, below, above
constexpr std::size_t kBelow = 4;

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

Cell behind(Cell cell, std::size_t side) {
  cell[side / 2] += side % 2 == 0 ? -1 : 1;
  return cell;
}

void close(const Cell& cell, Porous& air) {
  air.volume[air.at(cell)] = 0.0;
  for (std::size_t side = 0; side < kSides; ++side) {
    air.face[side / 2][side % 2][air.at(cell)] = 0.0;
    const Cell other = behind(cell, side);
    if (air.has(other)) air.face[side / 2][1 - side % 2][air.at(other)] = 0.0;
  }
}

void close_narrow(Porous& air) {
  for_cells(air, [&](const Cell& cell) {
    if (air.volume[air.at(cell)] < kClosedVolume) close(cell, air);
  });
  for (auto& axis : air.face) {
    for (std::vector<double>& faces : axis) {
      std::ranges::replace_if(
          faces, [](double face) { return face < kClosedFace; }, 0.0);
    }
  }
}

/// Marks what the air around and above the district reaches.
std::vector<char> reached_from_outside(const Porous& air) {
  std::vector<char> reached(air.volume.size());
  std::vector<Cell> next;
  const auto enter = [&](const Cell& cell) {
    char& mark = reached[air.at(cell)];
    if (mark == 0) next.push_back(cell);
    mark = 1;
  };
  const auto open = [&](const Cell& cell, std::size_t side) {
    return air.face[side / 2][side % 2][air.at(cell)] > 0.0;
  };
  for_cells(air, [&](const Cell& cell) {
    for (std::size_t side = 0; side < kSides; ++side) {
      if (side != kBelow && open(cell, side) && !air.has(behind(cell, side))) enter(cell);
    }
  });
  while (!next.empty()) {
    const Cell cell = next.back();
    next.pop_back();
    for (std::size_t side = 0; side < kSides; ++side) {
      if (air.has(behind(cell, side)) && open(cell, side)) enter(behind(cell, side));
    }
  }
  return reached;
}

/// A cell that is less open than its faces would drive what passes through it.
void widen(const Cell& cell, Porous& air) {
  double faces = 0.0;
  for (const auto& axis : air.face) {
    for (const std::vector<double>& end : axis) faces += end[air.at(cell)];
  }
  double& volume = air.volume[air.at(cell)];
  volume = std::max(volume, faces / static_cast<double>(kSides));
}

}  // namespace

Porous open_air(const Porous& porous) {
  Porous air = porous;
  close_narrow(air);
  const std::vector<char> reached = reached_from_outside(air);
  for_cells(air, [&](const Cell& cell) {
    if (reached[air.at(cell)] == 0) close(cell, air);
  });
  for_cells(air, [&](const Cell& cell) { widen(cell, air); });
  return air;
}

Cell air_above(const Porous& air, Cell cell) {
  while (air.has(cell) && air.volume[air.at(cell)] == 0.0) ++cell[2];
  return cell;
}

}  // namespace townskin_case
