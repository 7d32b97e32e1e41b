// The calendar of 365-day years, against an odometer that counts days one by one.
#include <gtest/gtest.h>

#include <cmath>

#include "inputs/calendar.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_calendar;

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
      const int length = month == 2 ? 28 : 30 + (month + month / 8) % 2;
      for (int day = 1; day <= length; ++day, time += kSecondsPerDay) {
        const Date date{double(year), double(month), double(day), 0, 0, 0};
        ASSERT_EQ(date2sec(calendar, date), time);
        ASSERT_EQ(date_of(time), date);
        ASSERT_EQ(date_of(time + 86399.4), (Date{date[0], date[1], date[2], 23, 59, 59}));
        ASSERT_EQ(date_month(recorded.log, calendar, time + 1.0).month, month);
        const auto closing = date_month(recorded.log, calendar, time);
        ASSERT_EQ(closing.at_start, day == 1);
        ASSERT_EQ(closing.month, day > 1 ? month : month == 1 ? 12 : month - 1);
      }
      EXPECT_TRUE(chkdate({year, month, length, 24, 60, 60}));
      EXPECT_FALSE(chkdate({year, month, length + 1, 0, 0, 0}));
    }
  }
  for (std::size_t e = 1; e < 6; ++e) {
    for (const std::int32_t value : {e < 3 ? 0 : -1, e == 1 ? 13 : e == 3 ? 25 : 61}) {
      IntDate date{1, 1, 1, 0, 0, 0};
      date[e] = value;
      EXPECT_FALSE(chkdate(date));
    }
  }
}

TEST_F(Calendar, DatesAndTimesAreInverseOverTwentyTwoThousandYears) {
  for (const double origin : {0.0, 2014.0 * 365.0 * kSecondsPerDay}) {
    calendar = Data{origin};
    for (const int year : {20000, 1, 0, -1, -2000, 2015, -1999, 19999}) {  // also backward
      for (int month = 1; month <= 12; ++month) {
        const double time = date2sec(calendar, {double(year), double(month), 1, 0, 0, 0});
        ASSERT_EQ(time + origin, date2sec(Data{}, {double(year), double(month), 1, 0, 0, 0}));
        for (const double step : {-3600.0, -1.0, 0.0, 1.0, 59.0, 60.0, 3599.0, 86400.0}) {
          ASSERT_EQ(date2sec(calendar, date_of(time + step)), time + step);
        }
      }
    }
  }
  for (const double time : {4.0e13, -1.0e30, 1.0e300, std::numeric_limits<double>::quiet_NaN()}) {
    calendar = Data{};
    const std::string log = recorded.lines_of([&] { date_of(time); });
    EXPECT_TRUE(log.starts_with("### program error -1- (tsrf_module_calendar)\n(sec2date)\n"));
  }
}

TEST_F(Calendar, ACycleOfYearsBeginsAtOrBeforeItsTime) {
  for (int year = -9; year <= 4000; ++year) {
    const double time = date2sec(calendar, {double(year), 12, 31, 0, 0, 0});
    const Cycle cycle =
        cycdate(recorded.log, calendar, time, {2015, 3, 1, 0, 0, 0}, {2017, 5, 1, 0, 0, 0});
    EXPECT_TRUE(cycle.base[0] <= year && year < cycle.base[0] + 3.0) << year;
    EXPECT_EQ(std::remainder(cycle.base[0] - 2015.0, 3.0), 0.0) << year;
  }
}

TEST_F(Calendar, ElementsBeyondTheirRangeAddOn) {
  for (int month = -40; month <= 40; ++month) {
    const int years = (month + 47) / 12 - 4;  // that the month lies off its own
    const Date plain{double(7 + years), double(month - 12 * years), 1, 0, 0, 0};
    EXPECT_EQ(date2sec(calendar, {7, double(month), 1, 0, 0, 0}), date2sec(calendar, plain));
    for (const double more : {-31.0, 0.5, 70.0}) {
      const Date odd{plain[0] + 0.9, plain[1] + 0.9, 1 + more, more, more, more};
      EXPECT_EQ(date2sec(calendar, odd), date2sec(calendar, plain) + more * 90061.0);
    }
  }
}

}  // namespace
