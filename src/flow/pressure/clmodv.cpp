#include "flow/pressure/clmodv.hpp"

#include "flow/halo.hpp"
#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// The upper faces of a row of cells along one axis; the cells behind them are `s` further.
struct Faces {
  const std::uint8_t* open;
  unsigned bit;
  const double* phi;
  std::ptrdiff_t s;
};

/// Distances of the centres along a row.
struct Gaps {
  const double* centre;
  double operator[](std::size_t i) const { return centre[i + 1] - centre[i]; }
};

template <class Distance>
FLOW_INLINE void correct(std::size_t count, const Faces& at, Distance distance, double* ru) {
  for (std::size_t i = 0; i < count; ++i) {
    const double slope = (at.phi[static_cast<std::ptrdiff_t>(i) + at.s] - at.phi[i]) / distance[i];
    ru[i] -= (at.open[i] & at.bit) != 0 ? slope : 0.0;
  }
}

FLOW_CLONES void correct_along(std::size_t count, const Faces& at, const double* centre,
                               double* ru) {
  correct(count, at, Gaps{centre}, ru);
}

FLOW_CLONES void correct_across(std::size_t count, const Faces& at, double distance, double* ru) {
  correct(count, at, Same{distance}, ru);
}

FLOW_CLONES void add_pressure(std::size_t count, const double* phi, double rate, double* p) {
  for (std::size_t i = 0; i < count; ++i) p[i] += phi[i] * rate;
}

void correct_held_faces(const GridTables& grid, const Openings& openings, const Boundary& boundary,
                        const BoundaryFaces& faces, const Field& phi, State& state) {
  for (std::size_t a = 0; a < 3; ++a) {
    for (const BoundaryFace& face : faces.of[a]) {
      if (!boundary.groups[static_cast<std::size_t>(face.group)].holds_pressure()) continue;
      if (openings.gm[a][face.face] < kClosedFace) continue;
      const double half = 0.5 * grid.axis[a].dx(face.index[a]);
      state.ru[a][face.face] += face.side * (phi[face.cell] / half);
    }
  }
}

}  // namespace

void flw_clmodv(frame::Crew& crew, const GridTables& grid, const Openings& openings,
                const Boundary& boundary, const BoundaryFaces& faces, const OpenFaces& open,
                const Field& phi, double dt, State& state) {
  const Box& box = grid.box;
  const auto n = static_cast<std::size_t>(box.n[0]);
  const double* centre = &grid.axis[0].centre[kHalo];
  share_rows(crew, box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    const auto at = [&](int axis, std::int32_t index) {
      return Faces{&open[place], 1U << static_cast<unsigned>(axis), &phi[place],
                   step_over(box, axis, index)};
    };
    // Along x the last cell has no open upper face; phi is read there, and not taken.
    correct_along(n, at(0, 1), centre, &state.ru[0][place]);
    correct_across(n, at(1, j), grid.axis[1].dxc(j), &state.ru[1][place]);
    correct_across(n, at(2, k), grid.axis[2].dxc(k), &state.ru[2][place]);
    add_pressure(n, &phi[place], 1.0 / dt, &state.p[place]);
  });
  correct_held_faces(grid, openings, boundary, faces, phi, state);
  for (int axis = 0; axis < 3; ++axis) {
    if (box.computed(axis)) {
      fill_face_halos(crew, state.ru[static_cast<std::size_t>(axis)], axis, boundary.ends);
    }
  }
  fill_halos(crew, state.p, boundary.ends);
}

}  // namespace flow
