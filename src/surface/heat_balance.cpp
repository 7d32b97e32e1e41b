#include "surface/heat_balance.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

#include "inputs/moist_air.hpp"

namespace tsrf_therm1d {

namespace {

constexpr int kMostRounds = 100;
constexpr double kRelativeStep = 1e-10;

/// Patches do not touch each other here, so a batch of them is brought to its end while it stays in
/// the nearest cache (some 8 kB).
constexpr std::size_t kBatch = 64;
using Lanes = std::array<double, kBatch>;
/// Patches of a stretch for one hand: some 50 microseconds.
constexpr std::size_t kStretch = 1024;

/// What the balance of a batch of patches works on; nothing but the last group changes from round
/// to round. Dry patches have batches of their own: their latent terms are 0 throughout, and they
/// need no humidity.
struct Batch {
  std::size_t count = 0;
  std::array<std::size_t, kBatch> patch;

  Lanes absorbed;    ///< short-wave plus long-wave
  Lanes emission;    ///< per T^4
  Lanes hc;          ///< convective coefficient
  Lanes air;         ///< temperature of the air
  Lanes conduction;  ///< conductance to the first cell
  Lanes below;       ///< temperature of the first cell
  Lanes wetness;     ///< latent heat per difference of humidity
  Lanes humidity;    ///< of the air
  Lanes pressure;

  Lanes T;
  Lanes open;  ///< 1 while a patch is open, then 0
  Lanes latent{};
  Lanes latent_slope{};
};

/// The run's arrays, as far as the balance takes part in them.
struct Arrays {
  const tsrf_module_srfprp::Data& srfprp;
  std::span<const double> skyvf, Rl, Rs;
  tsrf_module_data::Data& state;

