// The canopy of cells: the beam, scattered light and long wave, and the leaves in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

#include "../bench/plain_canopy.hpp"
#include "../bench/sample_canopy.hpp"
#include "count_allocations.hpp"
#include "trees/beam_sweep.hpp"
#include "trees/difrad.hpp"
#include "trees/sundir.hpp"
#include "trees/trcanopy.hpp"

namespace {

using jmk_module_radiat::kSolarBands;
using tsrf_module_jumoku::slot;
using tsrf_module_phydat::SunVector;

constexpr double kSigma = 5.6704e-8;

SunVector sun_at(double x, double y, double z) {
  const double length = std::sqrt(x * x + y * y + z * z);
  return {x / length, y / length, z / length};
}

CanopyCase random_canopy(Draw& draw) {
  CanopyCase::Widths widths;
  for (auto& axis : widths) {
    axis.resize(static_cast<std::size_t>(draw.integer(2, 5)));
    for (double& width : axis) width = draw.real(0.5, 4.0);
  }
  const std::int32_t NDIV = draw.integer(1, 4);
  std::vector<CanopyCase::Leaf> leaves;
  const auto cells = [&](std::size_t a) { return static_cast<std::int32_t>(widths[a].size()); };
  for (std::int32_t k = 0; k < cells(2); ++k) {
    for (std::int32_t j = 0; j < cells(1) * NDIV; ++j) {
      for (std::int32_t i = 0; i < cells(0) * NDIV; ++i) {
        if (draw.real(0.0, 1.0) < 0.2) leaves.push_back({i, j, k, draw.real(0.05, 3.0)});
      }
    }
  }
  if (leaves.empty()) leaves.push_back({0, 0, 0, 1.0});
  return {widths, NDIV, leaves};
}

/// The beam that goes in and out of the canopy by its outer faces, and what leaves take [W].
struct BeamBudget {
  BeamBudget(const tsrf_module_jumoku::Data& data, const SunVector& sun, double Jdn) {
    const double s[3] = {sun.x, sun.y, sun.z};
    const auto& optics = jmk_module_radiat::kLeafOptics;
    for (std::size_t o = 0; o < data.outer.size(); ++o) {
      const auto& outer = data.outer[o];
      const auto face = static_cast<std::size_t>(outer.face);
      const double towards = s[face / 2] * tsrf_module_jumoku::outward(face);
      for (std::size_t b = 0; b < kSolarBands; ++b) {
        const double flux =
            data.beam.outer[o][b] * outer.area * std::fabs(towards) * optics[b].direct * Jdn;
        (towards > 0.0 ? entering : leaving) += flux;
      }
    }
    for (const auto& lost : data.beam.lost) taken += lost[0] + lost[1];
  }
  double entering = 0.0, leaving = 0.0, taken = 0.0;
};

TEST(Beam, WhatEntersIsTakenOrLeaves) {
  Draw draw(11);
  for (int n = 0; n < 1000; ++n) {
    CanopyCase x = random_canopy(draw);
    x.prepare();
    const bool along_axis = n % 10 == 0;
    const SunVector sun =
        along_axis ? sun_at(n % 20 == 0 ? 0.0 : draw.real(-1.0, 1.0), 0.0, draw.real(0.01, 1.0))
                   : sun_at(draw.real(-1, 1), draw.real(-1, 1), draw.real(0.001, 1));
    for (double& fsun : x.canopy().beam.fsun) fsun = draw.real(0.0, 1.0);
    jmk::sweep_beam(*x.crew, sun, 800.0, x.trees.radiat.optics, x.canopy());
    const BeamBudget budget(x.canopy(), sun, 800.0);
    EXPECT_NEAR(budget.entering, budget.taken + budget.leaving, 1e-12 * budget.entering) << n;
    EXPECT_GT(budget.taken, 0.0);
  }
}

TEST(Beam, SunAlongAnAxisFadesExponentially) {
  CanopyCase x = CanopyCase::box({2, 3, 4}, 1.5, 0.6);
  x.add_patch(3, {2, 2, 1}, 2.25, {0.0, 0.0, 1.0});   // ground below the box
  x.add_patch(3, {1, 1, 1}, 2.25, {0.0, 0.0, 1.0});   // ground beside it
  x.add_patch(1, {2, 2, 3}, 2.25, {0.0, 0.0, -1.0});  // a ceiling two layers under the box's top
  x.add_patch(1, {1, 3, 3}, 2.25, {1.0, 0.0, 0.0});   // walls behind the box, by the sun's side
  x.add_patch(1, {4, 3, 3}, 2.25, {-0.9, 0.0, 0.4});
  x.add_patch(1, {2, 1, 3}, 2.25, {0.0, 1.0, 0.0});
  x.add_patch(1, {2, 5, 3}, 2.25, {0.0, -1.0, 0.0});
  x.prepare();
  const auto left = [](double H) {
    return 0.425 * std::exp(-0.6 * 0.45 * H) + 0.575 * std::exp(-0.6 * 0.3 * H);
  };
  const auto sweep = [&](const SunVector& sun) {
    jmk::sweep_beam(*x.crew, sun, 1000.0, x.trees.radiat.optics, x.canopy());
    return x.canopy().beam.left;
  };
  const auto overhead = sweep({0.0, 0.0, 1.0});
  EXPECT_NEAR(overhead[0], left(6.0), 1e-14);
  EXPECT_EQ(overhead[1], 1.0);
  EXPECT_NEAR(overhead[2], left(3.0), 1e-14);
  const double low = 1e-12;
  EXPECT_NEAR(sweep({1.0, 0.0, low})[3], left(3.0), 1e-9);
  EXPECT_NEAR(sweep({-1.0, 0.0, low})[4], left(3.0), 1e-9);
  EXPECT_NEAR(sweep({0.0, 1.0, low})[5], left(4.5), 1e-9);
  EXPECT_NEAR(sweep({0.0, -1.0, low})[6], left(4.5), 1e-9);
}

/// What passes a wide layer of leaves, 4 m high and 0.5 m2/m3, in cells of a width and a height.
double through_layer(double width, double height, std::int32_t NDIV, const SunVector& sun) {
  const auto layers = static_cast<std::int32_t>(std::lround(4.0 / height));
  const std::int32_t n = 2 * static_cast<std::int32_t>(std::ceil(4.0 / width)) + 13;
  const std::vector<double> across(static_cast<std::size_t>(n), width);
  const std::vector<double> up(static_cast<std::size_t>(layers) + 1, height);
  std::vector<CanopyCase::Leaf> leaves;
  for (std::int32_t k = 1; k <= layers; ++k) {
    for (std::int32_t j = 0; j < n * NDIV; ++j) {
      for (std::int32_t i = 0; i < n * NDIV; ++i) leaves.push_back({i, j, k, 0.5});
    }
  }
  CanopyCase x({across, across, up}, NDIV, leaves);
  x.add_patch(3, {n / 2 + 1, n / 2 + 1, 2}, width * width, {0.0, 0.0, 1.0});
  x.prepare();
  jmk::sweep_beam(*x.crew, sun, 800.0, x.trees.radiat.optics, x.canopy());
  return x.canopy().beam.left[0];
}

TEST(Beam, ObliqueSunIsDimmedByTheShapeOfCells) {
  const double h = std::sqrt(0.5);
  for (const auto& [width, height, NDIV, passes] : {std::tuple(1.0, 1.0, 1, 0.103),
                                                    {0.5, 0.5, 1, 0.099},
                                                    {1.0, 1.0, 4, 0.133},
                                                    {1.0, 0.5, 1, 0.189},
                                                    {1.0, 0.25, 1, 0.261}}) {
    EXPECT_NEAR(through_layer(width, height, NDIV, {0.5, 0.5, h}), passes, 5e-4);
  }
}

/// A patch in each direction somewhere in each coarse cell, inside the canopy or not.
void add_patches(Draw& draw, CanopyCase& x) {
  const auto cells = [&](std::size_t a) { return static_cast<std::int32_t>(x.grid[a].cells); };
  for (std::int32_t n = 0; n < cells(0) * cells(1) * cells(2); ++n) {
    const std::array<std::int32_t, 3> at{draw.integer(1, cells(0)), draw.integer(1, cells(1)),
                                         draw.integer(1, cells(2))};
    std::array<double, 3> normal{};
    normal[static_cast<std::size_t>(n % 3)] = n % 2 == 0 ? 1.0 : -1.0;
    x.add_patch(1, at, 1.0, normal);
  }
}

/// What leaves of the plain sweep left of a patch's beam.
double left_by(const plain::BeamSweep& sweep, const tsrf_module_jumoku::Data& data,
               const CanopyCase& x, std::size_t p, const SunVector& sun) {
  const std::array<double, 3> normal{x.patch.nx[p], x.patch.ny[p], x.patch.nz[p]};
  const double towards[3] = {-sun.x, -sun.y, -sun.z};
  const std::int32_t NDIV = data.grid.NDIV;
  const std::size_t axis = normal[0] != 0.0 ? 0 : normal[1] != 0.0 ? 1 : 2;
  std::array<std::int32_t, 3> face{x.patch.si[p] - 1, x.patch.sj[p] - 1, x.patch.sk[p] - 1};
  face[axis] += normal[axis] < 0.0 ? 1 : 0;
  if (face[2] >= data.grid.cells[2]) return 1.0;
  double taken = 0.0;
  std::int32_t parts = 0;
  for (std::int32_t j = 0; j < (axis == 1 ? 1 : NDIV); ++j) {
    for (std::int32_t i = 0; i < (axis == 0 ? 1 : NDIV); ++i, ++parts) {
      std::array<std::int32_t, 3> cell{face[0] * NDIV + i, face[1] * NDIV + j, face[2]};
      if (axis < 2 && towards[axis] >= 0.0) --cell[axis];
      if (cell[0] < 0 || cell[0] >= data.grid.cells[0]) continue;
      if (cell[1] < 0 || cell[1] >= data.grid.cells[1]) continue;
      const auto& f = sweep.free[sweep.box.place(cell[0], cell[1], cell[2])][axis];
      for (std::size_t b = 0; b < kSolarBands; ++b) {
        taken += jmk_module_radiat::kLeafOptics[b].direct * (1.0 - f[b]);
      }
    }
  }
  return 1.0 - taken / parts;
}

TEST(Beam, IsThatOfThePlainSweepToTheBit) {
  Draw draw(4);
  for (int n = 0; n < 60; ++n) {
    CanopyCase x = random_canopy(draw);
    add_patches(draw, x);
    x.prepare();
    for (double& fsun : x.canopy().beam.fsun) fsun = draw.real(0.0, 1.0);
    // Several hands have tiles of a few cells; one has all.
    frame::Crew crew({1 + static_cast<std::size_t>(n % 3), 32});
    for (const frame::InstructionSet set : frame::kInstructionSets) {
      if (!frame::has(set)) continue;
      const SunVector sun = sun_at(draw.real(-1, 1), draw.real(-1, 1), draw.real(0.01, 1));
      jmk::sweep_beam(crew, sun, 700.0, x.trees.radiat.optics, x.canopy(), set);
      plain::BeamSweep plain(x.canopy());
      plain.run(x.canopy(), sun, 700.0, x.trees.radiat.optics);
      EXPECT_EQ(x.canopy().beam.lost, plain.lost);
      for (std::size_t p = 0; p < x.patch.type.size(); ++p) {
        EXPECT_EQ(x.canopy().beam.left[p], left_by(plain, x.canopy(), x, p, sun)) << p;
      }
    }
  }
}

TEST(BeamStep, HoldsBetweenSweeps) {
  CanopyCase x = CanopyCase::box({1, 1, 2}, 2.0, 0.5);
  x.add_patch(3, {2, 2, 1}, 4.0, {0.0, 0.0, 1.0});
  x.prepare();
  x.canopy().settings.NSKIP_SUNDIR = 3;
  const std::vector<double> fsun{1.0};
  /// What is left of the sun on the ground under the leaves.
  const auto at = [&](double second, const SunVector& sun, double Jdn = 800.0, double dt = 59.6) {
    std::vector<double> Jdir{Jdn * std::max(0.0, sun.z)};
    jmk::tsrf_sundir(x.recorded.log, *x.crew, dt, second, sun, {Jdn, 0.0, 0.0}, x.patch, fsun,
                     x.trees.cells, x.trees.radiat, x.canopy(), Jdir);
    return Jdir[0] / (Jdn * sun.z);
  };
  const SunVector low = sun_at(0.3, 0.0, 0.9), high = sun_at(0.1, 0.0, 0.9);
  const double first = at(60.0, low);  // a run's first sun is swept at once
  EXPECT_LT(first, 1.0);
  EXPECT_DOUBLE_EQ(at(120.0, high), first);
  const double second = at(180.0, high);
  EXPECT_NE(second, first);
  EXPECT_DOUBLE_EQ(at(300.5, low), second);
  // Dark clears the stores; they stay clear until the next sweep.
  at(420.0, {1.0, 0.0, 0.9e-20});
  EXPECT_DOUBLE_EQ(at(480.0, high), 1.0);
  EXPECT_DOUBLE_EQ(at(540.0, high), second);
  at(540.0, high, 0.9e-20);
  EXPECT_EQ(x.canopy().beam.lost[0][0], 0.0);
  at(540.0, high, 1e-20);  // the faintest beam passes
  EXPECT_GT(x.canopy().beam.lost[0][0], 0.0);

  for (const auto& [dt, warned] : {std::pair(60.0, false), {300.5, true}, {0.4, false}}) {
    const auto& settings = x.canopy().settings;
    const auto lines =
        x.recorded.lines_of([&, step = dt] { jmk::warn_of_step(x.recorded.log, step, settings); });
    EXPECT_EQ(lines.find("a multiple of 903 s") != std::string::npos, warned) << dt << lines;
  }
}

using Axes = std::array<double, 3>;

/// What leaves a cell by one face of each axis: of a unit that enters by a low face of axis a, and
/// of a unit that starts in the cell; both forms as their terms c are told.
struct CellByTerms {
  CellByTerms(std::int32_t MDLSCT, const jmk_module_radiat::BandOptics& optics, double lad,
              const Axes& d) {
    const double k = 0.5 * lad * (1.0 - optics.tau), r = optics.rho / (1.0 - optics.tau);
    Axes A{}, u{}, w{}, c{};
    const double S = 6.0, V = d[0] * d[1] * d[2];
    double sum = 0.0;
    for (std::size_t a = 0; a < 3; ++a) {
      A[a] = V / d[a];
      t[a] = std::exp(-k * d[a]);
      u[a] = (1.0 - t[a]) / (k * d[a]);
      w[a] = d[a] * u[a];
      c[a] = A[a] * (1.0 - t[a]);
      sum += c[a];
    }
    const double e = sum / (3.0 * k * V), repeat = 1.0 / (1.0 - r * (1.0 - e));
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t b = (a + 1) % 3, g = (a + 2) % 3;
      if (MDLSCT == 1) {
        for (std::size_t to = 0; to < 3; ++to) {
          turned[a][to] = (1.0 - t[a]) * r * e * repeat * c[to] / (2.0 * sum);
        }
        started[a] = A[a] * d[a] * u[a] * repeat / (6.0 * V);
        t[a] += turned[a][a];
      } else {
        turned[a][a] = (t[a] + 1.0) / 2.0 * r * k * w[a] / (S - 1.0);
        for (const std::size_t to : {b, g}) {
          turned[a][to] = r * k * A[to] / ((S - 1.0) * A[a]) * u[a] * w[to];
        }
        started[a] = (((1.0 - t[a]) / 2.0 * r * w[a] / (S - 1.0) + w[a]) * A[a] +
                      2.0 * r * w[a] * A[a] * (2.0 - u[b] - u[g]) / (S - 1.0)) /
                     (6.0 * V);
      }
    }
  }
  Axes t{};                      ///< by the far face
  std::array<Axes, 3> turned{};  ///< from axis, to axis
  Axes started{};
};

