// Limits and outcome of an iterative solution, and what the solvers of this room have in common.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "flow/linear/diagonals.hpp"
#include "frame/log.hpp"

namespace flow {

/// When to stop. A solution has converged when its norm is not above max(epsabs, epsrel * the
/// first norm).
struct SolveLimits {
  double epsabs = 0.0;
  double epsrel = 0.0;
  double nnorm = 1.0;  ///< sqrt(sum r r / nnorm); below 0.5 the largest |r|
  std::int32_t itmax = 1;

  [[nodiscard]] bool largest() const { return nnorm < 0.5; }
  /// The norm from the sum of squares, or from the largest |r|.
  [[nodiscard]] double norm(double collected) const {
    return largest() ? collected : std::sqrt(collected / nnorm);
  }
};

struct SolveResult {
  std::int32_t iterations = 0;
  double norm = 0.0;   ///< of the last residual
  double ratio = 1.0;  ///< to the first one
  bool converged = true;
};

/// A first norm below this counts as 0: what is left where the air has come to rest.
inline constexpr double kNoResidual = 1e-100;

/// Ends the run on the spot: "### interface error -`number`- (`routine`)" on standard output.
[[noreturn]] inline void interface_error(frame::Log& log, int number, std::string_view routine) {
  log.stop_with(frame::kStatusAbnormal, "### interface error -" + std::to_string(number) + "- (" +
                                            std::string(routine) + ")");
}

/// The checks of flw_iccg and flw_bcgstb: 1 the layers fit the vectors, 2 the rows fit a layer, 3 a
/// tolerance is above 0, 4 at least one iteration is allowed.
inline void check_solve(frame::Log& log, const SolveLimits& limits, const Diagonals& points,
                        std::size_t right, std::size_t solution, std::string_view routine) {
  if (right != points.size() || solution != points.size()) interface_error(log, 1, routine);
  if (!points.fits()) interface_error(log, 2, routine);
  if (!(std::max(limits.epsabs, limits.epsrel) > 0.0)) interface_error(log, 3, routine);
  if (limits.itmax < 1) interface_error(log, 4, routine);
}

/// The frame of a solution: `solution.norm` is that of the first residual at first, and of the last
/// one behind `iterate(tolerance, result)`, which counts and tells whether it has converged. A
/// first norm that is within the limits already needs no iteration.
template <class Solution, class Iterate>
SolveResult solve_from(const SolveLimits& limits, Solution& solution, Iterate&& iterate) {
  SolveResult result;
  const double first = solution.norm < kNoResidual ? 0.0 : solution.norm;
  result.norm = first;
  if (limits.epsabs >= first) return result;
  result.converged = false;
  iterate(std::max(limits.epsabs, limits.epsrel * first), result);
  result.norm = solution.norm;
  result.ratio = solution.norm / first;
  return result;
}

/// The line of a solution on the log: method, count, norm, ratio, final norm, flag.
inline void log_solution(frame::Log& log, std::string_view method, const SolveResult& result) {
  log.line(method, result.iterations, "L2", result.ratio, result.norm, result.converged ? 0 : 1);
}

}  // namespace flow
