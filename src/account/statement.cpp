#include "account/statement.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "account/balance.hpp"
#include "frame/numbers.hpp"
#include "inputs/calendar.hpp"

namespace tsrf_module_account {

namespace {

constexpr std::array<std::string_view, kKinds> kKindNames{
    "ground", "walls", "roofs", "windows", "water", "panels", "leaves", "mirrors", "far", "other"};

/// Sums of a day by kind, and of all kinds.
struct Totals {
  std::array<Flows, kKinds> of{};
  Flows all{};
  std::array<Exchange, 2> exchange{};  ///< long wave, light
  std::array<double, kRoomFlows> rooms{};
  std::array<double, kLeafFlows> leaves{};

  explicit Totals(const Data& data) : rooms(data.rooms), leaves(data.leaves) {
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
      for (std::size_t flow = 0; flow < kFlows; ++flow) {
        of[kind][flow] = total(data, static_cast<Kind>(kind), static_cast<Flow>(flow));
        all[flow] += of[kind][flow];
      }
    }
    for (const auto& block : data.exchange) {
      for (std::size_t band = 0; band < exchange.size(); ++band) {
        exchange[band].to_sky += block[band].to_sky;
        exchange[band].table += block[band].table;
        exchange[band].sweeps += block[band].sweeps;
      }
    }
    for (const auto& block : data.leaf_blocks) {
      for (std::size_t flow = 0; flow < kLeafFlows; ++flow) leaves[flow] += block[flow];
    }
  }
};

/// Where a statement goes, and of what.
struct Page {
  frame::Log& log;
  frame::TextOutput& file;
  const Data& data;
  const Totals& sums;

