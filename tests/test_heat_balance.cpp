// The surface balance: bits of the plain form, closed-form temperatures, and its two faults.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "../bench/plain_surface.hpp"
#include "../bench/sample_surfaces.hpp"
#include "patches_of.hpp"
#include "recorded_log.hpp"
#include "surface/heat_balance.hpp"

namespace {

using tsrf_therm1d::tsrf_therm1d;

std::string run(sample::District& d) {
  RecordedLog recorded;
  return recorded.lines_of([&] {
    const auto patch = patches_of(std::vector<double>(d.Rl.size(), 1.0));
    tsrf_therm1d(recorded.log, 17, patch, d.srfprp, d.skyvf, d.Rl, d.Rs, d.state);
  });
}

/// One patch without any exchange but what a test adds.
sample::District bare_patch() {
  sample::District d(1, 1, 0.0);
  d.state.lcal[0] = 1;
  d.state.isrf[0] = 0;
  d.srfprp.alb[0] = d.srfprp.beta[0] = 0.0;
  d.srfprp.ems[0] = 1.0;
  d.skyvf[0] = d.Rl[0] = d.Rs[0] = d.state.hc[0] = d.state.gcond(0, 0) = 0.0;
  d.state.tlyr(0, 0) = 300.0;
  return d;
}

TEST(HeatBalance, HasTheBitsOfThePlainForm) {
  for (const double wet_share : {0.0, 0.3, 1.0}) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
      sample::District fast(1000, seed, wet_share);
      sample::District plain = fast;
      EXPECT_EQ(run(fast), "");
      ASSERT_TRUE(plain::tsrf_therm1d(plain.srfprp, plain.skyvf, plain.Rl, plain.Rs, plain.state));
      EXPECT_TRUE(std::ranges::equal(fast.state.tlyr.all(), plain.state.tlyr.all()));
      // A dry patch's latent term is 0 in both; its sign, which nothing prints, may differ.
      EXPECT_TRUE(std::ranges::equal(fast.state.qsurf.all(), plain.state.qsurf.all()));
    }
  }
}

TEST(HeatBalance, FindsTheTemperaturesOfClosedForms) {
  sample::District radiating = bare_patch();
  radiating.skyvf[0] = 1.0;
  radiating.Rs[0] = 250.0;
  radiating.Rl[0] = 150.0;
  EXPECT_EQ(run(radiating), "");
  EXPECT_NEAR(radiating.state.tlyr(0, 0), std::pow(400.0 / 5.6704e-8, 0.25), 1e-7);

  sample::District conducting = bare_patch();  // weighted mean of air and first cell
  conducting.state.hc[0] = 10.0;
  conducting.state.airst(0, 1) = 290.0;
  conducting.state.gcond(0, 0) = 30.0;
  conducting.state.tlyr(0, 1) = 310.0;
  EXPECT_EQ(run(conducting), "");
  EXPECT_NEAR(conducting.state.tlyr(0, 0), 305.0, 1e-9);
  EXPECT_NEAR(conducting.state.qsurf(0, tsrf_therm1d::kConduction), -150.0, 1e-7);

  sample::District evaporating = bare_patch();  // wet bulb: hc (Ta - T) = Lv hm (qs(T) - qa)
  evaporating.srfprp.beta[0] = 1.0;
  evaporating.state.hc[0] = 11.6;
  evaporating.state.airst(0, 1) = 303.0;
  evaporating.state.airst(0, 2) = 0.010;
  EXPECT_EQ(run(evaporating), "");
  const double T = evaporating.state.tlyr(0, 0);
  const double e = 611.0 * std::exp(19.850675545287046 * (1.0 - 273.0 / T)) / 1e5;
  const double qs = 0.6219790084242508 * e / (1.0 - 0.3780209915757492 * e);
  EXPECT_NEAR(1005.0 * (303.0 - T), 2501000.0 * (qs - 0.010), 1e-3);
  EXPECT_LT(T, 303.0);
}

TEST(HeatBalance, ReportsTemperaturesThatMakeNoSense) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [Rs, hc] : {std::pair{kNaN, 1.0}, {1e6, 10.0}, {-1e6, 10.0}, {5.0, 0.0}}) {
    sample::District d(40, 3, 0.0);
    d.Rs[20] = Rs;
    d.skyvf[20] = d.state.gcond(20, 0) = 0.0;
    d.state.hc[20] = hc;
    const std::string lines = run(d);
    for (const char* part :
         {"### error : surface temperature out of range\niter = 17\nPID = 21\n",
          "latent heat = 0\n", "it must be >= 1 and <= 10000\n(tsrf_therm1d)\n"}) {
      EXPECT_NE(lines.find(part), std::string::npos) << part << lines;
    }
  }
}

TEST(HeatBalance, StopsWhereTheSearchDoesNotSettle) {
  // In thin air just below boiling the simplified slope of humidity is far too small, and Newton's
  // steps swing to and fro.
  sample::District d = bare_patch();
  d.srfprp.beta[0] = 1.0;
  d.state.hc[0] = 1.0;
  d.state.hm[0] = 100.0;
  d.state.airst(0, 0) = 1000.0;
  d.state.airst(0, 1) = 300.0;
  d.state.airst(0, 2) = 0.55;
  frame::TextInput weather("Weather.txt", "# title\n1 a\n\n2 b\n");
  d.state.air_origin = {&weather, {weather.content().find("1 a"), weather.content().find("\n2 b")}};
  const std::string lines = run(d);
  EXPECT_TRUE(
      lines.starts_with("%%% file Weather.txt, lines 2 and 4\n"
                        "### program error -2- (tsrf_therm1d)\nPID = 1\n"))
      << lines;
}

}  // namespace
