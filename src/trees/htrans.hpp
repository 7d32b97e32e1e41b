// jmk_module_htrans: exchange of heat and moisture between leaves and air.
//
// Gives the transfer coefficients of leaves from air, light and leaf temperature: forced
// convection, and the boundary layer in series with stomata whose opening depends on light,
// temperature and the dryness of the air (Jarvis 1976, with the vapour pressure deficit as Lohammar
// et al. 1980). Serves the one-layer tree and the canopy of cells alike. Settings: groups
// JMK_HTRANS and JMK_STOMATAL, read in every run.
#pragma once

#include <cstdint>
#include <span>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace jmk_module_htrans {

struct Settings {
  std::int32_t UNITH = 3;     ///< convection: 1 linear in wind, 2 bulk, 3 the lesser of both
  double HTRA0 = 6.79;        ///< linear form: at calm [W/m2 K]
  double HTRA1 = 5.99;        ///< linear form: per wind speed [J/m3 K]
  double HTRAC = 0.03;        ///< bulk form: coefficient [-]
  std::int32_t LOPHBL = 100;  ///< most passes of a leaf's heat balance
  double AEPSHB = 1e-12;      ///< its absolute tolerance [K]
  double REPSHB = 0.0001;     ///< its relative tolerance [-]
};

struct Stomata {
  std::int32_t UNITGS = 2;  ///< light response: 1 in moles, 2 in speeds
  std::int32_t MDLVPD = 4;  ///< response to dry air: 1 linear, 4 hyperbolic
  double GSMAX = 0.01152;   ///< greatest conductance
  double APAR = 0.00031;    ///< slope of the light response in the dark
  double TL = 284.7;        ///< closed below [K]
  double TO = 305.72;       ///< widest at [K]
  double TH = 322.65;       ///< closed above [K]
  double B1 = 3830.0;       ///< response to the vapour pressure deficit
  double B2 = 2.24;         ///< its exponent
  double BETA = -1.0;       ///< fixed wetness; negative: the stomata decide
  double LE = 1.0;          ///< ratio of the transfer of heat to that of moisture
};

struct Constants {
  double gas = 8.314;              ///< [J/mol K]
  double latent_heat = 2501000.0;  ///< [J/kg]
  double molar_air = 0.028964;     ///< [kg/mol]
  double molar_water = 0.018015;   ///< [kg/mol]
};

struct Data {
  Settings settings;
  Stomata stomata;
  Constants constants;
};

/// Reads groups JMK_HTRANS and JMK_STOMATAL.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Takes the constants that the control data give. Masses that are not positive are data errors.
void set_constants(frame::Log& log, const Constants& constants, Data& data);

/// Leaves and the air round them, arrays of one length.
struct LeavesInAir {
  std::span<const double> U;    ///< wind speed [m/s]
  std::span<const double> Ta;   ///< air temperature [K]
  std::span<const double> p;    ///< air pressure [Pa]
  std::span<const double> q;    ///< specific humidity of the air [kg/kg]
  std::span<const double> PAR;  ///< absorbed visible light per leaf area [W/m2]
  std::span<const double> T;    ///< leaf temperature [K]
};
/// What `htrnscoef` finds for each leaf.
struct Transfer {
  std::span<double> h;      ///< heat coefficient [W/m2 K]
  std::span<double> e;      ///< moisture coefficient [kg/m2 s]
  std::span<double> qs;     ///< specific humidity at saturation [kg/kg]
  std::span<double> dqsdT;  ///< its slope [1/K]
};

/// A selector UNITGS or MDLVPD that is none of the known ones stops the run.
void check_selectors(frame::Log& log, const Stomata& stomata);

/// Transfer coefficients of leaves; `cp` is the specific heat of air [J/kg K]. Checks the
/// selectors first.
void htrnscoef(frame::Log& log, const Data& data, double cp, const LeavesInAir& leaves,
               const Transfer& out);

}  // namespace jmk_module_htrans
