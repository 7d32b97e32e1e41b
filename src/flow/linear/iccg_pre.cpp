#include "flow/linear/iccg_pre.hpp"

#include <algorithm>
#include <cmath>

#include "flow/linear/solve_limits.hpp"

namespace flow {

namespace {

/// Upper couplings of a point, and the slots that they reach.
class Couplings {
 public:
  explicit Couplings(const IccgSystem& system) : s_(system), n_(system.points.n) {}

  /// Coupling of a point with its lower neighbour `way`: 0 u - 1, 1 v - 1, 2 w - 1, 3 wrapped.
  [[nodiscard]] double lower(int way, const Triple& at) const {
    if (way < 3) return s_.a[static_cast<std::size_t>(way)][slot(at)];
    return at[1] + 1 == n_[1] ? wrap(at) : 0.0;
  }
  /// The same for the upper neighbour.
  [[nodiscard]] double upper(int way, const Triple& at) const {
    if (way == 3) return at[1] == 0 ? wrap(at) : 0.0;
    Triple next = at;
    const auto axis = static_cast<std::size_t>(way);
    return ++next[axis] < n_[axis] ? s_.a[axis][slot(next)] : 0.0;
  }
  /// The lower neighbour `way`, which exists.
  [[nodiscard]] static Triple below(int way, Triple at) {
    if (way == 3) {
      at[1] = 0;
    } else {
      --at[static_cast<std::size_t>(way)];
    }
    return at;
  }
  [[nodiscard]] std::size_t slot(const Triple& at) const {
    return s_.points.slot(at[0], at[1], at[2]);
  }

 private:
  [[nodiscard]] double wrap(const Triple& at) const {
    if (s_.wrap_coupling.empty()) return 0.0;
    return s_.wrap_coupling[static_cast<std::size_t>(at[2]) * static_cast<std::size_t>(n_[0]) +
                            static_cast<std::size_t>(at[0])];
  }

