// Where the pressure has to be fixed: one cell of each part of the air that no held pressure
// reaches. Used by flw_matrix.
#pragma once

#include <vector>

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/pressure/open_faces.hpp"
#include "flow/state.hpp"

namespace flow {

/// A cell and what it weighs in the choice.
struct FixPoint {
  Triple cell{};
  double volume = 0.0;
};

/// The fix points: of each connected part of the fluid without a face of held pressure the cell of
/// largest volume, the first of such with i fastest. They come in the order of the parts' first
/// cells.
std::vector<FixPoint> list_fix_points(const GridTables& grid, const Openings& openings,
                                      const Boundary& boundary, const BoundaryFaces& faces,
                                      const OpenFaces& open);

}  // namespace flow
