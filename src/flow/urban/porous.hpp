// kpc_read_porous: obstacles and porous cells, the open fractions of cells and faces.
//
// The file is the surface model's Porous file. Called by mkofrac.
#pragma once

#include "flow/boundary.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// Puts the fractions of the file's cells into `openings`, whose fractions are all 1: rows i, j, k,
/// fraction of the volume and of the faces -x +x -y +y -z +z. Of two rows of a cell the later
/// holds, of two cells at a face the smaller fraction, across a periodic end too. A fraction of a
/// volume is raised to `clim`, unless the cell is filled (below kClosedFace, left as it is); one of
/// a face below `xlim` becomes 0. Errors: "### error : data error in Porous file" for a cell
/// outside the grid and for a fraction outside 0..1, with file and line.
void kpc_read_porous(frame::Log& log, frame::TextInput& file, const ShortRecords& limits,
                     const Boundary& boundary, Openings& openings);

/// Warns of cells that are less than half as open as their six faces are in the mean: no shape is
/// so, and a flow that speeds up through such faces takes more momentum than its pressure gives.
void warn_of_narrow_cells(frame::Log& log, const Openings& openings);

/// flw_prep_stiobs: a cell whose volume is filled is no fluid. Sets the flags, closes the faces of
/// such cells and puts their volume to 1, by which nothing is divided that counts.
void flw_prep_stiobs(const Boundary& boundary, Openings& openings);

}  // namespace flow
