// moist_air: saturation over water, humidity, and the constants of air and radiation that go with
// them.
//
// The one place of what weather, surfaces, leaves and rooms know about moist air, so that they
// agree to the last bit. Called wherever vapour pressure or humidity is turned into the other.
#pragma once

namespace moist_air {

inline constexpr double kStefanBoltzmann = 5.6704e-8;         ///< [W/m2 K4]
inline constexpr double kLatentHeat = 2501000.0;              ///< of vaporisation [J/kg]
inline constexpr double kAirHeat = 1005.0;                    ///< specific heat of air [J/kg K]
inline constexpr double kVapourRatio = 0.6219790084242508;    ///< molar mass of water over air
inline constexpr double kVapourDeficit = 0.3780209915757492;  ///< 1 - kVapourRatio

/// Saturation vapour pressure [Pa] and its slope [Pa/K].
struct Saturation {
  double es;
  double desdT;
};
/// Saturation over water at T [K].
Saturation satvap(double T);
/// Specific humidity from vapour pressure over pressure.
inline double humidity_of(double ratio) {
  return kVapourRatio * ratio / (1.0 - kVapourDeficit * ratio);
}

}  // namespace moist_air
