#include "scene/grid.hpp"

#include <algorithm>
#include <limits>
#include <numbers>

namespace townskin_case {

namespace {

constexpr double kMostCells = 100000.0;  ///< along an axis

/// The box around what must lie within the grid, in the frame of the cells.
struct Extent {
  Vector3 low{1e300, 1e300, 0.0};
  Vector3 high{-1e300, -1e300, 0.0};

  void take(const Vector3& at) {
    low = {std::min(low.x, at.x), std::min(low.y, at.y), std::min(low.z, at.z)};
    high = {std::max(high.x, at.x), std::max(high.y, at.y), std::max(high.z, at.z)};
  }
};

Extent extent_of(const City& city, const CellGrid& grid) {
  Extent extent;
  for (const Building& building : city.buildings) {
    for (const Face& face : building.faces) {
      for (const Vector3& point : face.shape.outer) extent.take(to_cells(grid, point));
    }
  }
  for (const Tree& tree : city.trees) {
    const Vector3 foot = to_cells(grid, {tree.foot.x, tree.foot.y, 0.0});
    extent.take(foot + Vector3{-tree.radius, -tree.radius, 0.0});
    extent.take(foot + Vector3{tree.radius, tree.radius, tree.height});
  }
  if (extent.low.x > extent.high.x) throw Fault("there is neither a building nor a tree");
  return extent;
}

/// Planes from `low` to `high`, at whole multiples of the size.
std::vector<double> planes(double low, double high, double size) {
  const double first = std::floor(low / size);
  const double count = std::max(std::ceil(high / size) - first, 1.0);
  if (!(count <= kMostCells)) {
    throw Fault(
        "the grid would have more than 100000 cells along an axis: larger cells are needed");
  }
  std::vector<double> nodes;
  for (double n = 0.0; n <= count; n += 1.0) nodes.push_back((first + n) * size);
  return nodes;
}

}  // namespace

Vector3 to_cells(const CellGrid& grid, const Vector3& point) {
  if (grid.turn == 0.0) return point;
  const double c = std::cos(grid.turn);
  const double s = std::sin(grid.turn);
  return {c * point.x + s * point.y, c * point.y - s * point.x, point.z};
}

Vector3 from_cells(const CellGrid& grid, const Vector3& point) {
  if (grid.turn == 0.0) return point;
  const double c = std::cos(grid.turn);
  const double s = std::sin(grid.turn);
  return {c * point.x - s * point.y, c * point.y + s * point.x, point.z};
}

CellGrid make_grid(const City& city, const SiteGrid& wanted) {
  for (const double size : wanted.cell) {
    if (!(size > 0.0)) throw Fault("the size of a cell must be > 0");
  }
  CellGrid grid;
  grid.turn =
      wanted.rotate_along_streets ? street_turn(city) : wanted.rotate * std::numbers::pi / 180.0;
  const Extent extent = extent_of(city, grid);
  const double m = wanted.margin;
  grid.nodes[0] = planes(extent.low.x - m, extent.high.x + m, wanted.cell[0]);
  grid.nodes[1] = planes(extent.low.y - m, extent.high.y + m, wanted.cell[1]);
  grid.nodes[2] = planes(0.0, extent.high.z + wanted.above, wanted.cell[2]);
  return grid;
}

double street_turn(const City& city) {
  // Four times the angle is the same for a wall, its opposite and those across.
  double c = 0.0;
  double s = 0.0;
  for (const Building& building : city.buildings) {
    for (const Polygon2& polygon : building.footprint) {
      const Ring2& ring = polygon.outer;
      for (std::size_t p = 0; p < ring.size(); ++p) {
        const Point2& next = ring[(p + 1) % ring.size()];
        const double dx = next.x - ring[p].x;
        const double dy = next.y - ring[p].y;
        const double angle = 4.0 * std::atan2(dy, dx);
        c += std::hypot(dx, dy) * std::cos(angle);
        s += std::hypot(dx, dy) * std::sin(angle);
      }
    }
  }
  return c == 0.0 && s == 0.0 ? 0.0 : 0.25 * std::atan2(s, c);
}

std::int32_t cell_of(const std::vector<double>& nodes, double at) {
  const auto above = std::upper_bound(nodes.begin(), nodes.end(), at);
  return static_cast<std::int32_t>(above - nodes.begin());
}

}  // namespace townskin_case
