// The rim of the air: which faces lie between two cells of fluid, and where the air ends.
//
// The operators sweep over all faces at once, as if air were everywhere; `inner` takes out the
// faces where it is not, and the lists put in what the conditions of the rim give instead. A
// symmetric end of the domain is listed as a slip wall. Built once (prepare); read by the terms of
// momentum and scalars.
#pragma once

#include <array>
#include <vector>

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// Number of a cell's row, from 0, k outer.
inline std::size_t row_of(const Box& box, const Triple& cell) {
  return static_cast<std::size_t>(cell[2] - 1) * static_cast<std::size_t>(box.n[1]) +
         static_cast<std::size_t>(cell[1] - 1);
}

/// A face of the rim where the air is free to pass, and the faces of the rim that meet its edges.
struct FreeFace {
  std::size_t number = 0;  ///< in the list of its axis
  /// [axis][lower, upper side of the cell]: number in the list of that axis; -1: none meets it.
  std::array<std::array<std::int32_t, 2>, 3> edge{};
};

/// Faces of a list, from `first` up to, not including, `last`.
struct FaceRange {
  std::size_t first = 0, last = 0;
};

struct Rim {
  /// Open fraction of a face between two cells of fluid, else 0; beyond a periodic end as within.
  std::array<Field, 3> inner;
  std::array<EqualRows, 3> inner_rows;  ///< by which kernels read it
  std::array<bool, 3> partly{};         ///< some face of the axis is open in part
  std::vector<Group> groups;            ///< those of the boundary, and a slip wall behind them
  /// By axis, in the order of their cells; `group` points into `groups`.
  std::array<std::vector<BoundaryFace>, 3> faces;
  std::array<std::vector<std::size_t>, 3> row_start;  ///< first face of each row of cells, and all
  std::array<std::vector<double>, 3> open;            ///< open fraction of each of these faces
  /// Fraction of each of these faces along which air and wall meet: the open one, or 1 where it is
  /// closed. Shear, heat and vapour pass through it.
  std::array<std::vector<double>, 3> wetted;
  std::array<std::vector<FreeFace>, 3> free;
  std::vector<std::size_t> closed_cells;                 ///< not fluid
  std::array<std::vector<std::size_t>, 3> closed_faces;  ///< neither inner nor with a condition

  /// `inner` from a place on to the end of its row, for kernels.
  [[nodiscard]] const double* inner_from(std::size_t axis, std::size_t place) const {
    return inner_rows[axis].from(inner[axis], place);
  }
  /// The faces of the cells of some rows, numbered from 0, k outer.
  [[nodiscard]] FaceRange of_rows(std::size_t axis, std::size_t first, std::size_t last) const {
    const auto& start = row_start[axis];
    return start.empty() ? FaceRange{} : FaceRange{start[first], start[last]};
  }
};

Rim make_rim(const Boundary& boundary, const BoundaryFaces& faces, const Openings& openings);

/// Centre of a face of the rim [m].
Vector face_centre(const GridTables& grid, int axis, const BoundaryFace& at);

/// Puts the fluxes of all faces with a given velocity on it, times the density of the group's air,
/// and those of slip walls and closed faces on 0; free faces keep theirs. Reads pt; writes ru,
/// halos included.
void set_normal_fluxes(frame::Crew& crew, const Settings& settings, const GridTables& grid,
                       const Boundary& boundary, const Rim& rim, State& state);

/// flw_clsolid: cells that are not fluid and closed faces carry no flow. Writes p and mut of the
/// cells and ru of the faces; costs nothing where all is fluid.
void flw_clsolid(frame::Crew& crew, const Rim& rim, State& state);

}  // namespace flow
