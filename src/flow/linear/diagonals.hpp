// The unknowns of a box, stored diagonal by diagonal: the order in which the linear solvers walk.
//
// In a sweep of an incomplete factor a point waits for its lower neighbours, so that points in
// their natural order cannot advance together. Points of one layer with the same sum of their two
// other indices can: none is coupled to another, and the neighbours of contiguous points are
// contiguous, at one distance for all of them. So a layer is stored row by row, a row holding the
// points of one diagonal, and a sweep is a few loops over contiguous numbers for each row. All
// points of the box are stored; those outside the system have couplings of 0.
//
// The slots between rows hold 0 in every coupling and vector. They end a row at a whole number of
// lanes, and a point at the end of a row finds there the neighbour that it does not have. A layer
// of such slots stands before the first and behind the last layer.
#pragma once

#include <cstdint>
#include <vector>

#include "flow/box.hpp"
#include "flow/linear/values.hpp"
#include "frame/log.hpp"

namespace flow {

/// Sums are collected in this many lanes by slot, whatever the processor, so that all give the
/// same bits.
inline constexpr std::size_t kLanes = 8;

/// The points of a layer with u + v = their number.
struct DiagonalRow {
  std::size_t start = 0;   ///< slot of the first point in the layer; a whole number of lanes
  std::size_t lanes = 0;   ///< slots to walk: the points, filled up to whole lanes
  std::size_t down = 0;    ///< distance to the neighbour at u - 1; that at v - 1 is one further
  std::size_t up = 0;      ///< the same to u + 1 and v + 1
  std::int32_t first = 0;  ///< v of the first point
  std::int32_t count = 0;
};

struct Diagonals {
  Triple axis{0, 1, 2};  ///< axes of the box that u, v and the layers w stand for
  Triple n{};            ///< cells along u, v, w
  bool wrapped = false;  ///< v repeats itself: its last point is coupled to the first
  std::vector<DiagonalRow> rows;
  std::size_t layer = 0;  ///< slots of a layer

  [[nodiscard]] std::size_t size() const { return layer * (static_cast<std::size_t>(n[2]) + 2); }
  /// The rows stand within a layer.
  [[nodiscard]] bool fits() const {
    return !rows.empty() && rows.back().start + rows.back().lanes + rows.back().up <= layer;
  }
  /// Slot of a point, indices from 0.
  [[nodiscard]] std::size_t slot(std::int32_t u, std::int32_t v, std::int32_t w) const {
    const DiagonalRow& row = rows[static_cast<std::size_t>(std::ptrdiff_t{u} + v)];
    return (static_cast<std::size_t>(w) + 1) * layer + row.start + static_cast<std::size_t>(v) -
           static_cast<std::size_t>(row.first);
  }
};

/// Lists the diagonals of a box. Diagonals run along the two axes with most cells unless that makes
/// layers that no cache holds; a periodic y is one of the two. `bound` is what the caller allows
/// for the length of a list: min(nx ny, ny nz, nx nz).
/// Errors: "### program error -1- (flw_list_hypln)" when a diagonal is longer than that.
Diagonals flw_list_hypln(frame::Log& log, const Box& box, bool periodic_y, std::int64_t bound);

/// That bound for a box.
std::int64_t hyperplane_bound(const Box& box);

/// Calls `work(slot, place, stride, count)` for each row: `count` points stand at consecutive slots
/// and, in a field on `box`, `stride` apart from `place` on.
template <class Work>
void for_diagonals(const Diagonals& points, const Box& box, Work&& work) {
  const auto step = [&](std::size_t a) {
    return static_cast<std::ptrdiff_t>(box.stride(points.axis[a]));
  };
  const auto origin = static_cast<std::ptrdiff_t>(box.at(1, 1, 1));
  for (std::int32_t w = 0; w < points.n[2]; ++w) {
    for (std::size_t d = 0; d < points.rows.size(); ++d) {
      const DiagonalRow& row = points.rows[d];
      const auto u = static_cast<std::ptrdiff_t>(d) - row.first;
      const std::ptrdiff_t place = origin + w * step(2) + row.first * step(1) + u * step(0);
      work((static_cast<std::size_t>(w) + 1) * points.layer + row.start, place, step(1) - step(0),
           row.count);
    }
  }
}

/// Calls `work(slot, cell)` for all points; `cell` is the place in a field on `box`.
template <class Work>
void for_cells(const Diagonals& points, const Box& box, Work&& work) {
  for_diagonals(
      points, box, [&](std::size_t slot, std::ptrdiff_t place, std::ptrdiff_t stride, auto count) {
        for (std::int32_t m = 0; m < count; ++m) {
          work(slot + static_cast<std::size_t>(m), static_cast<std::size_t>(place + m * stride));
        }
      });
}

/// Brings the cells of a field to their slots, times the factors that stand there; where a factor
/// is 0 the field does not count.
void gather_scaled(const Diagonals& points, const Field& from, const Values& factor, Values& to);
/// Brings slots, times their factors, to the cells of a field.
void scatter_scaled(const Diagonals& points, const Values& from, const Values& factor, Field& to);

}  // namespace flow
