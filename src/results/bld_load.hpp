// BldLoad: one line per grid cell with building surfaces and hour, the heat that buildings release
// there per volume of air.
//
// The user's StHeat file is its heading. The cells are listed once at the start. Called with the
// building model on: from the step in a repeating-day run and at a month's close in a dated one.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "frame/array_list.hpp"
#include "inputs/grid.hpp"
#include "inputs/patch.hpp"
#include "results/cells.hpp"
#include "results/io.hpp"

namespace tsrf_module_io {

/// Heat released into a cell [W]: sensible and latent.
using CellHeat = std::array<double, 2>;

struct BldLoad {
  FileStart start;
  CellList cells;                  ///< of patches of type 1; j fastest
  std::vector<double> volume;      ///< per cell [m3]; 1 when the grid has no coordinates
  std::vector<CellHeat> released;  ///< per cell
};

/// Lists the cells and their volumes; warns where the grid has no coordinates.
void prep_bldload(frame::Log& log, const tsrf_module_patch::Data& patch,
                  const tsrf_main01::Grid& grid, BldLoad& data);
/// Sums the heat released at the patches [W] over each cell, in the order of the patches.
void sum_bldload(std::span<const double> sensible, std::span<const double> latent, BldLoad& data);
/// Writes the rows of the hour that `when` ends from `released` per cell of
/// `data.cells`.
void write_bldload(frame::Log& log, frame::TextOutput& file, frame::TextInput& stheat,
                   const Settings& settings, When when, std::span<const CellHeat> released,
                   BldLoad& data);

/// Tells what the arrays take.
void list_arrays(const BldLoad& data, frame::ArrayList& list);

}  // namespace tsrf_module_io