  [[nodiscard]] Balance open(std::string_view name, std::string_view whose, double area) const {
    return {log, file, data, name, whose, area};
  }
};

/// What falls on the patches of a kind, less what they reflect.
void add_incident(Balance& b, const Flows& of) {
  b.term("beam", of[kBeam]);
  b.term("sky_light", of[kSkyLight]);
  b.term("neighbours_light", of[kLight] - of[kBeam] - of[kSkyLight]);
  b.term("reflected_light", of[kAbsorbedLight] - of[kLight]);
  b.term("sky_longwave", of[kSkyLongwave]);
  b.term("neighbours_longwave", of[kLongwave] - of[kSkyLongwave]);
  b.term("reflected_longwave", of[kAbsorbedLongwave] - of[kLongwave]);
}

void write_surface(const Page& page, Kind kind) {
  const Flows& of = page.sums.of[kind];
  Balance b = page.open("surface", kKindNames[kind], page.data.area[kind]);
  add_incident(b, of);
  b.term("emission", -of[kEmission]);
  b.term("convection", of[kConvection]);
  b.term("evaporation", of[kLatent]);
  b.term("conduction", of[kConduction]);
  b.close();
}

void write_column(const Page& page, Kind kind) {
  const Flows& of = page.sums.of[kind];
  Balance b = page.open("column", kKindNames[kind], page.data.area[kind]);
  b.term("from_surface", -of[kConduction]);
  b.term("from_room", of[kBehind]);
  b.term("stored", -of[kStored]);
  b.term("implicit_columns", -of[kImplicit]);
  if (kind == kWindow) b.term("beam_in_glass", of[kGlassBeam]);
  b.close();
}

/// Patches without a balance: what they absorb beyond what they emit goes nowhere.
void write_held(const Page& page, Kind kind) {
  const Flows& of = page.sums.of[kind];
  Balance b = page.open("held", kKindNames[kind], page.data.area[kind]);
  add_incident(b, of);
  b.term("emission", -of[kSource]);
  b.term("given_up", of[kSource] - of[kAbsorbedLight] - of[kAbsorbedLongwave]);
  b.close();
}

/// Whether the kind has patches.
bool there(const Page& page, std::size_t kind) { return page.data.area[kind] > 0.0; }

void write_kinds(const Page& page) {
  for (std::size_t k = 0; k < kKinds; ++k) {
    const auto kind = static_cast<Kind>(k);
    if (!there(page, k) || kind == kLeaves) continue;
    if (page.data.balanced[k]) {
      write_surface(page, kind);
      write_column(page, kind);
    } else {
      write_held(page, kind);
    }
  }
}

/// A band of the exchange: what came from outside, and where it stayed. The flows are what the sky
/// sends, what patches give the exchange and what they absorb.
void write_band(const Page& page, std::string_view name, const Exchange& band, Flow sky,
                Flow source, Flow absorbed) {
  Balance b = page.open(name, "district", page.data.plan);
  if (sky == kSkyLight) b.term("beam", page.sums.all[kBeam]);
  b.term("sky", page.sums.all[sky]);
  b.term("to_sky", -band.to_sky);
  for (std::size_t k = 0; k < kKinds; ++k) {
    const Flows& of = page.sums.of[k];
    if (there(page, k)) b.term(kKindNames[k], of[source] - of[absorbed]);
  }
  b.term("view_factors", -band.table);
  b.term("sweeps", -band.sweeps);
  b.close();
}

void write_rooms(const Page& page) {
  const auto& of = page.sums.rooms;
  const double area = page.data.floor_area;
  Balance rooms = page.open("rooms", "buildings", area);
  rooms.term("walls", of[kWalls]);
  rooms.term("sun", of[kSun]);
  rooms.term("internal", of[kInternal]);
  rooms.term("ventilation", of[kVentilation]);
  rooms.term("to_slabs", -of[kToSlabs]);
  rooms.term("sun_to_slabs", -of[kSlabSun]);
  rooms.term("cooling", -of[kCooling]);
  rooms.term("stored", -of[kRoomStored]);
  rooms.term("slabs_outside", -of[kSlabOutside]);
  rooms.term("sun_twice", of[kSunTwice]);
  rooms.term("set_point", of[kSetPoint]);
  rooms.term("walls_untaken", -of[kWallsUntaken]);
  rooms.term("transmission", of[kTransmission]);
  rooms.close();

  Balance slabs = page.open("slabs", "buildings", area);
  slabs.term("rooms", of[kToSlabs]);
  slabs.term("sun", of[kSlabSun]);
  slabs.term("outside", of[kSlabOutside]);
  slabs.term("stored", -of[kSlabStored]);
  slabs.close();

  Balance vapour = page.open("vapour", "buildings", area);
  vapour.term("internal", of[kInternalVapour]);
  vapour.term("ventilation", of[kVentilationVapour]);
  vapour.term("drying", -of[kDrying]);
  vapour.term("unheld", -of[kVapourUnheld]);
  vapour.close();

  Balance plant = page.open("plant", "buildings", area);
  plant.term("cooling", of[kCooling]);
  plant.term("drying", of[kDrying]);
  plant.term("drive", of[kDrive]);
  plant.term("ventilation", -of[kVentilation]);
  plant.term("ventilation_vapour", -of[kVentilationVapour]);
  plant.term("released", -of[kReleased]);
  plant.term("released_vapour", -of[kReleasedVapour]);
  plant.term("unheld", -of[kReleaseUnheld]);
  plant.close();
}

void write_leaves(const Page& page) {
  const auto& of = page.sums.leaves;
  const Flows& faces = page.sums.of[kLeaves];
  const double area = page.data.leaf_area;
  Balance light = page.open("light", "trees", area);
  light.term("beam", of[kLeafBeam]);
  light.term("by_patches", faces[kLight]);
  light.term("out_by_patches", -faces[kNextSourceLight]);
  light.term("absorbed", -of[kLeafLight]);
  light.term("other_faces", of[kFacesLight]);
  light.term("areas_of_faces", of[kFacesArea]);
  light.term("sweeps_of_cells", -of[kLightRelaxed]);
  light.close();

  Balance longwave = page.open("longwave", "trees", area);
  longwave.term("by_patches", faces[kLongwave]);
  longwave.term("out_by_patches", -faces[kNextSource]);
  longwave.term("net", -of[kLeafLongwave]);
  longwave.term("other_faces", of[kFacesLongwave]);
  longwave.term("areas_of_faces", of[kFacesAreaLongwave]);
  longwave.term("sweeps_of_cells", -of[kLongwaveRelaxed]);
  longwave.close();

  Balance leaves = page.open("leaves", "trees", area);
  leaves.term("light", of[kLeafLight]);
  leaves.term("longwave", of[kLeafLongwave]);
  leaves.term("convection", of[kLeafSensible]);
  leaves.term("evaporation", of[kLeafLatent]);
  leaves.term("search", -of[kLeafSearch]);
  leaves.close();
}

/// What patches without a balance take up.
double given_up(const Page& page) {
  double sum = 0.0;
  for (std::size_t k = 0; k < kKinds; ++k) {
    const Flows& of = page.sums.of[k];
    if (page.data.balanced[k] || k == kLeaves) continue;
    sum += of[kAbsorbedLight] + of[kAbsorbedLongwave] - of[kSource];
  }
  return sum;
}

/// What the exchange was given as emission beyond what the balances of the step gave off.
double late_emission(const Page& page) {
  double sum = 0.0;
  for (std::size_t k = 0; k < kKinds; ++k) {
    const Flows& of = page.sums.of[k];
    if (page.data.balanced[k]) sum += of[kSource] - of[kEmission];
  }
  return sum;
}

/// Terms of rooms and plants that stay when all balances are added.
void add_rooms(Balance& b, const std::array<double, kRoomFlows>& of) {
  b.term("stored_rooms", -of[kRoomStored]);
  b.term("stored_slabs", -of[kSlabStored]);
  b.term("internal", of[kInternal]);
  b.term("internal_vapour", of[kInternalVapour]);
  b.term("plant_drive", of[kDrive]);
  b.term("released", -of[kReleased]);
  b.term("released_vapour", -of[kReleasedVapour]);
}
void add_rooms_method(Balance& b, const std::array<double, kRoomFlows>& of) {
  b.term("sun_twice", of[kSunTwice]);
  b.term("set_point", of[kSetPoint]);
  b.term("walls_untaken", -of[kWallsUntaken]);
  b.term("transmission", of[kTransmission]);
  b.term("unheld_vapour", -of[kVapourUnheld]);
  b.term("unheld_release", -of[kReleaseUnheld]);
}

/// All balances added: the district as one body.
void write_district(const Page& page) {
  const auto& [of, all, exchange, rooms, leaves] = page.sums;
  const bool buildings = !page.data.houses.empty();
  const bool trees = !page.data.leaf_blocks.empty();
  Balance b = page.open("all", "district", page.data.plan);
  b.term("beam", all[kBeam] + leaves[kLeafBeam]);
  b.term("sky_light", all[kSkyLight] + leaves[kFacesLight]);
  b.term("light_to_sky", -exchange[1].to_sky);
  b.term("sky_longwave", all[kSkyLongwave] + leaves[kFacesLongwave]);
  b.term("longwave_to_sky", -exchange[0].to_sky);
  b.term("convection", all[kConvection] + leaves[kLeafSensible]);
  b.term("evaporation", all[kLatent] + leaves[kLeafLatent]);
  for (std::size_t k = 0; k < kKinds; ++k) {
    if (!page.data.balanced[k]) continue;
    b.term("stored_" + std::string(kKindNames[k]), -of[k][kStored]);
  }
  if (buildings) add_rooms(b, rooms);
  // What the method does not close.
  b.term("fixed_temperatures", -given_up(page));
  b.term("view_factors", -exchange[0].table - exchange[1].table);
  b.term("sweeps", -exchange[0].sweeps - exchange[1].sweeps);
  b.term("late_emission", late_emission(page));
  b.term("implicit_columns", -all[kImplicit]);
  if (buildings) {
    b.term("explicit_columns", all[kBehindShift]);
    b.term("sun_through_glass", rooms[kSun]);
    b.term("beam_in_glass", all[kGlassBeam]);
    add_rooms_method(b, rooms);
  }
  if (trees) {
    const Flows& faces = of[kLeaves];
    b.term("late_leaves",
           faces[kSource] + faces[kSourceLight] - faces[kNextSource] - faces[kNextSourceLight]);
    b.term("areas_of_faces", leaves[kFacesArea] + leaves[kFacesAreaLongwave]);
    b.term("sweeps_of_cells", -leaves[kLightRelaxed] - leaves[kLongwaveRelaxed]);
    b.term("leaf_search", -leaves[kLeafSearch]);
  }
  b.close();
}

void write_heading(frame::Log& log, frame::TextOutput& file, std::string_view date,
                   const Data& data) {
  if (file.rows() == 0) {
    file.rewind(log);
    file.line(log, "# day, seconds, balance, whose, term, kWh, kWh/m2; gains are positive");
  }
  std::string& out = file.buffer();
  out += "# from ";
  frame::append_number(out, data.from);
  out += " s to ";
  frame::append_number(out, data.from + data.seconds);
  out += " s";
  if (!date.empty()) (out += ", ") += date;
  if (std::fabs(data.seconds - tsrf_module_calendar::kSecondsPerDay) > 0.5) out += ", no whole day";
  out += '\n';
}

}  // namespace

void write_day(frame::Log& log, frame::TextOutput& file, std::string_view date, const Data& data) {
  const Totals sums(data);
  const Page page{log, file, data, sums};
  write_heading(log, file, date, data);
  write_district(page);
  write_band(page, "light", sums.exchange[1], kSkyLight, kSourceLight, kAbsorbedLight);
  write_band(page, "longwave", sums.exchange[0], kSkyLongwave, kSource, kAbsorbedLongwave);
  write_kinds(page);
  if (!data.houses.empty()) write_rooms(page);
  if (!data.leaf_blocks.empty()) write_leaves(page);
  file.flush(log);
}

}  // namespace tsrf_module_account
