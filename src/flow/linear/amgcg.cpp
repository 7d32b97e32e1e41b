#include "flow/linear/amgcg.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "flow/share.hpp"

namespace flow {

namespace {

/// Reduction of the residual after which the solution takes up what was found: single precision
/// knows no more of it then. Where it shows that it knew less (flat cells), what is carried on is
/// forgotten, and the next reductions are smaller, down to kLeast.
constexpr double kKnown = 1e-4;
constexpr double kLeast = 0.1;

/// The sum of one kind over all layers.
double total(const std::vector<AmgSums>& sums, std::array<double, kAmgLanes> AmgSums::*kind) {
  double all = 0.0;
  for (const AmgSums& layer : sums) {
    const auto& lanes = layer.*kind;
    all += std::accumulate(lanes.begin(), lanes.end(), 0.0);
  }
  return all;
}

/// The sum of the squares of the right side, as the norm counts them.
double weighed_squares(const AmgSystem& system) {
  const double* b = system.exact.b.data();
  const float* weight = system.exact.weight.data();
  std::array<double, kLanes> lanes{};
  for (std::size_t s = 0; s < system.exact.b.size(); s += kLanes) {
    for (std::size_t l = 0; l < kLanes; ++l)
      lanes[l] += b[s + l] * b[s + l] * double{weight[s + l]};
  }
  return std::accumulate(lanes.begin(), lanes.end(), 0.0);
}

/// Adds the sums of the rows of a layer, in their order.
void collect(const AmgSystem& system, std::array<float, kAmgLanes> AmgRowSums::*rows,
             std::array<double, kAmgLanes>& layer) {
  layer = {};
  for (const AmgRowSums& row : system.row_sums) {
    const auto& lanes = row.*rows;
    for (std::size_t l = 0; l < kAmgLanes; ++l) layer[l] += double{lanes[l]};
  }
}

/// Bundles of rows of a level that make a stretch. The hands meet at every layer: what they take
/// has to be worth it, and small layers stay with the caller.
std::size_t stretch_of(const frame::Crew& crew, const AmgLevel& level) {
  constexpr std::size_t kCells = 2048;  // of one layer; a turn goes through several
  const std::size_t bundles = level.bundles.size() - 1;
  const std::size_t cells = static_cast<std::size_t>(level.n[0]) * level.rows.size();
  if (cells <= 2 * kCells) return bundles;
  return std::max<std::size_t>({kCells * bundles / cells, bundles / (2 * crew.hands()), 1});
}

/// The way down of one level; `sums` are those of the finest.
void go_down(frame::Crew& crew, AmgSystem& system, std::size_t l, const AmgStep& step) {
  AmgLevel& level = system.levels[l];
  const auto layers = static_cast<std::size_t>(level.n[2]);
  const std::size_t turns = turns_down(level, step.alone);
  for (std::size_t turn = 0; turn < turns; ++turn) {
    crew.share(level.bundles.size() - 1, stretch_of(crew, level), [&](frame::Crew::Stretch part) {
      system.passes.down(level, system.coarser(l), step,
                         {turn, part.first, part.last, system.row_sums.data()});
    });
    if (step.kind == AmgStep::Kind::none || turn >= layers) continue;
    collect(system, &AmgRowSums::norm, system.sums[turn].norm);
  }
}

/// The way up of one level; with `w`, on the finest, sums are taken.
void go_up(frame::Crew& crew, AmgSystem& system, std::size_t l, float* w) {
  AmgLevel& level = system.levels[l];
  const auto before = static_cast<std::size_t>(level.sweeps) + 1;
  for (std::size_t turn = 0; turn < turns_up(level); ++turn) {
    crew.share(level.bundles.size() - 1, stretch_of(crew, level), [&](frame::Crew::Stretch part) {
      system.passes.up(level, system.coarser(l), w,
                       {turn, part.first, part.last, system.row_sums.data()});
    });
    if (w == nullptr || turn < before) continue;
    collect(system, &AmgRowSums::rz, system.sums[turn - before].rz);
    collect(system, &AmgRowSums::zaz, system.sums[turn - before].zaz);
  }
}

/// The levels below the finest: its right side stands in `between` of the next one, and so does the
/// correction afterwards.
void solve_below(frame::Crew& crew, AmgSystem& system) {
  const std::size_t count = system.levels.size();
  for (std::size_t l = 1; l < count; ++l) go_down(crew, system, l, {});
  system.direct.solve(system.last.natural, system.work, system.last.between.data());
  for (std::size_t l = count; l-- > 1;) go_up(crew, system, l, nullptr);
}

/// The true residual of every layer, by the norm of its layers; before that x takes up what was
/// found, if anything was.
void renew_layers(frame::Crew& crew, AmgSystem& system, double taken, const float* found,
                  double scale) {
  const AmgPasses& passes = system.passes;
  AmgLevel& level = system.finest();
  const auto layers = static_cast<std::size_t>(level.n[2]);
  const std::size_t stretch = shared_rows(level.size() / layers);
  const bool together = crew.hands() == 1;  // one pass does both
  if (found != nullptr && !together) {
    crew.share(layers, stretch, [&](frame::Crew::Stretch part) {
      passes.take(level, system.exact, taken, found, part.first, part.last);
    });
  }
  crew.share(layers, together ? layers : stretch, [&](frame::Crew::Stretch part) {
    passes.renew(level, system.exact, taken, together ? found : nullptr, scale, system.norms.data(),
                 part.first, part.last);
  });
}

/// The solution while it goes on. The vectors of single precision are those of the equation divided
/// by `scale_`, which is about the norm of the residual.
class Gradient {
 public:
  Gradient(frame::Crew& crew, const SolveLimits& limits, AmgSystem& system)
      : crew_(crew), limits_(limits), system_(system) {
    step_.of = {system.x.data(), system.p.data(), system.s.data(), system.w.data()};
    std::fill(system.exact.x.begin(), system.exact.x.end(), 0.0);
    norm = limits.norm(weighed_squares(system));
  }
  /// The right side takes the place of the residual, for x is 0. To be called once.
  void take_right_side() {
    scale_ = norm;
    const double factor = 1.0 / scale_;
    float* r = system_.finest().r.data();
    const double* b = system_.exact.b.data();
    crew_.each(system_.exact.b.size(), kSharedCells,
               [&](std::size_t s) { r[s] = static_cast<float>(b[s] * factor); });
  }

