// The surface balance: what the plain form gives, with all sets of instructions, and its two
// faults.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "../bench/plain_surface.hpp"
#include "../bench/sample_surfaces.hpp"
#include "frame/numbers.hpp"
#include "patches_of.hpp"
#include "recorded_log.hpp"
#include "surface/heat_balance.hpp"

namespace {

using tsrf_therm1d::tsrf_therm1d;

std::string run(sample::District& d, std::size_t hands = 1,
                frame::InstructionSet set = frame::widest_set()) {
  frame::Crew crew({hands});
  RecordedLog recorded;
  return recorded.lines_of([&] {
    const auto patch = patches_of(std::vector<double>(d.Rl.size(), 1.0));
    tsrf_therm1d(recorded.log, crew, 17, patch, d.srfprp, d.skyvf, d.Rl, d.Rs, d.state, set);
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

using frame::InstructionSet;

std::string printed(double value) {
  std::string text;
  frame::append_e13(text, value);
  return text;
}

TEST(HeatBalance, HasTheBitsOfThePlainFormOrNearlyWhereItIsWet) {
  for (const double wet_share : {0.0, 0.3, 1.0}) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
      sample::District fast(3000, seed, wet_share);
      sample::District plain = fast;
      EXPECT_EQ(run(fast, 1 + seed % 4), "");
      ASSERT_TRUE(plain::tsrf_therm1d(plain.srfprp, plain.skyvf, plain.Rl, plain.Rs, plain.state));
      for (std::size_t p = 0; p < 3000; ++p) {
        const double T = plain.state.tlyr(p, 0);
        const bool dry = plain.srfprp.beta[static_cast<std::size_t>(plain.state.isrf[p])] == 0.0;
        // The exponential is one of our own.
        ASSERT_NEAR(fast.state.tlyr(p, 0), T, dry ? 0.0 : 1e-15 * T);
        ASSERT_EQ(printed(fast.state.tlyr(p, 0) - 273.15), printed(T - 273.15));
        for (std::int32_t term = 0; term < 6; ++term) {
          ASSERT_EQ(printed(fast.state.qsurf(p, term)), printed(plain.state.qsurf(p, term)));
          // A dry patch's latent term is 0 in both; its sign, which nothing prints, may differ.
          ASSERT_TRUE(!dry || fast.state.qsurf(p, term) == plain.state.qsurf(p, term));
        }
      }
    }
  }
}

TEST(HeatBalance, HasTheSameBitsWithAllInstructions) {
  for (const double wet_share : {0.2, 1.0}) {
    // Blocks that are full and one that is not, all of them by different hands.
    const sample::District start(3001, 5, wet_share);
    sample::District first = start;
    EXPECT_EQ(run(first, 1, InstructionSet::common), "");
    for (const InstructionSet set : frame::kInstructionSets) {
      if (!frame::has(set)) continue;
      sample::District d = start;
      EXPECT_EQ(run(d, 3, set), "");
      EXPECT_TRUE(std::ranges::equal(d.state.tlyr.all(), first.state.tlyr.all()));
      EXPECT_TRUE(std::ranges::equal(d.state.qsurf.all(), first.state.qsurf.all()));
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
