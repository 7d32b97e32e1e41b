// jmk_module_radiat: how leaves reflect, transmit and emit radiation.
//
// The optical table of leaves by band (visible, near infra-red, long-wave), their emission, and the
// settings of the exchange of scattered light among leaf cells (group JMK_RADIAT).
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace jmk_module_radiat {

enum Band : std::size_t { kVisible, kNearInfrared, kLongWave, kBands };
inline constexpr std::size_t kSolarBands = 2;

struct BandOptics {
  double rho;        ///< reflectance of a leaf
  double tau;        ///< transmittance of a leaf
  double direct;     ///< the band's share of the direct beam
  double scattered;  ///< the band's share of scattered light
  double emissivity;

  /// What a leaf does not let through.
  [[nodiscard]] double stopped() const { return std::clamp(1.0 - tau, 0.0, 1.0); }
  /// Extinction of a field through leaves of density `lad` whose projection is one half [1/m].
  [[nodiscard]] double extinction(double lad) const { return lad * 0.5 * stopped(); }
  /// The part of the stopped light that is scattered; the rest stays in the leaf.
  [[nodiscard]] double scatter() const {
    return stopped() <= 0.0 ? 0.0 : rho / std::max(rho, stopped());
  }
};
using Optics = std::array<BandOptics, kBands>;
inline constexpr Optics kLeafOptics{
    {{0.1, 0.1, 0.425, 0.7, 0.0}, {0.5, 0.4, 0.575, 0.3, 0.0}, {0.1, 0.0, 0.0, 0.0, 0.9}}};

struct Settings {
  double SUN0 = 1365.0;       ///< solar constant [W/m2]
  std::int32_t LOPRAD = 100;  ///< most sweeps of the exchange among leaf cells
  double AEPSRD = 1e-12;      ///< its absolute tolerance [W]
  double REPSRD = 1e-10;      ///< its relative tolerance
  double AEPSRD2 = 1e-12;     ///< the same within the loop of leaf temperatures
  double REPSRD2 = 0.0001;
  std::int32_t MDLSCT = 0;  ///< scattering in a cell: 0 once, 1 closed (trees/scattering.hpp)
};

struct Data {
  Settings settings;
  Optics optics = kLeafOptics;
};

/// Reads group JMK_RADIAT.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);

/// Emission of leaves of density `L` at temperature `T` per volume [W/m3] into one of the two
/// senses of an axis, and its slope `dEdT` [W/m3 K]. Arrays of one length.
void leaf_emission(const BandOptics& optics, std::span<const double> L, std::span<const double> T,
                   std::span<double> E, std::span<double> dEdT);

}  // namespace jmk_module_radiat
