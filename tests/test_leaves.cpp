// Leaves: the layer functions, the transfer coefficients and the one-layer tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <span>
#include <string>

#include "recorded_log.hpp"
#include "trees/expfnx.hpp"
#include "trees/htrans.hpp"
#include "trees/jumoku.hpp"

namespace {

constexpr double kCp = 1005.0;

TEST(LayerFunction, IsThatOfLongDoubleOnBothSidesOfItsSeries) {
  for (double size = 1e-12; size <= 700.0; size *= 1.17) {
    for (const long double x : {-static_cast<long double>(size), static_cast<long double>(size)}) {
      const auto exact = static_cast<double>(std::expm1(x) / x);
      EXPECT_NEAR(jmk::jmk_utl_expfnx(static_cast<double>(x)), exact, 1e-15 * exact) << size;
    }
  }
  EXPECT_EQ(jmk::jmk_utl_expfnx(0.0), 1.0);
}

struct Leaf {
  double U = 2.0, Ta = 303.0, p = 101325.0, q = 0.015, PAR = 100.0, T = 305.0;
};
struct Coefficients {
  double h, e, qs, dqsdT;
};

Coefficients coefficients(const jmk_module_htrans::Data& data, const Leaf& leaf) {
  RecordedLog recorded;
  const auto one = [](auto& value) { return std::span(&value, 1); };
  Coefficients out{};
  htrnscoef(recorded.log, data, kCp,
            {one(leaf.U), one(leaf.Ta), one(leaf.p), one(leaf.q), one(leaf.PAR), one(leaf.T)},
            {one(out.h), one(out.e), one(out.qs), one(out.dqsdT)});
  return out;
}

/// The coefficients by resistances: what conducts in series adds its inverse.
Coefficients by_resistances(const jmk_module_htrans::Data& data, const Leaf& x) {
  const jmk_module_htrans::Stomata& s = data.stomata;
  const double Rair = 8.314 / 0.028964, Rvap = 8.314 / 0.018015;
  const double slope = 2501000.0 / Rvap;
  const double es = 611.0 * std::exp(slope * (1.0 / 273.0 - 1.0 / x.T));
  const double vapour = x.q * Rvap / (Rair + x.q * (Rvap - Rair)) * x.p;  // partial pressure
  const double density = (x.p - vapour) / (Rair * x.Ta) + vapour / (Rvap * x.Ta);
  const double b = (s.TH - s.TO) / (s.TO - s.TL);
  const double T = std::min(std::max(x.T, s.TL), s.TH);
  const double warmth = (T - s.TL) / (s.TO - s.TL) * std::pow((s.TH - T) / (s.TH - s.TO), b);
  const double deficit = std::max(0.0, es - vapour);
  const double dryness = s.MDLVPD == 1 ? std::max(0.0, 1.0 - deficit * s.B1)
                                       : 1.0 / (1.0 + std::pow(deficit / s.B1, s.B2));
  const double saturation = s.GSMAX / (s.UNITGS == 1 ? 4.0 * s.APAR : s.APAR);
  const double carrier = s.UNITGS == 1 ? 0.028964 : density;
  const double stomata = carrier * 0.5 * s.GSMAX / (1.0 + saturation / x.PAR) * warmth * dryness;
  const double linear = 6.79 + 5.99 * x.U, bulk = 0.03 * density * x.U * kCp;
  const int unit = data.settings.UNITH;
  const double h = unit == 1 ? linear : unit == 2 ? bulk : std::min(linear, bulk);
  const double qs = 18.015 / 28.964 * es / x.p;
  return {h, 1.0 / (kCp * s.LE / h + 1.0 / stomata), qs, qs * slope / (x.T * x.T)};
}

TEST(Leaves, CoefficientsAddResistances) {
  std::mt19937 random(5);
  const auto between = [&](double a, double b) {
    return std::uniform_real_distribution<double>(a, b)(random);
  };
  for (int n = 0; n < 500; ++n) {
    jmk_module_htrans::Data data;
    data.settings.UNITH = 1 + n % 3;
    data.stomata.UNITGS = 1 + n / 3 % 2;
    data.stomata.MDLVPD = n / 6 % 2 == 0 ? 1 : 4;
    data.stomata.B1 = data.stomata.MDLVPD == 1 ? 1e-4 : 3830.0;
    data.stomata.LE = between(0.8, 1.2);
    const Leaf leaf{between(0.1, 8.0),  between(280.0, 315.0), between(9e4, 1.05e5),
                    between(0.0, 0.02), between(0.1, 400.0),   between(285.0, 322.0)};
    const Coefficients got = coefficients(data, leaf);
    const Coefficients peer = by_resistances(data, leaf);
    EXPECT_NEAR(got.h, peer.h, 1e-12 * peer.h);
    EXPECT_NEAR(got.e, peer.e, 1e-10 * peer.e);
    EXPECT_NEAR(got.qs, peer.qs, 1e-12 * peer.qs);
    EXPECT_NEAR(got.dqsdT, peer.dqsdT, 1e-12 * peer.dqsdT);
  }
}

TEST(Leaves, StomataCloseAtTheirLimits) {
  const jmk_module_htrans::Data data;
  EXPECT_EQ(coefficients(data, {.PAR = 0.0}).e, 0.0);
  EXPECT_EQ(coefficients(data, {.T = data.stomata.TL}).e, 0.0);
  EXPECT_EQ(coefficients(data, {.T = 250.0}).e, 0.0);
  EXPECT_LT(coefficients(data, {.T = data.stomata.TH}).e, 1e-20);
  EXPECT_EQ(coefficients(data, {.U = 0.0}).e, 0.0);  // no air moves: neither h nor e, and no NaN

  jmk_module_htrans::Data wet;
  wet.settings.UNITH = 1;
  wet.stomata.BETA = 0.5;
  wet.stomata.LE = 2.0;
  EXPECT_DOUBLE_EQ(coefficients(wet, {.U = 1.0}).e, (6.79 + 5.99) * 0.25 / kCp);
  wet.stomata.BETA = 0.0;
  EXPECT_EQ(coefficients(wet, {}).e, 0.0);
}

struct UnderTree {
  jmk_module_htrans::Data htrans;
  jmk_module_radiat::Data radiat;
  tsrf_module_phydat::SunVector sun{0.0, -0.6, 0.8};
  tsrf_module_phydat::SkyFluxes above{700.0, 120.0, 380.0};
  jmk::Ground ground{0.8, 450.0, 0.95, 0.2};
  jmk::Air air{101325.0, 303.0, 0.015, 2.0};
  RecordedLog recorded{};

