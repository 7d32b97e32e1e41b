// The grids of the multigrid solver while it is set up: couplings of the cells of a box, and the
// coarser box that stands for them.
//
// Cells are merged along each axis by themselves, and only where they are thin: a level has a width
// that doubles from level to level, and two neighbours that are both not wider become one. So thin
// cells grow first, along the axis along which they are thin, which is the one along which they are
// strongly coupled; what is left behind is about as wide as long everywhere, and a smoother that
// goes point by point serves also where the grid is stretched (semi-coarsening, Mulder 1989, axis
// by axis). A last cell that finds no partner joins the two before it.
//
// The coupling of two coarse cells is the sum of those that cross the face between them, times the
// distance of the fine centres over that of the coarse ones: what the equation itself has on the
// coarse grid. Obstacles need no care, for they have no couplings. Used by flw_amgcg_pre.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/box.hpp"
#include "flow/linear/iccg_pre.hpp"

namespace flow {

/// What couples a cell with a held pressure outside, across a face along `axis`: part of the
/// diagonal. In a list of such faces the cell is a place in a field.
struct HeldFace {
  std::size_t cell = 0;
  std::int32_t axis = 0;
  double coupling = 0.0;
};

/// What the solver has to know of a grid beside its matrix.
struct AmgGeometry {
  std::array<std::vector<double>, 3> width;  ///< of the cells along each axis
  std::vector<HeldFace> held;
  std::vector<std::size_t> uncounted;  ///< places of cells whose residual is not in the norm
  bool periodic_y = false;
};

/// How cells of an axis became those of the next coarser grid.
struct AmgMerge {
  std::vector<std::int32_t> parent;  ///< coarse cell of each fine one
  std::int32_t cells = 0;            ///< of the coarse axis

  /// All are pairs, but for a single one or three at the end.
  [[nodiscard]] bool in_pairs() const;
};

/// Couplings of all cells of a box, cells numbered with i fastest, from 0.
struct AmgGrid {
  Triple n{};
  std::array<std::vector<double>, 3> width;
  /// With the neighbour at the smaller index, above 0; that of the first with the last where y
  /// repeats itself.
  std::array<std::vector<double>, 3> c;
  std::vector<HeldFace> held;  ///< `cell` is the number of a cell
  std::vector<double> other;   ///< what else the diagonal has beyond the couplings

  [[nodiscard]] std::size_t size() const { return c[0].size(); }
  [[nodiscard]] std::size_t at(std::int32_t i, std::int32_t j, std::int32_t k) const {
    return static_cast<std::size_t>(i) +
           static_cast<std::size_t>(n[0]) *
               (static_cast<std::size_t>(j) +
                static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(k));
  }
  /// What the diagonals have beyond the couplings with other cells.
  [[nodiscard]] std::vector<double> beyond() const;
  /// Sum of all that a cell is coupled to.
  [[nodiscard]] std::vector<double> diagonal() const;
};

/// Indices, from 0, of the cell at a place in a field.
Triple index_of(const Box& box, std::size_t place);

/// The grid of the equation.
AmgGrid make_amg_grid(const FiveBlocks& blocks, const Flags& fluid, const AmgGeometry& geometry);

/// The next coarser grid, and how the cells became its own; `limit` is the width of the level
/// before, 0 at first, and takes that of this one. At least one axis has fewer cells, where any had
/// more than one.
AmgGrid coarsen(const AmgGrid& fine, double& limit, std::array<AmgMerge, 3>& merge);

}  // namespace flow