  const IccgSystem& s_;
  Triple n_;
};

/// Calls `work` for the indices of all points, each behind its lower neighbours.
template <class Work>
void in_order(const Diagonals& points, Work&& work) {
  for (std::int32_t w = 0; w < points.n[2]; ++w) {
    for (std::int32_t v = 0; v < points.n[1]; ++v) {
      for (std::int32_t u = 0; u < points.n[0]; ++u) work(Triple{u, v, w});
    }
  }
}

/// 1 / sqrt(diagonal) in the cells of the system.
void set_scale(const FiveBlocks& blocks, const Flags& fluid, IccgSystem& system) {
  for_cells(system.points, fluid.box(), [&](std::size_t slot, std::size_t cell) {
    if (fluid[cell] > 0) system.scale[slot] = 1.0 / std::sqrt(blocks.diagonal[cell]);
  });
}

/// Couplings, scaled by both points: the diagonal of the scaled matrix is 1.
void set_couplings(const FiveBlocks& blocks, IccgSystem& system) {
  const Diagonals& points = system.points;
  for (std::size_t way = 0; way < 3; ++way) {
    gather_scaled(points, blocks.lower[static_cast<std::size_t>(points.axis[way])], system.scale,
                  system.a[way]);
  }
  // The scale of a free slot is 0, and so becomes the coupling of a point that has no neighbour.
  for (std::size_t w = 1; w <= static_cast<std::size_t>(points.n[2]); ++w) {
    for (const DiagonalRow& row : points.rows) {
      const std::size_t begin = w * points.layer + row.start;
      for (std::size_t s = begin; s < begin + static_cast<std::size_t>(row.count); ++s) {
        system.a[0][s] *= system.scale[s - row.down];
        system.a[1][s] *= system.scale[s - row.down - 1];
        system.a[2][s] *= system.scale[s - points.layer];
      }
    }
  }
  if (!points.wrapped) return;
  const Box& box = blocks.wrap.box();
  for (std::int32_t w = 0; w < points.n[2]; ++w) {
    for (std::int32_t u = 0; u < points.n[0]; ++u) {
      Triple cell{1, box.n[1], 1};
      cell[static_cast<std::size_t>(points.axis[0])] = u + 1;
      cell[static_cast<std::size_t>(points.axis[2])] = w + 1;
      system.wrap_coupling.push_back(blocks.wrap(cell[0], cell[1], cell[2]) *
                                     system.scale[points.slot(u, points.n[1] - 1, w)] *
                                     system.scale[points.slot(u, 0, w)]);
    }
  }
}

/// The factor; the smallest pivot, or 1.
double factorise(double gsfcg, IccgSystem& system) {
  const double omega = std::clamp(gsfcg, 0.0, 1.0);
  const double sigma = std::max(1.0, gsfcg);
  const Couplings of(system);
  double smallest = 1.0;
  in_order(system.points, [&](const Triple& at) {
    const std::size_t slot = of.slot(at);
    if (!(system.scale[slot] > 0.0)) return;
    double pivot = sigma;
    for (int way = 0; way < 4; ++way) {
      const double a = of.lower(way, at);
      if (a == 0.0) continue;
      const Triple below = Couplings::below(way, at);
      double dropped = 0.0;
      for (int other = 0; other < 4; ++other) {
        if (other != way) dropped += of.upper(other, below);
      }
      pivot -= system.d[of.slot(below)] * a * (a + omega * dropped);
    }
    smallest = pivot < smallest || std::isnan(pivot) ? pivot : smallest;
    system.d[slot] = 1.0 / pivot;
  });
  return smallest;
}

/// Moves the factors of the last points of wrapped rows to their own list.
void set_wrap_factors(IccgSystem& system) {
  const auto [nu, nv, nw] = system.points.n;
  if (!system.points.wrapped) return;
  for (std::int32_t w = 0; w < nw; ++w) {
    for (std::int32_t u = 0; u < nu; ++u) {
      double& d = system.d[system.points.slot(u, nv - 1, w)];
      system.wrap_factor.push_back(d);
      d = 0.0;
    }
  }
}

}  // namespace

IccgArrays IccgSystem::arrays() {
  IccgArrays m;
  m.rows = points.rows.data();
  m.row_count = points.rows.size();
  m.layers = static_cast<std::size_t>(points.n[2]);
  m.layer = points.layer;
  m.nu = static_cast<std::size_t>(points.n[0]);
  m.nv = static_cast<std::size_t>(points.n[1]);
  m.a = {a[0].data(), a[1].data(), a[2].data()};
  m.d = d.data();
  if (points.wrapped) m.wrap = {wrap_coupling.data(), wrap_factor.data()};
  m.x = x.data();
  m.r = r.data();
  m.p = p.data();
  m.y = y.data();
  return m;
}

void flw_iccg_pre(frame::Log& log, const FiveBlocks& blocks, const Flags& fluid, bool periodic_y,
                  double gsfcg, IccgSystem& system, InstructionSet set) {
  frame::allocating(log, "iccg", frame::bytes_of<double>(fluid.all().size(), 10), [&] {
    const Box& box = fluid.box();
    system = {};
    system.points = flw_list_hypln(log, box, periodic_y, hyperplane_bound(box));
    for (Values* vector : {&system.a[0], &system.a[1], &system.a[2], &system.scale, &system.d,
                           &system.b, &system.x, &system.r, &system.p, &system.y}) {
      vector->assign(system.points.size(), 0.0);
    }
    set_scale(blocks, fluid, system);
    set_couplings(blocks, system);
    const double smallest = factorise(gsfcg, system);
    if (!(smallest > 0.0)) {
      log.line("%%% smallest pivot =", smallest, "; a smaller gsfcg may help, gsfcg =", gsfcg);
      interface_error(log, 1, "flw_iccg_pre");
    }
    set_wrap_factors(system);
  });
  system.passes = iccg_passes(set);
}

}  // namespace flow
