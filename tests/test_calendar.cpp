// The calendar of 365-day years, against an odometer that counts days one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "inputs/calendar.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_calendar;

constexpr std::array<int, 12> kLengths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

class Calendar : public testing::Test {
 protected:
  Date date_of(double time) { return sec2date(recorded.log, calendar, time); }
  RecordedLog recorded;
  Data calendar;
};

TEST_F(Calendar, CountsEveryDayOfTenYearsAroundTheStart) {
  double time = -5.0 * 365.0 * kSecondsPerDay;
  for (int year = -4; year <= 5; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= kLengths[static_cast<std::size_t>(month - 1)]; ++day) {
        const Date date{double(year), double(month), double(day), 0, 0, 0};
        ASSERT_EQ(date2sec(calendar, date), time);
        ASSERT_EQ(date_of(time), date);
        const Date last_second{double(year), double(month), double(day), 23, 59, 59};
        ASSERT_EQ(date_of(time + 86399.0), last_second);
        ASSERT_EQ(date_of(time + 86399.4), last_second);
        ASSERT_EQ(date_month(recorded.log, calendar, time + 1.0).month, month);
        const auto closing = date_month(recorded.log, calendar, time);
        ASSERT_EQ(closing.at_start, day == 1);
        ASSERT_EQ(closing.month, day > 1 ? month : month == 1 ? 12 : month - 1);
        time += kSecondsPerDay;
      }
    }
  }
}

TEST_F(Calendar, DatesAndTimesAreInverseOverTwentyTwoThousandYears) {
  for (const double origin : {0.0, 2014.0 * 365.0 * kSecondsPerDay}) {
    calendar = Data{origin};
    for (int year : {20000, 1, 0, -1, -2000, 2015, -1999, 19999}) {  // also backward in time
      for (int month = 1; month <= 12; ++month) {
        const Date start{double(year), double(month), 1, 0, 0, 0};
        const double time = date2sec(calendar, start);
        ASSERT_EQ(time + origin, date2sec(Data{}, start));
        ASSERT_EQ(date_of(time), start);
        for (const double step : {-3600.0, -1.0, 1.0, 59.0, 60.0, 3599.0, 86400.0}) {
          ASSERT_EQ(date2sec(calendar, date_of(time + step)), time + step);
        }
      }
    }
  }
}

TEST_F(Calendar, ElementsBeyondTheirRangeAddOn) {
  const std::vector<std::pair<Date, Date>> same{
      {{1, 13, 1, 0, 0, 0}, {2, 1, 1, 0, 0, 0}},   {{2, 0, 5, 0, 0, 0}, {1, 12, 5, 0, 0, 0}},
      {{5, -12, 1, 0, 0, 0}, {3, 12, 1, 0, 0, 0}}, {{5, -13, 1, 0, 0, 0}, {3, 11, 1, 0, 0, 0}},
      {{1, 24, 1, 0, 0, 0}, {2, 12, 1, 0, 0, 0}},  {{1, 25, 1, 0, 0, 0}, {3, 1, 1, 0, 0, 0}},
      {{1, 2, 29, 0, 0, 0}, {1, 3, 1, 0, 0, 0}},   {{1, 1, 1, 24, 0, 0}, {1, 1, 2, 0, 0, 0}},
      {{1, 1, 1, 0, 60, 60}, {1, 1, 1, 1, 1, 0}},  {{1, 3, 0, 0, 0, 0}, {1, 2, 28, 0, 0, 0}},
      {{1, 12, 32, 0, 0, 0}, {2, 1, 1, 0, 0, 0}},  {{1.9, 1.9, 1.5, 0, 0, 0}, {1, 1, 1, 12, 0, 0}},
  };
  for (const auto& [odd, plain] : same) {
    EXPECT_EQ(date2sec(calendar, odd), date2sec(calendar, plain));
  }
}

