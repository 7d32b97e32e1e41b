// Random systems on the cells of a small box, of the forms that the flow solver's linear solvers
// take.
#pragma once

#include <algorithm>
#include <cmath>

#include "../bench/sample_surfaces.hpp"
#include "dense_solve.hpp"
#include "flow/linear/bcgstb_pre.hpp"
#include "flow/linear/iccg_pre.hpp"
#include "flow/linear/solve_limits.hpp"

/// A box with every eighth cell an obstacle, and a right side.
struct RandomCells {
  RandomCells(const flow::Triple& cells, bool periodic_y, std::uint32_t seed)
      : draw(seed), box{cells}, periodic(periodic_y), fluid(box, 0), right(box) {
    each([&](const flow::Triple& cell) {
      fluid[at(cell)] = draw.chance(0.125) ? 0 : 1;
      right[at(cell)] = draw(-1.0, 1.0);
    });
    fluid(1, 1, 1) = 1;
  }

  [[nodiscard]] std::size_t at(const flow::Triple& cell) const {
    return box.at(cell[0], cell[1], cell[2]);
  }
  template <class Work>
  void each(Work&& work) const {
    for (std::int32_t k = 1; k <= box.n[2]; ++k) {
      for (std::int32_t j = 1; j <= box.n[1]; ++j) {
        for (std::int32_t i = 1; i <= box.n[0]; ++i) work(flow::Triple{i, j, k});
      }
    }
  }
  /// Calls `work(cell, next, wrapped)` for pairs of fluid neighbours along an axis.
  template <class Work>
  void each_pair(std::size_t axis, Work&& work) const {
    each([&](const flow::Triple& cell) {
      flow::Triple next = cell;
      const bool wrapped = cell[axis] == box.n[axis];
      if (wrapped && (axis != 1 || !periodic || box.n[1] == 1)) return;
      next[axis] = wrapped ? 1 : cell[axis] + 1;
      if (fluid[at(cell)] > 0 && fluid[at(next)] > 0) work(cell, next, wrapped);
    });
  }
  /// Number of a cell in a dense system of all cells.
  [[nodiscard]] std::size_t number(const flow::Triple& cell) const {
    const auto u = [](std::int32_t value) { return static_cast<std::size_t>(value); };
    return u(cell[0] - 1) + u(box.n[0]) * (u(cell[1] - 1) + u(box.n[1]) * u(cell[2] - 1));
  }
  /// A dense system that leaves the cells outside at 0.
  [[nodiscard]] DenseSystem dense() const {
    DenseSystem system(static_cast<std::size_t>(box.cells()));
    each([&](const flow::Triple& cell) {
      const std::size_t row = number(cell);
      if (fluid[at(cell)] <= 0) system.at(row, row) = 1.0;
      system.b[row] = fluid[at(cell)] > 0 ? right[at(cell)] : 0.0;
    });
    return system;
  }

  sample::Draws draw;
  flow::Box box;
  bool periodic;
  flow::Flags fluid;
  flow::Field right;
};

/// A symmetric system as the pressure has it; some cells touch a held pressure.
struct RandomSymmetric : RandomCells {
  RandomSymmetric(const flow::Triple& cells, bool periodic_y, std::uint32_t seed)
      : RandomCells(cells, periodic_y, seed), blocks(box) {
    each([&](const flow::Triple& cell) {
      const bool held = draw.chance(0.2) || cell == flow::Triple{1, 1, 1};
      blocks.diagonal[at(cell)] = held ? draw(0.5, 2.0) : 1e-3;
    });
    for (std::size_t axis = 0; axis < 3; ++axis) {
      each_pair(axis, [&](const flow::Triple& cell, const flow::Triple& next, bool wrapped) {
        const double c = draw(0.5, 2.0);
        blocks.diagonal[at(cell)] += c;
        blocks.diagonal[at(next)] += c;
        (wrapped ? blocks.wrap[at(cell)] : blocks.lower[axis][at(next)]) = -c;
      });
    }
  }
  [[nodiscard]] DenseSystem matrix() const {
    DenseSystem system = dense();
    each([&](const flow::Triple& cell) {
      if (fluid[at(cell)] > 0) system.at(number(cell), number(cell)) = blocks.diagonal[at(cell)];
    });
    for (std::size_t axis = 0; axis < 3; ++axis) {
      each_pair(axis, [&](const flow::Triple& cell, const flow::Triple& next, bool wrapped) {
        const double c = wrapped ? blocks.wrap[at(cell)] : blocks.lower[axis][at(next)];
        system.at(number(cell), number(next)) += c;
        system.at(number(next), number(cell)) += c;
      });
    }
    return system;
  }

  flow::FiveBlocks blocks;
};

/// A general system as an implicit step has it; couplings with cells outside are there too, and
/// must not count.
struct RandomGeneral : RandomCells {
  RandomGeneral(const flow::Triple& cells, bool periodic_y, std::uint32_t seed)
      : RandomCells(cells, periodic_y, seed), rows(box) {
    for (double& value : rows.diagonal.all()) value = draw(3.0, 6.0) * (draw.chance(0.5) ? 1 : -1);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (double& value : rows.lower[axis].all()) value = draw(-0.6, 0.6);
      for (double& value : rows.upper[axis].all()) value = draw(-0.6, 0.6);
    }
  }
  [[nodiscard]] DenseSystem matrix() const {
    DenseSystem system = dense();
    each([&](const flow::Triple& cell) {
      if (fluid[at(cell)] > 0) {
        system.at(number(cell), number(cell)) = rows.diagonal[at(cell)];
      }
    });
    for (std::size_t axis = 0; axis < 3; ++axis) {
      each_pair(axis, [&](const flow::Triple& cell, const flow::Triple& next, bool) {
        system.at(number(cell), number(next)) += rows.upper[axis][at(cell)];
        system.at(number(next), number(cell)) += rows.lower[axis][at(next)];
      });
    }
    return system;
  }

  flow::SevenPoint rows;
};

/// Limits of a solution on a box.
inline flow::SolveLimits limits_of(const flow::Box& box, double epsrel, std::int32_t itmax = 500) {
  flow::SolveLimits limits;
  limits.epsrel = epsrel;
  limits.itmax = itmax;
  limits.nnorm = static_cast<double>(box.cells());
  return limits;
}

/// Two cells in a row.
inline flow::FiveBlocks pair_of(double coupling) {
  flow::FiveBlocks blocks(flow::Box{{2, 1, 1}});
  blocks.diagonal(1, 1, 1) = blocks.diagonal(2, 1, 1) = 1.0;
  blocks.lower[0](2, 1, 1) = coupling;
  return blocks;
}