TEST(Diffuse, CellsPassLightAsTheirFormTells) {
  Draw draw(21);
  for (int n = 0; n < 300; ++n) {
    const std::int32_t MDLSCT = n % 2;
    const auto& optics = jmk_module_radiat::kLeafOptics[static_cast<std::size_t>(n % 3)];
    const double lad = std::pow(10.0, draw.real(-2.0, 2.0));
    const Axes d{draw.real(0.2, 4.0), draw.real(0.2, 4.0), draw.real(0.2, 4.0)};
    const CellByTerms peer(MDLSCT, optics, lad, d);
    const jmk::CellWeights w = jmk::cell_weights(MDLSCT, optics, lad, d);
    double started = w.emit_kept;
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t b = (a + 1) % 3, g = (a + 2) % 3;
      EXPECT_NEAR(w.ahead[a], peer.t[a], 1e-14);
      EXPECT_NEAR(w.back[a], peer.turned[a][a], 1e-14);
      EXPECT_NEAR(w.stop[a] * w.aside[b], peer.turned[a][b], 1e-14);
      EXPECT_NEAR(w.stop[a] * w.aside[g], peer.turned[a][g], 1e-14);
      EXPECT_NEAR(w.emit[a], peer.started[a], 1e-14);
      const double left = w.ahead[a] + w.back[a] + 2.0 * w.stop[a] * (w.aside[b] + w.aside[g]);
      EXPECT_NEAR(left + w.kept[a], 1.0, 1e-14);
      started += 2.0 * w.emit[a];
    }
    EXPECT_NEAR(started, 1.0, 1e-14);
  }
}

