#include "trees/leaf_balance.hpp"

#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "inputs/moist_air.hpp"
#include "trees/difrad.hpp"

namespace jmk {

namespace {

using tsrf_module_jumoku::BandFluxes;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::Leaves;

/// Leaf cells of a stretch for one hand: some 20 to 100 microseconds.
constexpr std::size_t kLeaves = 1024;
constexpr double kSenses = 6.0;            // two along each axis: leaves emit into all of them
constexpr double kCalm = 0.1;              // wind below which there is all but no convection [m/s]
constexpr double kLeastTemperature = 1.0;  // [K]
constexpr double kGreatestTemperature = 10000.0;  // [K]

/// Emission by the present temperatures, and what of all long wave stays in each cell.
void exchange_longwave(frame::Log& log, frame::Crew& crew, const jmk_module_radiat::Data& radiat,
                       Data& data) {
  Leaves& leaves = data.leaves;
  BandFluxes& band = data.bands[jmk_module_radiat::kLongWave];
  crew.share(leaves.count(), kLeaves, [&](frame::Crew::Stretch part) {
    const std::size_t count = part.last - part.first;
    leaf_emission(radiat.optics[jmk_module_radiat::kLongWave],
                  std::span(leaves.lad).subspan(part.first, count),
                  std::span(leaves.T).subspan(part.first, count),
                  std::span(leaves.E).subspan(part.first, count),
                  std::span(leaves.dEdT).subspan(part.first, count));
    for (std::size_t n = part.first; n < part.last; ++n) {
      band.source[static_cast<std::size_t>(leaves.cell[n])] =
          kSenses * leaves.volume[n] * leaves.E[n];
    }
  });
  const jmk_module_radiat::Settings& s = radiat.settings;
  jmk_difrad_flux(log, crew, data, s.LOPRAD, {s.AEPSRD2, s.REPSRD2}, band);
  crew.each(leaves.count(), kLeaves, [&](std::size_t n) {
    const auto c = static_cast<std::size_t>(leaves.cell[n]);
    leaves.Labs[n] = kept(data, band, c) - band.source[c];
  });
}

/// Transfer coefficients at the present temperatures.
void set_transfer(frame::Log& log, frame::Crew& crew, const jmk_module_htrans::Data& htrans,
                  Leaves& leaves) {
  check_selectors(log, htrans.stomata);  // before several hands would tell of them
  crew.share(leaves.count(), kLeaves, [&](frame::Crew::Stretch part) {
    const auto of = [&](auto& values) {
      return std::span(values).subspan(part.first, part.last - part.first);
    };
    htrnscoef(
        log, htrans, moist_air::kAirHeat,
        {of(leaves.U), of(leaves.Ta), of(leaves.p), of(leaves.q), of(leaves.PAR), of(leaves.T)},
        {of(leaves.h), of(leaves.e), of(leaves.qs), of(leaves.dqsdT)});
  });
}

/// Newton's change of a leaf temperature [K].
double change_of(const Leaves& leaves, std::size_t n, double latent_heat) {
  const double sides = 2.0 * leaves.lad[n];
  const double H = (leaves.Ta[n] - leaves.T[n]) * leaves.h[n] * sides;
  const double V = (leaves.q[n] - leaves.qs[n]) * leaves.e[n] * sides;
  const double R = (H + latent_heat * V) * leaves.volume[n] + leaves.Sabs[n] + leaves.Labs[n];
  const double D = (latent_heat * leaves.e[n] * sides * leaves.dqsdT[n] + leaves.h[n] * sides) *
                       leaves.volume[n] +
                   kSenses * leaves.escaping[n] * leaves.volume[n] * leaves.dEdT[n];
  return R / D;
}

/// The bulk form gives no convection in calm air; leaves in the sun then grow far too warm.
void warn_of_calm(frame::Log& log, const jmk_module_htrans::Settings& s, Leaves& leaves) {
  const bool linear = s.UNITH == 1;
  if (linear || leaves.calm_told || leaves.count() == 0 || leaves.U[0] >= kCalm) return;
  leaves.calm_told = true;
  log.line("%%% warning : wind of", leaves.U[0], "m/s: with unith =", s.UNITH,
           "calm air takes no heat from leaves; told once");
}

void check_temperatures(frame::Log& log, const Data& data) {
  for (std::size_t n = 0; n < data.leaves.count(); ++n) {
    const double T = data.leaves.T[n];
    if (T >= kLeastTemperature && T <= kGreatestTemperature) continue;
    const auto& at = data.cells.at[static_cast<std::size_t>(data.leaves.cell[n])];
    log.fail(
        "### error : leaf temperature is out of range",
        frame::items("i,j,k,temp. =", at[0] + 1, at[1] + 1, at[2] + 1, T),
        frame::items("absorbed short-wave, long-wave =", data.leaves.Sabs[n], data.leaves.Labs[n]));
  }
}

}  // namespace

void jmk2_cal_canopy(frame::Log& log, frame::Crew& crew, const jmk_module_htrans::Data& htrans,
                     const jmk_module_radiat::Data& radiat, Data& data) {
  const frame::Tag tag(log, "(jmk2_cal_canopy)");
  Leaves& leaves = data.leaves;
  const jmk_module_htrans::Settings& s = htrans.settings;
  warn_of_calm(log, s, leaves);
  std::atomic<bool> converged = false;
  for (std::int32_t pass = 1; pass <= s.LOPHBL && !converged; ++pass) {
    set_transfer(log, crew, htrans, leaves);
    exchange_longwave(log, crew, radiat, data);
    converged = true;
    crew.each(leaves.count(), kLeaves, [&](std::size_t n) {
      const double change = change_of(leaves, n, htrans.constants.latent_heat);
      if (!(std::fabs(change) <= s.REPSHB * leaves.T[n] + s.AEPSHB)) {
        converged.store(false, std::memory_order_relaxed);
      }
      leaves.T[n] += change;
    });
  }
  if (!converged) log.line("%%% warning -1- (jmk2_cal_canopy)");
  check_temperatures(log, data);
}

}  // namespace jmk
