// tsrf_module_bldng: the buildings behind the patches (group TSRF_BLDNG, Building file).
//
// Owns the switch and constants of the building model, what the Building file tells of each
// building, the rooms' state, and the arrays through which patches and rooms exchange heat within
// a step. Only buildings that a patch names are kept; positions of buildings refer to those. Read
// at the start, and again for each month of a dated run. With LCBLD <= 0 only the settings are
// filled.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "buildings/rmheat.hpp"
#include "frame/array_list.hpp"
#include "frame/code_index.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/patch.hpp"

namespace tsrf_module_bldng {

/// Group TSRF_BLDNG.
struct Settings {
  std::int32_t LCBLD = 0;  ///< positive: the building model is on
  double BETA = 0.6;       ///< factor on the ventilation load
  double HTRNS = 8.0;      ///< room-side heat transfer coefficient [W/m2 K]
  double HEIGHT = 3.0;     ///< height of a storey [m]
  double BHRED = 0.0;      ///< no effect; existing control data have it
  double DHRED = 0.0;      ///< no effect
};

/// Heat budget of a building [W]: elements 1 to 14 at positions 0 to 13.
using Budget = std::array<double, 14>;

struct Data {
  Settings settings;

  // Per building, as read.
  std::int32_t nbld = 0;  ///< number of buildings
  std::vector<std::int32_t> BldID;
  std::vector<std::int32_t> BldCD;       ///< building use, 1 to 8; the BCD of the room schedules
  std::vector<std::int32_t> Strct;       ///< structure code
  std::vector<std::int32_t> floor;       ///< number of floors
  std::vector<double> area;              ///< floor area of a storey [m2]
  std::vector<double> acflr;             ///< air-conditioned share of the floor area, 0..1
  std::vector<double> shf;               ///< sensible share of the heat given off, 0..1
  std::vector<double> cop;               ///< coefficient of performance of the air-conditioning
  std::vector<std::int32_t> no_release;  ///< not 0: gives no heat to its patches
  frame::CodeIndex by_bldid;             ///< BldID -> building

  // Per building, state kept over steps and in the restart file.
  std::vector<double> Tr;  ///< room temperature [K]
  std::vector<double> Tm;  ///< slab temperature [K]

  // Exchange within a step.
  std::vector<double> qtrans;    ///< per patch: sun that a window lets into the room [W/m2]
  std::vector<double> qroom;     ///< per patch: convective flux into the room [W/m2]
  std::vector<double> sensible;  ///< per patch: sensible heat released outside [W]
  std::vector<double> latent;    ///< per patch: latent heat released outside [W]
  std::vector<Budget> bldat;     ///< per building
};

/// Reads group TSRF_BLDNG.
void read_nmlst_bldng(frame::Log& log, frame::TextInput& control, Data& data);

/// Reads the Building file: the lines whose BldID some patch names. Called again with filled `data`
/// it takes the new values, and fails when buildings or their codes differ from what `data` holds.
void read_bldng(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                Data& data);

/// Each building's (BldCD, Strct) must be a pair of the schedule data set `name`.
void check_bldcd(frame::Log& log, std::string_view name, const Data& data,
                 const tsrf_module_rmheat::Data& rmheat);

/// Takes the arrays of the exchange at the first call and clears them at each: a step starts from
/// zero.
void bldng_alloc_tmpdata(frame::Log& log, std::int32_t mpatch, Data& data);

/// Inner film coefficient [W/m2 K] of all building surfaces.
void set_hin(const tsrf_module_patch::Data& patch, const Data& data, std::span<double> hin);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_bldng
