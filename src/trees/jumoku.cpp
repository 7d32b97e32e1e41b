#include "trees/jumoku.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "inputs/moist_air.hpp"
#include "trees/expfnx.hpp"

namespace jmk {

namespace {

using jmk_module_radiat::BandOptics;
using moist_air::kLatentHeat;
using tsrf_module_phydat::SkyFluxes;
using tsrf_module_phydat::SunVector;

/// A flux followed through the layer and, reflected by the ground, back up.
struct Passage {
  double entering = 0.0;
  double at_ground = 0.0;
  double scattered_down = 0.0;  ///< turned back out of the layer on the way down
  double leaving = 0.0;         ///< after the way back, were the ground white
  double scattered_up = 0.0;    ///< turned back on the way up

  [[nodiscard]] double absorbed_down() const { return entering - (scattered_down + at_ground); }
  [[nodiscard]] double absorbed_up() const { return at_ground - (leaving + scattered_up); }
};

/// `k` extinction and `s` scattering per length, `path` the length through the layer, `detour` the
/// length in and, once scattered, out again.
Passage pass(double flux, double k, double s, double path, double detour) {
  const double through = std::exp(-k * path);
  const double turned = jmk_utl_expfnx(-detour * k) * path * s;
  Passage p;
  p.entering = flux;
  p.at_ground = through * flux;
  p.scattered_down = turned * flux;
  p.leaving = through * p.at_ground;
  p.scattered_up = turned * p.at_ground;
  return p;
}

double scattering(const BandOptics& band, double LAD) { return band.rho * 0.5 * LAD; }

/// Short-wave light in the layer.
struct ShortWave {
  double direct = 0.0;            ///< beneath the tree, normal to the sun
  double scattered = 0.0;         ///< beneath the tree
  double absorbed = 0.0;          ///< by the leaves, from above
  double absorbed_visible = 0.0;  ///< the visible part of it
  double absorbed_back = 0.0;     ///< by the leaves, were the ground white
};

ShortWave short_wave(const jmk_module_radiat::Optics& optics, const SunVector& sun, double cosi,
                     const SkyFluxes& above, const SimpleTree& tree) {
  ShortWave light;
  const double H = tree.H;
  for (std::size_t b = 0; b < jmk_module_radiat::kSolarBands; ++b) {
    const BandOptics& band = optics[b];
    const double k = band.extinction(tree.LAD);
    const double s = scattering(band, tree.LAD);
    Passage beam;
    if (sun.z >= 1e-20) {
      const double X = std::fabs(sun.x / sun.z) * H;
      const double Y = std::fabs(sun.y / sun.z) * H;
      const double slant = std::sqrt(H * H + X * X + Y * Y);
      beam = pass(band.direct * above.direct, k, s, slant, H + slant);
    }
    const Passage sky = pass(band.scattered * above.scattered, k, s, H, 2.0 * H);
    const double absorbed = beam.absorbed_down() * cosi + sky.absorbed_down();
    light.direct += beam.at_ground;
    light.scattered += sky.at_ground;
    light.absorbed += absorbed;
    light.absorbed_back += beam.absorbed_up() * cosi + sky.absorbed_up();
    if (b == jmk_module_radiat::kVisible) light.absorbed_visible = absorbed;
  }
  return light;
}

/// Long-wave radiation in the layer: what comes from sky and ground stands, what the leaves emit
/// follows their temperature.
struct LongWave {
  LongWave(const BandOptics& band, double atmosphere, const Ground& ground, const SimpleTree& tree)
      : k(band.extinction(tree.LAD)),
        transmitted(std::exp(-k * tree.H)),
        turned(jmk_utl_expfnx(-2.0 * tree.H * k) * tree.H * scattering(band, tree.LAD)),
        from_sky(transmitted * atmosphere),
        from_ground(turned * ground.emission),
        absorbed(atmosphere - from_sky - turned * atmosphere + ground.emission -
                 ground.emission * transmitted - from_ground),
        caught((1.0 - transmitted - turned) * (1.0 - ground.emissivity)),
        emission_factor(0.5 * tree.LAD * (band.emissivity * moist_air::kStefanBoltzmann)) {
    const double u = jmk_utl_expfnx(-k * tree.H);
    path = (u + band.scatter() * 0.5 * (1.0 - transmitted) * u) * tree.H;
  }
  /// Emission per temperature and path [W/m3 K].
  [[nodiscard]] double c(double T) const { return emission_factor * (T * T * T); }
  /// Emission out of one side of the layer [W/m2].
  [[nodiscard]] double emitted(double T) const { return T * c(T) * path; }
  /// What comes down to the ground [W/m2].
  [[nodiscard]] double at_ground(double T) const { return from_sky + from_ground + emitted(T); }
  /// What the ground reflects of sky and leaves and the leaves catch [W/m2].
  [[nodiscard]] double back_from_ground(double T) const { return caught * (from_sky + emitted(T)); }

