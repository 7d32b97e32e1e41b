#include "flow/linear/imdqdt.hpp"

namespace flow {

BcgstbSystem make_implicit_work(frame::Log& log, const Flags& fluid, bool periodic_y) {
  BcgstbSystem work;
  flw_bcgstb_size(log, fluid, periodic_y, work);
  return work;
}

void flw_imdqdt(frame::Log& log, const SevenPoint& rows, const ImplicitLimits& limits,
                BcgstbSystem& work, Field& q) {
  const frame::Tag tag(log, "(flw_imdqdt)");
  flw_bcgstb_pre(log, rows, work);
  gather_scaled(work.points, q, work.scale, work.b);
  SolveLimits solve;
  solve.epsrel = limits.epsrel;
  solve.itmax = limits.itmax;
  solve.nnorm = static_cast<double>(q.box().cells());
  const SolveResult result = flw_bcgstb(log, solve, work);
  log_solution(log, "bcgstb", result);
  if (!result.converged) log.fail("### error : bcgstb (flw_imdqdt)", "not converged");
  scatter_scaled(work.points, work.x, work.inside, q);
}

}  // namespace flow
