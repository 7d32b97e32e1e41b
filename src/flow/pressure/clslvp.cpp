#include "flow/pressure/clslvp.hpp"

namespace flow {

PressureMethod flw_amg_setup(frame::Log& log, std::int32_t iamg) {
  if (iamg >= 1) log.fail("### error : amg solver not available");
  return PressureMethod::iccg;
}

PressureSolver make_pressure_solver(frame::Log& log, PressureMethod method,
                                    const PressureMatrix& matrix, const Flags& fluid,
                                    bool periodic_y, const Control& control) {
  PressureSolver solver;
  solver.method = method;
  solver.limits.epsrel = control.epscg;
  solver.limits.itmax = control.itercg;
  solver.limits.nnorm = static_cast<double>(fluid.box().cells());
  solver.fixed = matrix.fixed;
  switch (method) {
    case PressureMethod::iccg:
      flw_iccg_pre(log, matrix.blocks, fluid, periodic_y, control.gsfcg, solver.iccg);
      break;
  }
  return solver;
}

void flw_clslvp(frame::Log& log, PressureSolver& solver, Field& div) {
  const frame::Tag tag(log, "(flw_clslvp)");
  for (const std::size_t cell : solver.fixed) div[cell] = 0.0;
  SolveResult result;
  switch (solver.method) {
    case PressureMethod::iccg: {
      IccgSystem& system = solver.iccg;
      gather_scaled(system.points, div, system.scale, system.b);
      result = flw_iccg(log, solver.limits, system);
      log_solution(log, "iccg ", result);
      scatter_scaled(system.points, system.x, system.scale, div);
      break;
    }
  }
  if (!result.converged) log.fail("### error : cg solver (flw_clslvp)", "not converged");
}

}  // namespace flow