/// What a canopy in the exchange takes in and gives away in one band [W].
struct BandBudget {
  explicit BandBudget(const tsrf_module_jumoku::Data& data,
                      const tsrf_module_jumoku::BandFluxes& band) {
    for (const double flux : band.outside) entering += flux;
    for (const double source : band.source) started += source;
    for (std::size_t c = 0; c < data.cells.count(); ++c) kept += jmk::kept(data, band, c);
    for (std::size_t o = 0; o < data.outer.size(); ++o) {
      leaving += band.entering[data.cells.count() * 6 + o];
    }
  }
  double entering = 0.0, started = 0.0, kept = 0.0, leaving = 0.0;
};

TEST(Diffuse, IsKeptOrLeavesAndIsThatOfThePlainFormToTheBit) {
  Draw draw(6);
  for (int n = 0; n < 60; ++n) {
    CanopyCase x = random_canopy(draw);
    x.trees.radiat.settings.MDLSCT = n % 2;
    x.prepare();
    const auto b = static_cast<std::size_t>(n % 3);
    auto& band = x.canopy().bands[b];
    for (double& flux : band.outside) flux = draw.real(0.0, 500.0);
    for (std::size_t c = 0; c < band.source.size(); ++c) {
      if (x.canopy().cells.leaf[c] >= 0) band.source[c] = draw.real(0.0, 100.0);
    }
    plain::Relaxation plain(x.canopy());
    frame::Crew crew({1 + static_cast<std::size_t>(n % 4), 32});
    const auto sweeps = plain.run(x.canopy(), x.trees.radiat, b, {1e-12, 1e-10});
    EXPECT_EQ(jmk::jmk_difrad_flux(x.recorded.log, crew, x.canopy(), 100, {1e-12, 1e-10}, band),
              sweeps);
    const auto leaving = band.entering.end() - static_cast<std::ptrdiff_t>(plain.leaving.size());
    EXPECT_TRUE(std::equal(plain.leaving.begin(), plain.leaving.end(), leaving));
    const BandBudget budget(x.canopy(), band);
    const double in = budget.entering + budget.started;
    EXPECT_NEAR(in, budget.kept + budget.leaving, 1e-9 * in) << n;
  }
}

