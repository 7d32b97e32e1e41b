#include "account/rooms.hpp"

#include "inputs/moist_air.hpp"

namespace tsrf_module_account {

namespace {

using namespace tsrf_building;
using Sums = std::array<double, kRoomFlows>;

/// Heat capacity behind a unit of a surface [J/m2 K].
double capacity_of(const tsrf_module_data::Data& state, std::size_t p) {
  double sum = 0.0;
  for (std::int32_t k = 0; k < state.nlyr[p]; ++k) sum += state.dzl(p, k) * state.capa(p, k);
  return sum;
}

/// A building in a step.
struct One {
  const tsrf_module_bldng::Data& bldng;
  const House& house;
  std::size_t b;
  Operation operation;
  double dt;

  [[nodiscard]] double of(std::size_t element) const { return bldng.bldat[b][element] * dt; }
  [[nodiscard]] bool runs() const { return operation != Operation::free; }
};

/// Rooms and slabs: what they exchange and what they store.
void add_air_and_slab(const One& one, Sums& sums) {
  const auto& [bldng, house, b, operation, dt] = one;
  const double floor = bldng.floor[b];
  const double storeys = bldng.area[b] * floor;
  const double outside = house.T / house.area;
  const double exchange = storeys * bldng.settings.HTRNS;
  const double served = bldng.acflr[b];
  const double air = storeys * bldng.settings.HEIGHT * (house.P / house.area) *
                     moist_air::kAirHeat / (kGasConstant * house.Tr_before);
  const double stored = air * (bldng.Tr[b] - house.Tr_before);
  const double to_slab_sun = (1.0 - kSolarToAir) * house.sun * dt;
  sums[kWalls] += house.walls * dt;
  sums[kSun] += house.sun * dt;
  sums[kInternal] += one.of(kInternalSensible);
  sums[kVentilation] += one.of(kVentilationSensible);
  sums[kToSlabs] += exchange * served * (house.Tr_before - house.Tm_before) * dt;
  sums[kSlabOutside] += exchange * (1.0 - served) * (outside - house.Tm_before) * dt;
  sums[kSlabSun] += to_slab_sun;
  sums[kSlabStored] += house.slab * floor * (bldng.Tm[b] - house.Tm_before);
  sums[kRoomStored] += stored;
  sums[kCooling] += one.of(kSensibleCooled);
  if (one.runs()) sums[kSunTwice] += to_slab_sun;
  if (operation == Operation::steady) sums[kSetPoint] += stored;
  if (operation == Operation::free) {
    sums[kWallsUntaken] += house.walls * dt;
    sums[kTransmission] += house.transmission * (outside - bldng.Tr[b]) * dt;
  }
}

/// The plant: what it takes out of the rooms and what becomes of it.
void add_plant(const One& one, Sums& sums) {
  const auto& [bldng, house, b, operation, dt] = one;
  sums[kInternalVapour] += one.of(kInternalLatent);
  sums[kVentilationVapour] += one.of(kVentilationLatent);
  sums[kDrying] += one.of(kLatentCooled);
  const double taken = one.of(kSensibleCooled) + one.of(kLatentCooled);
  const double drive = one.runs() ? taken / bldng.cop[b] : 0.0;
  sums[kDrive] += drive;
  if (!one.runs()) {
    sums[kVapourUnheld] += one.of(kInternalLatent) + one.of(kVentilationLatent);
  }
  const std::int32_t group = release_group(bldng.BldCD[b]);
  const double area = group == 1 ? house.area_pos[0] : house.area_pos[1] + house.area_pos[2];
  if (bldng.no_release[b] != 0 || !(area > 0.0)) {
    sums[kReleaseUnheld] +=
        taken + drive - one.of(kVentilationSensible) - one.of(kVentilationLatent);
  }
}

}  // namespace

void prepare_rooms(frame::Log& log, const tsrf_module_patch::Data& patch,
                   const tsrf_module_data::Data& state, const Rooms& rooms, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_account)(prepare_rooms)");
  const std::size_t buildings = rooms.bldng.BldID.size();
  frame::allocating(log, "account", frame::bytes_of<House>(buildings),
                    [&] { data.houses.assign(buildings, House{}); });
  for (const tsrf_building::Surface& surface : rooms.work.surfaces) {
    House& house = data.houses[static_cast<std::size_t>(surface.building)];
    const double area = patch.area[surface.patch];
    house.area += area;
    house.area_pos[static_cast<std::size_t>(surface.pos - 1)] += area;
    house.transmission += state.uval(surface.patch, 0) * area;
    if (surface.pos == 1) house.slab += capacity_of(state, surface.patch) * area;
  }
  for (std::size_t b = 0; b < buildings; ++b) {
    data.floor_area += rooms.bldng.area[b] * rooms.bldng.floor[b];
  }
}

void note_rooms(const tsrf_module_bldng::Data& bldng, Data& data) {
  for (std::size_t b = 0; b < data.houses.size(); ++b) {
    data.houses[b].Tr_before = bldng.Tr[b];
    data.houses[b].Tm_before = bldng.Tm[b];
  }
}

void add_rooms(const tsrf_module_patch::Data& patch, const tsrf_module_data::Data& state,
               const Rooms& rooms, double time, double dt, Data& data) {
  for (const tsrf_building::Surface& surface : rooms.work.surfaces) {
    const std::size_t p = surface.patch;
    House& house = data.houses[static_cast<std::size_t>(surface.building)];
    house.P += patch.area[p] * state.airst(p, 0);
    house.T += patch.area[p] * state.airst(p, 1);
    data.rooms[kReleased] += rooms.bldng.sensible[p] * dt;
    data.rooms[kReleasedVapour] += rooms.bldng.latent[p] * dt;
  }
  for (std::size_t b = 0; b < data.houses.size(); ++b) {
    const auto& runs = rooms.aircon.tables[static_cast<std::size_t>(rooms.aircon.pair[b])];
    const One one{rooms.bldng, data.houses[b], b, operation_at(time + dt, runs), dt};
    add_air_and_slab(one, data.rooms);
    add_plant(one, data.rooms);
  }
}

}  // namespace tsrf_module_account
