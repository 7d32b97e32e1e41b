#include "trees/htrans.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/namelist.hpp"
#include "trees/jmk_group.hpp"

namespace jmk_module_htrans {

namespace {

constexpr double kReference = 273.0;              // temperature of the reference pressure [K]
constexpr double kReferencePressure = 611.0;      // of saturated vapour [Pa]
constexpr double kLogTiny = -46.051701859880914;  // ln(1e-20)

frame::Check known_convection(const std::int32_t& unit) {
  return [&unit]() -> std::vector<std::string> {
    if (unit >= 1 && unit <= 3) return {};
    return {frame::items("unith =", unit)};
  };
}

frame::Check above(std::string_view words, const double& value, const double& bound,
                   std::string_view rule) {
  return [words, &value, &bound, rule]() -> std::vector<std::string> {
    if (value > bound) return {};
    return {frame::items(words, value), std::string(rule)};
  };
}

/// Refuses what no leaf has, once another rule holds.
frame::Check of_leaves(std::string_view words, const double& value, frame::Check first = {}) {
  return [words, &value, first = std::move(first)]() -> std::vector<std::string> {
    std::vector<std::string> broken = first ? first() : std::vector<std::string>{};
    if (broken.empty() && !(value <= jmk::kMostOfLeaves)) {
      broken = {frame::items(words, value), std::string(jmk::kMostOfLeavesRule)};
    }
    return broken;
  };
}

/// The constants of the formulas that no leaf changes.
struct Fixed {
  explicit Fixed(const Data& data)
      : Ra(data.constants.gas / data.constants.molar_air),
        Rv(data.constants.gas / data.constants.molar_water),
        ratio(data.constants.molar_water / data.constants.molar_air),
        c(data.constants.latent_heat / (kReference * Rv)),
        r((data.stomata.TH - data.stomata.TO) / (data.stomata.TO - data.stomata.TL)),
        f1(std::exp(kLogTiny / r)),
        f2(std::exp(kLogTiny / data.stomata.B2)) {}
  double Ra, Rv;  // gas constants of dry air and vapour [J/kg K]
  double ratio;   // of the molar masses
  double c;       // slope of ln(es) against -273/T
  double r;       // exponent of the temperature response
  double f1, f2;  // floors that keep a power of 0 away
};

/// Widening of the stomata with the leaf's temperature, 1 at TO.
double temperature_factor(const Stomata& s, const Fixed& fixed, double T) {
  const double Tc = std::clamp(T, s.TL, s.TH);
  return std::pow(std::max(fixed.f1, (s.TH - Tc) / (s.TH - s.TO)), fixed.r) * (Tc - s.TL) /
         (s.TO - s.TL);
}

/// Closing of the stomata with the vapour pressure deficit [Pa].
double humidity_factor(const Stomata& s, const Fixed& fixed, double VPD) {
  if (s.MDLVPD == 1) return std::max(0.0, 1.0 - VPD * s.B1);
  return 1.0 / (1.0 + std::pow(std::max(fixed.f2, VPD / s.B1), s.B2));
}

/// Conductance that the light allows.
double light_conductance(const Data& data, double density, double PAR) {
  const Stomata& s = data.stomata;
  const bool in_moles = s.UNITGS == 1;
  const double K = s.GSMAX / (in_moles ? 4.0 * s.APAR : s.APAR);
  return (in_moles ? data.constants.molar_air : density) * 0.5 * s.GSMAX * PAR / (K + PAR);
}

double convection(const Settings& s, double U, double density, double cp) {
  const double linear = s.HTRA1 * U + s.HTRA0;
  const double bulk = s.HTRAC * density * U * cp;
  if (s.UNITH == 1) return linear;
  if (s.UNITH == 2) return bulk;
  return std::min(linear, bulk);
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(jmk_module_htrans)(inputdata)");
  Settings& h = data.settings;
  frame::Group("JMK_HTRANS", {{"UNITH", h.UNITH, known_convection(h.UNITH)},
                              {"HTRA0", h.HTRA0, frame::not_negative("htra0 =", h.HTRA0)},
                              {"HTRA1", h.HTRA1, frame::not_negative("htra1 =", h.HTRA1)},
                              {"HTRAC", h.HTRAC, frame::not_negative("htrac =", h.HTRAC)},
                              {"LOPHBL", h.LOPHBL, frame::positive("lophbl =", h.LOPHBL)},
                              {"AEPSHB", h.AEPSHB, frame::positive("aepshb =", h.AEPSHB)},
                              {"REPSHB", h.REPSHB, frame::positive("repshb =", h.REPSHB)}})
      .read(log, control, jmk::kReader);
  Stomata& s = data.stomata;
  frame::Group(
      "JMK_STOMATAL",
      {{"UNITGS", s.UNITGS},
       {"MDLVPD", s.MDLVPD},
       {"GSMAX", s.GSMAX, of_leaves("gsmax =", s.GSMAX, frame::positive("gsmax =", s.GSMAX))},
       {"APAR", s.APAR, frame::positive("apar =", s.APAR)},
       {"TL", s.TL, frame::positive("tl =", s.TL)},
       {"TO", s.TO, above("to =", s.TO, s.TL, "it must be > tl")},
       {"TH", s.TH, above("th =", s.TH, s.TO, "it must be > to")},
       {"B1", s.B1, frame::positive("b1 =", s.B1)},
       {"B2", s.B2, frame::positive("b2 =", s.B2)},
       {"BETA", s.BETA, of_leaves("beta =", s.BETA)},
       {"LE", s.LE, frame::positive("le =", s.LE)}})
      .read(log, control, jmk::kReader);
}

void set_constants(frame::Log& log, const Constants& constants, Data& data) {
  const frame::Tag tag(log, "(jmk_module_htrans)(set_constants)");
  for (const double mass : {constants.molar_air, constants.molar_water}) {
    if (!(mass > 0.0)) log.data_error(frame::items("molar mass =", mass), "it must be > 0");
  }
  data.constants = constants;
}

void check_selectors(frame::Log& log, const Stomata& s) {
  if (s.UNITGS != 1 && s.UNITGS != 2) {
    log.program_error(frame::items("unitgs =", s.UNITGS), "(jmk_module_htrans)(htrnscoef)");
  }
  if (s.MDLVPD != 1 && s.MDLVPD != 4) {
    log.program_error(frame::items("mdlvpd =", s.MDLVPD), "(jmk_module_htrans)(htrnscoef)");
  }
}

void htrnscoef(frame::Log& log, const Data& data, double cp, const LeavesInAir& leaves,
               const Transfer& out) {
  check_selectors(log, data.stomata);
  const Fixed fixed(data);
  const Stomata& s = data.stomata;
  for (std::size_t n = 0; n < leaves.T.size(); ++n) {
    const double Ta = leaves.Ta[n];
    const double T = leaves.T[n];
    const double w = std::clamp(leaves.q[n], 0.0, 1.0);
    const double density = leaves.p[n] / (((1.0 - w) * fixed.Ra + fixed.Rv * w) * Ta);
    const double es = kReferencePressure * std::exp(fixed.c * (1.0 - kReference / T));
    const double qs = fixed.ratio * es / leaves.p[n];
    const double h = convection(data.settings, leaves.U[n], density, cp);
    out.qs[n] = qs;
    out.dqsdT[n] = qs * kReference * fixed.c / (T * T);
    out.h[n] = h;
    if (s.BETA >= 0.0) {
      out.e[n] = h * (s.BETA / s.LE) / cp;
      continue;
    }
    const double VPD = std::max(0.0, es - fixed.Rv * w * density * Ta);
    const double air = h / (cp * s.LE);
    const double stomata = light_conductance(data, density, leaves.PAR[n]) *
                           temperature_factor(s, fixed, T) * humidity_factor(s, fixed, VPD);
    // The resistances of boundary layer and stomata add.
    out.e[n] = air * stomata / std::max(1e-20, air + stomata);
  }
}

}  // namespace jmk_module_htrans
