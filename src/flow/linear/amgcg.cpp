#include "flow/linear/amgcg.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace flow {

namespace {

/// The sum of one kind over all layers.
double total(const std::vector<AmgSums>& sums, std::array<double, kLanes> AmgSums::*kind) {
  double all = 0.0;
  for (const AmgSums& layer : sums) {
    const auto& lanes = layer.*kind;
    all += std::accumulate(lanes.begin(), lanes.end(), 0.0);
  }
  return all;
}

/// The solution while it goes on.
class Gradient {
 public:
  Gradient(const SolveLimits& limits, AmgSystem& system) : limits_(limits), system_(system) {
    step_.of = {system.x.data(), system.p.data(), system.s.data(), system.w.data()};
  }

  /// From the residual that stands in r on.
  void begin() { go_down(AmgStep::Kind::begin); }
  /// The cycle's result, and what follows from it for the next step. False when a sum vanishes.
  bool prepare() {
    go_up();
    const double rz = total(system_.sums, &AmgSums::rz);
    const double zaz = total(system_.sums, &AmgSums::zaz);
    step_.beta = fresh_ ? 0.0 : rz / rz_;
    const double pap = fresh_ ? zaz : zaz - step_.beta * rz / step_.alpha;
    if (rz == 0.0 || pap == 0.0) return false;
    step_.alpha = rz / pap;
    rz_ = rz;
    return true;
  }
  /// x and r go a step on, and r goes down the levels. `whole`: x holds nothing yet.
  void advance() {
    go_down(!fresh_ ? AmgStep::Kind::next : solved_ ? AmgStep::Kind::again : AmgStep::Kind::first);
    fresh_ = false;
    solved_ = true;
  }
  /// The true residual of x in the place of the one carried on.
  void restart() {
    AmgLevel& finest = system_.finest();
    std::copy(system_.b.begin(), system_.b.end(), finest.r.begin());
    if (solved_) {
      system_.passes.product(finest, system_.x.data(), system_.w.data());
      for (std::size_t s = 0; s < finest.r.size(); ++s) finest.r[s] -= system_.w[s];
    }
    fresh_ = true;
    begin();
  }
  /// Where nothing was found, the solution is 0.
  void settle() {
    if (!solved_) std::fill(system_.x.begin(), system_.x.end(), 0.0);
  }

  double norm = 0.0;

 private:
  void go_down(AmgStep::Kind kind) {
    step_.kind = kind;
    system_.passes.down(system_.finest(), system_.coarser(0), step_, system_.sums.data());
    norm = limits_.norm(total(system_.sums, &AmgSums::norm));
  }
  void go_up();

  const SolveLimits& limits_;
  AmgSystem& system_;
  AmgStep step_;
  double rz_ = 0.0;
  bool fresh_ = true;    ///< no direction to go on from
  bool solved_ = false;  ///< x holds something
};

/// The levels below the finest: its right side stands in `between` of the next one, and so does the
/// correction afterwards.
void solve_below(AmgSystem& system) {
  const std::size_t count = system.levels.size();
  for (std::size_t l = 1; l < count; ++l) {
    system.passes.down(system.levels[l], system.coarser(l), {}, nullptr);
  }
  system.direct.solve(system.last.natural, system.work, system.last.between.data());
  for (std::size_t l = count; l-- > 1;) {
    system.passes.up(system.levels[l], system.coarser(l), nullptr, nullptr);
  }
}

void Gradient::go_up() {
  solve_below(system_);
  system_.passes.up(system_.finest(), system_.coarser(0), system_.w.data(), system_.sums.data());
}

/// The checks of flw_iccg, for the vectors of this system.
void check(frame::Log& log, const SolveLimits& limits, AmgSystem& system) {
  const auto fail = [&](int number) { interface_error(log, number, "flw_amgcg"); };
  if (system.levels.empty() || system.b.size() != system.finest().size()) fail(1);
  if (limits.largest()) fail(2);
  if (!(std::max(limits.epsabs, limits.epsrel) > 0.0)) fail(3);
  if (limits.itmax < 1) fail(4);
}

}  // namespace

void apply_cycle(AmgSystem& system) {
  AmgStep step;
  step.kind = AmgStep::Kind::begin;
  system.passes.down(system.finest(), system.coarser(0), step, system.sums.data());
  solve_below(system);
  system.passes.up(system.finest(), system.coarser(0), system.w.data(), system.sums.data());
}

SolveResult flw_amgcg(frame::Log& log, const SolveLimits& limits, AmgSystem& system) {
  check(log, limits, system);
  SolveResult result;
  Gradient g(limits, system);
  g.restart();
  const double first = g.norm < kNoResidual ? 0.0 : g.norm;
  result.norm = first;
  const double tolerance = std::max(limits.epsabs, limits.epsrel * first);
  if (limits.epsabs >= first) {
    std::fill(system.x.begin(), system.x.end(), 0.0);
    return result;
  }
  result.converged = false;
  while (!result.converged && std::isfinite(g.norm)) {
    if (g.prepare()) {
      g.advance();
      result.converged = g.norm <= tolerance;
    } else {
      g.restart();
    }
    if (!result.converged && ++result.iterations > limits.itmax) break;
  }
  g.settle();
  result.ratio = g.norm / first;
  result.norm = g.norm;
  return result;
}

}  // namespace flow
