#include "trees/scattering.hpp"

#include <cmath>
#include <cstddef>

#include "trees/expfnx.hpp"

namespace jmk {

namespace {

using Axes = std::array<double, 3>;

/// Scattered once; what is stopped again stays.
void scatter_once(double r, const Axes& u, CellWeights& w) {
  for (std::size_t a = 0; a < 3; ++a) {
    const double ub = u[(a + 1) % 3];
    const double uc = u[(a + 2) % 3];
    const double t = 1.0 - w.stop[a];
    w.ahead[a] = t;
    w.back[a] = r * w.stop[a] * (1.0 + t) / 10.0;
    w.aside[a] = r * u[a] / 5.0;
    w.kept[a] = w.stop[a] * (1.0 - r * ((1.0 + t) / 2.0 + 2.0 * ub + 2.0 * uc) / 5.0);
    const double turned = w.stop[a] / 2.0 + 2.0 * (1.0 - ub) + 2.0 * (1.0 - uc);
    w.emit[a] = u[a] * (1.0 + r * turned / 5.0) / 6.0;
  }
}

/// Scattered until all of it has left or stays.
void scatter_closed(double r, const Axes& u, CellWeights& w) {
  const double escaping = (u[0] + u[1] + u[2]) / 3.0;
  const double repeated = 1.0 / (1.0 - r * (1.0 - escaping));
  for (std::size_t a = 0; a < 3; ++a) {
    w.emit[a] = repeated * u[a] / 6.0;
    w.aside[a] = r * w.emit[a];
    w.back[a] = w.stop[a] * w.aside[a];
    w.ahead[a] = 1.0 - w.stop[a] + w.back[a];
    w.kept[a] = w.stop[a] * (1.0 - r) * repeated;
  }
}

}  // namespace

CellWeights cell_weights(std::int32_t MDLSCT, const jmk_module_radiat::BandOptics& optics,
                         double lad, const std::array<double, 3>& width) {
  const double k = optics.extinction(lad);
  CellWeights w;
  Axes u{};
  for (std::size_t a = 0; a < 3; ++a) {
    w.stop[a] = -std::expm1(-k * width[a]);
    u[a] = jmk_utl_expfnx(-k * width[a]);
  }
  if (MDLSCT == 1) {
    scatter_closed(optics.scatter(), u, w);
  } else {
    scatter_once(optics.scatter(), u, w);
  }
  w.emit_kept = 1.0 - 2.0 * (w.emit[0] + w.emit[1] + w.emit[2]);
  return w;
}

}  // namespace jmk
