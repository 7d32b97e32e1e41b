// The run table of the air-conditioning: a day's flags and the periods that follow from them.
#include <gtest/gtest.h>

#include <vector>

#include "buildings/aircon.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_aircon;

struct Flag {
  int hour, flag, ACSEMin, ACPrT;
};

TEST(AirConditioning, RunTableOfADay) {
  struct Rows {  // rows from .. to hold one period, all others none
    int from, to;
    Period period;
  };
  struct Case {
    const char* name;
    std::vector<Flag> flags;
    std::vector<Rows> rows;
    std::string_view fault;
    int hour;
  };
  const std::string_view order = "run-time of AC in Rmheat data is out of order";
  for (const Case& c : std::vector<Case>{
           {"none", {}, {}, "", 0},
           {"day", {{8, 1, 30, 90}, {18, 2, 0, 0}}, {{8, 18, {8.5, 9.5, 18}}}, "", 0},
           {"set point met at the end", {{8, 1, 0, 0}, {9, 2, 0, 0}}, {{8, 9, {8, 8, 9}}}, "", 0},
           {"all day", {{1, 1, 0, 60}, {24, 2, 60, 0}}, {{1, 24, {1, 2, 25}}}, "", 0},
           {"night shift",
            {{22, 1, 0, 45}, {6, 2, 15, 0}},
            {{22, 24, {22, 22.75, 30.25}}, {1, 6, {-2, -1.25, 6.25}}},
            "",
            0},
           {"two periods",
            {{7, 1, 0, 30}, {11, 2, 30, 9}, {13, 1, 15, 15}, {19, 2, 0, 0}},
            {{7, 11, {7, 7.5, 11.5}}, {13, 19, {13.25, 13.25, 19}}},
            "",
            0},
           {"night and day",
            {{5, 2, 0, 0}, {10, 1, 0, 0}, {15, 2, 0, 0}, {20, 1, 0, 0}},
            {{1, 5, {-4, -4, 5}}, {10, 15, {10, 10, 15}}, {20, 24, {20, 20, 29}}},
            "",
            0},
           {"no start", {{6, 2, 0, 0}}, {}, "lack of AC start flag in Rmheat data", 0},
           {"no stop", {{6, 1, 0, 0}}, {}, "lack of AC end flag in Rmheat data", 0},
           {"unequal",
            {{6, 1, 0, 0}, {8, 1, 0, 0}, {9, 2, 0, 0}},
            {},
            "no. of AC start/end flag in Rmheat data not matched",
            0},
           {"set point before the start", {{8, 1, 30, 20}, {18, 2, 0, 0}}, {}, order, 8},
           {"end before the set point", {{8, 1, 0, 120}, {9, 2, 30, 0}}, {}, order, 8},
           {"last period does not end",
            {{8, 1, 0, 0}, {9, 2, 0, 0}, {11, 2, 0, 0}, {13, 1, 0, 0}},
            {},
            order,
            13}}) {
    SCOPED_TRACE(c.name);
    Day day{};
    for (const Flag& f : c.flags) {
      day[static_cast<std::size_t>(f.hour - 1)] = {f.flag, f.ACSEMin, f.ACPrT};
    }
    const Schedule schedule = make_schedule(day);
    EXPECT_EQ(schedule.fault, c.fault);
    EXPECT_EQ(schedule.hour, c.hour);
    if (!c.fault.empty()) continue;
    RunTable expected{};
    for (const Rows& rows : c.rows) {
      std::fill(&expected[static_cast<std::size_t>(rows.from)],
                &expected[static_cast<std::size_t>(rows.to)] + 1, rows.period);
    }
    expected[0] = expected[24];
    EXPECT_EQ(schedule.table, expected);
  }
}

/// 24 blocks of two pairs; the line of pair 2 in `hour` ends as given.
std::string day_text(int hour, const std::string& ending) {
  std::string text = "title\n";
  for (int h = 1; h <= 24; ++h) {
    const std::string line = std::to_string(h) + " 1 ";
    text += line + "7 0 0 20 50 1 0 0 0 0\n";
    text += h == hour ? ending + "\n"
                      : line + "2 0 0 22 50 1 0 " +
                            (h == 9    ? "1 0 30\n"
                             : h == 17 ? "2 60 0\n"
                                       : "0 0 0\n");
  }
  return text;
}

TEST(AirConditioning, BuildsTheTablesOfBuildingsOrSaysWhyNot) {
  const std::vector<std::int32_t> BldCD{1, 1};
  const std::vector<std::int32_t> Strct{2, 7};
  const std::string error = "### error : data error\n";
  const std::string tag = "(tsrf_module_aircon)(set_aircon)\n";
  const std::string all = "3 1 2 0 0 22 50 1 0 ";
  struct Case {
    std::string text, lines;
  };
  for (const Case& c : std::vector<Case>{
           {day_text(0, ""), ""},
           {"title\n", "### error : lack of RmHeat data\n(tsrf_module_aircon)(read_aircon)\n"},
           {"title\n1 1 2 0 0 x",
            "%%% file RmHeat.txt, line 2\n### read error : RmHeat "
            "file\n(tsrf_module_aircon)(read_aircon)\n"},
           {"title\n1 1 7 0 0 20 50 1 0 0 0 0\n",
            "%%% file RmHeat.txt, line 2\n### read error : RmHeat file\n" + tag},
           {day_text(3, "4 1 2 0 0 22 50 1 0 0 0 0"),
            error + "hour in Rmheat data = 4\nit must be = 3\n" + tag},
           {day_text(3, all + "0 61 -1"),
            error + "ACSEMin,ACPrT in Rmheat data = 61 -1\nthey must be >= 0\n" + tag},
           {day_text(3, all + "0 61 0"),
            error + "ACSEMin in Rmheat data = 61\nit must be <= 60\n" + tag},
           {day_text(3, "3 5 2 0 0 22 50 1 0 0 0 0"),
            "### program error -9801- (tsrf_module_aircon)\n(set_aircon)\n"},
           {day_text(3, all + "1 30 29"),
            error + "no. of AC start/end flag in Rmheat data not matched\n" + tag},
           {day_text(9, "9 1 2 0 0 22 50 1 0 1 30 29"),
            error +
                "run-time of AC in Rmheat data is out of order\ntime of start, startup, end = 9.5 "
                "9.483333333333333 18\nhour, BCD, Strct = 9 1 2\n" +
                tag}}) {
    RecordedLog recorded;
    frame::TextInput file("RmHeat.txt", c.text);
    tsrf_module_rmheat::Data rmheat;
    Data data;
    EXPECT_EQ(recorded.lines_of([&] {
      read_aircon(recorded.log, file, rmheat, data);
      set_aircon(recorded.log, file, rmheat, BldCD, Strct, data);
    }),
              c.lines);
    if (!c.lines.empty()) continue;
    EXPECT_EQ(data.period(0, 12), (Period{9, 9.5, 18}));
    EXPECT_EQ(data.period(1, 12), Period{});
    // A new file counts from its reset on, and it must be dated by the hour alone.
    rmheat.series.settings.LDATE = {3, 4};
    set_aircon(recorded.log, file, rmheat, BldCD, Strct, data);
    reset(data);
    EXPECT_THROW(set_aircon(recorded.log, file, rmheat, BldCD, Strct, data), frame::Stop);
  }
}

}  // namespace