/// Of diffuse light that falls alike on all sides of a box of leaves, 4 x 4 x 3 m and 2.4 m2/m3,
/// what leaves it again, when `cuts` cells divide each edge.
double out_of_box(std::int32_t MDLSCT, std::size_t b, std::int32_t cuts) {
  CanopyCase::Widths widths;
  for (std::size_t a = 0; a < 3; ++a) {
    widths[a].assign(static_cast<std::size_t>(cuts), (a < 2 ? 4.0 : 3.0) / cuts);
  }
  std::vector<CanopyCase::Leaf> leaves;
  for (std::int32_t n = 0; n < cuts * cuts * cuts; ++n) {
    leaves.push_back({n % cuts, n / cuts % cuts, n / cuts / cuts, 2.4});
  }
  CanopyCase x(widths, 1, leaves);
  x.trees.radiat.settings.MDLSCT = MDLSCT;
  x.prepare();
  auto& band = x.canopy().bands[b];
  for (std::size_t o = 0; o < band.outside.size(); ++o) band.outside[o] = x.canopy().outer[o].area;
  jmk::jmk_difrad_flux(x.recorded.log, *x.crew, x.canopy(), 1000, {1e-12, 1e-10}, band);
  const BandBudget budget(x.canopy(), band);
  return budget.leaving / budget.entering;
}

