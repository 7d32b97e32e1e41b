// SurfTemp: one line per grid cell with surfaces and hour, the fields with which a flow field
// takes its heat transfer from the surfaces.
//
// The cells are listed once at the start; the sums of an hour are formed anew at each write.
// Called from the step in a repeating-day run and at a month's close in a dated one.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/crew.hpp"
#include "inputs/grid_index.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "results/cells.hpp"
#include "results/io.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_module_io {

using CellSums = std::array<double, 3>;

struct SurfTemp {
  FileStart start;
  CellList cells;                  ///< of patches of type 1, 3, 4 and 5; i fastest
  std::vector<std::int32_t> i, j;  ///< per cell: indices without the grid's offset
  std::vector<CellSums> swlr;      ///< per cell: area of walls, of ground and of roofs [m2]
  std::vector<CellSums> tdrg;      ///< per cell: sums of A h [W/K], A h Ts [W], beta A h [W/K]
};

/// Lists the cells and sums the areas by kind of surface.
void prep_surftemp(frame::Log& log, const tsrf_module_patch::Data& patch,
                   const tsrf_module_grdindx::Data& grid_index, SurfTemp& data);
/// Sums `tdrg` over the patches of each cell, in the order of the patches.
void sum_surftemp(const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                  const tsrf_module_data::Data& state, SurfTemp& data);
/// Writes the rows of `hour` from sums (or their means) per cell of `data.cells`.
void write_surftemp(frame::Log& log, frame::Crew& crew, frame::TextOutput& file,
                    const Settings& settings, When when, std::span<const CellSums> tdrg,
                    std::span<const CellSums> swlr, SurfTemp& data);

/// Tells what the arrays take.
void list_arrays(const SurfTemp& data, frame::ArrayList& list);

}  // namespace tsrf_module_io
