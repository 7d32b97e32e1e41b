// Dated series against a table of all their units over many cycles.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "inputs/dated_series.hpp"
#include "recorded_log.hpp"

namespace {

using namespace dated_series;

constexpr Words kWords{"Tide", "(tsrf_module_tide)", "(set_tide)", "%%% read tide : date=", "Tide",
                       "Tide", "line no. ="};

/// A series whose records hold one value.
class Tide {
 public:
  Tide(std::string text, const Settings& settings) : file_("Tide.txt", std::move(text)) {
    series.settings = settings;
  }
  double at(double time) {
    const Bracket b = find(recorded.log, file_, time, calendar, source_, series);
    return mix(b.weight, values_[static_cast<std::size_t>(b.lower)],
               values_[static_cast<std::size_t>(b.upper)]);
  }

  RecordedLog recorded;
  Series series;
  tsrf_module_calendar::Data calendar;

 private:
  frame::ReadStatus next(double& value, IntDate& date) {
    return file_.read(on_record(series.settings, date), value);
  }
  void check_data() {
    double ignored = 0.0;
    const auto check = [&](Counter&, IntDate& date) { return next(ignored, date); };
    check_pass(recorded.log, file_, kWords, 1, check, series);
  }
  frame::TextInput file_;
  std::vector<double> values_;
  std::function<void()> check_ = [this] { check_data(); };
  std::function<void(std::int32_t)> prepare_ = [this](std::int32_t slots) {
    values_.resize(static_cast<std::size_t>(slots));
  };
  std::function<frame::ReadStatus(std::int32_t, IntDate&)> read_ = [this](std::int32_t slot,
                                                                          IntDate& date) {
    return next(values_[static_cast<std::size_t>(slot)], date);
  };
  Source source_{kWords, check_, prepare_, read_};
};

/// Dates of a file's units, how they repeat, and the span of time that is asked for.
struct Kind {
  const char* name;
  std::array<std::int32_t, 2> LDATE;
  std::vector<IntDate> dates;
  Date period;
  Date from, to;
};

std::vector<Kind> kinds() {
  std::vector<Kind> all{
      {"hours of a day", {4, 4}, {}, {0, 0, 1}, {1, 1, 1}, {1, 1, 20}},
      {"two times of a day", {4, 6}, {}, {0, 0, 1}, {-1, 12, 28}, {0, 1, 3}},
      {"days of a month", {3, 4}, {}, {0, 1, 0}, {4, 1, 1}, {5, 8, 1}},
      {"hours of one day, with the day", {3, 4}, {}, {0, 0, 1}, {3, 2, 1}, {3, 3, 1}},
      {"days of a year", {2, 4}, {}, {1, 0, 0}, {2014, 6, 1}, {2018, 1, 1}},
      {"one year, with the year", {1, 4}, {}, {1, 0, 0}, {2009, 6, 1}, {2021, 1, 1}},
      {"months of three years", {1, 5}, {}, {3, 0, 0}, {1, 3, 1}, {31, 1, 1}}};
  for (std::int32_t i = 1; i <= 24; ++i) all[0].dates.push_back({1, 1, 1, i, 0, 0});
  all[1].dates = {{1, 1, 1, 7, 30, 0}, {1, 1, 1, 19, 0, 59}};
  for (std::int32_t i = 2; i <= 28; i += 3) all[2].dates.push_back({1, 1, i, 12, 0, 0});
  for (std::int32_t i = 0; i <= 23; i += 4) all[3].dates.push_back({1, 1, 9, i, 0, 0});
  for (std::int32_t i = 3; i <= 11; ++i) all[4].dates.push_back({1, i, 4 + i, 24, 0, 0});
  for (std::int32_t i = 1; i <= 12; ++i) all[5].dates.push_back({2015, i, i, 1, 0, 0});
  for (std::int32_t i = 2; i <= 31; i += 2) {
    all[6].dates.push_back({11 + i / 12, 1 + i % 12, 5, 6, 30, 0});
  }
  return all;
}

class EveryCycle : public testing::TestWithParam<std::int32_t> {};

TEST_P(EveryCycle, EqualsTheTableOfAllUnits) {
  for (const Kind& kind : kinds()) {
    SCOPED_TRACE(kind.name);
    std::string text = "title\n";
    std::map<double, double> table;  // time -> value over 900 cycles (or so) each way
    const tsrf_module_calendar::Data plain;
    const int around = static_cast<int>(900 / std::max(1.0, kind.period[1] + 30 * kind.period[0]));
    const int home = static_cast<int>(kind.period[2] * date2sec(plain, kind.from) / 86400.0 +
                                      12.0 * kind.period[1] * (kind.from[0] - 1.0) +
                                      kind.period[0] * (kind.LDATE[0] > 1 ? kind.from[0] - 1 : 0));
    for (std::size_t n = 0; n < kind.dates.size(); ++n) {
      for (int e = kind.LDATE[0] - 1; e < kind.LDATE[1]; ++e) {
        text += std::to_string(kind.dates[n][static_cast<std::size_t>(e)]) + " ";
      }
      text += std::to_string(n * n) + ".25\n";
      for (int c = home - around; c <= home + around; ++c) {
        Date date{};
        for (std::size_t e = 0; e < 6; ++e) {
          const double step = kind.period[e] > 0.0 ? c * kind.period[e] : 0.0;
          date[e] = kind.dates[n][e] + step;
        }
        table[date2sec(plain, date)] = static_cast<double>(n * n) + 0.25;
      }
    }
    Tide tide(text, {GetParam(), kind.LDATE, 100});
    const double from = date2sec(plain, kind.from);
    const double span = date2sec(plain, kind.to) - from;
    std::mt19937 random(7);
    for (int query = 0; query < 1200; ++query) {  // forward, backward, anywhere, at units' times
      const double share = query < 400   ? query / 400.0
                           : query < 800 ? (800 - query) / 400.0
                                         : static_cast<double>(random()) / 4294967296.0;
      double time = from + span * share;
      if (query % 3 == 0) time = table.lower_bound(time)->first;
      const auto upper = table.lower_bound(time);
      const auto lower = std::prev(upper);
      const double weight = (time - lower->first) / (upper->first - lower->first);
      ASSERT_EQ(tide.at(time), mix(weight, lower->second, upper->second)) << query << " " << time;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Window, EveryCycle, testing::Values(2, 24));

TEST(DatedSeries, OneUnitIsConstant) {
  for (const std::int32_t stored : {2, 3}) {
    Tide tide("title\n13 0.1", {stored, {4, 4}, 100});
    for (const double time : {0.0, 5e4, 1e9, -1e9}) EXPECT_EQ(tide.at(time), 0.1);
  }
}

TEST(DatedSeries, ReportsEachUnitReadAndReadsNoFileWhenAllIsInMemory) {
  const std::string text = "title\n\n6 1\n12 2\n24 3";
  Tide whole(text, {3, {4, 4}, 100});
  Tide pair(text, {2, {4, 4}, 100});
  const auto day = [](Tide& tide) {
    return tide.recorded.lines_of([&] {
      for (double time = 3.6e4; time < 1.3e5; time += 3600.0) tide.at(time);
    });
  };
  const std::string head = "%%% read tide : date= 1 1 ";
  const std::string first = head + "1 6 0 0\n" + head + "1 12 0 0\n" + head + "1 24 0 0\n";
  EXPECT_EQ(day(whole), first);
  EXPECT_EQ(day(whole), "");
  EXPECT_EQ(day(pair), first + head + "2 6 0 0\n" + head + "2 12 0 0\n");
}

TEST(DatedSeries, GivesUpBeyondItsCycles) {
  const std::string text = "title\n2015 6 1\n2015 12 2\n2016 3 3\n";
  const std::string lost = " (tsrf_module_tide)\n(set_tide)\n63072000\n";
  for (const std::int32_t stored : {2, 24}) {
    Tide tide(text, {stored, {1, 2}, 100});
    EXPECT_TRUE(
        tide.recorded.lines_of([&] { tide.at(63072000.0); })
            .ends_with("### program error -" + std::to_string(stored == 2 ? 1 : 2) + "-" + lost));
    tide.series.settings.NCYCL = 2000;  // a hundred cycles were too few
    reset(tide.series);
    EXPECT_NEAR(tide.at(63072000.0), 2.0, 1.0);
  }
}

TEST(DatedSeries, ChecksItsSettings) {
  struct Case {
    const char* members;
    const char* lines;
  };
  for (const Case& c : std::vector<Case>{
           {"NSTRDT = 1, NCYCL = 99, LDATE = 0, 4", "nstrdt = 1\nit must be > 1\n"},
           {"NCYCL = 99, LDATE = 0, 4", "ncycl = 99\nit must be >= 100\n"},
           {"LDATE = 0, 4", "ldate = 0 4\nout of range/order\n"},
           {"LDATE = 4, 7", "ldate = 4 7\nout of range/order\n"},
           {"LDATE(1) = 5", "ldate = 5 4\nout of range/order\n"},
           {"LDATE = 1, 3", "ldate = 1 3\nldate(1) must be <= 4 and ldate(2) must be >=4\n"},
           {"LDATE = 5, 6", "ldate = 5 6\nldate(1) must be <= 4 and ldate(2) must be >=4\n"}}) {
    RecordedLog recorded;
    Settings settings;
    frame::TextInput control("control", "&TIDE " + std::string(c.members) + " /");
    const std::string lines = recorded.lines_of([&] {
      frame::Group("TIDE", members(settings, Hour::required)).read(recorded.log, control);
    });
    EXPECT_TRUE(lines.ends_with("### error : data error\n" + std::string(c.lines))) << lines;
    settings = {2, {1, 3}, 100};
    frame::Group("TIDE", members(settings, Hour::optional)).check(recorded.log);
  }
}

}  // namespace
