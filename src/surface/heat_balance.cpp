#include "surface/heat_balance.hpp"

#include <algorithm>
#include <mutex>

#include "surface/balance_passes.hpp"

namespace tsrf_therm1d {

namespace {

/// Patches of a stretch for one hand: some 20 microseconds.
constexpr std::size_t kStretch = 1024;

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
                  std::span<const double> Rs, tsrf_module_data::Data& state,
                  frame::InstructionSet set) {
  const frame::Tag tag(log, "(tsrf_therm1d)");
  const Arrays arrays{srfprp, skyvf, Rl, Rs, state};
  const std::size_t patches = state.lcal.size();
  Verdict verdict{.implausible = patches, .unsettled = patches};
  std::mutex judging;
  const Solve solve = solve_for(set);
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
