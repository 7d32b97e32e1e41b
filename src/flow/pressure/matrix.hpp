// flw_matrix: the matrix of the pressure equation.
//
// Its rows are those of the fluid cells. It hangs on the grid, the openings and the kinds of the
// conditions alone, and is built once. Second order in space on a uniform grid.
#pragma once

#include <vector>

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/linear/amg_grid.hpp"
#include "flow/linear/iccg_pre.hpp"
#include "flow/pressure/fix_points.hpp"
#include "flow/pressure/open_faces.hpp"
#include "flow/state.hpp"
#include "frame/log.hpp"

namespace flow {

/// The matrix as the equation has it. The part of each fix point is still free in it.
struct PressureMatrix {
  FiveBlocks blocks;
  bool singular = false;           ///< no pressure is held anywhere: the domain is closed
  std::vector<std::size_t> fixed;  ///< places of cells whose `phi` is held at 0
  std::vector<PartRun> parts;      ///< the cells that each of them stands for
  std::vector<HeldFace> held;      ///< faces that hold a pressure
};

/// Builds the matrix. A face between two cells couples them by its open area over the distance of
/// their centres; a face with a held pressure adds its open area over half the cell's width to the
/// diagonal; walls, inlets, slip and symmetry add nothing.
///
/// Where no pressure is held, that of one point is fixed: the fluid cell of largest volume, the
/// first of such; the log tells it after "pressure fix point ; (i,j,k)=". Air that walls cut off
/// from any held pressure and from that point gets a point of its own by the same rule, or its
/// equations had no solution; the log tells the number of such pockets.
/// Errors: "### program error -1- (flw_matrix)" without any fluid cell.
PressureMatrix flw_matrix(frame::Log& log, const GridTables& grid, const Openings& openings,
                          const Boundary& boundary, const BoundaryFaces& faces,
                          const OpenFaces& open);

/// Takes the fixed cells out of the equations: the row of each says that `phi` is 0.
void fix_cells(PressureMatrix& matrix);

}  // namespace flow
