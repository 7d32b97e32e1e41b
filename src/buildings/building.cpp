#include "buildings/building.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "inputs/moist_air.hpp"
#include "surface/heat_balance.hpp"

namespace tsrf_building {

namespace {

using moist_air::kAirHeat;
using moist_air::kLatentHeat;
using tsrf_module_bldng::Budget;

constexpr double kSecondsPerHour = 3600.0;

std::int32_t group_of_pos(std::int32_t pos) { return pos == 1 ? 1 : 2; }

/// All sums of all buildings, in the order of the patches.
void sum_surfaces(const tsrf_module_patch::Data& patch, const tsrf_module_data::Data& state,
                  tsrf_module_bldng::Data& bldng, Work& work) {
  std::ranges::fill(work.sums, Sums{});
  std::ranges::fill(bldng.bldat, Budget{});
  for (const Surface& surface : work.surfaces) {
    const std::size_t p = surface.patch;
    const auto b = static_cast<std::size_t>(surface.building);
    const std::int32_t last = state.nlyr[p];
    const double area = patch.area[p];
    const double q = state.gcond(p, last) * (state.tlyr(p, last) - bldng.Tr[b]);
    const double solar = bldng.qtrans[p];
    bldng.qroom[p] = q;

    Sums& sums = work.sums[b];
    sums.A += area;
    sums.A_pos[static_cast<std::size_t>(surface.pos - 1)] += area;
    sums.P += area * state.airst(p, 0);
    sums.T += area * state.airst(p, 1);
    sums.Q += area * state.airst(p, 2);
    sums.S1 += state.uval(p, 0) * area;
    sums.S3 += solar * area;
    if (surface.pos == 1) sums.S4 += state.uval(p, 1) * area;
    sums.L += q * area + solar * area;
    bldng.bldat[b][kConvection] += q * area;
    bldng.bldat[b][kSolar] += solar * area;
  }
}

/// Everything of a building that processes sum up.
std::array<double*, 13> shared_items(Sums& s, Budget& budget) {
  return {&s.A,  &s.A_pos[0], &s.A_pos[1], &s.A_pos[2],          &s.P,           &s.T, &s.Q, &s.S1,
          &s.S3, &s.S4,       &s.L,        &budget[kConvection], &budget[kSolar]};
}
constexpr std::size_t kItems =
    std::tuple_size_v<decltype(shared_items(std::declval<Sums&>(), std::declval<Budget&>()))>;

/// Adds what other processes have summed over their surfaces of the same buildings.
void sum_processes(frame::Log& log, const frame::ProcessLayer& layer,
                   const tsrf_module_bldcmm::Data& bldcmm, tsrf_module_bldng::Data& bldng,
                   Work& work) {
  if (frame::flw_m_size(layer) < 2) return;
  double* out = work.packed.data();
  for (std::size_t b = 0; b < work.sums.size(); ++b) {
    for (const double* item : shared_items(work.sums[b], bldng.bldat[b])) *out++ = *item;
  }
  tsrf_module_bldcmm::sumbldat01(log, layer, bldcmm, kItems, work.packed);
  const double* in = work.packed.data();
  for (std::size_t b = 0; b < work.sums.size(); ++b) {
    for (double* item : shared_items(work.sums[b], bldng.bldat[b])) *item = *in++;
  }
}

Outside outside_of(const Sums& sums) {
  const double P = sums.P / sums.A;
  const double T = sums.T / sums.A;
  return {.P = P, .T = T, .Q = sums.Q / sums.A, .rho = P / (kGasConstant * T)};
}

/// Internal gains and ventilation, both of the conditioned floor area.
void set_gains(const tsrf_module_bldng::Settings& settings, double floor_area, double Tr,
               const RoomHeat& want, const Outside& out, Budget& budget) {
  using moist_air::humidity_of;
  const double room_humidity = humidity_of(moist_air::satvap(Tr).es * 0.01 * want.rmhum / out.P);
  const double air = floor_area * want.vent * settings.HEIGHT / kSecondsPerHour;  // [m3/s]
  budget[kInternalSensible] = want.rmsens * floor_area;
  budget[kInternalLatent] = want.rmlat * floor_area;
  budget[kVentilationSensible] = out.rho * kAirHeat * air * (out.T - Tr) * settings.BETA;
  budget[kVentilationLatent] =
      out.rho * kLatentHeat * air * settings.BETA * (out.Q - room_humidity);
}

/// What a plant takes out of the rooms and its drive power, and where they leave.
Release run_plant(const tsrf_module_bldng::Data& bldng, std::size_t b, const Room& room,
                  const Sums& sums, Budget& budget) {
  const double latent_load = budget[kInternalLatent] + budget[kVentilationLatent];
  const double load = room.L + latent_load;
  const double heat = load + load / bldng.cop[b];
  const double sensible = bldng.shf[b] * heat;
  const double latent = (1.0 - bldng.shf[b]) * heat;
  budget[kSensibleLoad] = room.L;
  budget[kLatentLoad] = latent_load;
  budget[kSensibleReleased] = sensible - budget[kVentilationSensible];
  budget[kLatentReleased] = latent - budget[kVentilationLatent];
  budget[kSensibleCooled] = room.f ? room.L : 0.0;
  budget[kLatentCooled] = room.f ? latent_load : 0.0;

  // What ventilation takes in leaves the outside air whether the plant runs or not.
  const std::int32_t group = bldng.no_release[b] != 0 ? 0 : release_group(bldng.BldCD[b]);
  return {.group = group,
          .area = group == 1 ? sums.A_pos[0] : sums.A_pos[1] + sums.A_pos[2],
          .sensible = (room.f ? sensible : 0.0) - budget[kVentilationSensible],
          .latent = (room.f ? latent : 0.0) - budget[kVentilationLatent]};
}

/// One building: from the sums over its surfaces to what it gives back.
Release advance_building(const tsrf_module_aircon::RunTable& runs, const RoomHeat& want,
                         const Sums& sums, double time, double dt, std::size_t b,
                         tsrf_module_bldng::Data& bldng) {
  Budget& budget = bldng.bldat[b];
  const double floor = bldng.floor[b];
  set_gains(bldng.settings, bldng.acflr[b] * bldng.area[b] * floor, bldng.Tr[b], want,
            outside_of(sums), budget);
  const double gains = budget[kInternalSensible] + budget[kVentilationSensible];
  Room room{.area = bldng.area[b],
            .floor = floor,
            .acflr = bldng.acflr[b],
            .HTRNS = bldng.settings.HTRNS,
            .HEIGHT = bldng.settings.HEIGHT,
            .rmtmp = want.rmtmp,
            .S2 = gains,
            .L = sums.L + gains,
            .Tr = bldng.Tr[b],
            .Tm = bldng.Tm[b],
            .f = false};
  cal_rmtmp(time, dt, runs, sums, room);
  bldng.Tr[b] = room.Tr;
  bldng.Tm[b] = room.Tm;
  return run_plant(bldng, b, room, sums, budget);
}

/// Ends the run when a building has left all sense.
void check_rooms(frame::Log& log, double time, const tsrf_module_data::Data& state,
                 const tsrf_module_bldng::Data& bldng) {
  for (std::size_t b = 0; b < bldng.BldID.size(); ++b) {
    if (tsrf_therm1d::plausible(bldng.Tr[b]) && tsrf_therm1d::plausible(bldng.Tm[b])) continue;
    const Budget& budget = bldng.bldat[b];
    tsrf_therm1d::note_air(log, state);
    log.fail("### error : room temperature out of range", frame::items("time =", time),
             frame::items("BldID =", bldng.BldID[b]),
             frame::items("room temperature =", bldng.Tr[b]),
             frame::items("slab temperature =", bldng.Tm[b]),
             frame::items("convection from surfaces =", budget[kConvection]),
             frame::items("transmitted solar =", budget[kSolar]),
             frame::items("internal sensible =", budget[kInternalSensible]),
             frame::items("ventilation sensible =", budget[kVentilationSensible]),
             tsrf_therm1d::plausible_rule());
  }
}

/// Hands each surface its share of what its building gives back.
void release_heat(const tsrf_module_patch::Data& patch, const Work& work,
                  tsrf_module_bldng::Data& bldng) {
  for (const Surface& surface : work.surfaces) {
    const Release& release = work.releases[static_cast<std::size_t>(surface.building)];
    const bool takes_part = release.group == group_of_pos(surface.pos);
    const double share = takes_part ? patch.area[surface.patch] / release.area : 0.0;
    bldng.sensible[surface.patch] = release.sensible * share;
    bldng.latent[surface.patch] = release.latent * share;
  }
}

/// The heat capacity of the air of a whole building [J/K].
double air_capacity(const Room& room, double P) {
  return room.floor * room.area * room.HEIGHT * (P * kAirHeat / (kGasConstant * room.Tr));
}

/// Hour of the day, 0 up to 24.
double hour_of_day(double time) {
  const double h = std::fmod(time / kSecondsPerHour, 24.0);
  return h < 0.0 ? h + 24.0 : h;
}

const tsrf_module_aircon::Period& period_at(double h, const tsrf_module_aircon::RunTable& runs) {
  return runs.at(static_cast<std::size_t>(h));
}

}  // namespace

std::int32_t release_group(std::int32_t BldCD) {
  constexpr std::array<std::int32_t, 8> kGroups = {1, 1, 1, 1, 2, 2, 1, 1};
  return kGroups.at(static_cast<std::size_t>(BldCD - 1));
}

Operation operation_at(double time, const tsrf_module_aircon::RunTable& runs) {
  constexpr double kSlack = 1e-5;  // [h]
  const double h = hour_of_day(time);
  const tsrf_module_aircon::Period& period = period_at(h, runs);
  if (period.startup + kSlack < h && period.end + kSlack > h) return Operation::steady;
  if (period.start + kSlack < h && period.startup + kSlack > h) return Operation::pull_down;
  return Operation::free;
}

void cal_rmtmp(double time, double dt, const tsrf_module_aircon::RunTable& runs, const Sums& sums,
               Room& room) {
  const double T = sums.T / sums.A;
  const double Qs = room.area * room.HTRNS *
                    ((room.Tr - room.Tm) * room.acflr + (1.0 - room.acflr) * (T - room.Tm));
  room.Tm += (sums.S3 * (1.0 - kSolarToAir) / room.floor + Qs) * dt / sums.S4;
  room.L -= room.floor * Qs;

  const double capacity = air_capacity(room, sums.P / sums.A);
  const Operation operation = operation_at(time + dt, runs);
  room.f = operation != Operation::free;
  if (operation == Operation::steady) {
    room.Tr = room.rmtmp;
  } else if (operation == Operation::pull_down) {
    const double h = hour_of_day(time + dt);
    const double hours_left = std::max(period_at(h, runs).startup - h, 0.0);
    const double step = dt / kSecondsPerHour;
    const double weight = step / (hours_left + step);
    const double next = weight * room.rmtmp + (1.0 - weight) * room.Tr;
    room.L += (room.Tr - next) * capacity / dt;
    room.Tr = next;
  } else {
    room.Tr += (kSolarToAir * sums.S3 + room.S2 - room.floor * Qs + (T - room.Tr) * sums.S1) /
               (capacity / dt + sums.S1);
  }
}

void prepare(frame::Log& log, const tsrf_module_matprp::Data& matprp,
             const tsrf_module_lyrstrct::Data& lyrstrct, const tsrf_module_bldng::Data& bldng,
             Work& work) {
  const frame::Tag tag(log, "(tsrf_building)(prepare)");
  frame::allocating(
      log, "surfaces and sums of buildings", frame::bytes_of<Surface>(lyrstrct.building.size()),
      [&] {
        const auto buildings = static_cast<std::size_t>(bldng.nbld);
        work.surfaces.clear();
        for (std::size_t p = 0; p < lyrstrct.building.size(); ++p) {
          if (lyrstrct.building[p] < 0) continue;
          const auto material = static_cast<std::size_t>(lyrstrct.material[p]);
          work.surfaces.push_back({static_cast<std::uint32_t>(p), lyrstrct.building[p],
                                   matprp.materials[material].pos});
        }
        work.sums.assign(buildings, Sums{});
        work.releases.assign(buildings, Release{});
        work.wants = frame::PatchTable<double>(bldng.nbld, tsrf_module_rmheat::kVent);
        work.packed.assign(kItems * buildings, 0.0);
      });
}

void warn_of_step(frame::Log& log, double dt, const tsrf_module_bldng::Settings& settings) {
  constexpr double kRoomDensity = 1.204;  // of air at 20 deg C and 1013.25 hPa [kg/m3]
  const double limit = 2.0 * settings.HEIGHT * kRoomDensity * kAirHeat / settings.HTRNS;
  if (dt < limit) return;
  log.line("%%% warning : dtmax =", dt,
           "s; the exchange of room and slab grows without limit from dtmax =", limit, "s on");
}

void set_room_nodes(const Work& work, const tsrf_module_bldng::Data& bldng,
                    tsrf_module_data::Data& state) {
  for (const Surface& surface : work.surfaces) {
    const std::size_t p = surface.patch;
    state.tlyr(p, state.nlyr[p] + 1) = bldng.Tr[static_cast<std::size_t>(surface.building)];
  }
}

void tsrf_building(frame::Log& log, const frame::ProcessLayer& layer, double time, double dt,
                   const tsrf_module_patch::Data& patch, const tsrf_module_data::Data& state,
                   const tsrf_module_rmheat::Data& rmheat, const tsrf_module_aircon::Data& aircon,
                   const tsrf_module_bldcmm::Data& bldcmm, tsrf_module_bldng::Data& bldng,
                   Work& work) {
  const frame::Tag tag(log, "(tsrf_building)");
  tsrf_module_rmheat::tsrf_set_rmheat(log, rmheat, bldng.BldCD, bldng.Strct,
                                      tsrf_module_rmheat::kRmsens, tsrf_module_rmheat::kVent,
                                      work.wants);
  sum_surfaces(patch, state, bldng, work);
  sum_processes(log, layer, bldcmm, bldng, work);
  for (std::size_t b = 0; b < work.sums.size(); ++b) {
    if (!(work.sums[b].A > 0.0)) {
      log.program_error("### program error -1- (tsrf_building)",
                        frame::items("BldID =", bldng.BldID[b]));
    }
    const auto& wants = work.wants;
    const RoomHeat want{wants(b, 0), wants(b, 1), wants(b, 2), wants(b, 3), wants(b, 4)};
    const auto& runs = aircon.tables[static_cast<std::size_t>(aircon.pair[b])];
    work.releases[b] = advance_building(runs, want, work.sums[b], time, dt, b, bldng);
  }
  check_rooms(log, time, state, bldng);
  release_heat(patch, work, bldng);
}

void list_arrays(const Work& work, frame::ArrayList& list) {
  list.add("rooms", work.surfaces, work.sums, work.releases, work.wants, work.packed);
}

}  // namespace tsrf_building
