// kpc_chkdat: the city's heat on the cells of the grid.
//
// The surface model knows nothing of the flow's obstacles: it may name a cell that is filled. Its
// heat then goes to the air beside it. Called by mkofrac when all files are read.
#pragma once

#include <string_view>

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/state.hpp"
#include "flow/urban/city_rows.hpp"

namespace flow {

/// What the rows of a file are, and what becomes of two rows of one cell and hour.
struct CityFile {
  std::string_view title;
  bool per_volume = false;  ///< values are per volume of the named cell, else of the whole cell
  bool adds_up = false;     ///< rows add up; else the later holds
};

/// The table of a file by fluid cells, per volume of the cell that takes the heat. Cells that are
/// not fluid (gmc below kClosedFace) hand it in equal shares to the fluid cells at their faces;
/// a warning tells how many. Errors: a data error where there is no such cell.
HourTable kpc_chkdat(frame::Log& log, const GridTables& grid, const Boundary& boundary,
                     const Openings& openings, const CityFile& file, const CityRows& rows);

}  // namespace flow