TEST(Diffuse, ADividedBoxPassesWhatItsFormTells) {
  const struct {
    std::int32_t MDLSCT;
    std::size_t band;
    double whole, divided;
  } rows[] = {
      {0, 0, 0.056, 0.058}, {0, 1, 0.379, 0.602}, {1, 0, 0.053, 0.055}, {1, 1, 0.668, 0.669}};
  for (const auto& [MDLSCT, band, whole, divided] : rows) {
    EXPECT_NEAR(out_of_box(MDLSCT, band, 1), whole, 5e-4);
    EXPECT_NEAR(out_of_box(MDLSCT, band, 16), divided, 5e-4);
  }
}

/// A canopy with tree patches all round it, its leaves and the exchange with what is around.
struct Exchange {
  explicit Exchange(CanopyCase canopy) : x(std::move(canopy)) {
    x.trees.htrans.settings.REPSHB = 1e-12;
    x.trees.radiat.settings.REPSRD2 = 1e-13;
    x.prepare();
    x.cover();
    const std::size_t n = x.patch.type.size();
    for (auto* values : {&Rl, &Rs, &JRl, &JRs}) values->assign(n, 0.0);
  }
  void step(const tsrf_module_phydat::SkyFluxes& sky = {}) {
    jmk::tsrf_trcanopy(x.recorded.log, *x.crew, sky, x.patch, x.trees.cells, x.trees.htrans,
                       x.trees.radiat, x.canopy(), Rl, Rs, JRl, JRs);
  }
  /// Keeps sensible and latent heat out of the balance.
  void still_and_dry() {
    x.trees.htrans.settings.UNITH = 2;
    x.trees.htrans.stomata.BETA = 0.0;
    storetqair(101325.0, 300.0, 0.01, 0.0, x.canopy());
  }
  CanopyCase x;
  std::vector<double> Rl, Rs, JRl, JRs;
};

