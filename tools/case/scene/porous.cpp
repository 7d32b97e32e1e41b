#include "scene/porous.hpp"

#include <algorithm>

#include "scene/grid.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;

/// Collects what is solid: volumes of cells and areas of their faces, with sign.
class Solid {
 public:
  Solid(const CellGrid& grid, Porous& out) : grid_(grid), out_(out) {
    for (std::size_t a = 0; a < 3; ++a) {
      out.cells[a] = static_cast<std::int32_t>(grid.nodes[a].size()) - 1;
    }
    const auto count = static_cast<std::size_t>(out.cells[0]) *
                       static_cast<std::size_t>(out.cells[1]) *
                       static_cast<std::size_t>(out.cells[2]);
    out.volume.assign(count, 0.0);
    for (auto& axis : out.face) axis = {std::vector<double>(count), std::vector<double>(count)};
  }

  /// A piece of a roof: all that lies below it is solid.
  void take(const Piece& piece) {
    const double area = area_vector(piece.ring).z;  // of its shadow on the ground
    if (area == 0.0) return;
    Cell cell = column_of(piece);
    if (!out_.has({cell[0], cell[1], 1})) return;
    const double top = centroid(piece.ring).z;
    take_sides(piece, cell, area < 0.0 ? -1.0 : 1.0);
    for (cell[2] = 1; cell[2] <= out_.cells[2]; ++cell[2]) {
      const double low = node(2, cell[2] - 1);
      if (low >= top) return;
      const std::size_t at = out_.at(cell);
      out_.volume[at] += area * (std::min(top, node(2, cell[2])) - low);
      out_.face[2][0][at] += area;
      if (node(2, cell[2]) <= top) out_.face[2][1][at] += area;
    }
  }

 private:
  [[nodiscard]] double node(std::size_t axis, std::int32_t n) const {
    return grid_.nodes[axis][static_cast<std::size_t>(n)];
  }

  /// The column that a piece stands over, also where it lies in a plane across z.
  [[nodiscard]] Cell column_of(const Piece& piece) const {
    const Vector3 middle = centroid(piece.ring);
    return {cell_of(grid_.nodes[0], middle.x), cell_of(grid_.nodes[1], middle.y), 1};
  }

  /// Edges of the piece that lie in a plane between two cells: the solid below them closes that
  /// plane for the cell of the piece.
  void take_sides(const Piece& piece, const Cell& cell, double sign) {
    for (std::size_t p = 0; p < piece.ring.size(); ++p) {
      const Vector3& a = piece.ring[p];
      const Vector3& b = piece.ring[(p + 1) % piece.ring.size()];
      for (const std::size_t axis : {std::size_t{0}, std::size_t{1}}) {
        const double here = axis == 0 ? a.x : a.y;
        if (here != (axis == 0 ? b.x : b.y)) continue;
        const double width = std::abs(axis == 0 ? b.y - a.y : b.x - a.x);
        for (const std::size_t end : {std::size_t{0}, std::size_t{1}}) {
          if (here != node(axis, cell[axis] - 1 + static_cast<std::int32_t>(end))) continue;
          take_side(cell, axis, end, sign * width, 0.5 * (a.z + b.z));
        }
      }
    }
  }

  /// The roof over the edge lies within one layer of cells, so that its mean height tells the area.
  void take_side(Cell cell, std::size_t axis, std::size_t end, double width, double top) {
    for (cell[2] = 1; cell[2] <= out_.cells[2] && node(2, cell[2] - 1) < top; ++cell[2]) {
      const double low = node(2, cell[2] - 1);
      out_.face[axis][end][out_.at(cell)] += width * (std::min(top, node(2, cell[2])) - low);
    }
  }

  const CellGrid& grid_;
  Porous& out_;
};

/// Size of a cell along an axis.
double size_of(const CellGrid& grid, std::size_t axis, std::int32_t cell) {
  const auto c = static_cast<std::size_t>(cell);
  return grid.nodes[axis][c] - grid.nodes[axis][c - 1];
}

double open_share(double solid, double whole) {
  const double share = std::clamp(1.0 - solid / whole, 0.0, 1.0);
  // What is left of roundings is neither open nor closed.
  return share < 1e-9 ? 0.0 : share > 1.0 - 1e-9 ? 1.0 : share;
}

/// Turns solid volumes and areas into open fractions.
void settle(const CellGrid& grid, Porous& out) {
  Cell cell{};
  for (cell[2] = 1; cell[2] <= out.cells[2]; ++cell[2]) {
    for (cell[1] = 1; cell[1] <= out.cells[1]; ++cell[1]) {
      for (cell[0] = 1; cell[0] <= out.cells[0]; ++cell[0]) {
        const std::array<double, 3> d{size_of(grid, 0, cell[0]), size_of(grid, 1, cell[1]),
                                      size_of(grid, 2, cell[2])};
        const std::size_t at = out.at(cell);
        out.volume[at] = open_share(out.volume[at], d[0] * d[1] * d[2]);
        for (std::size_t a = 0; a < 3; ++a) {
          const double whole = d[(a + 1) % 3] * d[(a + 2) % 3];
          for (auto& end : out.face[a]) end[at] = open_share(end[at], whole);
        }
      }
    }
  }
}

/// Both cells at a face give it the smaller fraction.
void match_neighbours(Porous& out) {
  Cell cell{};
  for (cell[2] = 1; cell[2] <= out.cells[2]; ++cell[2]) {
    for (cell[1] = 1; cell[1] <= out.cells[1]; ++cell[1]) {
      for (cell[0] = 1; cell[0] <= out.cells[0]; ++cell[0]) {
        for (std::size_t a = 0; a < 3; ++a) {
          Cell next = cell;
          ++next[a];
          if (!out.has(next)) continue;
          double& upper = out.face[a][1][out.at(cell)];
          double& lower = out.face[a][0][out.at(next)];
          upper = lower = std::min(upper, lower);
        }
      }
    }
  }
}

}  // namespace

Porous open_fractions(const CellGrid& grid, const std::vector<CutFace>& faces) {
  Porous out;
  Solid solid(grid, out);
  for (const CutFace& face : faces) {
    if (face.kind != FaceKind::roof) continue;
    for (const Piece& piece : face.pieces) solid.take(piece);
  }
  settle(grid, out);
  match_neighbours(out);
  return out;
}

}  // namespace townskin_case
