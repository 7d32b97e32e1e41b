#include "flow/linear/iccg.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace flow {

namespace {

double sum_of(const std::array<double, kLanes>& lanes, double rest) {
  return std::accumulate(lanes.begin(), lanes.end(), 0.0) + rest;
}

/// The solution while it goes on.
class Gradient {
 public:
  Gradient(const SolveLimits& limits, IccgSystem& system)
      : limits_(limits), system_(system), arrays_(system.arrays()) {
    std::fill(system_.x.begin(), system_.x.end(), 0.0);
    std::fill(system_.p.begin(), system_.p.end(), 0.0);
    std::fill(system_.y.begin(), system_.y.end(), 0.0);
    std::copy(system_.b.begin(), system_.b.end(), system_.r.begin());
  }

  /// r -= factor * y, its norm, its forward sweep and rho.
  void reduce(double factor) {
    IccgSums sums;
    system_.passes.forward(arrays_, factor, limits_.largest(), sums);
    norm = limits_.norm(limits_.largest() ? *std::max_element(sums.norm.begin(), sums.norm.end())
                                          : sum_of(sums.norm, 0.0));
    rho = sum_of(sums.rho, sums.rho_wrapped);
  }
  /// The true residual of x in the place of the one carried on.
  void restart() {
    system_.passes.product(arrays_);
    std::copy(system_.b.begin(), system_.b.end(), system_.r.begin());
    reduce(1.0);
  }
  /// x += pending * p; p = z + beta p; y = A p; returns p A p.
  double direct(double beta) {
    IccgSums sums;
    system_.passes.backward(arrays_, pending_, beta, sums);
    pending_ = 0.0;
    return sum_of(sums.pq, sums.pq_wrapped);
  }
  /// x += alpha p, with the next direction or by settle.
  void advance(double alpha) { pending_ = alpha; }
  void settle() {
    for (std::size_t s = 0; s < system_.x.size(); ++s) system_.x[s] += pending_ * system_.p[s];
    pending_ = 0.0;
  }

  double norm = 0.0;
  double rho = 0.0;

 private:
  const SolveLimits& limits_;
  IccgSystem& system_;
  IccgArrays arrays_;
  double pending_ = 0.0;
};

enum class Leaves { converged, broken, exhausted };

/// Directions from the residual of `g` on, until convergence, a breakdown or the limit.
Leaves iterate(const SolveLimits& limits, double tolerance, Gradient& g, std::int32_t& count) {
  double beta = 0.0;
  for (;;) {
    const double pq = g.direct(beta);
    if (pq == 0.0) return Leaves::broken;
    const double alpha = g.rho / pq;
    const double rho = g.rho;
    g.advance(alpha);
    g.reduce(alpha);
    if (g.norm <= tolerance) return Leaves::converged;
    if (!std::isfinite(g.norm)) return Leaves::exhausted;
    if (g.rho == 0.0) return Leaves::broken;
    beta = g.rho / rho;
    if (++count > limits.itmax) return Leaves::exhausted;
  }
}

}  // namespace

SolveResult flw_iccg(frame::Log& log, const SolveLimits& limits, IccgSystem& system) {
  check_solve(log, limits, system.points, system.b.size(), system.x.size(), "flw_iccg");
  Gradient g(limits, system);
  g.reduce(0.0);
  return solve_from(limits, g, [&](double tolerance, SolveResult& result) {
    Leaves how = Leaves::exhausted;
    bool broken = false;
    for (bool begun = false;; begun = true) {
      if (begun) g.restart();  // with x = 0 the residual is the right side
      if (!std::isfinite(g.norm)) break;
      if (g.norm <= tolerance) {
        how = Leaves::converged;
        break;
      }
      if (g.rho == 0.0 || broken) {
        g.direct(0.0);
        g.advance(1.0);
        g.settle();
        broken = false;
        if (++result.iterations > limits.itmax) break;
        continue;
      }
      how = iterate(limits, tolerance, g, result.iterations);
      g.settle();
      if (how != Leaves::broken) break;
      broken = true;
    }
    result.converged = how == Leaves::converged;
  });
}

}  // namespace flow
