#include <gtest/gtest.h>

#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <vector>

#include "frame/crew.hpp"
#include "frame/floating_point.hpp"
#include "recorded_log.hpp"

namespace {

using frame::Crew;

TEST(Crew, DoesEveryRowOnce) {
  for (const std::size_t hands : {1U, 2U, 3U, 7U}) {
    Crew crew({hands});
    for (std::size_t loop = 0; loop < 3000; ++loop) {
      std::vector<int> rows(loop % 50);
      std::vector<int> hand(hands);
      crew.share(rows.size(), 1 + loop % 7, [&](Crew::Stretch part) {
        for (std::size_t row = part.first; row < part.last; ++row) ++rows[row];
        hand[part.hand] += static_cast<int>(part.last - part.first);
      });
      ASSERT_EQ(rows, std::vector<int>(rows.size(), 1));
      ASSERT_EQ(std::reduce(hand.begin(), hand.end()), static_cast<int>(rows.size()));
    }
  }
}

TEST(Crew, GivesOnWhatAPartThrowsAndGoesOn) {
  Crew crew({3});
  for (int loop = 0; loop < 100; ++loop) {
    EXPECT_THROW(crew.each(64, 1,
                           [&](std::size_t row) {
                             if (row % 9 == 8) throw std::runtime_error("row");
                           }),
                 std::runtime_error);
    std::vector<int> rows(64);
    crew.each(rows.size(), 1, [&](std::size_t row) { rows[row] = 1; });
    ASSERT_EQ(std::reduce(rows.begin(), rows.end()), 64);
  }
}

TEST(Crew, HandsHaveTheArithmeticOfTheCaller) {
  const frame::FlushDenormals mode;
  Crew crew({4});
  const volatile double least = 1e-308;
  for (int loop = 0; loop < 20; ++loop) {
    std::vector<double> halves(4000, 1.0);
    crew.each(halves.size(), 10, [&](std::size_t row) { halves[row] = least * 0.1; });
    EXPECT_EQ(halves, std::vector<double>(halves.size()));
  }
}

TEST(Crew, TakesTheHandsThatTheUserWants) {
  const auto wanted = [](const char* text) {
    ::setenv("TOWNSKIN_THREADS", text, 1);
    RecordedLog recorded;
    std::size_t hands = 0;
    std::string lines = recorded.lines_of([&] { hands = frame::hands_wanted(recorded.log).count; });
    ::unsetenv("TOWNSKIN_THREADS");
    return lines + std::to_string(hands);
  };
  EXPECT_EQ(wanted("3"), "3");
  EXPECT_EQ(wanted("1024"), "1024");
  for (const std::string text : {"0", "-1", "1025", "two", "2.5", " "}) {
    EXPECT_EQ(wanted(text.c_str()), "### error : environment variable\nTOWNSKIN_THREADS = " + text +
                                        "\nit must be >= 1 and <= 1024\n0");
  }
  EXPECT_GE(std::stoul(wanted("")), 1U);
}

}  // namespace
