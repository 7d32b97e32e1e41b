// tsrf_therm1d: the surface heat balance.
//
// The surface temperature of each computed patch is the root of
//
//   (1 - alb) Rs + ems Rl - skyvf sigma ems T^4 + hc (Ta - T) + G (T1 - T) + beta Lv hm (qa -
//   qs(T))
//
// (absorbed short-wave, absorbed long-wave, emission, convection, conduction from the first cell,
// latent heat), found by Newton's method from the temperature of the step before. The first cell
// is taken as it stands: the columns advance afterwards. Called by the step between radiation and
// conduction.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "frame/crew.hpp"
#include "frame/instruction_set.hpp"
#include "frame/log.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_therm1d {

/// Rows of tsrf_module_data's qsurf [W/m2].
enum Term : std::int32_t {
  kShortwave = 0,   ///< absorbed
  kLongwave = 1,    ///< absorbed
  kEmission = 2,    ///< negative
  kConvection = 3,  ///< gain from the air
  kLatent = 4,      ///< gain by condensation
  kConduction = 5,  ///< into the ground
};

/// Temperatures that a surface can have [K]; beyond them the data of a run make no sense.
inline constexpr double kColdest = 1.0;
inline constexpr double kHottest = 10000.0;
[[nodiscard]] inline bool plausible(double temperature) {
  return temperature >= kColdest && temperature <= kHottest;
}
/// Tells the log which records of the weather the air was made of.
void note_air(frame::Log& log, const tsrf_module_data::Data& state);
/// The rule in words.
[[nodiscard]] inline std::string plausible_rule() {
  return frame::items("it must be >=", kColdest, "and <=", kHottest);
}

/// Solves row 0 of tlyr for all patches with lcal > 0 and stores the terms of their balance in
/// qsurf: all at the temperature found, but for the latent term, which is that of the last round
/// before its step. Uses gcond row 0, twice the conductivity of the first cell over its thickness.
/// `skyvf` (share of the sky that a patch emits to), `Rl` and `Rs` (incident long-wave and
/// short-wave [W/m2]) are per patch. A temperature outside kColdest to kHottest ends the run with
/// a report of step `iter`, PID and terms; a search that does not settle stops it. All sets of
/// instructions give the same bits.
void tsrf_therm1d(frame::Log& log, frame::Crew& crew, std::int64_t iter,
                  const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                  std::span<const double> skyvf, std::span<const double> Rl,
                  std::span<const double> Rs, tsrf_module_data::Data& state,
                  frame::InstructionSet set = frame::widest_set());

}  // namespace tsrf_therm1d
