#include "buildings/building.hpp"

#include <algorithm>
#include <cmath>

#include "radiation/phydat.hpp"

namespace tsrf_building {

namespace {

using tsrf_module_bldng::Budget;
using tsrf_module_phydat::kAirHeat;
using tsrf_module_phydat::kLatentHeat;

constexpr double kGasConstant = 287.0459881231874;  // of dry air [J/kg K]
constexpr double kSolarToAir = 0.3;   // share of the sun in a room that its air takes at once
constexpr double kClockSlack = 1e-5;  // [h]
constexpr double kSecondsPerHour = 3600.0;
constexpr double kHoursPerDay = 24.0;
constexpr std::size_t kItems = 14;    // sums that processes exchange
constexpr double kColdest = 1.0;      // [K]
constexpr double kHottest = 10000.0;  // [K]

/// Whether a building use releases its heat at surfaces of class 1 or at those of 2 and 3; by
/// BldCD - 1.
constexpr std::array<int, 8> kReleaseGroup = {1, 1, 1, 1, 2, 2, 1, 1};

/// One pass over the patches gathers all sums of all buildings, in the order of the patches.
void sum_patches(const tsrf_module_patch::Data& patch, const tsrf_module_lyrstrct::Data& lyrstrct,
                 const tsrf_module_data::Data& state, tsrf_module_bldng::Data& bldng, Work& work) {
  std::fill(work.sums.begin(), work.sums.end(), Sums{});
  std::fill(bldng.bldat.begin(), bldng.bldat.end(), Budget{});
  for (std::size_t p = 0; p < work.pos.size(); ++p) {
    if (lyrstrct.building[p] < 0) continue;
    const auto b = static_cast<std::size_t>(lyrstrct.building[p]);
    const std::int32_t inner = state.nlyr[p];
    const double area = patch.area[p];
    const double flux = (state.tlyr(p, inner) - bldng.Tr[b]) * state.gcond(p, inner);
    bldng.qroom[p] = flux;
    Sums& sums = work.sums[b];
    sums.A += area;
    if (work.pos[p] >= 1 && work.pos[p] <= 3) {
      sums.A_pos[static_cast<std::size_t>(work.pos[p] - 1)] += area;
    }
    sums.P += area * state.airst(p, 0);
    sums.T += area * state.airst(p, 1);
    sums.Q += area * state.airst(p, 2);
    sums.S1 += state.uval(p, 0) * area;
    sums.S3 += bldng.qtrans[p] * area;
    if (work.pos[p] == 1) sums.S4 += state.uval(p, 1) * area;
    sums.L += flux * area + bldng.qtrans[p] * area;
    bldng.bldat[b][0] += flux * area;
    bldng.bldat[b][1] += bldng.qtrans[p] * area;
  }
}

/// Adds what other processes have summed over their patches of the same buildings.
void share_sums(frame::Log& log, const frame::ProcessLayer& layer,
                const tsrf_module_bldcmm::Data& bldcmm, tsrf_module_bldng::Data& bldng,
                Work& work) {
  if (frame::flw_m_size(layer) < 2) return;
  const auto items_of = [&](std::size_t b) {
    Sums& s = work.sums[b];
    return std::array<double*, kItems>{&s.A,
                                       &s.A_pos[0],
                                       &s.A_pos[1],
                                       &s.A_pos[2],
                                       &s.P,
                                       &s.T,
                                       &s.Q,
                                       &s.S1,
                                       &s.S2,
                                       &s.S3,
                                       &s.S4,
                                       &s.L,
                                       &bldng.bldat[b][0],
                                       &bldng.bldat[b][1]};
  };
  for (std::size_t b = 0; b < work.sums.size(); ++b) {
    const auto items = items_of(b);
    for (std::size_t i = 0; i < kItems; ++i) work.packed[b * kItems + i] = *items[i];
  }
  tsrf_module_bldcmm::sumbldat01(log, layer, bldcmm, kItems, work.packed);
  for (std::size_t b = 0; b < work.sums.size(); ++b) {
    const auto items = items_of(b);
    for (std::size_t i = 0; i < kItems; ++i) *items[i] = work.packed[b * kItems + i];
  }
}

/// Internal gains and ventilation of one building: its loads before slab and room air move.
void add_gains(const tsrf_module_bldng::Settings& settings, double conditioned_area, double Tr,
               const RoomHeat& want, Sums& sums, Budget& budget) {
  const double P = sums.P / sums.A;
  const double T = sums.T / sums.A;
  const double rho = P / (kGasConstant * T);
  const double es = tsrf_module_phydat::satvap(Tr).es;
  const double qr = tsrf_module_phydat::humidity_of(es * 0.01 * want.rmhum / P);
  const double internal_sensible = want.rmsens * conditioned_area;
  const double internal_latent = want.rmlat * conditioned_area;
  const double air_flow = conditioned_area * want.vent * settings.HEIGHT / kSecondsPerHour;
  const double vent_sensible = rho * kAirHeat * air_flow * (T - Tr) * settings.BETA;
  const double vent_latent = rho * kLatentHeat * air_flow * settings.BETA * (sums.Q / sums.A - qr);
  sums.Ll = internal_latent + vent_latent;
  sums.L += internal_sensible + vent_sensible;
  sums.S2 += internal_sensible + vent_sensible;
  budget[2] = internal_sensible;
  budget[3] = vent_sensible;
  budget[9] = internal_latent;
  budget[10] = vent_latent;
}

/// What a plant takes out and its drive power.
double plant_heat(const Sums& sums, double cop) {
  const double load = sums.L + sums.Ll;
  return load + load / cop;
}

/// The loads and what the plant makes of them.
void add_plant(double shf, double cop, const Sums& sums, Budget& budget) {
  const double heat = plant_heat(sums, cop);
  budget[4] = sums.L;
  budget[11] = sums.Ll;
  budget[5] = shf * heat - budget[3];
  budget[12] = (1.0 - shf) * heat - budget[10];
  budget[6] = sums.on ? budget[4] : 0.0;
  budget[13] = sums.on ? budget[11] : 0.0;
}

/// One pass hands each patch its share of what its building gives back. The heat of the air that
/// ventilation brings in leaves the outside again whether the plant runs or not.
void release(const tsrf_module_patch::Data& patch, const tsrf_module_lyrstrct::Data& lyrstrct,
             const Work& work, tsrf_module_bldng::Data& bldng) {
  for (std::size_t p = 0; p < work.pos.size(); ++p) {
    bldng.sensible[p] = 0.0;
    bldng.latent[p] = 0.0;
    if (lyrstrct.building[p] < 0) continue;
    const auto b = static_cast<std::size_t>(lyrstrct.building[p]);
    if (bldng.no_release[b] != 0) continue;
    const Sums& sums = work.sums[b];
    const double share = release_share(bldng.BldCD[b], work.pos[p], patch.area[p], sums);
    const double heat = sums.on ? plant_heat(sums, bldng.cop[b]) : 0.0;
    bldng.sensible[p] = (bldng.shf[b] * heat - bldng.bldat[b][3]) * share;
    bldng.latent[p] = ((1.0 - bldng.shf[b]) * heat - bldng.bldat[b][10]) * share;
  }
}

void check_room(frame::Log& log, std::int32_t BldID, double Tr, double Tm) {
  const auto plausible = [](double T) { return T >= kColdest && T <= kHottest; };
  if (plausible(Tr) && plausible(Tm)) return;
  log.fail("### error : room temperature out of range", frame::items("BldID =", BldID),
           frame::items("room, slab temperature =", Tr, Tm), "it must be >= 1 & <= 10000");
}

}  // namespace

void prepare(frame::Log& log, const tsrf_module_patch::Data& patch,
             const tsrf_module_matprp::Data& matprp, const tsrf_module_lyrstrct::Data& lyrstrct,
             const tsrf_module_bldng::Data& bldng, Work& work) {
  frame::allocating(log, [&] {
    work.sums.assign(static_cast<std::size_t>(bldng.nbld), Sums{});
    work.wants = frame::PatchTable<double>(bldng.nbld, tsrf_module_rmheat::kVent);
    work.pos.assign(static_cast<std::size_t>(patch.mpatch), 0);
    work.packed.assign(kItems * work.sums.size(), 0.0);
  });
  for (std::size_t p = 0; p < work.pos.size(); ++p) {
    if (lyrstrct.building[p] < 0 || lyrstrct.material[p] < 0) continue;
    work.pos[p] = matprp.materials[static_cast<std::size_t>(lyrstrct.material[p])].pos;
  }
}

void warn_of_step(frame::Log& log, double dt, const tsrf_module_bldng::Settings& settings) {
  constexpr double kPressure = 101325.0;  // air of a usual room
  constexpr double kTemperature = 293.15;
  const double rho = kPressure / (kGasConstant * kTemperature);
  const double limit = 2.0 * settings.HEIGHT * rho * kAirHeat / settings.HTRNS;
  if (dt < limit) return;
  log.line("%%% warning : dtmax =", dt, "s, the exchange of room and slab grows without limit from",
           limit, "s on");
}

bool cal_rmtmp(const tsrf_module_bldng::Settings& settings, double time, double dt,
               const Room& room, const tsrf_module_aircon::RunTable& runs, Sums& sums, double& Tr,
               double& Tm) {
  const double outside = sums.T / sums.A;
  const double slab =
      room.area * settings.HTRNS * ((Tr - Tm) * room.acflr + (1.0 - room.acflr) * (outside - Tm));
  Tm += (sums.S3 * (1.0 - kSolarToAir) / room.floors + slab) * dt / sums.S4;
  sums.L -= room.floors * slab;

  const double h = std::fmod((time + dt) / kSecondsPerHour, kHoursPerDay);
  const tsrf_module_aircon::Period& run = runs[static_cast<std::size_t>(std::max(h, 0.0))];
  if (run.startup + kClockSlack < h && run.end + kClockSlack > h) {
    Tr = room.rmtmp;
    return true;
  }
  const double volume = room.floors * room.area * settings.HEIGHT;
  const double air_heat = sums.P / sums.A * kAirHeat / (kGasConstant * Tr);
  if (run.start + kClockSlack < h && run.startup + kClockSlack > h) {
    const double hours_left = std::max(run.startup - h, 0.0);
    const double step = dt / kSecondsPerHour;
    const double weight = step / (hours_left + step);
    const double next = weight * room.rmtmp + (1.0 - weight) * Tr;
    sums.L += (Tr - next) * volume * air_heat / dt;
    Tr = next;
    return true;
  }
  Tr += (kSolarToAir * sums.S3 + sums.S2 - room.floors * slab + (outside - Tr) * sums.S1) /
        (volume * air_heat / dt + sums.S1);
  return false;
}

double release_share(std::int32_t BldCD, std::int32_t pos, double area, const Sums& sums) {
  const int patch_group = pos == 1 ? 1 : 2;
  if (kReleaseGroup[static_cast<std::size_t>(BldCD - 1)] != patch_group) return 0.0;
  return patch_group == 1 ? area / sums.A_pos[0] : area / (sums.A_pos[1] + sums.A_pos[2]);
}

void tsrf_building(frame::Log& log, const frame::ProcessLayer& layer, double time, double dt,
                   const tsrf_module_patch::Data& patch, const tsrf_module_lyrstrct::Data& lyrstrct,
                   const tsrf_module_data::Data& state, const tsrf_module_rmheat::Data& rmheat,
                   const tsrf_module_aircon::Data& aircon, const tsrf_module_bldcmm::Data& bldcmm,
                   tsrf_module_bldng::Data& bldng, Work& work) {
  const frame::Tag tag(log, "(tsrf_building)");
  tsrf_module_rmheat::tsrf_set_rmheat(log, rmheat, bldng.BldCD, bldng.Strct,
                                      tsrf_module_rmheat::kRmsens, tsrf_module_rmheat::kVent,
                                      work.wants);
  sum_patches(patch, lyrstrct, state, bldng, work);
  share_sums(log, layer, bldcmm, bldng, work);
  for (std::size_t b = 0; b < work.sums.size(); ++b) {
    Sums& sums = work.sums[b];
    if (!(sums.A > 0.0)) log.program_error("### program error -1- (tsrf_building)");
    const RoomHeat want{work.wants(b, 0), work.wants(b, 1), work.wants(b, 2), work.wants(b, 3),
                        work.wants(b, 4)};
    const Room room{bldng.area[b], static_cast<double>(bldng.floor[b]), bldng.acflr[b], want.rmtmp};
    add_gains(bldng.settings, room.acflr * room.area * room.floors, bldng.Tr[b], want, sums,
              bldng.bldat[b]);
    const auto& runs = aircon.tables[static_cast<std::size_t>(aircon.pair[b])];
    sums.on = cal_rmtmp(bldng.settings, time, dt, room, runs, sums, bldng.Tr[b], bldng.Tm[b]);
    check_room(log, bldng.BldID[b], bldng.Tr[b], bldng.Tm[b]);
    add_plant(bldng.shf[b], bldng.cop[b], sums, bldng.bldat[b]);
  }
  release(patch, lyrstrct, work, bldng);
}

}  // namespace tsrf_building