  [[nodiscard]] std::size_t row(std::size_t p) const {
    return static_cast<std::size_t>(state.isrf[p]);
  }
  [[nodiscard]] double shortwave(std::size_t p) const { return (1.0 - srfprp.alb[row(p)]) * Rs[p]; }
  [[nodiscard]] double longwave(std::size_t p) const { return srfprp.ems[row(p)] * Rl[p]; }
};

void add(const Arrays& a, std::size_t p, double wetness, Batch& b) {
  const tsrf_module_data::Data& state = a.state;
  const std::size_t i = b.count++;
  b.patch[i] = p;
  b.absorbed[i] = a.shortwave(p) + a.longwave(p);
  b.emission[i] = a.skyvf[p] * moist_air::kStefanBoltzmann * a.srfprp.ems[a.row(p)];
  b.hc[i] = state.hc[p];
  b.air[i] = state.airst(p, 1);
  b.conduction[i] = state.gcond(p, 0);
  b.below[i] = state.tlyr(p, 1);
  b.wetness[i] = wetness;
  b.humidity[i] = state.airst(p, 2);
  b.pressure[i] = state.airst(p, 0);
  b.T[i] = state.tlyr(p, 0);
  b.open[i] = 1.0;
}

/// Latent heat and its slope of the open patches.
void set_latent(Batch& b) {
  using namespace moist_air;
  for (std::size_t i = 0; i < b.count; ++i) {
    if (b.open[i] == 0.0) continue;
    const Saturation s = satvap(b.T[i]);
    b.latent[i] = b.wetness[i] * (b.humidity[i] - humidity_of(s.es / b.pressure[i]));
    b.latent_slope[i] = b.wetness[i] * (kVapourRatio / b.pressure[i] * s.desdT);
  }
}

/// One Newton step of the open patches. Closed ones run along with a step of nothing, which leaves
/// the loop without branches.
void step(Batch& b) {
  for (std::size_t i = 0; i < b.count; ++i) {
    const double T = b.T[i];
    const double T2 = T * T;
    const double f = b.absorbed[i] - b.emission[i] * (T2 * T2) + b.hc[i] * (b.air[i] - T) +
                     b.conduction[i] * (b.below[i] - T) + b.latent[i];
    const double slope =
        4.0 * b.emission[i] * (T2 * T) + b.hc[i] + b.conduction[i] + b.latent_slope[i];
    const double dT = b.open[i] * (f / slope);
    const double next = T + dT;
    b.T[i] = next;
    b.open[i] = std::abs(dT) - kRelativeStep * next > 0.0 ? 1.0 : 0.0;
  }
}

/// Newton's method for a batch. False when the last round has not brought every patch to rest.
template <bool wet>
bool settle(Batch& b) {
  const std::span<const double> open(b.open.data(), b.count);
  for (int round = 0; round < kMostRounds; ++round) {
    if constexpr (wet) set_latent(b);
    step(b);
    if (std::ranges::find(open, 1.0) == open.end()) return true;
  }
  return false;
}

/// The first patch that is still open; they stand in their order.
std::size_t first_open(const Batch& b) {
  const std::span<const double> open(b.open.data(), b.count);
  return b.patch[static_cast<std::size_t>(std::ranges::find(open, 1.0) - open.begin())];
}

/// Hands temperatures and terms back. Returns the first patch with an implausible temperature, or
/// the number of all patches.
std::size_t store(const Arrays& a, const Batch& b) {
  tsrf_module_data::Data& state = a.state;
  std::size_t implausible = state.lcal.size();
  for (std::size_t i = 0; i < b.count; ++i) {
    const std::size_t p = b.patch[i];
    const double T = b.T[i];
    const double T2 = T * T;
    state.tlyr(p, 0) = T;
    state.qsurf(p, kShortwave) = a.shortwave(p);
    state.qsurf(p, kLongwave) = a.longwave(p);
    state.qsurf(p, kEmission) = -(b.emission[i] * (T2 * T2));
    state.qsurf(p, kConvection) = b.hc[i] * (b.air[i] - T);
    state.qsurf(p, kLatent) = b.latent[i];
    state.qsurf(p, kConduction) = -(b.conduction[i] * (b.below[i] - T));
    if (!plausible(T)) implausible = std::min(implausible, p);
  }
  return implausible;
}

/// How the patches done so far came out.
struct Verdict {
  std::size_t implausible;  ///< first patch with an implausible temperature
  std::size_t unsettled;    ///< first patch whose search has not come to rest
};

/// Solves a batch and empties it.
template <bool wet>
void finish(const Arrays& arrays, Batch& batch, Verdict& verdict) {
  if (!settle<wet>(batch)) verdict.unsettled = std::min(verdict.unsettled, first_open(batch));
  verdict.implausible = std::min(verdict.implausible, store(arrays, batch));
  batch.count = 0;
}

/// Solves the patches from `first` to before `last`.
Verdict solve(const Arrays& arrays, std::size_t first, std::size_t last) {
  const std::size_t patches = arrays.state.lcal.size();
  Verdict verdict{.implausible = patches, .unsettled = patches};
  Batch dry;
  Batch wet;
  for (std::size_t p = first; p < last; ++p) {
    if (arrays.state.lcal[p] < 1) continue;
    const double wetness =
        arrays.srfprp.beta[arrays.row(p)] * moist_air::kLatentHeat * arrays.state.hm[p];
    if (wetness == 0.0) {
      add(arrays, p, wetness, dry);
      if (dry.count == kBatch) finish<false>(arrays, dry, verdict);
    } else {
      add(arrays, p, wetness, wet);
      if (wet.count == kBatch) finish<true>(arrays, wet, verdict);
    }
  }
  finish<false>(arrays, dry, verdict);
  finish<true>(arrays, wet, verdict);
  return verdict;
}

[[noreturn]] void report(frame::Log& log, std::int64_t iter, const tsrf_module_patch::Data& patch,
                         const tsrf_module_data::Data& state, std::size_t p) {
  const auto term = [&](Term row) { return state.qsurf(p, row); };
  note_air(log, state);
  log.fail(
      "### error : surface temperature out of range", frame::items("iter =", iter),
      frame::items("PID =", patch.PID[p]), frame::items("surface temperature =", state.tlyr(p, 0)),
      frame::items("absorbed short-wave =", term(kShortwave)),
      frame::items("absorbed long-wave =", term(kLongwave)),
      frame::items("emission =", term(kEmission)), frame::items("convection =", term(kConvection)),
      frame::items("latent heat =", term(kLatent)),
      frame::items("conduction into the ground =", term(kConduction)), plausible_rule());
}

}  // namespace

void note_air(frame::Log& log, const tsrf_module_data::Data& state) {
  if (const std::string text = state.air_origin.text(); !text.empty()) log.line(text);
}

void tsrf_therm1d(frame::Log& log, frame::Crew& crew, std::int64_t iter,
                  const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                  std::span<const double> skyvf, std::span<const double> Rl,
                  std::span<const double> Rs, tsrf_module_data::Data& state) {
  const frame::Tag tag(log, "(tsrf_therm1d)");
  const Arrays arrays{srfprp, skyvf, Rl, Rs, state};
  const std::size_t patches = state.lcal.size();
  Verdict verdict{.implausible = patches, .unsettled = patches};
  std::mutex judging;
  crew.share(patches, kStretch, [&](frame::Crew::Stretch part) {
    const Verdict own = solve(arrays, part.first, part.last);
    const std::lock_guard lock(judging);
    verdict.implausible = std::min(verdict.implausible, own.implausible);
    verdict.unsettled = std::min(verdict.unsettled, own.unsettled);
  });
  // A search that runs wild says more by its temperature than by its rounds.
  if (verdict.implausible < patches) report(log, iter, patch, state, verdict.implausible);
  if (verdict.unsettled == patches) return;
  log.program_error(state.air_origin.text(), "### program error -2- (tsrf_therm1d)",
                    frame::items("PID =", patch.PID[verdict.unsettled]),
                    frame::items("surface temperature =", state.tlyr(verdict.unsettled, 0)));
}

}  // namespace tsrf_therm1d
