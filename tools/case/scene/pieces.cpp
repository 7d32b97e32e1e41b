#include "scene/pieces.hpp"

#include <algorithm>

#include "scene/grid.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {

namespace {

constexpr double kOnPlane = 1e-7;  ///< a point nearer to a plane than this lies on it [m]

double& along(Vector3& v, std::size_t axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }
double along(const Vector3& v, std::size_t axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

/// Puts points that lie on a plane all but for rounding on it.
void settle(const CellGrid& grid, Ring3& ring) {
  for (Vector3& point : ring) {
    for (std::size_t a = 0; a < 3; ++a) {
      const auto& nodes = grid.nodes[a];
      const auto near = std::lower_bound(nodes.begin(), nodes.end(), along(point, a) - kOnPlane);
      if (near != nodes.end() && std::abs(*near - along(point, a)) <= kOnPlane) {
        along(point, a) = *near;
      }
    }
  }
}

Vector3 crossing(const Vector3& from, const Vector3& to, std::size_t axis, double plane) {
  // From the lower point on, so that two pieces that share the edge cut it at the same place.
  const bool rising = along(from, axis) < along(to, axis);
  const Vector3& low = rising ? from : to;
  const Vector3& high = rising ? to : from;
  const double part = (plane - along(low, axis)) / (along(high, axis) - along(low, axis));
  Vector3 at = low + part * (high - low);
  along(at, axis) = plane;
  return at;
}

/// Parts of a convex ring on both sides of a plane.
void split(const Ring3& ring, std::size_t axis, double plane, Ring3& below, Ring3& above) {
  below.clear();
  above.clear();
  for (std::size_t p = 0; p < ring.size(); ++p) {
    const Vector3& here = ring[p];
    const Vector3& next = ring[(p + 1) % ring.size()];
    const double a = along(here, axis) - plane;
    const double b = along(next, axis) - plane;
    if (a <= 0.0) below.push_back(here);
    if (a >= 0.0) above.push_back(here);
    if ((a < 0.0 && b > 0.0) || (a > 0.0 && b < 0.0)) {
      const Vector3 at = crossing(here, next, axis, plane);
      below.push_back(at);
      above.push_back(at);
    }
  }
}

std::array<double, 2> range_of(const Ring3& ring, std::size_t axis) {
  std::array<double, 2> range{1e300, -1e300};
  for (const Vector3& point : ring) {
    range[0] = std::min(range[0], along(point, axis));
    range[1] = std::max(range[1], along(point, axis));
  }
  return range;
}

/// Cuts along one axis and goes on with the next; behind the last the part is a piece.
class Cutter {
 public:
  Cutter(const CellGrid& grid, const Vector3& front, std::vector<Piece>& pieces)
      : grid_(grid), front_(front), pieces_(pieces) {}

  void cut(Ring3 ring, std::size_t axis, std::array<std::int32_t, 3> cell) {
    if (axis == 3) {
      if (ring.size() >= 3) pieces_.push_back({cell, std::move(ring)});
      return;
    }
    const auto& nodes = grid_.nodes[axis];
    const auto [low, high] = range_of(ring, axis);
    if (low == high) {
      cell[axis] = cell_of(nodes, low);
      const bool on_plane = std::binary_search(nodes.begin(), nodes.end(), low);
      if (on_plane && along(front_, axis) < 0.0) --cell[axis];
      cut(std::move(ring), axis + 1, cell);
      return;
    }
    for (auto plane = std::upper_bound(nodes.begin(), nodes.end(), low);
         plane != nodes.end() && *plane < high; ++plane) {
      Ring3 below, above;
      split(ring, axis, *plane, below, above);
      cell[axis] = static_cast<std::int32_t>(plane - nodes.begin());
      cut(std::move(below), axis + 1, cell);
      ring = std::move(above);
    }
    const double middle = 0.5 * (range_of(ring, axis)[0] + high);
    cell[axis] = cell_of(nodes, middle);
    cut(std::move(ring), axis + 1, cell);
  }

 private:
  const CellGrid& grid_;
  const Vector3& front_;
  std::vector<Piece>& pieces_;
};

}  // namespace

Vector3 centroid(const Ring3& ring) {
  const Vector3 whole = area_vector(ring);
  Vector3 sum;
  double total = 0.0;
  for (std::size_t p = 1; p + 1 < ring.size(); ++p) {
    const double part = dot(cross(ring[p] - ring[0], ring[p + 1] - ring[0]), whole);
    sum = sum + (part / 3.0) * (ring[0] + ring[p] + ring[p + 1]);
    total += part;
  }
  return total == 0.0 ? ring[0] : (1.0 / total) * sum;
}

void cut_along(const CellGrid& grid, const Ring3& ring, const Vector3& front,
               std::vector<Piece>& pieces) {
  Ring3 settled = ring;
  settle(grid, settled);
  Cutter(grid, front, pieces).cut(std::move(settled), 0, {});
}

}  // namespace townskin_case
