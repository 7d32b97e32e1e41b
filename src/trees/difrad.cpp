#include "trees/difrad.hpp"

#include <array>
#include <cmath>

namespace jmk {

namespace {

using tsrf_module_jumoku::BandFluxes;
using tsrf_module_jumoku::kFaces;

/// Passes the fluxes of one cell on; true when one of them changes beyond the tolerance.
inline bool visit(std::size_t c, const std::int32_t* next, const Tolerance& tolerance,
                  const CellWeights& w, double source, double* entering) {
  const double* in = entering + c * kFaces;
  const std::int32_t* to = next + c * kFaces;
  std::array<double, 3> stopped{};
  for (std::size_t a = 0; a < 3; ++a) stopped[a] = w.stop[a] * (in[2 * a] + in[2 * a + 1]);
  bool changed = false;
  for (std::size_t a = 0; a < 3; ++a) {
    const double own =
        w.aside[a] * (stopped[(a + 1) % 3] + stopped[(a + 2) % 3]) + w.emit[a] * source;
    // What enters by one face leaves by the other, or comes back.
    const double low = in[2 * a];
    const double high = in[2 * a + 1];
    const std::array<double, 2> out{w.ahead[a] * high + w.back[a] * low + own,
                                    w.ahead[a] * low + w.back[a] * high + own};
    for (std::size_t side = 0; side < 2; ++side) {
      double& place = entering[to[2 * a + side]];
      const double change = std::fabs(out[side] - place);
      changed |= !(change <= tolerance.absolute + tolerance.relative * std::fabs(out[side]));
      place = out[side];
    }
  }
  return changed;
}

}  // namespace

double kept(const tsrf_module_jumoku::Data& data, const BandFluxes& band, std::size_t c) {
  const CellWeights& w = data.weights(band, c);
  const double* in = band.entering.data() + c * kFaces;
  double sum = w.emit_kept * band.source[c];
  for (std::size_t a = 0; a < 3; ++a) sum += w.kept[a] * (in[2 * a] + in[2 * a + 1]);
  return sum;
}

std::int32_t jmk_difrad_flux(frame::Log& log, const tsrf_module_jumoku::Data& data,
                             std::int32_t LOPRAD, const Tolerance& tolerance, BandFluxes& band) {
  const std::size_t n = data.cells.count();
  for (std::size_t o = 0; o < data.outer.size(); ++o) {
    band.entering[data.outer[o].entry()] = band.outside[o];
  }
  const auto cell = [&](std::size_t c) {
    return visit(c, data.cells.next.data(), tolerance, data.weights(band, c), band.source[c],
                 band.entering.data());
  };
  for (std::int32_t sweep = 1; sweep <= LOPRAD; ++sweep) {
    bool changed = false;
    for (std::size_t c = 0; c < n; ++c) changed |= cell(c);
    for (std::size_t c = n; c-- > 0;) changed |= cell(c);
    if (!changed) return sweep;
  }
  log.program_error("### program error -1- (jmk_difrad_flux)");
}

}  // namespace jmk
