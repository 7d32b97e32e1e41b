// The canopy of cells: the beam, scattered light and long wave, and the leaves in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "canopy_case.hpp"
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

TEST(Beam, OverheadSunFadesExponentially) {
  CanopyCase x = CanopyCase::box({2, 3, 4}, 1.5, 0.6);
  x.add_patch(3, {2, 2, 1}, 2.25, {0.0, 0.0, 1.0});   // ground below the box
  x.add_patch(3, {1, 1, 1}, 2.25, {0.0, 0.0, 1.0});   // ground beside it
  x.add_patch(1, {2, 2, 3}, 2.25, {0.0, 0.0, -1.0});  // a ceiling two layers under the box's top
  x.prepare();
  jmk::sweep_beam({0.0, 0.0, 1.0}, 1000.0, x.trees.radiat.optics, x.canopy());
  const auto left = [](double H) {
    return 0.425 * std::exp(-0.6 * 0.45 * H) + 0.575 * std::exp(-0.6 * 0.3 * H);
  };
  EXPECT_NEAR(x.canopy().beam.left[0], left(6.0), 1e-14);
  EXPECT_EQ(x.canopy().beam.left[1], 1.0);
  EXPECT_NEAR(x.canopy().beam.left[2], left(3.0), 1e-14);
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
  std::int32_t most = 0;
  for (int n = 0; n < 200; ++n) {
    CanopyCase x = random_canopy(draw);
    x.prepare();
    auto& band = x.canopy().bands[static_cast<std::size_t>(n % 3)];
    for (double& flux : band.outside) flux = draw.real(0.0, 500.0);
    for (std::size_t c = 0; c < band.source.size(); ++c) {
      if (x.canopy().cells.leaf[c] >= 0) band.source[c] = draw.real(0.0, 100.0);
    }
    most = std::max(most, jmk::jmk_difrad_flux(x.recorded.log, x.canopy(), 100, {1e-12, 1e-10}, band));
    const BandBudget budget(x.canopy(), band);
    const double in = budget.entering + budget.started;
    EXPECT_NEAR(in, budget.kept + budget.leaving, 1e-9 * in) << n;
  }
  printf("most %d\n", most);
}

TEST(Diffuse, Conv) {
  for (int size : {5, 20, 40}) for (double lad : {0.01,0.1, 0.5, 2.0, 10.0}) {
    CanopyCase x = CanopyCase::box({size, size, 6}, 1.0, lad);
    x.prepare();
    auto& band = x.canopy().bands[1];
    for (double& flux : band.outside) flux = 100.0;
    for (double& s : band.source) s = 10.0;
    int n = 0;
    x.recorded.lines_of([&]{ n = jmk::jmk_difrad_flux(x.recorded.log, x.canopy(), 1000, {1e-12, 1e-10}, band);});
    printf("%d %g: %d\n", size, lad, n);
  }
}

}  // namespace
