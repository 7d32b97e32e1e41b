// tsrf_building: rooms, loads and the heat that buildings give back.
//
// Once a step, when the surfaces are known, each building goes through
//
//   sums over its surfaces -> outside air -> internal gains and ventilation -> slab and room air
//   with the load of the air-conditioning (cal_rmtmp) -> plant -> heat released at its surfaces.
//
// One pass over the building surfaces gathers the sums of all buildings, one pass hands the
// released heat back. Called by the step with the building model on.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "buildings/aircon.hpp"
#include "buildings/bldcmm.hpp"
#include "buildings/bldng.hpp"
#include "buildings/rmheat.hpp"
#include "frame/array_list.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/process_layer.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_building {

/// Elements of a building's budget (tsrf_module_bldng's bldat) [W].
enum Element : std::size_t {
  kConvection = 0,  ///< from the inner surfaces to the room
  kSolar = 1,       ///< sun that has passed the windows
  kInternalSensible = 2,
  kVentilationSensible = 3,
  kSensibleLoad = 4,      ///< total
  kSensibleReleased = 5,  ///< less kVentilationSensible
  kSensibleCooled = 6,    ///< kSensibleLoad while the plant runs
  kInternalLatent = 9,
  kVentilationLatent = 10,
  kLatentLoad = 11,      ///< total
  kLatentReleased = 12,  ///< less kVentilationLatent
  kLatentCooled = 13,    ///< kLatentLoad while the plant runs
};

/// Sums over the surfaces of a building, each weighted by area.
struct Sums {
  double A = 0.0;                 ///< area [m2]
  std::array<double, 3> A_pos{};  ///< area by position class 1, 2, 3
  double P = 0.0;                 ///< outside pressure [Pa m2]
  double T = 0.0;                 ///< outside temperature [K m2]
  double Q = 0.0;                 ///< outside humidity [kg/kg m2]
  double S1 = 0.0;                ///< transmission [W/K]
  double S3 = 0.0;                ///< sun that has passed the windows [W]
  double S4 = 0.0;                ///< heat capacity of the surfaces of class 1 [J/K]
  double L = 0.0;                 ///< convection from the inner surfaces, and that sun [W]
};

/// What the users of a building make of its rooms in this hour.
struct RoomHeat {
  double rmsens;  ///< internal sensible heat per floor area [W/m2]
  double rmlat;   ///< internal latent heat per floor area [W/m2]
  double rmtmp;   ///< set point [K]
  double rmhum;   ///< relative humidity [%]
  double vent;    ///< room volumes per hour
};

/// The air around a building, the mean over its surfaces.
struct Outside {
  double P;    ///< pressure [Pa]
  double T;    ///< temperature [K]
  double Q;    ///< specific humidity [kg/kg]
  double rho;  ///< density [kg/m3]
};

/// Room and slab of one building over a step: what moves them, and what comes of it.
struct Room {
  double area;    ///< of a storey [m2]
  double floor;   ///< number of storeys
  double acflr;   ///< conditioned share of the floor area
  double HTRNS;   ///< coefficient of the exchange with the slab [W/m2 K]
  double HEIGHT;  ///< of a storey [m]
  double rmtmp;   ///< set point [K]
  double S2;      ///< internal and ventilation sensible heat [W]

  double L;   ///< in: sensible load so far [W]; out: with what slab and pull-down add
  double Tr;  ///< temperature of the room air [K]
  double Tm;  ///< temperature of the slab [K]
  bool f;     ///< out: the plant runs
};

inline constexpr double kSolarToAir = 0.3;  ///< of the sun in a room; the rest warms the slab
inline constexpr double kGasConstant = 287.0459881231874;  ///< of dry air [J/kg K]

/// What a plant does in the step that ends at `time` [s]: by clock and run table alone.
enum class Operation : std::uint8_t {
  free,       ///< nothing
  pull_down,  ///< brings the room to its set point
  steady      ///< holds it there
};
[[nodiscard]] Operation operation_at(double time, const tsrf_module_aircon::RunTable& runs);

/// Advances room and slab by `dt` [s] from `time` [s]. Clock and run table alone decide whether the
/// room is held at its set point, pulled down to it, or runs free. Right sides take Tr and Tm from
/// before the step.
void cal_rmtmp(double time, double dt, const tsrf_module_aircon::RunTable& runs, const Sums& sums,
               Room& room);

/// A patch that is a surface of a building.
struct Surface {
  std::uint32_t patch;
  std::int32_t building;
  std::int32_t pos;  ///< position class of its material, 1 to 3
};

/// Heat that a building gives to the outside in a step, and the surfaces that it leaves from.
struct Release {
  std::int32_t group;  ///< 1: surfaces of class 1; 2: those of classes 2 and 3; 0: none
  double area;         ///< of these surfaces [m2]
  double sensible;     ///< [W]
  double latent;       ///< [W]
};

/// Whether buildings of use `BldCD` (1 to 8) give their heat to the surfaces of group 1 or 2.
[[nodiscard]] std::int32_t release_group(std::int32_t BldCD);

/// Work arrays, sized once at the start.
struct Work {
  std::vector<Surface> surfaces;    ///< in the order of the patches
  std::vector<Sums> sums;           ///< per building
  std::vector<Release> releases;    ///< per building
  frame::PatchTable<double> wants;  ///< per building: rows of the members of RoomHeat
  std::vector<double> packed;       ///< the sums as processes exchange them
};

/// Lists the building surfaces and sizes the work arrays. To be called once, when the patches have
/// their buildings.
void prepare(frame::Log& log, const tsrf_module_matprp::Data& matprp,
             const tsrf_module_lyrstrct::Data& lyrstrct, const tsrf_module_bldng::Data& bldng,
             Work& work);

/// Warns, on one line, when the explicit exchange of room and slab grows without limit at a step of
/// `dt` [s].
void warn_of_step(frame::Log& log, double dt, const tsrf_module_bldng::Settings& settings);

/// Gives the node behind the last cell of each building surface the temperature of its room.
void set_room_nodes(const Work& work, const tsrf_module_bldng::Data& bldng,
                    tsrf_module_data::Data& state);

/// One step of length `dt` [s] from `time` [s]: rooms (Tr, Tm), budgets (bldat), flux into the
/// rooms (qroom) and released heat (sensible, latent) of bldng, which takes its exchange arrays
/// cleared.
void tsrf_building(frame::Log& log, const frame::ProcessLayer& layer, double time, double dt,
                   const tsrf_module_patch::Data& patch, const tsrf_module_data::Data& state,
                   const tsrf_module_rmheat::Data& rmheat, const tsrf_module_aircon::Data& aircon,
                   const tsrf_module_bldcmm::Data& bldcmm, tsrf_module_bldng::Data& bldng,
                   Work& work);

/// Tells what the arrays take.
void list_arrays(const Work& work, frame::ArrayList& list);

}  // namespace tsrf_building
