// Reflections that a step's sweeps leave out.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "check/doubts.hpp"
#include "radiation/radref.hpp"

namespace check {

namespace {

using frame::items;
using tsrf_module_patch::Types;

constexpr double kLeft = 0.005;  // of the sun that the patches of a kind absorb
/// How fast light on a patch changes over its mean [1/s]: twice the steepest rise of half a wave of
/// 12 hours, as beams come and go faster than the sun climbs.
constexpr double kRise = std::numbers::pi * std::numbers::pi / 43200.0;

struct Kind {
  std::string_view name;
  Types types;
};
constexpr std::array<Kind, 2> kKinds{
    {{"ground", {tsrf_module_patch::kLand, tsrf_module_patch::kWater}},
     {"buildings", {tsrf_module_patch::kBuilding}}}};
using Powers = std::array<double, kKinds.size()>;

/// The district under an even sky, whose light goes from patch to patch as in a step of the run.
class EvenSky {
 public:
  explicit EvenSky(tsrf_main01::Run& run)
      : run_(run),
        absorptivity_(run.inputs.srfprp.alb),
        nothing_(run.inputs.patch.area.size(), 0.0),
        J_(nothing_) {
    for (double& a : absorptivity_) a = 1.0 - a;
    work_.prepare(run.radiation.raddat, 1);
  }

  /// What each kind absorbs after `sweeps` more.
  Powers after(std::int32_t sweeps) {
    const tsrf_module_data::Data& state = run_.surface.data;
    tsrf_module_raddat::Data& raddat = run_.radiation.raddat;
    G_ = state.skyvf0;
    const tsrf_module_radref::Band band{absorptivity_, nothing_, J_, G_};
    const std::int32_t wanted = std::exchange(raddat.settings.LOPREF, sweeps);
    tsrf_cal_radref(run_.desk.crew, raddat, state.isrf, run_.inputs.patch.area, std::span(&band, 1),
                    work_);
    raddat.settings.LOPREF = wanted;
    Powers sum{};
    for (std::size_t p = 0; p < G_.size(); ++p) {
      for (std::size_t k = 0; k < kKinds.size(); ++k) {
        if (!kKinds[k].types.contains(run_.inputs.patch.type[p])) continue;
        sum[k] += absorptivity_[static_cast<std::size_t>(state.isrf[p])] * G_[p] *
                  run_.inputs.patch.area[p];
      }
    }
    return sum;
  }

 private:
  tsrf_main01::Run& run_;
  std::vector<double> absorptivity_, nothing_, J_, G_;
  tsrf_module_radref::Work work_;
};

/// The share that is missing from `now`, when one more sweep brings `next` and another `last`:
/// light under way shrinks from sweep to sweep by much the same factor. 0 where it does not shrink.
double missing(double now, double next, double last) {
  const double shrinks = last - next < next - now ? (last - next) / (next - now) : 1.0;
  if (!(now > 0.0) || shrinks >= 1.0) return 0.0;
  const double left = (next - now) / (1.0 - shrinks);
  return left / (now + left);
}

}  // namespace

void doubt_sweeps(const Parts& parts, tsrf_main01::Run& run) {
  const tsrf_module_raddat::Data& raddat = run.radiation.raddat;
  if (!parts.exchange || !parts.whole_list || !parts.materials) return;
  if (raddat.view_factors.empty()) return;
  if (raddat.settings.LCRADS <= 0 || raddat.settings.LOPREF <= 0) return;
  EvenSky town(run);
  const Powers now = town.after(raddat.settings.LOPREF);
  const Powers next = town.after(1);
  const Powers last = town.after(1);
  const double change = std::min(1.0, kRise * run.inputs.control.dtmax);
  for (std::size_t k = 0; k < kKinds.size(); ++k) {
    const double left = change * missing(now[k], next[k], last[k]);
    if (left <= kLeft) continue;
    frame::Finding doubt{
        .fault = false,
        .lines = {items("lopref =", raddat.settings.LOPREF),
                  items("sun of the", kKinds[k].name,
                        "that a step leaves out [%] =", std::round(1e3 * left) / 10.0),
                  "it should be <= 0.5", raddat.settings_place},
        .hint = "more sweeps or shorter steps"};
    for (const frame::Setting& setting : run.desk.log.findings().settings) {
      if (setting.group != "TSRF_RADDAT" || setting.member != "LOPREF") continue;
      doubt.lines.pop_back();
      doubt.file = setting.file;
      doubt.line = setting.line;
      break;
    }
    run.desk.log.findings().add(std::move(doubt));
    return;
  }
}

}  // namespace check
