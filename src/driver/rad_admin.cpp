#include "driver/rad_admin.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "driver/tree_incident.hpp"
#include "inputs/moist_air.hpp"

namespace rad_admin {

namespace {

using namespace tsrf_module_patch;

/// Patches of a stretch for one hand: some 20 microseconds of the loops here.
constexpr std::size_t kPatches = 4096;

/// Patches that take the beam and emit as themselves: tree patches leave that to the canopy,
/// mirrors reflect all that comes.
constexpr Types kTakePart{kBuilding, kLand, kWater, kSolarPanel, kFarBoundary};

template <class Stretch>
void timed(frame::Log& log, frame::Accounts& accounts, std::string_view name, Stretch&& stretch) {
  accounts.start(log, name);
  stretch();
  accounts.end(log, name);
}

/// The exchange in the bands that are on; one pass over the view factors serves both.
void exchange(frame::Crew& crew, const tsrf_module_patch::Data& patch,
              const tsrf_module_srfprp::Data& srfprp, const tsrf_module_data::Data& state,
              tsrf_module_raddat::Data& raddat, const Fields& fields, Work& work) {
  std::array<tsrf_module_radref::Band, 2> bands;
  std::size_t count = 0;
  if (raddat.settings.LCRADL > 0) {
    bands[count++] = {srfprp.ems, work.Sl, raddat.JRl, fields.Rl};
  }
  if (raddat.settings.LCRADS > 0) {
    std::transform(srfprp.alb.begin(), srfprp.alb.end(), work.sun_absorbed.begin(),
                   [](double albedo) { return 1.0 - albedo; });
    bands[count++] = {work.sun_absorbed, work.Ss, raddat.JRs, fields.Rs};
  }
  if (count == 0) return;
  tsrf_cal_radref(crew, raddat, state.isrf, patch.area, std::span(bands).first(count), work.radref);
  if (raddat.settings.LCRADL > 0) std::fill(fields.skyvf.begin(), fields.skyvf.end(), 1.0);
}

}  // namespace

void allocdata(frame::Log& log, std::int32_t mpatch, const tsrf_module_srfprp::Data& srfprp,
               const tsrf_module_raddat::Data& raddat, Work& work) {
  const frame::Tag tag(log, "(rad_admin)(allocdata)");
  const auto bands = static_cast<std::size_t>(raddat.settings.LCRADL > 0) +
                     static_cast<std::size_t>(raddat.settings.LCRADS > 0);
  frame::allocating(log, "Sl,Ss,tRl,tRs,tJdir",
                    frame::bytes_of<double>(static_cast<std::size_t>(mpatch), 5), [&] {
                      for (auto* values : {&work.Sl, &work.Ss, &work.tRl, &work.tRs, &work.tJdir}) {
                        values->assign(static_cast<std::size_t>(mpatch), 0.0);
                      }
                      work.sun_absorbed.assign(srfprp.alb.size(), 0.0);
                      work.radref.prepare(raddat, bands);
                    });
}

void rad_admin(frame::Log& log, frame::Crew& crew, frame::Accounts& accounts, const SunVector& sun,
               const SkyFluxes& sky, const tsrf_module_patch::Data& patch,
               const tsrf_module_srfprp::Data& srfprp, const Trees& trees,
               tsrf_module_data::Data& state, tsrf_module_raddat::Data& raddat,
               const Fields& fields, Work& work) {
  const frame::Tag tag(log, "(rad_admin)");
  const bool longwave = raddat.settings.LCRADL > 0;
  const bool shortwave = raddat.settings.LCRADS > 0;

  if (longwave || shortwave) {
    set_srad0(crew, sun, sky, patch, fields.fsun, fields.skyvf, fields.Rl, fields.Rs, fields.Jdir);
    timed(log, accounts, "sundir", [&] { trees.sundir(); });
    add_sundir(crew, patch.type, fields.Jdir, fields.Rs);
    set_emission(crew, patch, state.isrf, state.tlyr.row(0), srfprp.ems, raddat, work.Sl, work.Ss);
  }
  timed(log, accounts, "radref",
        [&] { exchange(crew, patch, srfprp, state, raddat, fields, work); });
  if (longwave && shortwave) {
    timed(log, accounts, "trcanopy", [&] { trees.trcanopy(); });
    return;
  }

  set_srad0(crew, sun, sky, patch, fields.fsun, fields.skyvf, work.tRl, work.tRs, work.tJdir);
  add_sundir(crew, patch.type, work.tJdir, work.tRs);
  timed(log, accounts, "trinc", [&] {
    tree_incident(log, sun, sky, patch, srfprp, trees, fields, state, work.tRl, work.tRs);
  });
  if (!longwave) std::copy(work.tRl.begin(), work.tRl.end(), fields.Rl.begin());
  if (!shortwave) std::copy(work.tRs.begin(), work.tRs.end(), fields.Rs.begin());
}

double cosine_to(const SunVector& sun, const tsrf_module_patch::Data& patch, std::size_t p) {
  return std::max(0.0, patch.nx[p] * sun.x + patch.ny[p] * sun.y + patch.nz[p] * sun.z);
}

void set_srad0(frame::Crew& crew, const SunVector& sun, const SkyFluxes& sky,
               const tsrf_module_patch::Data& patch, std::span<const double> fsun,
               std::span<const double> skyvf, std::span<double> Rl, std::span<double> Rs,
               std::span<double> Jdir) {
  crew.each(Jdir.size(), kPatches, [&](std::size_t p) {
    Jdir[p] = cosine_to(sun, patch, p) * sky.direct * fsun[p];
    Rl[p] = skyvf[p] * sky.longwave;
    Rs[p] = skyvf[p] * sky.scattered;
  });
}

void add_sundir(frame::Crew& crew, std::span<const Type> type, std::span<const double> Jdir,
                std::span<double> Rs) {
  crew.each(Jdir.size(), kPatches, [&](std::size_t p) {
    if (kTakePart.contains(type[p])) Rs[p] += Jdir[p];
  });
}

void set_emission(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                  std::span<const std::int32_t> isrf, std::span<const double> T,
                  std::span<const double> emissivity, const tsrf_module_raddat::Data& raddat,
                  std::span<double> Sl, std::span<double> Ss) {
  crew.each(Sl.size(), kPatches, [&](std::size_t p) {
    Sl[p] = 0.0;
    Ss[p] = 0.0;
    if (kTakePart.contains(patch.type[p])) {
      Sl[p] = emissivity[static_cast<std::size_t>(isrf[p])] * moist_air::kStefanBoltzmann *
              ((T[p] * T[p]) * (T[p] * T[p]));
    } else if (patch.type[p] == tsrf_module_patch::kTree) {
      Sl[p] = raddat.JRl[p];
      Ss[p] = raddat.JRs[p];
    }
  });
}

void list_arrays(const Work& work, frame::ArrayList& list) {
  list.add("Sl,Ss,tRl,tRs,tJdir", work.Sl, work.Ss, work.tRl, work.tRs, work.tJdir);
  tsrf_module_radref::list_arrays(work.radref, list);
}

}  // namespace rad_admin
