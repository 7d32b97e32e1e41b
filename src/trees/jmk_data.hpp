// jmk_module_data: whether the run has a canopy of cells (group JMK_DATA), and which fine cells
// carry leaves.
//
// The LAD file lists the cells of the fine grid that carry leaves and the kind of tree in each.
// Owned by the run, filled once at the start by jmk2_prep_init.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/grid_index.hpp"

namespace jmk_module_data {

/// A fine cell with leaves; indices from 1 on the fine grid.
struct LeafCell {
  std::int32_t i, j, k;
  std::int32_t TreeID;
  std::int32_t row = 0;  ///< row of its kind in the tree table, from 0
};

struct Data {
  bool CALJMK = false;             ///< the canopy of cells is computed
  std::vector<LeafCell> cells;     ///< the NJMK cells with leaves, in the order k, j, i
  std::int32_t highest_layer = 0;  ///< greatest layer with leaves; nothing above it is computed
};

/// Reads group JMK_DATA.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);

/// Reads the LAD file. `grid` are the coarse cells along x, y, z, `NDIV` the division of each in
/// plan. A line with TreeID 0 is a cell without leaves. A cell outside the model's area, a cell
/// with two kinds of tree and a file without lines are data errors.
void read_lad(frame::Log& log, frame::TextInput& file, const std::array<std::int32_t, 3>& grid,
              const tsrf_module_grdindx::Data& grid_index, std::int32_t NDIV, Data& data);

}  // namespace jmk_module_data