TEST_F(Calendar, StopsWhereNoYearIsFound) {
  for (const double time : {4.0e13, -1.0e30, 1.0e300, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THROW(date_of(time), frame::Stop);
    EXPECT_TRUE(recorded.screen.str().starts_with(
        "### program error -1- (tsrf_module_calendar)\n(sec2date)\n"));
    calendar = Data{};
  }
}

TEST_F(Calendar, ChecksDates) {
  const std::vector<std::pair<IntDate, bool>> cases{
      {{-7, 1, 1, 0, 0, 0}, true},  {{1, 12, 31, 24, 60, 60}, true}, {{1, 0, 1, 0, 0, 0}, false},
      {{1, 13, 1, 0, 0, 0}, false}, {{2000, 2, 29, 0, 0, 0}, false}, {{1, 2, 28, 0, 0, 0}, true},
      {{1, 4, 31, 0, 0, 0}, false}, {{1, 1, 0, 0, 0, 0}, false},     {{1, 1, 1, 25, 0, 0}, false},
      {{1, 1, 1, -1, 0, 0}, false}, {{1, 1, 1, 0, 61, 0}, false},    {{1, 1, 1, 0, 0, 61}, false},
      {{1, 1, 1, 0, -1, 0}, false}, {{1, 1, 1, 0, 0, -1}, false},
  };
  for (const auto& [date, good] : cases) EXPECT_EQ(chkdate(date), good);
}

TEST_F(Calendar, FindsTheStartOfTheCycle) {
  // First and last date, then the time asked for, the cycle's base, its period, its level.
  struct Case {
    Date first, last, now, base, period;
    int level;
  };
  const std::vector<Case> cases{
      {{1, 1, 1, 1}, {1, 1, 1, 24}, {3, 5, 7, 6}, {3, 5, 7}, {0, 0, 1}, 3},
      {{1, 1, 1, 1}, {1, 1, 1, 24}, {3, 5, 7, 0, 30}, {3, 5, 6}, {0, 0, 1}, 3},
      {{1, 1, 1, 1}, {1, 1, 1, 1}, {3, 5, 7, 1}, {3, 5, 7}, {0, 0, 1}, 3},
      {{1, 1, 2}, {1, 1, 30}, {3, 5, 7}, {3, 5, 1}, {0, 1}, 2},
      {{1, 1, 2}, {1, 1, 30}, {3, 5, 1, 12}, {3, 4, 1}, {0, 1}, 2},
      {{1, 1, 2}, {1, 1, 30}, {3, 1, 1}, {3, 0, 1}, {0, 1}, 2},
      {{1, 3, 1}, {1, 11, 1}, {3, 4, 1}, {3, 1, 1}, {1}, 1},
      {{1, 3, 1}, {1, 11, 1}, {3, 2, 28}, {2, 1, 1}, {1}, 1},
      {{11, 3, 1}, {13, 2, 1}, {12, 4, 1}, {11, 1, 1}, {3}, 1},
      {{11, 3, 1}, {13, 2, 1}, {17, 4, 1}, {17, 1, 1}, {3}, 1},
      {{11, 3, 1}, {13, 2, 1}, {10, 4, 1}, {8, 1, 1}, {3}, 1},
      {{11, 3, 1}, {13, 2, 1}, {8, 4, 1}, {8, 1, 1}, {3}, 1},
      {{11, 3, 1}, {13, 2, 1}, {7, 4, 1}, {5, 1, 1}, {3}, 1},
      {{11, 3, 1}, {13, 2, 1}, {14, 1, 1}, {11, 1, 1}, {3}, 1},
  };
  for (const Case& c : cases) {
    const Cycle cycle = cycdate(recorded.log, calendar, date2sec(calendar, c.now), c.first, c.last);
    EXPECT_EQ(cycle.base, c.base);
    EXPECT_EQ(cycle.period, c.period);
    EXPECT_EQ(cycle.level, c.level);
  }
}

}  // namespace
