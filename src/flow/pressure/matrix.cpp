#include "flow/pressure/matrix.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

namespace flow {

namespace {

/// Area of a face along `axis` of a cell.
double face_area(const GridTables& grid, std::size_t axis, const Triple& cell) {
  const std::size_t b = (axis + 1) % 3;
  const std::size_t c = (axis + 2) % 3;
  return grid.axis[b].dx(cell[b]) * grid.axis[c].dx(cell[c]);
}

void couple_cells(const GridTables& grid, const Openings& openings, const OpenFaces& open,
                  FiveBlocks& blocks) {
  const Box& box = grid.box;
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    for (std::int32_t j = 1; j <= box.n[1]; ++j) {
      for (std::int32_t i = 1; i <= box.n[0]; ++i) {
        const Triple cell{i, j, k};
        const std::size_t here = box.at(i, j, k);
        for (int axis = 0; axis < 3; ++axis) {
          if (!is_open(open[here], axis)) continue;
          const auto a = static_cast<std::size_t>(axis);
          const double c =
              face_area(grid, a, cell) * openings.gm[a][here] / grid.axis[a].dxc(cell[a]);
          const auto next = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(here) +
                                                     step_over(box, axis, cell[a]));
          blocks.diagonal[here] += c;
          blocks.diagonal[next] += c;
          (next > here ? blocks.lower[a][next] : blocks.wrap[here]) = -c;
        }
      }
    }
  }
}

/// The faces that hold a pressure, added to the diagonal.
std::vector<HeldFace> hold_pressure(const GridTables& grid, const Openings& openings,
                                    const Boundary& boundary, const BoundaryFaces& faces,
                                    FiveBlocks& blocks) {
  std::vector<HeldFace> held;
  for (std::size_t a = 0; a < 3; ++a) {
    for (const BoundaryFace& face : faces.of[a]) {
      const double fraction = openings.gm[a][face.face];
      if (!boundary.groups[static_cast<std::size_t>(face.group)].holds_pressure()) continue;
      if (fraction < kClosedFace) continue;
      const double half = 0.5 * grid.axis[a].dx(face.index[a]);
      const double c = face_area(grid, a, face.index) * fraction / half;
      blocks.diagonal[face.cell] += c;
      held.push_back({face.cell, static_cast<std::int32_t>(a), c});
    }
  }
  return held;
}

/// Tells the fix points: the one that stands for a closed domain, and the number of the others.
void tell_fix_points(frame::Log& log, bool closed, const std::vector<FixPoint>& points) {
  if (closed) {
    const auto before = [](const FixPoint& point) {
      return std::tuple(-point.volume, point.cell[2], point.cell[1], point.cell[0]);
    };
    const FixPoint& point = *std::min_element(
        points.begin(), points.end(),
        [&](const auto& one, const auto& other) { return before(one) < before(other); });
    log.line("pressure fix point ; (i,j,k)=", point.cell[0], point.cell[1], point.cell[2]);
  }
  const std::size_t pockets = points.size() - (closed ? 1 : 0);
  if (pockets > 0) {
    log.line("%%% enclosed parts of the air, each with a pressure fix point of its own =", pockets);
  }
}

}  // namespace

PressureMatrix flw_matrix(frame::Log& log, const GridTables& grid, const Openings& openings,
                          const Boundary& boundary, const BoundaryFaces& faces,
                          const OpenFaces& open) {
  PressureMatrix matrix;
  matrix.blocks = FiveBlocks(grid.box);
  couple_cells(grid, openings, open, matrix.blocks);
  matrix.held = hold_pressure(grid, openings, boundary, faces, matrix.blocks);
  matrix.singular = matrix.held.empty();
  ClosedParts closed = list_fix_points(grid, openings, boundary, faces, open);
  const std::vector<FixPoint>& points = closed.points;
  if (matrix.singular && points.empty()) log.program_error("### program error -1- (flw_matrix)");
  tell_fix_points(log, matrix.singular, points);
  for (const FixPoint& point : points) {
    matrix.fixed.push_back(grid.box.at(point.cell[0], point.cell[1], point.cell[2]));
  }
  matrix.parts = std::move(closed.runs);
  return matrix;
}

void fix_cells(PressureMatrix& matrix) {
  FiveBlocks& blocks = matrix.blocks;
  const Box& box = blocks.diagonal.box();
  for (const std::size_t here : matrix.fixed) {
    blocks.diagonal[here] = 1.0;
    for (int axis = 0; axis < 3; ++axis) {
      Field& lower = blocks.lower[static_cast<std::size_t>(axis)];
      lower[here] = 0.0;
      lower[here + box.stride(axis)] = 0.0;
    }
    blocks.wrap[here] = 0.0;
    // In row 1 of y the coupling with the last stands there.
    const std::size_t around = static_cast<std::size_t>(box.n[1] - 1) * box.stride(1);
    if (here / box.stride(1) % box.extent(1) == kHalo) blocks.wrap[here + around] = 0.0;
  }
}

}  // namespace flow
