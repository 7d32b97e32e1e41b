#include "surface/window.hpp"

#include <cmath>

namespace tsrf_window {

namespace {

constexpr std::int32_t kGlass = 3;  // position class

bool is_glass(std::size_t p, const tsrf_module_lyrstrct::Data& lyrstrct,
              const tsrf_module_matprp::Data& matprp) {
  if (lyrstrct.building[p] < 0 || lyrstrct.material[p] < 0) return false;
  return matprp.materials[static_cast<std::size_t>(lyrstrct.material[p])].pos == kGlass;
}

}  // namespace

void set_glass(frame::Log& log, const tsrf_module_lyrstrct::Data& lyrstrct,
               const tsrf_module_matprp::Data& matprp, const tsrf_module_data::Data& state,
               Glass& glass) {
  const frame::Tag tag(log, "(window)(set_glass)");
  frame::allocating(log, "glass", frame::bytes_of<double>(state.nlyr.size()), [&] {
    glass = {};
    for (std::size_t p = 0; p < state.nlyr.size(); ++p) {
      if (!is_glass(p, lyrstrct, matprp)) continue;
      glass.patches.push_back(static_cast<std::int32_t>(p));
      for (std::int32_t k = 0; k < state.nlyr[p]; ++k) {
        glass.passes.push_back(std::exp(-state.dzl(p, k) * state.extc(p, k)));
      }
    }
  });
}

void window(const Glass& glass, const tsrf_module_srfprp::Data& srfprp,
            const tsrf_module_data::Data& state, std::span<const double> Jdir,
            frame::PatchTable<double>& qlayer, std::span<double> qtrans) {
  const double* passes = glass.passes.data();
  for (const std::int32_t patch : glass.patches) {
    const auto p = static_cast<std::size_t>(patch);
    double beam = (1.0 - srfprp.alb[static_cast<std::size_t>(state.isrf[p])]) * Jdir[p];
    for (std::int32_t k = 0; k < state.nlyr[p]; ++k) {
      const double behind = beam * *passes++;
      qlayer(p, k) = behind - beam;
      beam = behind;
    }
    qtrans[p] = beam;
  }
}

}  // namespace tsrf_window
