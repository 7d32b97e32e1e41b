#include "flow/turbulence/wall_distance.hpp"

#include <algorithm>
#include <limits>

#include "flow/turbulence/wall_flow.hpp"

namespace flow {

namespace {

constexpr double kFar = std::numeric_limits<double>::infinity();

/// Lines of cells along one axis.
struct Lines {
  const AxisTable& table;
  std::int32_t n;
  bool wraps;
  double length;

  /// Node i, from 0; beyond the ends those of the repeated domain.
  [[nodiscard]] double node(std::int32_t i) const {
    if (i >= 0 && i <= n) return table.x(i + 1);
    const std::int32_t round = i < 0 ? -1 : 1;
    return table.x(i - round * n + 1) + round * length;
  }
  /// Cell that stands for cell i, from 0; -1: there is none.
  [[nodiscard]] std::int32_t cell(std::int32_t i) const {
    if (i >= 0 && i < n) return i;
    if (!wraps) return -1;
    return i < 0 ? i + n : i - n;
  }
};

Lines lines_of(const Domain& domain, int axis) {
  const auto a = static_cast<std::size_t>(axis);
  const AxisTable& table = domain.grid.axis[a];
  const std::int32_t n = table.cells;
  return {table, n, domain.boundary.ends[a][0] == End::periodic, table.x(n + 1) - table.x(1)};
}

/// Calls `use(place)` with the first cell of each line along an axis.
template <class Use>
void for_lines(const Box& box, int axis, Use&& use) {
  Triple last = box.n;
  last[static_cast<std::size_t>(axis)] = 1;
  for (std::int32_t k = 1; k <= last[2]; ++k) {
    for (std::int32_t j = 1; j <= last[1]; ++j) {
      for (std::int32_t i = 1; i <= last[0]; ++i) use(box.at(i, j, k));
    }
  }
}

/// Distances along the normal: from walls on the nodes of each line.
void set_along_normal(const Domain& domain, int axis, const Flags& wall, Field& square) {
  const Lines lines = lines_of(domain, axis);
  const std::size_t s = square.box().stride(axis);
  const std::int32_t beyond = lines.wraps ? lines.n : 0;
  for_lines(square.box(), axis, [&](std::size_t place) {
    const auto at = [&](std::int32_t i) { return place + static_cast<std::size_t>(i) * s; };
    double nearest = -kFar;
    for (std::int32_t i = -beyond; i < lines.n; ++i) {
      const std::size_t cell = at(lines.cell(i));
      if (wall[cell - s] > 0) nearest = lines.node(i);
      const double d = lines.table.xc(lines.cell(i) + 1) - nearest;
      if (i >= 0) square[cell] = d * d;
    }
    nearest = kFar;
    for (std::int32_t i = lines.n - 1 + beyond; i >= 0; --i) {
      const std::size_t cell = at(lines.cell(i));
      if (wall[cell] > 0) nearest = lines.node(i + 1);
      if (i >= lines.n) continue;
      const double d = nearest - lines.table.xc(i + 1);
      square[cell] = std::min(square[cell], d * d);
    }
  });
}

/// The least of the squares on a line, each with that of the way to its cell.
double least_from(const Lines& lines, const std::vector<double>& line, std::int32_t own) {
  double least = line[static_cast<std::size_t>(own)];
  const double x = lines.table.xc(own + 1);
  for (const std::int32_t way : {-1, 1}) {
    for (std::int32_t m = 1; m <= lines.n; ++m) {
      const std::int32_t i = own + way * m;
      const std::int32_t cell = lines.cell(i);
      if (cell < 0) break;
      const double d = lines.node(way < 0 ? i + 1 : i) - x;
      if (d * d >= least) break;
      least = std::min(least, line[static_cast<std::size_t>(cell)] + d * d);
    }
  }
  return least;
}

void spread_along(const Domain& domain, int axis, Field& square) {
  const Lines lines = lines_of(domain, axis);
  const std::size_t s = square.box().stride(axis);
  std::vector<double> line(static_cast<std::size_t>(lines.n));
  for_lines(square.box(), axis, [&](std::size_t place) {
    for (std::size_t i = 0; i < line.size(); ++i) line[i] = square[place + i * s];
    if (*std::ranges::min_element(line) == kFar) return;
    for (std::int32_t i = 0; i < lines.n; ++i) {
      square[place + static_cast<std::size_t>(i) * s] = least_from(lines, line, i);
    }
  });
}

/// Faces of an axis that are walls; those at both ends of a repeated axis are one.
Flags walls_of(const Domain& domain, int axis) {
  const auto a = static_cast<std::size_t>(axis);
  Flags wall(domain.grid.box);
  for (const BoundaryFace& at : domain.rim.faces[a]) {
    const Group& group = domain.rim.groups[static_cast<std::size_t>(at.group)];
    if (is_wall(group, axis)) wall[at.face] = 1;
  }
  return wall;
}

}  // namespace

Field wall_distance_squares(const Domain& domain) {
  const Box& box = domain.grid.box;
  Field least(box, kFar);
  Field square(box, kFar);
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis) || domain.rim.faces[static_cast<std::size_t>(axis)].empty()) continue;
    set_along_normal(domain, axis, walls_of(domain, axis), square);
    for (int other = 0; other < 3; ++other) {
      if (other != axis && box.computed(other)) spread_along(domain, other, square);
    }
    for (std::size_t c = 0; c < box.size(); ++c) least[c] = std::min(least[c], square[c]);
  }
  return least;
}

}  // namespace flow
