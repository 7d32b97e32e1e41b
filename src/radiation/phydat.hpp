// tsrf_module_phydat: site, sun position, sky model.
//
// The closed formulas that turn site, time and weather into the sun vector and the three sky
// fluxes. Settings: groups DATE_AND_PLACE and JMK_RADSKY.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <span>

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"

namespace tsrf_module_phydat {

inline constexpr double kNotGiven = std::numeric_limits<double>::lowest();

struct SunVector {
  double x = 0.0;  ///< to the east
  double y = 0.0;  ///< to the north
  double z = 0.0;  ///< up: sine of the altitude
};

/// Fluxes from the sky [W/m2].
struct SkyFluxes {
  double direct = 0.0;     ///< direct normal
  double scattered = 0.0;  ///< scattered, horizontal
  double longwave = 0.0;   ///< atmospheric long-wave
};

struct Data {
  std::array<std::int32_t, 4> DATE{};  ///< read, used by no formula
  double LAT = kNotGiven;              ///< [deg]
  double LNG = kNotGiven;              ///< [deg]
  double RANGLE = kNotGiven;           ///< rotation of the site [deg]
  double SDECL = kNotGiven;            ///< solar declination of the repeating day [deg]
  double SHANGLE = 0.0;                ///< added to the hour angle [deg]
  double PPA = kNotGiven;              ///< atmospheric transmittance now in force
  std::array<double, 12> PPA_MONTH{0.76, 0.73, 0.69, 0.64, 0.63, 0.61,
                                   0.61, 0.62, 0.65, 0.70, 0.74, 0.75};
  double EVAP = 0.0;  ///< read and dropped
  double TA = 0.0;    ///< read and dropped
};

void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Sun of the repeating day at `hour` (any value).
SunVector sunvec_oneday(const Data& data, double hour);
/// Sun of a dated run at model time `time` [s], in the stated single-precision roundings.
SunVector sunvec_mltday(frame::Log& log, tsrf_module_calendar::Data& calendar, const Data& data,
                        double time);
/// Clear-sky direct normal and scattered flux for the sine of the solar altitude.
SkyFluxes solar_split(const Data& data, double sinalt);
/// What the weather tells about the sky at one instant.
struct MeasuredSky {
  double temperature = 0.0;      ///< of the air [K]
  double vapour_pressure = 0.0;  ///< of the air [Pa]
  double SunRad = 0.0;           ///< global horizontal [W/m2]
  double SunJdn = -1.0;          ///< direct normal [W/m2]; negative: not measured
  double SunJsh = 0.0;           ///< scattered horizontal [W/m2], counts with SunJdn only
  double AtmJsh = 0.0;           ///< atmospheric long-wave [W/m2]; 0 or less: not measured
};
/// Fluxes from the sky: what was measured, and where only the global flux was, its clear-sky split.
SkyFluxes sky_fluxes(const Data& data, double sinalt, const MeasuredSky& measured);
/// Atmospheric long-wave flux (Brunt 1932) from air temperature [K] and vapour pressure [Pa].
double atm_longrad(double T, double e);
/// Takes the transmittance of `month` (1..12) into force.
void set_ppa(Data& data, std::int32_t month);

}  // namespace tsrf_module_phydat