TEST(Canopy, AsWarmAsAllAroundItExchangesNothingOrLittle) {
  Draw draw(8);
  for (int n = 0; n < 10; ++n) {
    CanopyCase canopy = random_canopy(draw);
    canopy.trees.radiat.settings.MDLSCT = n % 2;
    Exchange exchange(std::move(canopy));
    exchange.still_and_dry();
    exchange.x.trees.htrans.settings.LOPHBL = 1;
    const double black = kSigma * std::pow(300.0, 4);
    std::fill(exchange.Rl.begin(), exchange.Rl.end(), black);
    const std::string lines = exchange.x.recorded.lines_of([&] { exchange.step(); });
    double taken = 0.0, entering = 0.0;
    for (const double Labs : exchange.x.canopy().leaves.Labs) taken += Labs;
    for (const auto& outer : exchange.x.canopy().outer) entering += outer.area * black;
    if (n % 2 == 1) {  // closed
      EXPECT_EQ(lines.find("(jmk2_cal_canopy)"), std::string::npos);
      for (const double J : exchange.JRl) EXPECT_NEAR(J, black, 1e-9 * black);
    } else {
      EXPECT_GT(taken, 0.001 * entering);
      EXPECT_LT(taken, 0.01 * entering);
    }
  }
}

TEST(Canopy, EveryLeafClosesItsBalance) {
  Draw draw(9);
  for (int n = 0; n < 10; ++n) {
    CanopyCase random = random_canopy(draw);
    random.trees.radiat.settings.MDLSCT = n / 2 % 2;
    Exchange exchange(std::move(random));
    for (double& R : exchange.Rl) R = draw.real(300.0, 450.0);
    for (double& R : exchange.Rs) R = n % 2 == 0 ? draw.real(0.0, 300.0) : 0.0;
    tsrf_module_jumoku::Data& canopy = exchange.x.canopy();
    jmk::sweep_beam(*exchange.x.crew, sun_at(0.3, 0.2, 0.7), n % 2 == 0 ? 700.0 : 0.0,
                    exchange.x.trees.radiat.optics, canopy);
    EXPECT_EQ(exchange.x.recorded.lines_of([&] { exchange.step(); }), "");  // it converged

    const tsrf_module_jumoku::Leaves& leaves = canopy.leaves;
    double taken = 0.0, given = 0.0;  // by the canopy as a whole
    const BandBudget budget(canopy, canopy.bands[0]);
    double visible = budget.entering - budget.leaving;  // what leaves keep of visible light
    for (std::size_t i = 0; i < leaves.count(); ++i) {
      const double area = 2.0 * leaves.lad[i] * leaves.volume[i];
      const double sensible = (leaves.T[i] - leaves.Ta[i]) * leaves.h[i] * area;
      const double latent = (leaves.qs[i] - leaves.q[i]) * leaves.e[i] * area * 2501000.0;
      EXPECT_NEAR(leaves.Sabs[i] + leaves.Labs[i], sensible + latent, 1e-6);
      given += sensible + latent;
      taken += canopy.beam.lost[i][0] + canopy.beam.lost[i][1];
      visible += canopy.beam.lost[i][0] - leaves.PAR[i] * area / 2.0;
    }
    for (const auto& tree : canopy.trees) {
      const auto p = static_cast<std::size_t>(tree.patch);
      taken += (exchange.Rl[p] + exchange.Rs[p]) * exchange.x.patch.area[p];
      given += (exchange.JRl[p] + exchange.JRs[p]) * exchange.x.patch.area[p];
    }
    EXPECT_NEAR(taken, given, 1e-8 * taken);
    EXPECT_NEAR(visible, 0.0, 1e-8 * taken);
  }
}

