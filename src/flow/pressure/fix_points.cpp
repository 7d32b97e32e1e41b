#include "flow/pressure/fix_points.hpp"

namespace flow {

namespace {

/// Parts of the fluid, found one after the other from their first cells on.
class Parts {
 public:
  Parts(const Openings& openings, const OpenFaces& open)
      : box_(openings.fluid.box()), fluid_(openings.fluid), open_(open), seen_(box_, 0) {}

  /// Marks the part of a cell that is not marked yet and calls `visit(cell)` for each of its cells.
  template <class Visit>
  void fill(const Triple& start, Visit&& visit) {
    mark(start);
    while (!waiting_.empty()) {
      const Triple cell = waiting_.back();
      waiting_.pop_back();
      visit(cell);
      for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        Triple above = cell;
        above[a] = cell[a] < box_.n[a] ? cell[a] + 1 : 1;
        if (is_open(open_(cell[0], cell[1], cell[2]), axis)) mark(above);
        Triple below = cell;
        below[a] = cell[a] > 1 ? cell[a] - 1 : box_.n[a];
        if (is_open(open_(below[0], below[1], below[2]), axis)) mark(below);
      }
    }
  }
  [[nodiscard]] bool is_new(const Triple& cell) const {
    return fluid_(cell[0], cell[1], cell[2]) > 0 && seen_(cell[0], cell[1], cell[2]) == 0;
  }

 private:
  void mark(const Triple& cell) {
    std::uint8_t& seen = seen_(cell[0], cell[1], cell[2]);
    if (seen != 0) return;
    seen = 1;
    waiting_.push_back(cell);
  }

  Box box_;
  const Flags& fluid_;
  const OpenFaces& open_;
  FieldOf<std::uint8_t> seen_;
  std::vector<Triple> waiting_;
};

/// Cells with a face of held pressure.
FieldOf<std::uint8_t> held_cells(const Openings& openings, const Boundary& boundary,
                                 const BoundaryFaces& faces) {
  FieldOf<std::uint8_t> held(openings.fluid.box(), 0);
  for (std::size_t a = 0; a < 3; ++a) {
    for (const BoundaryFace& face : faces.of[a]) {
      if (boundary.groups[static_cast<std::size_t>(face.group)].holds_pressure() &&
          openings.gm[a][face.face] >= kClosedFace) {
        held[face.cell] = 1;
      }
    }
  }
  return held;
}

/// The runs of cells that carry the number of a part, above 0.
std::vector<PartRun> list_runs(const Flags& part) {
  std::vector<PartRun> runs;
  for_rows(part.box(), [&](std::size_t place, std::int32_t, std::int32_t) {
    const std::size_t end = place + static_cast<std::size_t>(part.box().n[0]);
    for (std::size_t cell = place; cell < end; ++cell) {
      if (part[cell] == 0) continue;
      const bool goes_on = cell > place && part[cell - 1] == part[cell];
      if (!goes_on) runs.push_back({cell, 0, part[cell] - 1});
      ++runs.back().count;
    }
  });
  return runs;
}

}  // namespace

ClosedParts list_fix_points(const GridTables& grid, const Openings& openings,
                            const Boundary& boundary, const BoundaryFaces& faces,
                            const OpenFaces& open) {
  const Box& box = grid.box;
  const FieldOf<std::uint8_t> held = held_cells(openings, boundary, faces);
  Parts parts(openings, open);
  ClosedParts closed;
  Flags part(box, 0);
  std::vector<std::size_t> cells;
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    for (std::int32_t j = 1; j <= box.n[1]; ++j) {
      for (std::int32_t i = 1; i <= box.n[0]; ++i) {
        if (!parts.is_new({i, j, k})) continue;
        bool reached = false;
        FixPoint best;
        cells.clear();
        parts.fill({i, j, k}, [&](const Triple& cell) {
          const std::size_t place = box.at(cell[0], cell[1], cell[2]);
          cells.push_back(place);
          reached = reached || held[place] != 0;
          const double volume = grid.volume(cell[0], cell[1], cell[2]);
          const bool earlier =
              volume == best.volume && place < box.at(best.cell[0], best.cell[1], best.cell[2]);
          if (volume > best.volume || earlier) best = {cell, volume};
        });
        if (reached) continue;
        closed.points.push_back(best);
        for (const std::size_t place : cells) {
          part[place] = static_cast<std::int32_t>(closed.points.size());
        }
      }
    }
  }
  closed.runs = list_runs(part);
  return closed;
}

}  // namespace flow
