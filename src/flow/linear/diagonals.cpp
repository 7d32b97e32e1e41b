#include "flow/linear/diagonals.hpp"

#include <algorithm>

namespace flow {

namespace {

std::size_t in_lanes(std::size_t count) { return (count + kLanes - 1) / kLanes * kLanes; }

/// Axes of u, v and w.
Triple choose_axes(const Box& box, bool periodic_y) {
  Triple axis{0, 1, 2};
  std::stable_sort(axis.begin(), axis.end(), [&](std::int32_t a, std::int32_t b) {
    return box.n[static_cast<std::size_t>(a)] > box.n[static_cast<std::size_t>(b)];
  });
  // axis: most cells first. A diagonal is as long as the shorter of its axes: the second and third
  // make the smaller layers, and serve unless the third is short.
  constexpr std::int32_t kLongEnough = 4 * static_cast<std::int32_t>(kLanes);
  if (box.n[static_cast<std::size_t>(axis[2])] >= kLongEnough) {
    std::rotate(axis.begin(), axis.begin() + 1, axis.end());
  }
  if (periodic_y) {  // y is v
    if (axis[0] == 1) std::swap(axis[0], axis[1]);
    if (axis[2] == 1) std::swap(axis[2], axis[1]);
  }
  return axis;
}

}  // namespace

std::int64_t hyperplane_bound(const Box& box) {
  const auto [nx, ny, nz] = box.n;
  const auto area = [](std::int32_t a, std::int32_t b) { return std::int64_t{a} * b; };
  return std::min({area(nx, ny), area(ny, nz), area(nx, nz)});
}

Diagonals flw_list_hypln(frame::Log& log, const Box& box, bool periodic_y, std::int64_t bound) {
  Diagonals points;
  points.axis = choose_axes(box, periodic_y);
  for (std::size_t a = 0; a < 3; ++a) points.n[a] = box.n[static_cast<std::size_t>(points.axis[a])];
  const auto [nu, nv, nw] = points.n;
  points.wrapped = periodic_y && nv > 1;
  if (std::min(nu, nv) > bound) log.program_error("### program error -1- (flw_list_hypln)");

  points.rows.resize(static_cast<std::size_t>(nu + nv - 1));
  std::size_t start = kLanes;
  std::size_t reach = 0;  // behind the last slot where the row before looks for neighbours
  for (std::size_t d = 0; d < points.rows.size(); ++d) {
    DiagonalRow& row = points.rows[d];
    const auto sum = static_cast<std::int32_t>(d);
    row.first = std::max(0, sum - nu + 1);
    row.count = std::min(sum, nv - 1) - row.first + 1;
    row.lanes = in_lanes(static_cast<std::size_t>(row.count));
    row.start = start;
    if (d > 0) {
      DiagonalRow& before = points.rows[d - 1];
      const auto shift = static_cast<std::size_t>(row.first - before.first);  // 0 or 1
      row.down = start - before.start - shift;
      before.up = row.down;
      reach = start + before.lanes + 1 - shift;
    }
    // One slot at least stays free behind the row.
    start = in_lanes(std::max(start + static_cast<std::size_t>(row.count) + 1, reach));
    start = std::max(start, row.start + row.lanes);
  }
  points.rows.front().down = kLanes;  // free slots
  points.rows.back().up = kLanes;
  points.layer = start + kLanes;
  return points;
}

void gather_scaled(const Diagonals& points, const Field& from, const Values& factor, Values& to) {
  for_cells(points, from.box(), [&](std::size_t slot, std::size_t cell) {
    to[slot] = factor[slot] == 0.0 ? 0.0 : from[cell] * factor[slot];
  });
}

void scatter_scaled(const Diagonals& points, const Values& from, const Values& factor, Field& to) {
  for_cells(points, to.box(),
            [&](std::size_t slot, std::size_t cell) { to[cell] = from[slot] * factor[slot]; });
}

}  // namespace flow
