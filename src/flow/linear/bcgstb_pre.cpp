#include "flow/linear/bcgstb_pre.hpp"

#include <algorithm>
#include <cmath>

#include "flow/linear/solve_limits.hpp"

namespace flow {

namespace {

/// Calls `work(slot of the first point, row)` for the rows of all layers, ascending.
template <class Work>
void for_slot_rows(const Diagonals& points, Work&& work) {
  for (std::size_t w = 1; w <= static_cast<std::size_t>(points.n[2]); ++w) {
    for (const DiagonalRow& row : points.rows) work(w * points.layer + row.start, row);
  }
}

/// Distances of a row's points to their neighbours along u, v, w.
std::array<std::size_t, 3> down_of(const Diagonals& points, const DiagonalRow& row) {
  return {row.down, row.down + 1, points.layer};
}
std::array<std::size_t, 3> up_of(const Diagonals& points, const DiagonalRow& row) {
  return {row.up, row.up + 1, points.layer};
}

/// Couplings across the ends of v, before those are dropped from the rows.
void set_wrapped(BcgstbSystem& system) {
  const auto [nu, nv, nw] = system.points.n;
  if (!system.points.wrapped) return;
  std::size_t n = 0;
  for (std::int32_t w = 0; w < nw; ++w) {
    for (std::int32_t u = 0; u < nu; ++u, ++n) {
      const std::size_t first = system.points.slot(u, 0, w);
      const std::size_t last = system.points.slot(u, nv - 1, w);
      system.wrap_lower[n] = system.lower[1][first] * system.inside[last];
      system.wrap_upper[n] = system.upper[1][last] * system.inside[first];
    }
  }
}

/// Drops the couplings with what is outside the system: free slots among them.
void drop_outside(BcgstbSystem& system) {
  for_slot_rows(system.points, [&](std::size_t slot, const DiagonalRow& row) {
    const auto down = down_of(system.points, row);
    const auto up = up_of(system.points, row);
    for (std::size_t way = 0; way < 3; ++way) {
      double* lower = system.lower[way].data();
      double* upper = system.upper[way].data();
      const double* inside = system.inside.data();
      for (std::size_t s = slot; s < slot + static_cast<std::size_t>(row.count); ++s) {
        lower[s] = inside[s - down[way]] > 0.0 ? lower[s] : 0.0;
        upper[s] = inside[s + up[way]] > 0.0 ? upper[s] : 0.0;
      }
    }
  });
}

/// The factor; the smallest pivot, or 1.
double factorise(BcgstbSystem& system) {
  double smallest = 1.0;
  for_slot_rows(system.points, [&](std::size_t slot, const DiagonalRow& row) {
    const auto down = down_of(system.points, row);
    for (std::size_t s = slot; s < slot + static_cast<std::size_t>(row.count); ++s) {
      double pivot = 1.0;
      for (std::size_t way = 0; way < 3; ++way) {
        const std::size_t below = s - down[way];
        pivot -= system.d[below] * system.lower[way][s] * system.upper[way][below];
      }
      if (pivot < smallest || std::isnan(pivot)) smallest = pivot;
      system.d[s] = system.inside[s] / pivot;
    }
  });
  return smallest;
}

}  // namespace

BcgstbArrays BcgstbSystem::arrays() const {
  BcgstbArrays m;
  m.rows = points.rows.data();
  m.row_count = points.rows.size();
  m.layers = static_cast<std::size_t>(points.n[2]);
  m.layer = points.layer;
  m.nu = static_cast<std::size_t>(points.n[0]);
  m.nv = static_cast<std::size_t>(points.n[1]);
  m.lower = {lower[0].data(), lower[1].data(), lower[2].data()};
  m.upper = {upper[0].data(), upper[1].data(), upper[2].data()};
  m.d = d.data();
  if (points.wrapped) {
    m.wrap_lower = wrap_lower.data();
    m.wrap_upper = wrap_upper.data();
  }
  return m;
}

void flw_bcgstb_size(frame::Log& log, const Flags& fluid, bool periodic_y, BcgstbSystem& system,
                     InstructionSet set) {
  frame::allocating(log, "bcgstb", frame::bytes_of<double>(fluid.all().size(), 18), [&] {
    const Box& box = fluid.box();
    system = {};
    system.points = flw_list_hypln(log, box, periodic_y, hyperplane_bound(box));
    for (Values* vector :
         {&system.inside, &system.scale, &system.lower[0], &system.lower[1], &system.lower[2],
          &system.upper[0], &system.upper[1], &system.upper[2], &system.d, &system.b, &system.x,
          &system.r, &system.first, &system.p, &system.v, &system.y, &system.z, &system.t}) {
      vector->assign(system.points.size(), 0.0);
    }
    if (system.points.wrapped) {
      const auto ends = static_cast<std::size_t>(system.points.n[0]) *
                        static_cast<std::size_t>(system.points.n[2]);
      system.wrap_lower.assign(ends, 0.0);
      system.wrap_upper.assign(ends, 0.0);
    }
    for_cells(system.points, box, [&](std::size_t slot, std::size_t cell) {
      system.inside[slot] = fluid[cell] > 0 ? 1.0 : 0.0;
    });
  });
  system.passes = bcgstb_passes(set);
}

void flw_bcgstb_pre(frame::Log& log, const SevenPoint& rows, BcgstbSystem& system) {
  if (system.d.size() != system.points.size()) interface_error(log, 1, "flw_bcgstb_pre");
  if (!system.points.fits()) interface_error(log, 2, "flw_bcgstb_pre");
  for_cells(system.points, rows.diagonal.box(), [&](std::size_t slot, std::size_t cell) {
    const bool inside = system.inside[slot] > 0.0;
    const double scale = inside ? 1.0 / rows.diagonal[cell] : 0.0;
    system.scale[slot] = scale;
    for (std::size_t way = 0; way < 3; ++way) {
      const auto axis = static_cast<std::size_t>(system.points.axis[way]);
      system.lower[way][slot] = inside ? rows.lower[axis][cell] * scale : 0.0;
      system.upper[way][slot] = inside ? rows.upper[axis][cell] * scale : 0.0;
    }
  });
  set_wrapped(system);
  drop_outside(system);
  if (!(factorise(system) > 0.0)) interface_error(log, 3, "flw_bcgstb_pre");
}

}  // namespace flow
