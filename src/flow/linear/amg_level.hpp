// A level of the multigrid solver: its cells by colours, and the way to the next coarser one.
//
// The smoother updates the cells with an even i + j + k (red) and those with an odd sum (black) in
// turns: cells of a colour are not coupled with one another, so that the result does not hang on
// the order of work. A row of cells holds first those with an even i (from 0), then those with an
// odd i: all cells of a colour in a row are then contiguous, and so are their neighbours. Between
// the two parts stand slots that hold 0, where a cell at the end of a row finds the neighbour that
// it does not have. Rows repeat themselves along y and z: where the first is not coupled with the
// last the coupling is 0.
//
// Where y repeats itself with an odd number of cells, first and last row have cells of one colour
// side by side. The smoother takes both from what they were before (Jacobi's way): still without a
// say for the order of work.
//
// Numbers are of single precision: they replace the matrix' inverse, and need not be exact.
//
// Rows of a vector on its way from one level to another stand in their natural order. Used by
// flw_amgcg and its passes.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/equal_rows.hpp"
#include "flow/linear/amg_grid.hpp"
#include "flow/linear/values.hpp"

namespace flow {

/// Slots of a part come in whole lanes of this many, which is also how sums are collected.
inline constexpr std::size_t kAmgLanes = 16;

using Floats = std::vector<float, LineAllocator<float>>;

struct AmgLevel {
  Triple n{};
  std::size_t half = 0;     ///< slots for the cells of one part of a row; whole lanes
  std::size_t stride = 0;   ///< slots of a row
  std::size_t natural = 0;  ///< the same of a row in natural order
  std::int32_t sweeps = 0;  ///< of one colour before the correction, and as many behind; even

  std::array<Floats, 3> c;  ///< couplings with the lower neighbours, above 0
  Floats wrap;              ///< those of row 0 with the last, of each layer, where ny is odd
  Floats before;            ///< a half row of each layer: what row 0 was, for the last one
  Floats beyond;            ///< what the diagonal has beyond the couplings
  Floats inverse;           ///< 1/diagonal; 0 outside the system
  Floats z, r;              ///< correction and right side
  /// For each row of cells, how many slots before it the row begins that stands for it where the
  /// passes read the matrix: the first with the same numbers (equal_rows.hpp).
  std::vector<std::ptrdiff_t> ways;
  Floats between;  ///< natural rows: right side from the finer level, then the correction for it

  std::array<AmgMerge, 3> merge;                    ///< to the next coarser level
  bool in_pairs = false;                            ///< along x
  std::array<std::vector<std::int32_t>, 2> parent;  ///< along x, of the cells of each part
  /// The rows of a layer, bundle by bundle: those that are merged stay together, and so do the
  /// first and the last where they have cells of one colour side by side.
  std::vector<std::size_t> rows;
  std::vector<std::size_t> bundles;  ///< where each begins in `rows`, and the end

  [[nodiscard]] std::size_t odd() const { return half + kAmgLanes; }
  [[nodiscard]] std::size_t size() const {
    return stride * static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(n[2]);
  }
  /// Slot of a cell, indices from 0.
  [[nodiscard]] std::size_t slot(std::int32_t i, std::int32_t j, std::int32_t k) const {
    const auto u = [](std::int32_t index) { return static_cast<std::size_t>(index); };
    return stride * (u(j) + u(n[1]) * u(k)) + u(i / 2) + (i % 2 == 0 ? 0 : odd());
  }
};

/// Calls `work(cell, slot)` for all cells of a level, in the order of their numbers.
template <class Work>
void each_cell_slot(const AmgLevel& level, Work&& work) {
  std::size_t cell = 0;
  for (std::int32_t k = 0; k < level.n[2]; ++k) {
    for (std::int32_t j = 0; j < level.n[1]; ++j) {
      for (std::int32_t i = 0; i < level.n[0]; ++i) work(cell++, level.slot(i, j, k));
    }
  }
}

/// Sets `ways`: rows with the same matrix, and the same in `others`, which have its slots.
void note_equal_rows(AmgLevel& level, std::vector<Bytes> others = {});

/// The sizes of a level, without its arrays.
AmgLevel sized_level(const Triple& cells);

/// A level for the couplings of a grid; `between` and the merging are left empty.
AmgLevel make_amg_level(const AmgGrid& grid);

/// Sets how its cells are merged, and `between` of the coarser level.
void join_levels(const std::array<AmgMerge, 3>& merge, AmgLevel& fine, AmgLevel& coarse);

}  // namespace flow