  tsrf_module_phydat::SkyFluxes beneath(jmk::SimpleTree& tree) {
    return jumoku(recorded.log, htrans, radiat, sun, ground, air, above, tree);
  }
};

TEST(OneLayerTree, ThinsTheSunAlongItsPath) {
  UnderTree x;
  for (const auto& [LAD, H] : {std::pair(0.0, 5.0), {1e-9, 5.0}, {1.0, 0.0}, {0.7, 4.0}}) {
    jmk::SimpleTree tree{LAD, H};
    const auto below = x.beneath(tree);
    const double visible = 0.45 * LAD * H, infrared = 0.3 * LAD * H, slant = 1.0 / 0.8;
    EXPECT_NEAR(below.direct,
                700.0 * (0.425 * std::exp(-visible * slant) + 0.575 * std::exp(-infrared * slant)),
                1e-10);
    EXPECT_NEAR(below.scattered, 120.0 * (0.7 * std::exp(-visible) + 0.3 * std::exp(-infrared)),
                1e-10);
    EXPECT_NEAR(below.longwave, x.above.longwave, LAD * H < 1e-6 ? 1e-5 : 200.0);
  }
}

TEST(OneLayerTree, NightKeepsTheSkyOnly) {
  UnderTree x;
  x.sun = {0.0, -1.0, -1e-3};
  jmk::SimpleTree tree{0.7, 4.0};
  const auto below = x.beneath(tree);
  EXPECT_EQ(below.direct, 0.0);
  EXPECT_GT(below.scattered, 0.0);
  // In a storm, dry leaves take the temperature of the air.
  x.htrans.settings.UNITH = 1;
  x.htrans.stomata.BETA = 0.0;
  x.air.U = 1e7;
  x.beneath(tree);
  EXPECT_NEAR(tree.T, x.air.T, 1e-4);
}

TEST(OneLayerTree, LeavesLoseWhatTheyTake) {
  UnderTree x;
  x.htrans.settings.REPSHB = 1e-13;
  jmk::SimpleTree tree{0.5, 6.0};
  const auto below = x.beneath(tree);
  // All that the layer takes from the light that passes it, and once more from what the ground
  // sends back (a fifth of the light, a twentieth of the long wave).
  const double k[2] = {0.225, 0.15}, s[2] = {0.025, 0.125};
  double taken = 0.0, visible = 0.0;
  for (int b = 0; b < 2; ++b) {
    const double beam = 700.0 * (b == 0 ? 0.425 : 0.575), sky = 120.0 * (b == 0 ? 0.7 : 0.3);
    const auto kept = [&](double path, double detour) {
      return 1.0 - std::exp(-k[b] * path) -
             (1.0 - std::exp(-k[b] * detour)) / (k[b] * detour) * path * s[b];
    };
    const double beam_kept = beam * 0.8 * kept(7.5, 13.5), sky_kept = sky * kept(6.0, 12.0);
    if (b == 0) visible = beam_kept + sky_kept;
    taken += beam_kept * (1.0 + 0.2 * std::exp(-k[b] * 7.5)) +
             sky_kept * (1.0 + 0.2 * std::exp(-k[b] * 6.0));
  }
  const double through = std::exp(-1.5), turned = 0.05 * (1.0 - std::exp(-3.0));
  taken += (380.0 + 450.0) * (1.0 - through - turned);
  const double emitted = below.longwave - 380.0 * through - 450.0 * turned;
  taken += 0.05 * (1.0 - through - turned) * (380.0 * through + emitted);
  const Coefficients c =
      coefficients(x.htrans, {x.air.U, x.air.T, x.air.p, x.air.q, visible / 3.0, tree.T});
  const double convected = (tree.T - x.air.T) * c.h * 6.0;
  const double evaporated = (c.qs - x.air.q) * c.e * 2501000.0 * 6.0;
  EXPECT_NEAR(taken, 2.0 * emitted + convected + evaporated, 1e-6);
}

TEST(OneLayerTree, TellsItsPassesAndStopsWithoutBalance) {
  UnderTree x;
  jmk::SimpleTree tree{0.5, 6.0};
  EXPECT_EQ(x.recorded.lines_of([&] { x.beneath(tree); }).substr(0, 23), "loop of heat balance = ");
  x.htrans.settings.LOPHBL = 1;
  jmk::SimpleTree far{0.5, 6.0, 330.0};
  EXPECT_EQ(x.recorded.lines_of([&] { x.beneath(far); }), "### program error -1- (jumoku)\n");
}

}  // namespace
