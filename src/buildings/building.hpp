// tsrf_building: rooms, loads and the heat that buildings give back.
//
// Once a step, when the surfaces are known: sums each building's patches, works out the room's air
// and slab temperature, the load of the air-conditioning with its latent part, and the heat that
// the plant releases at the building's patches. Called by the step with the building model on.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "buildings/aircon.hpp"
#include "buildings/bldcmm.hpp"
#include "buildings/bldng.hpp"
#include "buildings/rmheat.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/process_layer.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_building {

/// Sums over the patches of a building, each weighted by area, and what the step makes of them.
struct Sums {
  double A = 0.0;                 ///< area [m2]
  std::array<double, 3> A_pos{};  ///< the same by position class 1, 2, 3
  double P = 0.0;                 ///< outside pressure [Pa m2]
  double T = 0.0;                 ///< outside temperature [K m2]
  double Q = 0.0;                 ///< outside humidity [kg/kg m2]
  double S1 = 0.0;                ///< transmission [W/K]
  double S2 = 0.0;                ///< internal and ventilation sensible heat [W]
  double S3 = 0.0;                ///< sun that has passed the windows [W]
  double S4 = 0.0;                ///< heat capacity of the walls of class 1 [J/K]
  double L = 0.0;                 ///< sensible load of the room [W]
  double Ll = 0.0;                ///< latent load [W]
  bool on = false;                ///< the plant runs
};

/// What a room wants at an hour.
struct RoomHeat {
  double rmsens;  ///< internal sensible heat per floor area [W/m2]
  double rmlat;   ///< internal latent heat per floor area [W/m2]
  double rmtmp;   ///< set point [K]
  double rmhum;   ///< relative humidity [%]
  double vent;    ///< room volumes per hour
};

/// A building as its room balance sees it.
struct Room {
  double area;    ///< of a storey [m2]
  double floors;  ///< number of storeys
  double acflr;   ///< conditioned share of the floor area
  double rmtmp;   ///< set point [K]
};

/// Work arrays, sized once at the start.
struct Work {
  std::vector<Sums> sums;           ///< per building
  frame::PatchTable<double> wants;  ///< per building: rows of the elements of RoomHeat
  std::vector<std::int32_t> pos;    ///< per patch: position class of its material, 0 for none
  std::vector<double> packed;       ///< the sums as the process layer exchanges them
};

/// Sizes the work arrays and notes each patch's position class.
void prepare(frame::Log& log, const tsrf_module_patch::Data& patch,
             const tsrf_module_matprp::Data& matprp, const tsrf_module_lyrstrct::Data& lyrstrct,
             const tsrf_module_bldng::Data& bldng, Work& work);

/// Warns, on one line, when the explicit exchange of room and slab grows without limit at a step
/// of `dt` [s].
void warn_of_step(frame::Log& log, double dt, const tsrf_module_bldng::Settings& settings);

/// One step of length `dt` [s] from `time` [s].
void tsrf_building(frame::Log& log, const frame::ProcessLayer& layer, double time, double dt,
                   const tsrf_module_patch::Data& patch, const tsrf_module_lyrstrct::Data& lyrstrct,
                   const tsrf_module_data::Data& state, const tsrf_module_rmheat::Data& rmheat,
                   const tsrf_module_aircon::Data& aircon, const tsrf_module_bldcmm::Data& bldcmm,
                   tsrf_module_bldng::Data& bldng, Work& work);

/// Slab, room and load of one building over a step; returns whether the plant runs, which clock
/// and run table decide alone. `sums.L` takes what the slab and the pull-down add.
bool cal_rmtmp(const tsrf_module_bldng::Settings& settings, double time, double dt,
               const Room& room, const tsrf_module_aircon::RunTable& runs, Sums& sums, double& Tr,
               double& Tm);

/// The share of the heat of a building of use `BldCD` that a patch of class `pos` releases.
double release_share(std::int32_t BldCD, std::int32_t pos, double area, const Sums& sums);

}  // namespace tsrf_building
