// The canopy of cells: the beam, scattered light and long wave, and the leaves in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include "../bench/plain_canopy.hpp"
#include "../bench/sample_canopy.hpp"
#include "trees/difrad.hpp"
#include "trees/sundir.hpp"
#include "trees/trcanopy.hpp"

namespace {
std::size_t allocations = 0;
}

// Not inline: the compiler would pair malloc and delete and complain.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

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
    for (const auto& outer : data.outer) {
      const auto face = static_cast<std::size_t>(outer.face);
      const double towards = s[face / 2] * tsrf_module_jumoku::outward(face);
      for (std::size_t b = 0; b < kSolarBands; ++b) {
        const double flux = data.beam.canopy[outer.entry()][b] * outer.area * std::fabs(towards) *
                            optics[b].direct * Jdn;
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
    jmk::sweep_beam(sun, 800.0, x.trees.radiat.optics, x.canopy());
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
    jmk::sweep_beam(sun, 1000.0, x.trees.radiat.optics, x.canopy());
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

/// Results of a sweep as one list that does not depend on how the canopy lies: sorted.
std::vector<double> sorted_losses(CanopyCase& x, const SunVector& sun) {
  x.prepare();
  jmk::sweep_beam(sun, 1000.0, x.trees.radiat.optics, x.canopy());
  std::vector<double> losses;
  for (const auto& lost : x.canopy().beam.lost) losses.push_back(lost[0] + 2.0 * lost[1]);
  std::sort(losses.begin(), losses.end());
  return losses;
}

TEST(Beam, TurnsAndMirrorsWithTheCanopy) {
  Draw draw(3);
  const CanopyCase::Widths widths{{{1.0, 2.0, 1.5}, {0.7, 1.1, 2.0}, {1.0, 1.0, 3.0}}};
  std::vector<CanopyCase::Leaf> leaves, mirrored, turned;
  for (std::int32_t k = 0; k < 3; ++k) {
    for (std::int32_t j = 0; j < 6; ++j) {
      for (std::int32_t i = 0; i < 6; ++i) {
        if (draw.real(0.0, 1.0) < 0.6) continue;
        leaves.push_back({i, j, k, draw.real(0.1, 1.0)});
        mirrored.push_back({5 - i, j, k, leaves.back().lad});
        turned.push_back({5 - j, i, k, leaves.back().lad});
      }
    }
  }
  const auto reversed = [](std::vector<double> list) {
    std::reverse(list.begin(), list.end());
    return list;
  };
  const auto case_of = [](const CanopyCase::Widths& w, std::vector<CanopyCase::Leaf> list) {
    std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
      return std::tie(a.k, a.j, a.i) < std::tie(b.k, b.j, b.i);
    });
    return CanopyCase(w, 2, list);
  };
  CanopyCase plain = case_of(widths, leaves);
  CanopyCase mirror = case_of({reversed(widths[0]), widths[1], widths[2]}, mirrored);
  CanopyCase turn = case_of({reversed(widths[1]), widths[0], widths[2]}, turned);
  for (const double x : {-0.6, 0.0, 0.4}) {
    for (const double y : {-0.5, 0.0, 0.7}) {
      const auto losses = sorted_losses(plain, sun_at(x, y, 0.5));
      const auto from_mirror = sorted_losses(mirror, sun_at(-x, y, 0.5));
      const auto from_turn = sorted_losses(turn, sun_at(-y, x, 0.5));
      for (std::size_t n = 0; n < losses.size(); ++n) {
        EXPECT_EQ(losses[n], from_mirror[n]);
        EXPECT_NEAR(losses[n], from_turn[n], 1e-10 * losses[n]);
      }
    }
  }
}

