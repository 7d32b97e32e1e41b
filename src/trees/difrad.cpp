#include "trees/difrad.hpp"

#include <array>
#include <cmath>
#include <cstddef>

namespace jmk {

namespace {

using tsrf_module_jumoku::BandFluxes;
using tsrf_module_jumoku::CellWeights;
using tsrf_module_jumoku::kFaces;

/// The part of `in`, six fluxes by face, that a cell stops.
inline double stopped_of(const CellWeights& w, const double* in) {
  double sum = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    const double both = in[2 * a] + in[2 * a + 1];
    sum += both - w.through[a] * both;
  }
  return sum;
}

/// Passes the fluxes of one cell on; true when one of them changes beyond the tolerance.
inline bool visit(std::size_t c, const std::int32_t* next, const Tolerance& tolerance,
                  const CellWeights& w, double source, double scatter, double* entering) {
  const double* in = entering + c * kFaces;
  const std::int32_t* to = next + c * kFaces;
  const double own = scatter * stopped_of(w, in) + source;
  bool changed = false;
  for (std::size_t a = 0; a < 3; ++a) {
    const double given = w.share[a] * own;
    // What enters by one face leaves by the other.
    const std::array<double, 2> out{w.through[a] * in[2 * a + 1] + given,
                                    w.through[a] * in[2 * a] + given};
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

double stopped(const BandFluxes& band, std::size_t c) {
  return stopped_of(band.weights[c], band.entering.data() + c * kFaces);
}

std::int32_t jmk_difrad_flux(frame::Log& log, const tsrf_module_jumoku::Data& data,
                             std::int32_t LOPRAD, const Tolerance& tolerance, BandFluxes& band) {
  const std::size_t n = data.cells.count();
  for (std::size_t o = 0; o < data.outer.size(); ++o) {
    band.entering[data.outer[o].entry()] = band.outside[o];
  }
  const auto cell = [&](std::size_t c) {
    return visit(c, data.cells.next.data(), tolerance, band.weights[c], band.source[c],
                 band.scatter, band.entering.data());
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
