#include "flow/linear/bcgstb.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace flow {

namespace {

double sum_of(const std::array<double, kLanes>& lanes) {
  return std::accumulate(lanes.begin(), lanes.end(), 0.0);
}

/// The solution while it goes on.
class Stabilised {
 public:
  Stabilised(const SolveLimits& limits, BcgstbSystem& system)
      : limits_(limits), s_(system), arrays_(system.arrays()) {
    std::fill(s_.x.begin(), s_.x.end(), 0.0);
    std::fill(s_.p.begin(), s_.p.end(), 0.0);
    std::fill(s_.v.begin(), s_.v.end(), 0.0);
    std::fill(s_.t.begin(), s_.t.end(), 0.0);
    std::fill(s_.y.begin(), s_.y.end(), 0.0);
    std::fill(s_.z.begin(), s_.z.end(), 0.0);
    std::copy(s_.b.begin(), s_.b.end(), s_.r.begin());
    std::copy(s_.b.begin(), s_.b.end(), s_.first.begin());
    advance(0.0, 0.0);
  }

  /// x += alpha y + omega z; r -= omega t; norm and rho = first . r.
  void advance(double alpha, double omega) {
    BcgstbSums sums;
    s_.passes.advance(arrays_, alpha, omega, limits_.largest(),
                      {s_.y.data(), s_.z.data(), s_.t.data(), s_.first.data()}, s_.x.data(),
                      s_.r.data(), sums);
    norm = limits_.norm(limits_.largest() ? *std::max_element(sums.norm.begin(), sums.norm.end())
                                          : sum_of(sums.norm));
    rho = sum_of(sums.with);
  }
  /// The true residual of x, which becomes the fixed one too.
  void restart() {
    s_.passes.product(arrays_, s_.x.data(), s_.t.data());
    std::copy(s_.b.begin(), s_.b.end(), s_.r.begin());
    s_.passes.reduce(arrays_, 1.0, s_.t.data(), s_.r.data(), s_.z.data());
    std::copy(s_.r.begin(), s_.r.end(), s_.first.begin());
    advance(0.0, 0.0);
  }
  /// p = r + beta (p - omega v); y = M^-1 p; v = A y; returns first . v.
  double direct(double beta, double omega) {
    s_.passes.direct(arrays_, beta, omega, s_.r.data(), s_.v.data(), s_.p.data(), s_.y.data());
    BcgstbSums sums;
    s_.passes.backward(arrays_, s_.y.data(), s_.v.data(), s_.first.data(), sums);
    return sum_of(sums.with);
  }
  struct Stable {
    double tt, ts;
  };
  /// s = r - alpha v in the place of r; z = M^-1 s; t = A z.
  Stable stabilise(double alpha) {
    s_.passes.reduce(arrays_, alpha, s_.v.data(), s_.r.data(), s_.z.data());
    BcgstbSums sums;
    s_.passes.backward(arrays_, s_.z.data(), s_.t.data(), s_.r.data(), sums);
    return {sum_of(sums.norm), sum_of(sums.with)};
  }
  /// x += M^-1 r, with the residual behind restart.
  void step_along_residual() {
    direct(0.0, 0.0);
    advance(1.0, 0.0);
  }

  double norm = 0.0;
  double rho = 0.0;

 private:
  const SolveLimits& limits_;
  BcgstbSystem& s_;
  BcgstbArrays arrays_;
};

enum class Leaves { converged, broken, exhausted };

/// Steps from the residual of `g` on, until convergence, a breakdown or the limit; `moved` tells
/// whether x has changed.
Leaves iterate(const SolveLimits& limits, double tolerance, Stabilised& g, std::int32_t& count,
               bool& moved) {
  double beta = 0.0;
  double omega = 0.0;
  for (;;) {
    const double rho = g.rho;
    if (rho == 0.0) return Leaves::broken;
    const double with = g.direct(beta, omega);
    if (with == 0.0) return Leaves::broken;
    const double alpha = rho / with;
    const auto [tt, ts] = g.stabilise(alpha);
    moved = true;
    omega = tt == 0.0 ? 0.0 : ts / tt;
    g.advance(alpha, omega);
    if (g.norm <= tolerance) return Leaves::converged;
    if (!std::isfinite(g.norm)) return Leaves::exhausted;
    if (omega == 0.0) return Leaves::broken;
    beta = (g.rho / rho) * (alpha / omega);
    if (++count > limits.itmax) return Leaves::exhausted;
  }
}

}  // namespace

SolveResult flw_bcgstb(frame::Log& log, const SolveLimits& limits, BcgstbSystem& system) {
  check_solve(log, limits, system.points, system.b.size(), system.x.size(), "flw_bcgstb");
  Stabilised g(limits, system);
  return solve_from(limits, g, [&](double tolerance, SolveResult& result) {
    Leaves how = Leaves::exhausted;
    for (bool moved = true;;) {
      if (!std::isfinite(g.norm)) break;
      if (g.norm <= tolerance) {
        how = Leaves::converged;
        break;
      }
      if (!moved) {
        g.step_along_residual();
        moved = true;
      } else {
        moved = false;
        how = iterate(limits, tolerance, g, result.iterations, moved);
        if (how != Leaves::broken) break;
      }
      if (++result.iterations > limits.itmax) break;
      g.restart();
    }
    result.converged = how == Leaves::converged;
  });
}

}  // namespace flow