TEST(Beam, OneCellSpreadsEachFacesLight) {
  CanopyCase x({{{1.0, 2.0, 1.0}, {1.0, 1.5, 1.0}, {1.0, 3.0}}}, 1, {{1, 1, 1, 0.4}});
  x.prepare();
  const SunVector sun = sun_at(0.5, -0.3, 0.6);
  const double d[3] = {2.0, 1.5, 3.0};
  const double s[3] = {std::fabs(sun.x), std::fabs(sun.y), std::fabs(sun.z)};
  const std::size_t entry[3] = {1, 2, 5};
  const double t = std::min({d[0] / s[0], d[1] / s[1], d[2] / s[2]});
  const double passed = std::exp(-0.4 * 0.45 * t);
  for (std::size_t a = 0; a < 3; ++a) {
    std::fill(x.canopy().beam.fsun.begin(), x.canopy().beam.fsun.end(), 0.0);
    x.canopy().beam.fsun[slot(0, entry[a])] = 1.0;
    jmk::sweep_beam(sun, 1.0, x.trees.radiat.optics, x.canopy());
    const auto leaving = [&](std::size_t axis) {
      return x.canopy().beam.canopy[slot(0, entry[axis] ^ 1U)][0] * s[axis] * d[(axis + 1) % 3] *
             d[(axis + 2) % 3];
    };
    // By the corner of the face that the rays sweep in crossing the cell.
    const std::size_t b = (a + 1) % 3, c = (a + 2) % 3;
    const double lb = s[b] * t, lc = s[c] * t, flux = passed * s[a];
    EXPECT_NEAR(leaving(a), flux * (d[b] - lb) * (d[c] - lc), 1e-13);
    EXPECT_NEAR(leaving(b), flux * (d[c] - 0.5 * lc) * lb, 1e-13);
    EXPECT_NEAR(leaving(c), flux * (d[b] - 0.5 * lb) * lc, 1e-13);
  }
}

TEST(Beam, IsThatOfThePlainSweepToTheBit) {
  Draw draw(4);
  for (int n = 0; n < 50; ++n) {
    CanopyCase x = random_canopy(draw);
    x.prepare();
    for (double& fsun : x.canopy().beam.fsun) fsun = draw.real(0.0, 1.0);
    const SunVector sun = sun_at(draw.real(-1, 1), draw.real(-1, 1), draw.real(0.01, 1));
    jmk::sweep_beam(sun, 700.0, x.trees.radiat.optics, x.canopy());
    plain::BeamSweep plain(x.canopy());
    plain.run(x.canopy(), sun, 700.0, x.trees.radiat.optics);
    EXPECT_EQ(x.canopy().beam.lost, plain.lost);
    for (std::size_t i = 0; i < x.canopy().beam.z.size(); ++i) {  // the lowest layer's floor
      EXPECT_EQ(x.canopy().beam.z[i], plain.free[i][2]);
    }
  }
}

/// Runs the beam's step on a canopy whose faces all have patches.
struct BeamStep {
  BeamStep() : x(CanopyCase::box({1, 1, 2}, 2.0, 0.5)) {
    x.prepare();
    x.cover();
    x.add_patch(3, {2, 2, 1}, 4.0, {0.0, 0.0, 1.0});
    x.prepare();
    ground = x.patch.type.size() - 1;
    fsun.assign(x.patch.type.size(), 1.0);
  }
  std::vector<double> Jdir_at(double second, const SunVector& sun, double Jdn, double dt = 60.0) {
    std::vector<double> Jdir(x.patch.type.size(), Jdn * std::max(0.0, sun.z));
    jmk::tsrf_sundir(x.recorded.log, dt, second, sun, {Jdn, 0.0, 0.0}, x.patch, fsun, x.trees.cells,
                     x.trees.radiat, x.canopy(), Jdir);
    return Jdir;
  }
  CanopyCase x;
  std::size_t ground;
  std::vector<double> fsun;
};

TEST(BeamStep, TreePatchesCarryTheCanopysBeam) {
  BeamStep step;
  // The beam enters by the faces that see the sun; a building takes half of it from the top.
  const SunVector sun = sun_at(0.4, 0.3, 0.8);
  const auto& trees = step.x.canopy().trees;
  const auto top = std::find_if(trees.begin(), trees.end(), [&](const auto& tree) {
    return step.x.patch.SurfID[static_cast<std::size_t>(tree.patch)] == 6;
  });
  step.fsun[static_cast<std::size_t>(top->patch)] = 0.5;
  const auto Jdir = step.Jdir_at(0.0, sun, 800.0);
  EXPECT_NEAR(Jdir[static_cast<std::size_t>(top->patch)], 0.5 * 800.0 * sun.z, 1e-10);
  double entering = 0.0, leaving = 0.0, taken = 0.0;
  for (const auto& tree : trees) {
    const auto p = static_cast<std::size_t>(tree.patch);
    const double towards =
        step.x.patch.nx[p] * sun.x + step.x.patch.ny[p] * sun.y + step.x.patch.nz[p] * sun.z;
    (towards > 0.0 ? entering : leaving) += Jdir[p] * step.x.patch.area[p];
  }
  for (const auto& lost : step.x.canopy().beam.lost) taken += lost[0] + lost[1];
  EXPECT_NEAR(entering, taken + leaving, 1e-9);
  EXPECT_LT(Jdir[step.ground], 800.0 * sun.z);
}

