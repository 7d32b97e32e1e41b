#include "scene/parts.hpp"

#include <algorithm>
#include <cmath>

#include "shapes/plan.hpp"

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;

double area_of(const Piece& piece) { return length(area_vector(piece.ring)); }

/// Area of the side of a cell that a face of this normal would cut from it.
double side_of(const CellGrid& grid, const Vector3& normal) {
  const auto size = [&grid](std::size_t a) { return grid.nodes[a][1] - grid.nodes[a][0]; };
  const double x = std::abs(normal.x);
  const double y = std::abs(normal.y);
  const double z = std::abs(normal.z);
  if (z >= x && z >= y) return size(0) * size(1);
  return x >= y ? size(1) * size(2) : size(0) * size(2);
}

/// The largest part in a neighbouring cell; the end when there is none.
Parts::iterator largest_beside(Parts& parts, const Cell& cell) {
  auto best = parts.end();
  for (std::int32_t n = 0; n < 27; ++n) {
    const Cell beside{cell[0] + n % 3 - 1, cell[1] + n / 3 % 3 - 1, cell[2] + n / 9 - 1};
    if (beside == cell) continue;
    const auto found = parts.find(beside);
    if (found == parts.end()) continue;
    if (best == parts.end() || found->second.area > best->second.area) best = found;
  }
  return best;
}

/// Slivers, the smallest first, join their largest neighbours.
void join_slivers(Parts& parts, double least) {
  std::vector<std::pair<double, Cell>> small;
  for (const auto& [cell, part] : parts) {
    if (part.area < least) small.emplace_back(part.area, cell);
  }
  std::ranges::sort(small);
  for (const auto& [area, cell] : small) {
    const auto sliver = parts.find(cell);
    if (sliver->second.area >= least) continue;  // others have joined it
    const auto into = largest_beside(parts, cell);
    if (into == parts.end()) continue;
    into->second.area += sliver->second.area;
    for (Piece& piece : sliver->second.pieces) into->second.pieces.push_back(std::move(piece));
    parts.erase(sliver);
  }
}

}  // namespace

Parts parts_of(const CellGrid& grid, const std::vector<Piece>& pieces, const Vector3& normal,
               double sliver) {
  Parts parts;
  for (const Piece& piece : pieces) {
    const double area = area_of(piece);
    if (area == 0.0) continue;
    Part& part = parts[piece.cell];
    part.area += area;
    part.pieces.push_back(piece);
  }
  join_slivers(parts, sliver * side_of(grid, normal));
  return parts;
}

}  // namespace townskin_case
