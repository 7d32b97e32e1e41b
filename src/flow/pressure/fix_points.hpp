// Where the pressure has to be fixed: one cell of each part of the air that no held pressure
// reaches. Used by flw_matrix.
#pragma once

#include <cstdint>
#include <vector>

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/pressure/open_faces.hpp"
#include "flow/state.hpp"

namespace flow {

/// Cells of a row that belong to one part.
struct PartRun {
  std::size_t place = 0;  ///< of the first in a field
  std::int32_t count = 0;
  std::int32_t part = 0;  ///< number of the part's fix point
};

/// A cell and what it weighs in the choice.
struct FixPoint {
  Triple cell{};
  double volume = 0.0;
};

/// The parts of the fluid that no held pressure reaches.
struct ClosedParts {
  std::vector<FixPoint> points;  ///< one for each
  std::vector<PartRun> runs;     ///< their cells, in the order of the fields
};

/// The fix points: of each connected part of the fluid without a face of held pressure the cell of
/// largest volume, the first of such with i fastest. They come in the order of the parts' first
/// cells.
ClosedParts list_fix_points(const GridTables& grid, const Openings& openings,
                            const Boundary& boundary, const BoundaryFaces& faces,
                            const OpenFaces& open);

}  // namespace flow
