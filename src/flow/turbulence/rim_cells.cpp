#include "flow/turbulence/rim_cells.hpp"

#include <algorithm>

namespace flow {

namespace {

/// Numbers of the faces of the rim at each side of a cell, for all cells.
using Numbers = std::array<std::array<Flags, 2>, 3>;

Numbers numbers_of(const Rim& rim, const Box& box) {
  Numbers numbers;
  for (std::size_t a = 0; a < 3; ++a) {
    for (Flags& of : numbers[a]) of = Flags(box, RimCell::kClosed);
    for (std::size_t f = 0; f < rim.faces[a].size(); ++f) {
      const BoundaryFace& at = rim.faces[a][f];
      numbers[a][at.side < 0 ? 0 : 1][at.cell] = static_cast<std::int32_t>(f);
    }
  }
  return numbers;
}

}  // namespace

std::vector<RimCell> list_rim_cells(const Rim& rim, const Openings& openings) {
  const Box& box = openings.fluid.box();
  const Numbers numbers = numbers_of(rim, box);
  std::vector<RimCell> cells;
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= box.n[0]; ++i, ++place) {
      if (openings.fluid[place] <= 0) continue;
      RimCell cell{place, {i, j, k}, {}};
      bool beside = false;
      for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        cell.face[a] = {RimCell::kAir, RimCell::kAir};
        if (!box.computed(axis)) continue;
        for (std::size_t side = 0; side < 2; ++side) {
          if (rim.inner[a][side == 0 ? place - box.stride(axis) : place] > 0.0) continue;
          cell.face[a][side] = numbers[a][side][place];
          beside = true;
        }
      }
      if (beside) cells.push_back(cell);
    }
  });
  return cells;
}

std::span<const RimCell> cells_of_row(const std::vector<RimCell>& cells, std::size_t place,
                                      const Box& box) {
  const auto first = std::ranges::lower_bound(cells, place, {}, &RimCell::cell);
  auto last = first;
  while (last != cells.end() && last->cell < place + static_cast<std::size_t>(box.n[0])) ++last;
  return {first, last};
}

std::array<CentreSlope, 3> make_centre_slopes(const GridTables& grid) {
  std::array<CentreSlope, 3> slopes;
  for (std::size_t a = 0; a < 3; ++a) {
    const AxisTable& table = grid.axis[a];
    const auto size = static_cast<std::size_t>(table.cells) + 2 * static_cast<std::size_t>(kHalo);
    slopes[a].lower.assign(size, 0.0);
    slopes[a].upper.assign(size, 0.0);
    for (std::int32_t i = 0; i <= table.cells + 1; ++i) {
      const auto place = static_cast<std::size_t>(std::ptrdiff_t{i} + 1);
      const double below = table.dxc(i - 1);
      const double above = table.dxc(i);
      slopes[a].lower[place] = above / (below * (below + above));
      slopes[a].upper[place] = below / (above * (below + above));
    }
  }
  return slopes;
}

}  // namespace flow
