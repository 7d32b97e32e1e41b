#include "trees/radiat.hpp"

#include "frame/namelist.hpp"
#include "trees/jmk_group.hpp"

namespace jmk_module_radiat {

namespace {

constexpr double kHalfStefanBoltzmann = 2.8352e-8;  // [W/m2 K4]

frame::Check known_scattering(const std::int32_t& form) {
  return frame::holds<std::int32_t>(
      "mdlsct =", form, [](std::int32_t value) { return value == 0 || value == 1; },
      "it must be 0 or 1");
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(jmk_module_radiat)(inputdata)");
  Settings& s = data.settings;
  frame::Group("JMK_RADIAT", {{"SUN0", s.SUN0, frame::positive("sun0 =", s.SUN0)},
                              {"LOPRAD", s.LOPRAD, frame::positive("loprad =", s.LOPRAD)},
                              {"AEPSRD", s.AEPSRD, frame::positive("aepsrd =", s.AEPSRD)},
                              {"REPSRD", s.REPSRD, frame::positive("repsrd =", s.REPSRD)},
                              {"AEPSRD2", s.AEPSRD2},
                              {"REPSRD2", s.REPSRD2},
                              {"MDLSCT", s.MDLSCT, known_scattering(s.MDLSCT)}})
      .read(log, control, jmk::kReader);
}

void leaf_emission(const BandOptics& optics, std::span<const double> L, std::span<const double> T,
                   std::span<double> E, std::span<double> dEdT) {
  for (std::size_t n = 0; n < T.size(); ++n) {
    const double cube = L[n] * kHalfStefanBoltzmann * optics.emissivity * (T[n] * T[n] * T[n]);
    E[n] = cube * T[n];
    dEdT[n] = 4.0 * cube;
  }
}

}  // namespace jmk_module_radiat