TEST(Canopy, TakesNoMemoryInAStep) {
  Exchange exchange(CanopyCase::box({3, 3, 2}, 1.0, 0.8));
  const std::vector<double> fsun(exchange.Rs.size(), 1.0);
  std::vector<double> Jdir(exchange.Rs.size(), 100.0);
  const std::size_t before = allocations;
  jmk::tsrf_sundir(exchange.x.recorded.log, *exchange.x.crew, 60.0, 0.0, sun_at(0.3, 0.2, 0.7),
                   {700.0, 0.0, 0.0}, exchange.x.patch, fsun, exchange.x.trees.cells,
                   exchange.x.trees.radiat, exchange.x.canopy(), Jdir);
  exchange.step({700.0, 80.0, 350.0});
  EXPECT_EQ(allocations, before);
}

TEST(Canopy, FacesWithoutPatchesSeeTheSkyByDirection) {
  CanopyCase x({{{2.0, 2.0}, {2.0}, {1.0, 1.0}}}, 2, {{0, 0, 1, 1.0}});
  // One patch on the top of the block: the other three parts of that top take its light.
  x.add_tree_patch({0, 0, 1}, 5, 1.0);
  x.prepare();
  const std::vector<double> Rl{200.0}, Rs{50.0};
  std::vector<double> JRl(1), JRs(1);
  x.trees.htrans.settings.LOPHBL = 1;
  jmk::tsrf_trcanopy(x.recorded.log, *x.crew, {0.0, 100.0, 400.0}, x.patch, x.trees.cells,
                     x.trees.htrans, x.trees.radiat, x.canopy(), Rl, Rs, JRl, JRs);
  const double by_face[6] = {0.5, 0.5, 0.5, 0.5, 0.0, 1.0};
  for (std::size_t o = 0; o < x.canopy().outer.size(); ++o) {
    const auto& outer = x.canopy().outer[o];
    const double sky = by_face[outer.face];
    const auto coming = [&](std::size_t b) { return x.canopy().bands[b].outside[o] / outer.area; };
    EXPECT_DOUBLE_EQ(coming(0), 0.7 * (outer.face == 5 ? 50.0 : sky * 100.0));
    EXPECT_DOUBLE_EQ(coming(1), 0.3 * (outer.face == 5 ? 50.0 : sky * 100.0));
    EXPECT_DOUBLE_EQ(coming(2), outer.face == 5 ? 200.0 : sky * 400.0);
  }
}

