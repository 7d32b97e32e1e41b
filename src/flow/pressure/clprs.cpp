#include "flow/pressure/clprs.hpp"

#include <utility>

#include "flow/pressure/cldiv.hpp"
#include "flow/pressure/clmodv.hpp"
#include "flow/pressure/closed_domain.hpp"

namespace flow {

PressureStep make_pressure_step(frame::Log& log, const Settings& settings, const GridTables& grid,
                                const Openings& openings, const Boundary& boundary,
                                const BoundaryFaces& faces) {
  PressureStep step;
  step.grid = &grid;
  step.openings = &openings;
  step.boundary = &boundary;
  step.faces = &faces;
  const PressureMethod method = flw_amg_setup(settings.records.iamg);
  frame::allocating(log, "pressure matrix", frame::bytes_of<double>(grid.box.size(), 6), [&] {
    step.open = list_open_faces(openings, boundary, faces);
    PressureMatrix matrix = flw_matrix(log, grid, openings, boundary, faces, step.open);
    step.closed = matrix.singular;
    step.solver = make_pressure_solver(log, method, std::move(matrix), grid, openings.fluid,
                                       boundary.periodic_y(), settings.control);
    step.div = Field(grid.box);
    if (step.closed) {
      step.rows.assign(
          static_cast<std::size_t>(grid.box.n[1]) * static_cast<std::size_t>(grid.box.n[2]), 0.0);
    }
  });
  return step;
}

void flw_clprs(frame::Log& log, frame::Crew& crew, PressureStep& step, double dt,
               const Field* source, frame::FunctionRef<void()> set_density, State& state) {
  const GridTables& grid = *step.grid;
  const Openings& openings = *step.openings;
  if (step.closed) {
    keep_mass(crew, grid, openings, *step.faces, dt, source, set_density, step.rows, state);
  }
  flw_cldiv(crew, grid, openings, state, dt, source, step.div);
  flw_clslvp(log, crew, step.solver, step.div);
  flw_clmodv(crew, grid, openings, *step.boundary, *step.faces, step.open, step.div, dt, state);
}

}  // namespace flow