TEST(BeamStep, HoldsBetweenSweeps) {
  BeamStep step;
  step.x.canopy().settings.NSKIP_SUNDIR = 3;
  const auto at = [&](double second, double z, double dt = 59.6) {
    const auto Jdir = step.Jdir_at(second, sun_at(0.5, 0.0, z), 800.0, dt);
    return std::pair(Jdir[0], Jdir[step.ground] / (800.0 * sun_at(0.5, 0.0, z).z));
  };
  EXPECT_EQ(at(60.0, 0.5), std::pair(0.0, 1.0));  // no sweep yet
  const auto first = at(180.0, 0.5);
  EXPECT_EQ(at(240.0, 0.6), first);
  EXPECT_EQ(at(300.5, 0.6), first);
  EXPECT_NE(at(360.0, 0.6), first);
  // Dark clears the stores; they stay clear until the next sweep.
  step.Jdir_at(420.0, {1.0, 0.0, 0.9e-20}, 800.0);
  EXPECT_EQ(at(480.0, 0.6), std::pair(0.0, 1.0));
  EXPECT_NE(at(540.0, 0.6), std::pair(0.0, 1.0));
  step.Jdir_at(540.0, sun_at(0.5, 0.0, 0.6), 0.9e-20);
  EXPECT_EQ(step.x.canopy().beam.lost[0][0], 0.0);
  step.Jdir_at(540.0, sun_at(0.5, 0.0, 0.6), 1e-20);  // the faintest beam passes
  EXPECT_GT(step.x.canopy().beam.lost[0][0], 0.0);
}

/// What a canopy in the exchange takes in and gives away in one band [W].
struct BandBudget {
  explicit BandBudget(const tsrf_module_jumoku::Data& data,
                      const tsrf_module_jumoku::BandFluxes& band) {
    for (const double flux : band.outside) entering += flux;
    for (const double source : band.source) started += source;
    for (std::size_t c = 0; c < data.cells.count(); ++c) {
      kept += (1.0 - band.scatter) * jmk::stopped(band, c);
    }
    for (std::size_t o = 0; o < data.outer.size(); ++o) {
      leaving += band.entering[data.cells.count() * 6 + o];
    }
  }
  double entering = 0.0, started = 0.0, kept = 0.0, leaving = 0.0;
};

TEST(Diffuse, WhatEntersAndStartsIsKeptOrLeaves) {
  Draw draw(21);
  for (int n = 0; n < 200; ++n) {
    CanopyCase x = random_canopy(draw);
    x.prepare();
    auto& band = x.canopy().bands[static_cast<std::size_t>(n % 3)];
    for (double& flux : band.outside) flux = draw.real(0.0, 500.0);
    for (std::size_t c = 0; c < band.source.size(); ++c) {
      if (x.canopy().cells.leaf[c] >= 0) band.source[c] = draw.real(0.0, 100.0);
    }
    jmk::jmk_difrad_flux(x.recorded.log, x.canopy(), 100, {1e-12, 1e-10}, band);
    const BandBudget budget(x.canopy(), band);
    const double in = budget.entering + budget.started;
    EXPECT_NEAR(in, budget.kept + budget.leaving, 1e-9 * in) << n;
  }
}

TEST(Diffuse, IsThatOfThePlainRelaxationToTheBit) {
  Draw draw(6);
  for (int n = 0; n < 30; ++n) {
    CanopyCase x = random_canopy(draw);
    x.prepare();
    const auto b = static_cast<std::size_t>(n % 3);
    auto& band = x.canopy().bands[b];
    for (double& flux : band.outside) flux = draw.real(0.0, 500.0);
    plain::Relaxation plain(x.canopy());
    const auto sweeps = plain.run(x.canopy(), x.trees.radiat.optics[b], {1e-12, 1e-10}, band);
    EXPECT_EQ(jmk::jmk_difrad_flux(x.recorded.log, x.canopy(), 100, {1e-12, 1e-10}, band), sweeps);
    const auto leaving = band.entering.end() - static_cast<std::ptrdiff_t>(plain.leaving.size());
    EXPECT_TRUE(std::equal(plain.leaving.begin(), plain.leaving.end(), leaving));
  }
}

