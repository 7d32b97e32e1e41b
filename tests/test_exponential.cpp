// The exponential by lanes: against long double, and the same bits with all sets of instructions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "frame/instruction_set.hpp"

namespace {

#define PASS_PREFIX exponential
#define PASS_FILE "exponential_of.inc"
#include "frame/pass_sets.inc"

/// The exponentials of all values; their count is a multiple of 8.
std::vector<double> exponentials(frame::InstructionSet set, std::vector<double> x) {
#if defined(__x86_64__)
  if (set == frame::InstructionSet::avx2) exponential_avx2::exponential_of(x);
  if (set == frame::InstructionSet::avx512) exponential_avx512::exponential_of(x);
#endif
  if (set == frame::InstructionSet::common) exponential_common::exponential_of(x);
  return x;
}

/// What saturation at 1 K to 10000 K asks for, and all that has an exponential.
std::vector<double> samples() {
  std::vector<double> x{0.0, -0.0, 5e-324, -1e-300, 1e-17, 1.0, -708.0, 709.0};
  std::mt19937_64 random(3);
  for (const auto& [low, high] :
       {std::pair{-5.0, 5.0}, {-5.0, 5.0}, {-708.0, 20.0}, {-708.0, 709.0}}) {
    std::uniform_real_distribution<double> draw(low, high);
    for (int n = 0; n < 100000; ++n) x.push_back(draw(random));
  }
  for (int k = -1000; k <= 1000; ++k) {  // on both sides of where the power of two changes
    const double edge = (k + 0.5) * std::log(2.0);
    for (const double v : {std::nextafter(edge, -1e9), edge, std::nextafter(edge, 1e9)})
      x.push_back(v);
  }
  x.resize(x.size() / 8 * 8);
  return x;
}

TEST(Exponential, IsThatOfLongDoubleWithinOneUnit) {
  static_assert(std::numeric_limits<long double>::digits > 60);
  const std::vector<double> x = samples();
  const std::vector<double> y = exponentials(frame::InstructionSet::common, x);
  double worst = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] < -708.0 || x[i] > 709.0) continue;
    const long double exact = std::exp(static_cast<long double>(x[i]));
    const auto nearest = static_cast<double>(exact);
    const double unit = std::nextafter(nearest, std::numeric_limits<double>::infinity()) - nearest;
    worst = std::max(worst, static_cast<double>(std::fabs(y[i] - exact) / unit));
  }
  EXPECT_LT(worst, 0.8);
}

TEST(Exponential, HasTheSameBitsWithAllInstructions) {
  const std::vector<double> x = samples();
  const std::vector<double> first = exponentials(frame::InstructionSet::common, x);
  for (const frame::InstructionSet set : frame::kInstructionSets) {
    EXPECT_TRUE(!frame::has(set) || exponentials(set, x) == first);
  }
}

TEST(Exponential, StaysInItsRange) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::vector<double> y =
      exponentials(frame::widest_set(),
                   {-kInfinity, -1e300, -709.0, -708.0, 709.0, 710.0, kInfinity, std::nan("")});
  EXPECT_EQ(y[0], y[3]);
  EXPECT_EQ(y[1], y[3]);
  EXPECT_EQ(y[2], y[3]);
  EXPECT_EQ(y[5], y[4]);
  EXPECT_EQ(y[6], y[4]);
  EXPECT_TRUE(std::isnan(y[7]));
}

}  // namespace
