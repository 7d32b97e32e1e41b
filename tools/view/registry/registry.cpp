#include <algorithm>
#include <array>

#include "fault.hpp"
#include "registry/quantity.hpp"

namespace townskin_view {

namespace {

using enum Place;
using enum Span;

constexpr std::string_view kDerived = "derived";
constexpr std::string_view kW = "W m-2";
constexpr std::string_view kWShown = "W/m2";
constexpr std::string_view kC = "degC";
constexpr std::string_view kCShown = "deg C";
constexpr std::string_view kGain = "positive: the surface gains";
constexpr std::string_view kLeaves = "positive: leaves the surface";
constexpr std::string_view kRoom = "positive: the room gains";

constexpr std::array kQuantities = std::to_array<Quantity>({
    // What a patch is.
    {"patch_area", "area of the patch", "", "m2", "m2", "", "", "Patch: area", patch, steady},
    {"normal_x", "outward unit normal, to the east", "", "1", "", "positive: looks east", "",
     "Patch: nx", patch, steady},
    {"normal_y", "outward unit normal, to the north", "", "1", "", "positive: looks north", "",
     "Patch: ny", patch, steady},
    {"normal_z", "outward unit normal, up", "", "1", "", "positive: looks up", "", "Patch: nz",
     patch, steady},
    {"sky_view_factor", "sky view factor", "", "1", "", "", "", "FormFactor: sky, as used", patch,
     steady},
    // PatchSurfTemp and Sun.
    {"surface_temperature", "surface temperature", "surface_temperature", kC, kCShown, "",
     "none of leaves, mirrors and patches of no kind", "PatchSurfTemp: 1", patch, instant},
    {"longwave_radiosity", "long-wave radiosity: emitted and reflected",
     "surface_upwelling_longwave_flux_in_air", kW, kWShown, kLeaves, "", "PatchSurfTemp: 2", patch,
     instant},
    {"shortwave_radiosity", "short-wave radiosity: reflected light",
     "surface_upwelling_shortwave_flux_in_air", kW, kWShown, kLeaves, "", "PatchSurfTemp: 3", patch,
     instant},
    {"latent_heat", "latent heat", "", kW, kWShown,
     "positive: the surface gains (dew), negative: it evaporates", "", "PatchSurfTemp: 4", patch,
     instant},
    {"conducted_heat", "heat conducted from the surface inward",
     "downward_heat_flux_at_ground_level_in_soil", kW, kWShown,
     "positive: into the wall or the ground", "", "PatchSurfTemp: 5", patch, instant},
    {"sunlit_fraction", "sunlit fraction", "", "1", "", "", "", "Sun", patch, instant},
    // What follows from them.
    {"radiant_temperature", "temperature of a black body of the same long-wave radiosity",
     "brightness_temperature", kC, kCShown, "", "(JRl/sigma)^(1/4) - 273.15; of leaves their own",
     kDerived, patch, instant},
    {"absorbed_shortwave", "absorbed short-wave radiation", "surface_net_downward_shortwave_flux",
     kW, kWShown, kGain, "(1 - alb) JRs/alb", kDerived, patch, instant},
    {"absorbed_beam", "absorbed beam of the sun", "", kW, kWShown, kGain,
     "(1 - alb) max(0, n.s) direct sunlit, mean of the patches of a group", kDerived, patch,
     instant},
    {"absorbed_sky_light", "absorbed scattered light of the sky", "", kW, kWShown, kGain,
     "(1 - alb) sky_view scattered", kDerived, patch, instant},
    {"absorbed_reflected_light", "absorbed light that neighbours reflect", "", kW, kWShown, kGain,
     "absorbed_shortwave - absorbed_beam - absorbed_sky_light", kDerived, patch, instant},
    {"absorbed_longwave", "absorbed long-wave radiation", "", kW, kWShown, kGain,
     "what closes the balance of the surface", kDerived, patch, instant},
    {"absorbed_sky_longwave", "absorbed long-wave radiation of the sky", "", kW, kWShown, kGain,
     "ems sky_view longwave", kDerived, patch, instant},
    {"absorbed_neighbour_longwave", "absorbed long-wave radiation of neighbours", "", kW, kWShown,
     kGain, "absorbed_longwave - absorbed_sky_longwave", kDerived, patch, instant},
    {"emitted_longwave", "emission", "", kW, kWShown, kGain, "-ems sigma Ts^4", kDerived, patch,
     instant},
    {"convected_heat", "convection", "", kW, kWShown, kGain, "HTRNS (Ta - Ts)", kDerived, patch,
     instant},
    // heat.
    {"room_wall_heat", "heat that walls give to the room", "", kW, kWShown, kRoom, "", "heat: 1",
     building, instant},
    {"room_sunlight", "sunlight through windows", "", kW, kWShown, kRoom, "", "heat: 2", building,
     instant},
    {"room_internal_heat", "internal sensible heat", "", kW, kWShown, kRoom, "", "heat: 3",
     building, instant},
    {"room_ventilation_sensible", "sensible heat of ventilation", "", kW, kWShown, kRoom, "",
     "heat: 4", building, instant},
    {"room_ventilation_latent", "latent heat of ventilation", "", kW, kWShown, kRoom, "", "heat: 5",
     building, instant},
    {"room_load", "total load of the room", "", kW, kWShown, kRoom, "", "heat: 6", building,
     instant},
    {"released_sensible", "sensible heat that the plant releases", "", kW, kWShown,
     "positive: into the air outside", "", "heat: 7", building, instant},
    {"released_latent", "latent heat that the plant releases", "", kW, kWShown,
     "positive: into the air outside", "", "heat: 8", building, instant},
    {"room_temperature", "room temperature", "", kC, kCShown, "", "", "heat: 9", building, instant},
    {"slab_temperature", "slab temperature", "", kC, kCShown, "", "", "heat: 10", building,
     instant},
    {"plant_load", "heat that the plant takes out", "", kW, kWShown,
     "positive: cooling, negative: heating", "", "heat: 11", building, instant},
    // SurfTemp and BldLoad.
    {"cell_exchange", "sum of area times coefficient of convection", "", "W K-1", "W/K", "", "",
     "SurfTemp: tdrg(1)", cell, instant},
    {"cell_exchange_temperature", "sum of area times coefficient times surface temperature", "",
     "W", "W", "", "", "SurfTemp: tdrg(2)", cell, instant},
    {"cell_moist_exchange", "sum of area times coefficient times evaporation ratio", "", "W K-1",
     "W/K", "", "", "SurfTemp: tdrg(3)", cell, instant},
    {"cell_wall_area", "area of walls in the cell", "", "m2", "m2", "", "", "SurfTemp: swlr(1)",
     cell, steady},
    {"cell_ground_area", "area of ground in the cell", "", "m2", "m2", "", "", "SurfTemp: swlr(2)",
     cell, steady},
    {"cell_roof_area", "area of roofs in the cell", "", "m2", "m2", "", "", "SurfTemp: swlr(3)",
     cell, steady},
    {"cell_surface_temperature", "mean temperature of the surfaces in the cell",
     "surface_temperature", kC, kCShown, "", "tdrg(2)/tdrg(1) - 273.15", kDerived, cell, instant},
    {"cell_released_sensible", "sensible heat that buildings release in the cell", "", "W m-3",
     "W/m3", "positive: into the air", "", "BldLoad: BldSens", cell, instant},
    {"cell_released_latent", "latent heat that buildings release in the cell", "", "W m-3", "W/m3",
     "positive: into the air", "", "BldLoad: BldLant", cell, instant},
    // LAD.
    {"leaf_area_density", "leaf area density", "", "m2 m-3", "m2/m3", "", "", "LAD, LAD_simple",
     leaf_cell, steady},
    // Sun & Sky and Weather.
    {"direct_sun", "direct sunlight on a plane that faces the sun",
     "surface_direct_along_beam_shortwave_flux_in_air", kW, kWShown, "positive: down", "",
     "Sun & Sky: 1", Place::run, instant},
    {"scattered_sun", "scattered light of the sky on the horizontal",
     "surface_diffuse_downwelling_shortwave_flux_in_air", kW, kWShown, "positive: down", "",
     "Sun & Sky: 2", Place::run, instant},
    {"sky_longwave", "long-wave radiation of the sky on the horizontal",
     "surface_downwelling_longwave_flux_in_air", kW, kWShown, "positive: down", "", "Sun & Sky: 3",
     Place::run, instant},
    {"air_temperature", "air temperature", "air_temperature", kC, kCShown, "", "", "Weather: Temp",
     Place::run, instant},
    {"relative_humidity", "relative humidity", "relative_humidity", "percent", "%", "", "",
     "Weather: Rhum", Place::run, instant},
    {"wind_speed", "wind speed", "wind_speed", "m s-1", "m/s", "", "", "Weather: Wind", Place::run,
     instant},
    // The flow program's restart file.
    {"air_velocity", "wind at the middle of the cell: east, north, up", "", "m s-1", "m/s",
     "positive: towards east, north, up", "mean mass flux of opposite faces over the density",
     "flow restart: 7, 8, 9", flow_cell, instant},
    {"flow_air_temperature", "air temperature of the flow", "air_temperature", kC, kCShown, "", "",
     "flow restart: 5", flow_cell, instant},
    {"flow_pressure", "pressure above the thermodynamic one", "", "Pa", "Pa", "", "",
     "flow restart: 4", flow_cell, instant},
    {"flow_species", "mass fraction of the second species (vapour)", "", "1", "", "", "",
     "flow restart: 6", flow_cell, instant},
    {"turbulent_energy", "kinetic energy of turbulence", "", "m2 s-2", "m2/s2", "", "",
     "flow restart: 10", flow_cell, instant},
    {"turbulent_dissipation", "dissipation of turbulence", "", "m2 s-3", "m2/s3", "", "",
     "flow restart: 10", flow_cell, instant},
    {"open_fraction", "open fraction of the cell's volume", "", "1", "", "", "", "Porous: volume",
     flow_cell, steady},
});

}  // namespace

std::span<const Quantity> quantities() { return kQuantities; }

const Quantity& quantity(std::string_view name) {
  const auto found = std::ranges::find(kQuantities, name, &Quantity::name);
  if (found == kQuantities.end()) throw Fault("no quantity " + std::string(name));
  return *found;
}

std::string_view name_of(Place place) {
  static constexpr std::array<std::string_view, 6> kNames{"patch",     "building", "cell",
                                                          "leaf_cell", "run",      "flow_cell"};
  return kNames[static_cast<std::size_t>(place)];
}

std::string_view name_of(Span span) { return span == Span::steady ? "steady" : "instant"; }

std::string quantities_table() {
  std::string text =
      "| name | of each | meaning | unit | sign | from |\n|---|---|---|---|---|---|\n";
  for (const Quantity& q : kQuantities) {
    text += "| `" + std::string(q.name) + "` | " + std::string(name_of(q.place)) + " | " +
            std::string(q.long_name);
    if (q.span == Span::steady) text += " (steady)";
    text += " | " + std::string(q.units == "1" ? "1" : q.shown_units) + " | " +
            std::string(q.sign) + " | " + std::string(q.source);
    if (!q.formula.empty()) text += ": " + std::string(q.formula);
    text += " |\n";
  }
  return text;
}

}  // namespace townskin_view