TEST(Diffuse, LayersPassTheirExponential) {
  // Leaves that scatter nothing: what enters by one face leaves by the far one, thinned.
  for (const double lad : {0.0, 0.3, 2.0}) {
    CanopyCase x({{{1.0}, {1.0}, {0.5, 1.0, 2.0}}}, 1,
                 {{0, 0, 0, lad}, {0, 0, 1, lad}, {0, 0, 2, lad}});
    x.prepare();
    auto& band = x.canopy().bands[2];
    band.scatter = 0.0;
    const auto& outer = x.canopy().outer;
    const auto face_at = [&](std::int32_t cell, std::int32_t face) {
      return static_cast<std::size_t>(
          std::find_if(outer.begin(), outer.end(),
                       [&](const auto& o) { return o.cell == cell && o.face == face; }) -
          outer.begin());
    };
    band.outside[face_at(2, 5)] = 100.0;
    jmk::jmk_difrad_flux(x.recorded.log, x.canopy(), 100, {1e-12, 1e-10}, band);
    const double below = band.entering[3 * 6 + face_at(0, 4)];
    EXPECT_NEAR(below, 100.0 * std::exp(-0.5 * lad * 3.5), 1e-12);
    if (lad == 0.0) {
      EXPECT_EQ(below, 100.0);
    }
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
  jmk::LeafLoop step(const tsrf_module_phydat::SkyFluxes& sky = {}) {
    return jmk::tsrf_trcanopy(x.recorded.log, sky, x.patch, x.trees.cells, x.trees.htrans,
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

TEST(Canopy, ExchangesNothingAtOneTemperature) {
  Draw draw(8);
  for (int n = 0; n < 5; ++n) {
    Exchange exchange(random_canopy(draw));
    exchange.still_and_dry();
    const double black = kSigma * std::pow(300.0, 4);
    std::fill(exchange.Rl.begin(), exchange.Rl.end(), black);
    const jmk::LeafLoop loop = exchange.step();
    EXPECT_EQ(loop.passes, 1);
    for (const double J : exchange.JRl) EXPECT_NEAR(J, black, 1e-9 * black);
    for (const double T : exchange.x.canopy().leaves.T) EXPECT_NEAR(T, 300.0, 1e-7);
  }
}

TEST(Canopy, ThickLeavesRadiateAsABlackBodyTimesTheirEmissivity) {
  const double black = kSigma * std::pow(300.0, 4);
  for (const double emissivity : {0.9, 1.0}) {
    // Black leaves may stand many cells deep; the light of grey ones would add up behind them.
    Exchange exchange(
        CanopyCase::box(emissivity < 1.0 ? std::array{1, 1, 1} : std::array{4, 4, 4}, 2.0, 60.0));
    auto& optics = exchange.x.trees.radiat.optics[2];
    optics.emissivity = emissivity;
    optics.rho = 1.0 - emissivity;
    exchange.x.prepare();
    exchange.x.trees.htrans.settings.LOPHBL = 1;
    exchange.step();
    for (const double J : exchange.JRl) EXPECT_NEAR(J, emissivity * black, 1e-10 * black);
  }
}

TEST(Canopy, EveryLeafClosesItsBalance) {
  Draw draw(9);
  for (int n = 0; n < 10; ++n) {
    Exchange exchange(random_canopy(draw));
    for (double& R : exchange.Rl) R = draw.real(300.0, 450.0);
    for (double& R : exchange.Rs) R = n % 2 == 0 ? draw.real(0.0, 300.0) : 0.0;
    tsrf_module_jumoku::Data& canopy = exchange.x.canopy();
    jmk::sweep_beam(sun_at(0.3, 0.2, 0.7), n % 2 == 0 ? 700.0 : 0.0, exchange.x.trees.radiat.optics,
                    canopy);
    EXPECT_TRUE(exchange.step().converged);

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
  jmk::tsrf_sundir(exchange.x.recorded.log, 60.0, 0.0, sun_at(0.3, 0.2, 0.7), {700.0, 0.0, 0.0},
                   exchange.x.patch, fsun, exchange.x.trees.cells, exchange.x.trees.radiat,
                   exchange.x.canopy(), Jdir);
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
  jmk::tsrf_trcanopy(x.recorded.log, {0.0, 100.0, 400.0}, x.patch, x.trees.cells, x.trees.htrans,
                     x.trees.radiat, x.canopy(), Rl, Rs, JRl, JRs);
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
