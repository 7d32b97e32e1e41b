#include "flow/rim.hpp"

#include <algorithm>

#include "flow/density.hpp"
#include "flow/halo.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// Calls `visit(face, index of the lower cell)` for the faces of an axis, 0..n along it.
template <class Visit>
void for_faces(const Box& box, int axis, Visit&& visit) {
  const Triple from{axis == 0 ? 0 : 1, axis == 1 ? 0 : 1, axis == 2 ? 0 : 1};
  for (std::int32_t k = from[2]; k <= box.n[2]; ++k) {
    for (std::int32_t j = from[1]; j <= box.n[1]; ++j) {
      for (std::int32_t i = from[0]; i <= box.n[0]; ++i) visit(box.at(i, j, k), Triple{i, j, k});
    }
  }
}

/// Faces with air on both sides, across which the operators sweep.
void open_inner_faces(const Boundary& boundary, const Openings& openings, int axis, Rim& rim) {
  const Box& box = openings.fluid.box();
  const auto a = static_cast<std::size_t>(axis);
  const std::size_t stride = box.stride(axis);
  const bool wraps = boundary.ends[a][0] == End::periodic;
  for_faces(box, axis, [&](std::size_t face, const Triple& index) {
    const bool low_end = index[a] == 0;
    const bool high_end = index[a] == box.n[a];
    if ((low_end || high_end) && !wraps) return;
    const std::size_t round = wraps ? stride * static_cast<std::size_t>(box.n[a]) : 0;
    const std::size_t lower = low_end ? face + round : face;
    const std::size_t upper = high_end ? face + stride - round : face + stride;
    const bool open = openings.fluid[lower] > 0 && openings.fluid[upper] > 0;
    if (open && openings.gm[a][face] >= kClosedFace) rim.inner[a][face] = openings.gm[a][face];
  });
}

/// The faces of a symmetric end, as slip walls.
void list_symmetric_end(const Openings& openings, int axis, std::int32_t side, Rim& rim) {
  const Box& box = openings.fluid.box();
  const auto a = static_cast<std::size_t>(axis);
  const std::int32_t end = side < 0 ? 0 : box.n[a];
  for_faces(box, axis, [&](std::size_t face, Triple index) {
    if (index[a] != end) return;
    if (side < 0) index[a] = 1;
    const std::size_t cell = box.at(index[0], index[1], index[2]);
    if (openings.fluid[cell] <= 0) return;
    rim.faces[a].push_back(
        {face, cell, index, side, static_cast<std::int32_t>(rim.groups.size()) - 1});
  });
}

/// Numbers of the faces of the rim at one side of the cells, -1 where there is none.
Flags numbers_of(const Box& box, const std::vector<BoundaryFace>& faces, std::int32_t side) {
  Flags numbers(box, -1);
  for (std::size_t f = 0; f < faces.size(); ++f) {
    if (faces[f].side == side) numbers[faces[f].cell] = static_cast<std::int32_t>(f);
  }
  return numbers;
}

/// Brings the faces of an axis into the order of their cells, and finds where rows begin.
void order_faces(const Box& box, std::size_t axis, Rim& rim) {
  auto& faces = rim.faces[axis];
  std::ranges::stable_sort(faces, {}, &BoundaryFace::cell);
  const auto rows = static_cast<std::size_t>(box.n[1]) * static_cast<std::size_t>(box.n[2]);
  auto& start = rim.row_start[axis];
  start.assign(rows + 1, 0);
  for (const BoundaryFace& face : faces) ++start[row_of(box, face.index) + 1];
  for (std::size_t row = 0; row < rows; ++row) start[row + 1] += start[row];
}

void list_free(const Box& box, Rim& rim) {
  for (std::size_t a = 0; a < 3; ++a) {
    for (std::size_t f = 0; f < rim.faces[a].size(); ++f) {
      const Group& group = rim.groups[static_cast<std::size_t>(rim.faces[a][f].group)];
      if (group.iv == VelocityAt::free) rim.free[a].push_back({f});
    }
  }
  for (std::size_t t = 0; t < 3; ++t) {
    for (std::size_t end = 0; end < 2; ++end) {
      const Flags numbers = numbers_of(box, rim.faces[t], end == 0 ? -1 : 1);
      for (std::size_t a = 0; a < 3; ++a) {
        for (FreeFace& one : rim.free[a]) {
          one.edge[t][end] = numbers[rim.faces[a][one.number].cell];
        }
      }
    }
  }
}

