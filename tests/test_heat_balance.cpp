// The surface balance: bits of the plain form and its two faults.
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

std::string run(sample::District& d, std::size_t hands = 1) {
  frame::Crew crew({hands});
  RecordedLog recorded;
  return recorded.lines_of([&] {
    const auto patch = patches_of(std::vector<double>(d.Rl.size(), 1.0));
    tsrf_therm1d(recorded.log, crew, 17, patch, d.srfprp, d.skyvf, d.Rl, d.Rs, d.state);
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
      sample::District fast(3000, seed, wet_share);
      sample::District plain = fast;
      EXPECT_EQ(run(fast, 1 + seed % 4), "");
      ASSERT_TRUE(plain::tsrf_therm1d(plain.srfprp, plain.skyvf, plain.Rl, plain.Rs, plain.state));
      EXPECT_TRUE(std::ranges::equal(fast.state.tlyr.all(), plain.state.tlyr.all()));
      // A dry patch's latent term is 0 in both; its sign, which nothing prints, may differ.
      EXPECT_TRUE(std::ranges::equal(fast.state.qsurf.all(), plain.state.qsurf.all()));
    }
  }
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

TEST(HeatBalance, TakesTheLimitsThatItTells) {
  for (const double limit : {1.0, 10000.0}) {
    const double outwards = limit < 2.0 ? 0.0 : 20000.0;
    EXPECT_TRUE(tsrf_therm1d::plausible(limit));
    EXPECT_FALSE(tsrf_therm1d::plausible(std::nextafter(limit, outwards)));
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