  double k, transmitted, turned;
  double from_sky, from_ground;  ///< reaching the ground
  double absorbed;               ///< of sky and ground, by the leaves
  double caught;                 ///< share of a flux down that is reflected and then absorbed
  double emission_factor;
  double path = 0.0;  ///< effective length of the emission, its own scattering included
};

struct Coefficients {
  double h, e, qs, dqsdT;
};

Coefficients coefficients(frame::Log& log, const jmk_module_htrans::Data& htrans, const Air& air,
                          double PAR, double T) {
  const auto one = [](auto& value) { return std::span(&value, 1); };
  Coefficients out{};
  htrnscoef(log, htrans, moist_air::kAirHeat,
            {one(air.U), one(air.T), one(air.p), one(air.q), one(PAR), one(T)},
            {one(out.h), one(out.e), one(out.qs), one(out.dqsdT)});
  return out;
}

/// Leaf temperature by Newton's method; the long-wave flux at the ground belongs to the last
/// temperature but one, which is where the balance was taken.
double close_balance(frame::Log& log, const jmk_module_htrans::Data& htrans, const LongWave& lw,
                     const ShortWave& light, double albedo, const Air& air, SimpleTree& tree) {
  const jmk_module_htrans::Settings& s = htrans.settings;
  const double PAR = light.absorbed_visible / (tree.LAD * tree.H);
  const double sides = 2.0 * tree.LAD;
  const double radiation = light.absorbed_back * albedo + lw.absorbed + light.absorbed;
  for (std::int32_t n = 1; n <= s.LOPHBL; ++n) {
    const double T = tree.T;
    const Coefficients x = coefficients(log, htrans, air, PAR, T);
    const double R =
        radiation - 2.0 * lw.emitted(T) + lw.back_from_ground(T) +
        ((air.T - T) * x.h * sides + (air.q - x.qs) * sides * x.e * kLatentHeat) * tree.H;
    const double D = 4.0 * lw.c(T) * 2.0 * lw.path +
                     (x.h * sides + kLatentHeat * x.e * sides * x.dqsdT) * tree.H;
    const double change = R / D;
    tree.T = T + change;
    if (std::fabs(change) <= s.REPSHB * T + s.AEPSHB) {
      log.screen("loop of heat balance =", n);
      return lw.at_ground(T);
    }
  }
  log.program_error("### program error -1- (jumoku)");
}

}  // namespace

SkyFluxes jumoku(frame::Log& log, const jmk_module_htrans::Data& htrans,
                 const jmk_module_radiat::Data& radiat, const SunVector& sun, const Ground& ground,
                 const Air& air, const SkyFluxes& above, SimpleTree& tree) {
  if (!(tree.LAD * tree.H > 0.0)) return above;
  const ShortWave light = short_wave(radiat.optics, sun, ground.cosi, above, tree);
  const LongWave lw(radiat.optics[jmk_module_radiat::kLongWave], above.longwave, ground, tree);
  const double down = close_balance(log, htrans, lw, light, ground.albedo, air, tree);
  return {light.direct, light.scattered, down};
}

}  // namespace jmk