void list_closed(const Openings& openings, Rim& rim) {
  const Box& box = openings.fluid.box();
  for_rows(box, [&](std::size_t place, auto, auto) {
    for (std::size_t c = place; c < place + static_cast<std::size_t>(box.n[0]); ++c) {
      if (openings.fluid[c] <= 0) rim.closed_cells.push_back(c);
    }
  });
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    Flags listed(box);
    for (const auto& face : rim.faces[a]) listed[face.face] = 1;
    for_faces(box, axis, [&](std::size_t face, const Triple&) {
      const bool open = rim.inner[a][face] > 0.0 || listed[face] > 0;
      if (!open) rim.closed_faces[a].push_back(face);
    });
  }
}

}  // namespace

Rim make_rim(const Boundary& boundary, const BoundaryFaces& faces, const Openings& openings) {
  const Box& box = openings.fluid.box();
  Rim rim;
  rim.groups = boundary.groups;
  rim.groups.push_back(slip_wall());
  rim.faces = faces.of;
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    rim.inner[a] = Field(box);
    if (!box.computed(axis)) continue;
    open_inner_faces(boundary, openings, axis, rim);
    rim.partly[a] = std::ranges::any_of(openings.gm[a].all(),
                                        [](double open) { return open > 0.0 && open < 1.0; });
    for (const auto& face : faces.of[a]) rim.inner[a][face.face] = 0.0;
    if (boundary.ends[a][0] == End::periodic) fill_face_halos(rim.inner[a], axis, boundary.ends);
    rim.inner_rows[a] = EqualRows(rim.inner[a]);
    for (const std::int32_t side : {-1, 1}) {
      if (boundary.ends[a][side < 0 ? 0 : 1] != End::symmetric) continue;
      list_symmetric_end(openings, axis, side, rim);
    }
    order_faces(box, a, rim);
    for (const auto& face : rim.faces[a]) {
      const double open = openings.gm[a][face.face];
      rim.open[a].push_back(open);
      rim.wetted[a].push_back(open < kClosedFace ? 1.0 : open);
    }
  }
  list_free(box, rim);
  list_closed(openings, rim);
  return rim;
}

Vector face_centre(const GridTables& grid, int axis, const BoundaryFace& at) {
  Vector x{};
  for (std::size_t a = 0; a < 3; ++a) x[a] = grid.axis[a].xc(at.index[a]);
  const auto a = static_cast<std::size_t>(axis);
  x[a] = grid.axis[a].x(at.side < 0 ? at.index[a] : at.index[a] + 1);
  return x;
}

/// The mass flux density at a face of the rim where it is given or 0.
static double given_flux(const Group& group, int axis, const AirColumn& column, const Vector& x,
                         double pt) {
  const double velocity = group.velocity[static_cast<std::size_t>(axis)];
  if (!group.gives_velocity() || velocity == 0.0) return 0.0;
  return density_of(group, column, x, pt) * velocity;
}

void set_normal_fluxes(frame::Crew& crew, const Settings& settings, const GridTables& grid,
                       const Boundary& boundary, const Rim& rim, State& state) {
  const AirColumn column = state_column(settings, grid);
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    if (!grid.box.computed(axis)) continue;
    for (const auto& at : rim.faces[a]) {
      const Group& group = rim.groups[static_cast<std::size_t>(at.group)];
      if (group.iv == VelocityAt::free) continue;
      state.ru[a][at.face] = given_flux(group, axis, column, face_centre(grid, axis, at), state.pt);
    }
    for (const std::size_t face : rim.closed_faces[a]) state.ru[a][face] = 0.0;
    fill_face_halos(crew, state.ru[a], axis, boundary.ends);
  }
}

void flw_clsolid(frame::Crew& crew, const Rim& rim, State& state) {
  crew.each(rim.closed_cells.size(), kSharedCells, [&](std::size_t n) {
    state.p[rim.closed_cells[n]] = 0.0;
    state.mut[rim.closed_cells[n]] = 0.0;
  });
  for (std::size_t a = 0; a < 3; ++a) {
    const auto& faces = rim.closed_faces[a];
    crew.each(faces.size(), kSharedCells, [&](std::size_t n) { state.ru[a][faces[n]] = 0.0; });
  }
}

}  // namespace flow
