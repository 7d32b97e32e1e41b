// Dated series against a table of all their units over many cycles.
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <random>
#include <vector>

#include "fault_table.hpp"
#include "inputs/dated_series.hpp"
#include "recorded_log.hpp"

namespace {

using namespace dated_series;

constexpr Words kWords{"Tide", "(tsrf_module_tide)", "(set_tide)", "%%% read tide : date=", "Tide",
                       "Tide", "line no. ="};

/// A series whose records hold one value.
class Tide {
 public:
  Tide(std::string text, const Settings& settings)
      : series(settings), file_("Tide.txt", std::move(text)) {}
  double at(double time) {
    double value = 0.0;
    const auto next = [&](IntDate& date) {
      return file_.read(on_record(series.settings, date), value);
    };
    const auto check_unit = [&](Counter&, IntDate& date) { return next(date); };
    const auto check = [&] { check_pass(recorded.log, file_, kWords, 1, check_unit, series); };
    const auto prepare = [&](std::int32_t slots) {
      if (slots > memory) throw std::bad_alloc();
      values_.resize(std::size_t(slots));
    };
    const auto read = [&](std::int32_t slot, IntDate& date) {
      const frame::ReadStatus status = next(date);
      values_[std::size_t(slot)] = value;
      return status;
    };
    const Source source{kWords, check, prepare, read, 8};
    const Bracket b = find(recorded.log, file_, time, calendar, source, series);
    return mix(b.weight, values_[std::size_t(b.lower)], values_[std::size_t(b.upper)]);
  }
  RecordedLog recorded;
  Series series;
  std::int32_t memory = 1000;  ///< units that it can hold
  tsrf_module_calendar::Data calendar;