  /// The solution takes up what was found, and the true residual takes the place of the one carried
  /// on; its norm.
  void renew() {
    const double carried = norm;
    renew(norm > 0.0 ? norm : 1.0, found_ ? system_.x.data() : nullptr);
    if (norm > 1.2 * carried) {
      fresh_ = true;
      known_ = std::min(4.0 * known_, kLeast);
    }
  }
  /// True when the residual carried on has fallen so far that it is time to renew it.
  [[nodiscard]] bool due() const { return reduced_ <= known_; }
  /// r goes down the levels. To be called behind renew.
  void begin() { step_down(AmgStep::Kind::begin); }
  /// The cycle's result, and what follows from it for the next step. False when a sum vanishes.
  bool prepare() {
    solve_below(crew_, system_);
    go_up(crew_, system_, 0, system_.w.data());
    const double rz = total(system_.sums, &AmgSums::rz);
    const double zaz = total(system_.sums, &AmgSums::zaz);
    const double beta = fresh_ ? 0.0 : rz / rz_ * (scale_ / last_) * (scale_ / last_);
    const double pap = fresh_ ? zaz : zaz - beta * rz / step_.alpha;
    if (rz == 0.0 || pap == 0.0) return false;
    step_.beta = fresh_ ? 0.0 : beta * (last_ / scale_);
    step_.alpha = rz / pap;
    rz_ = rz;
    last_ = scale_;
    return true;
  }
  /// What was found and r go a step on, and r goes down the levels; not when it will probably have
  /// fallen below `tolerance` or be due then, which has to be renewed first. True when r went down.
  bool advance(double tolerance) {
    const double next = 0.7 * rate_;
    step_.alone = !fresh_ && (next * norm <= tolerance || next * reduced_ <= known_);
    const double before = reduced_;
    step_down(fresh_   ? AmgStep::Kind::first
              : found_ ? AmgStep::Kind::next
                       : AmgStep::Kind::renewed);
    fresh_ = false;
    found_ = true;
    reduced_ = std::sqrt(total(system_.sums, &AmgSums::norm) / limits_.nnorm);
    norm = scale_ * reduced_;
    rate_ = reduced_ / before;
    return !std::exchange(step_.alone, false);
  }
  /// The next direction is that of the residual alone.
  void forget() { fresh_ = true; }

  double norm = 0.0;  ///< of the residual

 private:
  void renew(double scale, const float* found) {
    renew_layers(crew_, system_, scale_, found, scale);
    norm = limits_.norm(std::accumulate(system_.norms.begin(), system_.norms.end(), 0.0));
    reduced_ = 1.0;
    scale_ = scale;
    found_ = false;
  }
  void step_down(AmgStep::Kind kind) {
    step_.kind = kind;
    flow::go_down(crew_, system_, 0, step_);
  }

  frame::Crew& crew_;
  const SolveLimits& limits_;
  AmgSystem& system_;
  AmgStep step_;
  double reduced_ = 1.0;  ///< the norm over that behind the last renew
  double rate_ = 1.0;     ///< by which the last step reduced it
  double known_ = kKnown;
  double rz_ = 0.0;
  double scale_ = 1.0;
  double last_ = 1.0;   ///< the scale of rz_, p and s
  bool fresh_ = true;   ///< no direction to go on from
  bool found_ = false;  ///< x holds something
};

/// The checks of flw_iccg, for the vectors of this system.
void check(frame::Log& log, const SolveLimits& limits, AmgSystem& system) {
  const auto fail = [&](int number) { interface_error(log, number, "flw_amgcg"); };
  if (system.levels.empty() || system.exact.b.size() != system.finest().size()) fail(1);
  if (limits.largest()) fail(2);
  if (!(std::max(limits.epsabs, limits.epsrel) > 0.0)) fail(3);
  if (limits.itmax < 1) fail(4);
}

}  // namespace

void apply_cycle(frame::Crew& crew, AmgSystem& system) {
  AmgStep step;
  step.kind = AmgStep::Kind::begin;
  go_down(crew, system, 0, step);
  solve_below(crew, system);
  go_up(crew, system, 0, system.w.data());
}

SolveResult flw_amgcg(frame::Log& log, frame::Crew& crew, const SolveLimits& limits,
                      AmgSystem& system) {
  check(log, limits, system);
  Gradient g(crew, limits, system);
  return solve_from(limits, g, [&](double tolerance, SolveResult& result) {
    g.take_right_side();
    g.begin();
    while (std::isfinite(g.norm)) {
      bool goes_on = g.prepare();
      if (goes_on) {
        goes_on = g.advance(tolerance);
      } else {
        g.forget();
      }
      if (!goes_on || g.norm <= tolerance || g.due()) {
        g.renew();
        result.converged = g.norm <= tolerance;
        if (result.converged) break;
        g.begin();
      }
      if (++result.iterations > limits.itmax) break;
    }
    if (!result.converged) g.renew();
  });
}

}  // namespace flow
