#include "flow/pressure/clslvp.hpp"

#include <algorithm>
#include <utility>

#include "flow/share.hpp"

namespace flow {

namespace {

/// Widths of the cells and faces that hold a pressure.
AmgGeometry geometry_of(const GridTables& grid, PressureMatrix& matrix, bool periodic_y) {
  AmgGeometry geometry;
  for (std::size_t a = 0; a < 3; ++a) {
    for (std::int32_t i = 1; i <= grid.box.n[a]; ++i) {
      geometry.width[a].push_back(grid.axis[a].dx(i));
    }
  }
  geometry.held = std::move(matrix.held);
  geometry.uncounted = matrix.fixed;
  geometry.periodic_y = periodic_y;
  return geometry;
}

/// The right side of each fixed cell becomes what the other cells of its part leave: then the
/// equations of a free part agree with one another.
void balance_parts(PressureSolver& solver, Field& div) {
  std::fill(solver.of_parts.begin(), solver.of_parts.end(), 0.0);
  for (const PartRun& run : solver.parts) {
    double sum = 0.0;
    for (std::int32_t m = 0; m < run.count; ++m)
      sum += div[run.place + static_cast<std::size_t>(m)];
    solver.of_parts[static_cast<std::size_t>(run.part)] += sum;
  }
  for (std::size_t part = 0; part < solver.fixed.size(); ++part) {
    div[solver.fixed[part]] = -solver.of_parts[part];
  }
}

/// `phi` of each fixed cell becomes 0, and the others of its part keep their difference to it.
void shift_parts(frame::Crew& crew, PressureSolver& solver, Field& phi) {
  for (std::size_t part = 0; part < solver.fixed.size(); ++part) {
    solver.of_parts[part] = phi[solver.fixed[part]];
  }
  crew.each(solver.parts.size(), kSharedCells / 16, [&](std::size_t n) {
    const PartRun& run = solver.parts[n];
    const double level = solver.of_parts[static_cast<std::size_t>(run.part)];
    for (std::int32_t m = 0; m < run.count; ++m)
      phi[run.place + static_cast<std::size_t>(m)] -= level;
  });
}

SolveResult solve_iccg(frame::Log& log, PressureSolver& solver, Field& div) {
  IccgSystem& system = solver.iccg;
  gather_scaled(system.points, div, system.scale, system.b);
  const SolveResult result = flw_iccg(log, solver.limits, system);
  scatter_scaled(system.points, system.x, system.scale, div);
  return result;
}

SolveResult solve_amgcg(frame::Log& log, frame::Crew& crew, PressureSolver& solver, Field& div) {
  AmgSystem& system = solver.amgcg;
  balance_parts(solver, div);
  gather_rows(crew, div, system);
  const SolveResult result = flw_amgcg(log, crew, solver.limits, system);
  scatter_rows(crew, system, div);
  shift_parts(crew, solver, div);
  return result;
}

}  // namespace

PressureMethod flw_amg_setup(std::int32_t iamg) {
  return iamg >= 1 ? PressureMethod::amgcg : PressureMethod::iccg;
}

PressureSolver make_pressure_solver(frame::Log& log, PressureMethod method, PressureMatrix&& matrix,
                                    const GridTables& grid, const Flags& fluid, bool periodic_y,
                                    const Control& control) {
  PressureSolver solver;
  solver.method = method;
  solver.limits.epsrel = control.epscg;
  solver.limits.itmax = control.itercg;
  solver.limits.nnorm = static_cast<double>(fluid.box().cells());
  solver.fixed = matrix.fixed;
  switch (method) {
    case PressureMethod::iccg:
      fix_cells(matrix);
      flw_iccg_pre(log, matrix.blocks, fluid, periodic_y, control.gsfcg, solver.iccg);
      break;
    case PressureMethod::amgcg:
      solver.parts = std::move(matrix.parts);
      solver.of_parts.assign(solver.fixed.size(), 0.0);
      flw_amgcg_pre(log, matrix.blocks, fluid, geometry_of(grid, matrix, periodic_y), solver.amgcg);
      break;
  }
  return solver;
}

void flw_clslvp(frame::Log& log, frame::Crew& crew, PressureSolver& solver, Field& div) {
  const frame::Tag tag(log, "(flw_clslvp)");
  for (const std::size_t cell : solver.fixed) div[cell] = 0.0;
  const bool multigrid = solver.method == PressureMethod::amgcg;
  const SolveResult result =
      multigrid ? solve_amgcg(log, crew, solver, div) : solve_iccg(log, solver, div);
  log_solution(log, multigrid ? "amgcg" : "iccg ", result);
  if (!result.converged) log.fail("### error : cg solver (flw_clslvp)", "not converged");
}

}  // namespace flow
