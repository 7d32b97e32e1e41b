// tsrf_module_fixtmp: patches whose temperature a rule sets.
//
// The far boundary (type 7), a surrounding district that is not modelled, takes the mean surface
// temperature of the district; solar panels (type 5) follow an empirical formula of air
// temperature, wind and irradiance. Settings: group TSRF_FIXTMP. Called by the step after the
// conduction.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/patch.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_module_fixtmp {

struct Data {
  double AA_PV = 51.0;  ///< first coefficient of the panel formula
  double BB_PV = 0.37;  ///< second coefficient

  std::vector<std::int32_t> far_boundary;  ///< patches of type 7
  std::vector<std::int32_t> panels;        ///< patches of type 5

  std::vector<double> tfix;  ///< per patch: fixed temperature [K]; not positive: none
  double tmean = 0.0;        ///< last area-weighted mean of the surface temperatures [K]
  double asum = 0.0;         ///< its area [m2]
};

/// Reads group TSRF_FIXTMP.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Finds the patches and takes the store of fixed temperatures; no file stands behind it.
void read_fixtmp(frame::Log& log, const tsrf_module_patch::Data& patch, Data& data);
/// Mean surface temperature of the computed patches, for the far boundary; a district without one
/// has no use for the mean and leaves it out.
void calc_temp_farbd(frame::Log& log, const tsrf_module_patch::Data& patch,
                     const tsrf_module_data::Data& state, Data& data);
/// Gives every patch with a fixed temperature that temperature, in all nodes.
void apply(const Data& data, tsrf_module_data::Data& state);
/// Temperatures of the solar panels, in all nodes, from the incident short-wave flux `Rs` [W/m2].
/// An implausible one ends the run with a report of step `iter`, PID and what it was made of.
void calc_temp_pv(frame::Log& log, std::int64_t iter, const tsrf_module_patch::Data& patch,
                  std::span<const double> Rs, const Data& data, tsrf_module_data::Data& state);

}  // namespace tsrf_module_fixtmp