 private:
  frame::TextInput file_;
  std::vector<double> values_;
};

Date plus(Date date, double times, const Date& step) {
  for (std::size_t e = 0; e < date.size(); ++e) date[e] += times * step[e];
  return date;
}

class EveryCycle : public testing::TestWithParam<std::int32_t> {};

TEST_P(EveryCycle, EqualsTheTableOfAllUnits) {
  // LDATE, number of units, date of the first and the step to the next, the period by which all of
  // them repeat, first and last date that is asked for: hours of a day, one hour, two times of a
  // day, days of a month, hours of one day with the day, days of a year, one year with the year,
  // three years.
  frame::TextInput kinds("kinds", R"(
4 4 24     1 1 1 1  0 0  0 0 0 1 0 0  0 0 1 0 0 0     1 1 1 0 0 0     1 1 20 0 0 0
4 4 1      1 1 1 13 0 0  0 0 0 0 0 0  0 0 1 0 0 0     1 1 1 0 0 0     1 1 20 0 0 0
4 6 2      1 1 1 7 30 0  0 0 0 9 9 9  0 0 1 0 0 0  -1 12 28 0 0 0      0 1 3 0 0 0
3 4 9      1 1 2 12 0 0  0 0 3 0 0 0  0 1 0 0 0 0     4 1 1 0 0 0      5 8 1 0 0 0
3 4 6      1 1 9 0  0 0  0 0 0 4 0 0  0 0 1 0 0 0     3 2 1 0 0 0      3 3 1 0 0 0
2 4 9      1 3 7 24 0 0  0 1 1 0 0 0  1 0 0 0 0 0  2014 6 1 0 0 0   2018 1 1 0 0 0
1 4 12  2015 1 1 0  0 0  0 1 1 1 0 0  1 0 0 0 0 0  2009 6 1 0 0 0   2021 1 1 0 0 0
1 5 3     11 3 5 6 30 0  1 4 0 0 9 0  3 0 0 0 0 0     1 3 1 0 0 0     31 1 1 0 0 0
)");
  std::array<double, 33> row{};
  const auto date_in_row = [&row](std::size_t n) {
    Date date{};
    std::copy_n(row.begin() + 3 + std::ptrdiff_t(6 * n), 6, date.begin());
    return date;
  };
  const tsrf_module_calendar::Data plain;
  while (kinds.read(std::span<double>(row)) == frame::ReadStatus::ok) {
    const std::array<std::int32_t, 2> LDATE{std::int32_t(row[0]), std::int32_t(row[1])};
    const Date first = date_in_row(0);
    const Date period = date_in_row(2);
    SCOPED_TRACE(kinds.tell());
    const double from = date2sec(plain, date_in_row(3));
    const double span = date2sec(plain, date_in_row(4)) - from;
    const double home = date2sec(plain, first);
    const double cycle = date2sec(plain, plus(first, 1.0, period)) - home;
    std::string text = "title\n";
    std::map<double, double> table;
    for (int unit = 0; unit < row[2]; ++unit) {
      const Date date = plus(first, unit, date_in_row(1));
      for (auto e = std::size_t(LDATE[0] - 1); e < std::size_t(LDATE[1]); ++e) {
        text += frame::items(date[e], "");
      }
      const double value = unit * unit + 0.25;
      text += frame::items(value, "\n");
      for (double c = std::floor((from - home) / cycle) - 9; home + (c - 9) * cycle < from + span;
           ++c) {
        table[date2sec(plain, plus(date, c, period))] = value;
      }
    }
    Tide tide(text, {GetParam(), LDATE, 100});
    std::mt19937 random(7);
    for (int query = 0; query < 1200; ++query) {  // forward, backward, anywhere, at units' times
      const int share = query < 400 ? query : query < 800 ? 800 - query : int(random() % 400);
      double time = from + span * share / 400.0;
      if (query % 3 == 0) time = table.lower_bound(time)->first;
      const auto upper = table.lower_bound(time);
      const auto lower = std::prev(upper);
      const double weight = (time - lower->first) / (upper->first - lower->first);
      ASSERT_EQ(tide.at(time), mix(weight, lower->second, upper->second)) << query << " " << time;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Window, EveryCycle, testing::Values(2, 24));

TEST(DatedSeries, ReportsEachUnitReadAndReadsNoFileWhenAllIsInMemory) {
  for (const std::int32_t stored : {2, 3}) {
    Tide tide("title\n\n6 1\n12 2\n24 3", {stored, {4, 4}, 100});
    const auto log_of_a_day = [&tide] {
      return tide.recorded.lines_of([&tide] {
        for (double time = 3.6e4; time < 1.3e5; time += 3600.0) tide.at(time);
      });
    };
    const std::string head = "%%% read tide : date= 1 1 ";
    const std::string first = head + "1 6 0 0|" + head + "1 12 0 0|" + head + "1 24 0 0|";
    const std::string next = head + "2 6 0 0|" + head + "2 12 0 0|";
    EXPECT_EQ(log_of_a_day(), written_out(stored == 2 ? first + next : first));
    EXPECT_EQ(log_of_a_day().empty(), stored == 3);
  }
}

TEST(DatedSeries, GivesUpBeyondItsCycles) {
  // How many cycles, or passes where two units are stored, lead to the time.
  for (const auto& [stored, enough] : {std::pair{2, 1010}, {24, 1510}}) {
    Tide tide("title\n2015 6 1\n2015 12 2\n2016 3 3\n", {stored, {1, 2}, enough - 1});
    const std::string error = stored == 2 ? "### program error -1- " : "### program error -2- ";
    const std::string log = tide.recorded.lines_of([&] { tide.at(63072000.0); });
    EXPECT_TRUE(log.ends_with(written_out(error + "(tsrf_module_tide)|(set_tide)|63072000|")))
        << log;
    tide.series = Series({stored, {1, 2}, enough});
    EXPECT_NEAR(tide.at(63072000.0), 2.0, 1.0);
  }
}

TEST(DatedSeries, TellsWhatItsWindowTakes) {
  for (const auto& [stored, bytes] : {std::pair{2, "16"}, {24, "24"}}) {
    Tide tide("title\n2015 6 1\n2015 12 2\n2016 3 3\n", {stored, {1, 2}, 100});
    tide.memory = 1;
    const std::string log = tide.recorded.lines_of([&] { tide.at(0.0); });
    EXPECT_TRUE(log.starts_with("### error : allocation failed\narray,bytes = Tide data " +
                                std::string(bytes) + "\n"))
        << log;
  }
}

/// The warnings at the first query of hourly units, which hold the date elements `LDATE`.
std::string warnings_of(std::array<std::int32_t, 2> LDATE, const Date& first, int units) {
  RecordedLog unused;
  tsrf_module_calendar::Data calendar;
  std::string text = "title\n";
  const double start = date2sec(calendar, first);
  for (int unit = 0; unit < units; ++unit) {
    const Date date = sec2date(unused.log, calendar, start + 3600.0 * unit);
    for (auto e = std::size_t(LDATE[0] - 1); e < std::size_t(LDATE[1]); ++e) {
      text += frame::items(date[e], "");
    }
    text += "1\n";
  }
  Tide tide(text, {2, LDATE, 100});
  const std::string log = tide.recorded.lines_of([&] { tide.at(start); });
  return log.substr(0, log.find("%%% read tide"));
}

TEST(DatedSeries, WarnsOfDatesThatNearlyFillTheirCycle) {
  const auto words = [](const char* filled, const char* cycle) {
    return frame::items("%%% warning : dates in Tide data fill", filled, "s of a cycle of", cycle,
                        "s, file Tide.txt\n");
  };
  constexpr int kYear = 8760;
  EXPECT_EQ(warnings_of({4, 4}, {1, 1, 1, 0, 0, 0}, 24), "");
  EXPECT_EQ(warnings_of({4, 4}, {1, 1, 1, 2, 0, 0}, 22), words("79200", "86400"));
  EXPECT_EQ(warnings_of({4, 4}, {1, 1, 1, 8, 0, 0}, 12), "") << "plainly no day";
  EXPECT_EQ(warnings_of({2, 4}, {1, 1, 1, 0, 0, 0}, kYear), "");
  EXPECT_EQ(warnings_of({2, 4}, {1, 1, 1, 0, 0, 0}, kYear - 1), words("31532400", "31536000"));
  EXPECT_EQ(warnings_of({1, 4}, {2015, 1, 1, 0, 0, 0}, 2 * kYear), "");
  EXPECT_EQ(warnings_of({1, 4}, {2015, 1, 1, 1, 0, 0}, kYear), words("31536000", "63072000"))
      << "the last line is of 2016";
  EXPECT_EQ(warnings_of({3, 4}, {1, 1, 1, 0, 0, 0}, 30 * 24), "") << "a month has 28 to 31 days";
  EXPECT_EQ(warnings_of({3, 4}, {1, 1, 1, 0, 0, 0}, 28 * 24 - 1), words("2415600", "2419200"));
  EXPECT_EQ(warnings_of({3, 4}, {1, 1, 1, 1, 0, 0}, 24), words("86400", "2419200"));
  EXPECT_EQ(warnings_of({3, 4}, {1, 1, 1, 0, 0, 0}, 6 * 24), "") << "a part of a month";
}

TEST(DatedSeries, WarnsOnceOfAnIntervalThatIsTooWide) {
  for (const std::int32_t stored : {2, 24}) {
    Tide tide("title\n1 1\n2 2\n3 3\n6 6\n7 7\n9 9\n", {stored, {4, 4}, 100});
    const auto warnings = [&](double hour) {
      const std::string log = tide.recorded.lines_of([&] { tide.at(hour * 3600.0); });
      const std::size_t at = log.find("%%% warning");
      return at == std::string::npos ? "" : log.substr(at);
    };
    EXPECT_EQ(warnings(1.5) + warnings(8.0), "");  // twice the usual is not too wide
    EXPECT_EQ(warnings(4.0),
              "%%% warning : Tide data interpolated over 10800 s, usual interval = 3600 s, "
              "from date= 1 1 1 3 0 0\n");
    EXPECT_EQ(warnings(5.0) + warnings(12.0), "");
  }
}

TEST(DatedSeries, ChecksItsSettings) {
  for (const FaultCase& c : fault_table("series_group")) {
    RecordedLog recorded;
    Settings settings;
    frame::TextInput control("control", "&TIDE " + c.input + " /");
    const std::string log = recorded.lines_of([&] {
      frame::Group("TIDE", members(settings, Hour::required)).read(recorded.log, control);
    });
    EXPECT_TRUE(log.ends_with(c.lines)) << log;
  }
}

}  // namespace
