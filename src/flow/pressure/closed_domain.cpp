#include "flow/pressure/closed_domain.hpp"

#include <numeric>

#include "flow/rim.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// Sum of `value(place)` * volume over the fluid cells.
template <class Value>
double volume_sum(frame::Crew& crew, const GridTables& grid, const Flags& fluid,
                  std::span<double> rows, Value&& value) {
  share_rows(crew, grid.box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    double row = 0.0;
    for (std::int32_t i = 1; i <= grid.box.n[0]; ++i, ++place) {
      if (fluid[place] > 0) row += value(place) * grid.axis[0].dx(i);
    }
    rows[row_of(grid.box, {1, j, k})] = row * (grid.axis[1].dx(j) * grid.axis[2].dx(k));
  });
  return std::accumulate(rows.begin(), rows.end(), 0.0);
}

/// Mass that enters through faces with a condition [kg/s].
double net_inflow(const GridTables& grid, const Openings& openings, const BoundaryFaces& faces,
                  const State& state) {
  double sum = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    const std::size_t b = (a + 1) % 3;
    const std::size_t c = (a + 2) % 3;
    for (const BoundaryFace& face : faces.of[a]) {
      const double area = grid.axis[b].dx(face.index[b]) * grid.axis[c].dx(face.index[c]);
      sum -= face.side * area * openings.gm[a][face.face] * state.ru[a][face.face];
    }
  }
  return sum;
}

}  // namespace

double air_mass(frame::Crew& crew, const GridTables& grid, const Openings& openings, const Field& r,
                std::span<double> rows) {
  return volume_sum(crew, grid, openings.fluid, rows,
                    [&](std::size_t place) { return openings.gmc[place] * r[place]; });
}

void keep_mass(frame::Crew& crew, const GridTables& grid, const Openings& openings,
               const BoundaryFaces& faces, double dt, const Field* source,
               frame::FunctionRef<void()> set_density, std::span<double> rows, State& state) {
  if (!(state.reference_mass > 0.0)) {
    state.reference_mass = air_mass(crew, grid, openings, state.r[1], rows);
  }
  double inflow = net_inflow(grid, openings, faces, state);
  if (source != nullptr) {
    inflow -= volume_sum(crew, grid, openings.fluid, rows,
                         [&](std::size_t cell) { return (*source)[cell]; });
  }
  state.reference_mass += dt * inflow;
  const double ratio = state.reference_mass / air_mass(crew, grid, openings, state.r[0], rows);
  if (ratio == 1.0) return;
  state.pt *= ratio;
  set_density();
}

}  // namespace flow