TEST(Canopy, FaultsAreTold) {
  const std::string error = "### error : data error\nTreePatch data is ";
  const struct {
    std::array<std::int32_t, 3> cell;
    std::size_t face;
    double area;
    std::string fault;
  } cases[] = {
      {{1, 1, 1}, 0, 4.0, ""},
      {{1, 1, 1}, 0, 2.0, "invalid -2-\ni,j,k,dir= 1 2 2 1\n(check02)\n"},  // half a face
      {{0, 1, 1}, 0, 4.0, "invalid -2-\ni,j,k,dir= 0 2 2 1\n(check02)\n"},  // no canopy there
      {{1, 1, 1}, 1, 4.0, "invalid -2-\ni,j,k,dir= 3 2 2 2\n(check02)\n"},  // between two blocks
      {{3, 1, 4}, 1, 4.0, "out of range\ni,j,k,bcd= 5 2 5 2\n"},
  };
  for (const auto& [cell, face, area, fault] : cases) {
    Exchange exchange(CanopyCase::box({2, 1, 2}, 2.0, 1.0));
    exchange.x.patch = {};
    exchange.x.add_tree_patch(cell, face, area);
    exchange.x.prepare();
    EXPECT_EQ(exchange.x.recorded.lines_of([&] { exchange.step(); }),
              fault.empty() ? "" : error + fault + "(tsrf_trcanopy)\n");
  }
  Exchange twice(CanopyCase::box({1, 1, 1}, 2.0, 1.0));
  twice.x.add_tree_patch({1, 1, 1}, 0, 4.0);
  twice.x.prepare();
  EXPECT_NE(twice.x.recorded.lines_of([&] { twice.step(); }).find("invalid -2-"),
            std::string::npos);

  Exchange hasty(CanopyCase::box({1, 1, 1}, 2.0, 1.0));
  hasty.x.trees.htrans.settings.LOPHBL = 1;
  EXPECT_EQ(hasty.x.recorded.lines_of([&] { hasty.step(); }),
            "%%% warning -1- (jmk2_cal_canopy)\n");
  hasty.x.trees.radiat.settings.LOPRAD = 1;
  hasty.Rs.assign(hasty.Rs.size(), 100.0);
  EXPECT_EQ(hasty.x.recorded.lines_of([&] { hasty.step(); }),
            "### program error -1- (jmk_difrad_flux)\n");
}

}  // namespace
