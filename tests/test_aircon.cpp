// The run table of the air-conditioning: a day's flags and the periods that follow from them.
#include <gtest/gtest.h>

#include <vector>

#include "buildings/aircon.hpp"
#include "fault_table.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_aircon;

/// What is wrong with a schedule and in which hour, or its periods, each behind its first and last
/// hour.
std::string text(const Schedule& schedule) {
  if (!schedule.fault.empty()) return frame::items(schedule.fault, schedule.hour);
  std::string periods;
  for (int first = 1, last = 1; first <= 24; first = last + 1) {
    const Period& period = schedule.table[std::size_t(first)];
    for (last = first; last < 24 && schedule.table[std::size_t(last + 1)] == period;) ++last;
    if (period == Period{}) continue;
    periods += frame::items(first, last, period.start, period.startup, period.end) + "\n";
  }
  EXPECT_EQ(schedule.table[0], schedule.table[24]);
  return periods;
}

TEST(AirConditioning, RunTableOfADay) {
  for (const FaultCase& c : fault_table("run_table")) {
    Day day{};
    std::istringstream flags(c.input);
    std::size_t h = 0;
    while (flags >> h) flags >> day[h - 1].flag >> day[h - 1].ACSEMin >> day[h - 1].ACPrT;
    EXPECT_EQ(text(make_schedule(day)), c.lines);
  }
}

TEST(AirConditioning, BuildsTheTablesOfBuildingsOrSaysWhyNot) {
  const std::vector<std::int32_t> BldCD{1, 1};
  const std::vector<std::int32_t> Strct{2, 7};
  for (const FaultCase& c : fault_table("aircon")) {
    std::istringstream input(c.input);
    int special = 0;
    std::string line;
    std::getline(input >> special, line);
    std::string text = "title\n";
    for (int h = 1; h <= 24; ++h) {
      const char* flags = h == 9 ? "1 0 30" : h == 17 ? "2 60 0" : "0 0 0";
      text += frame::items(h, "1 7 0 0 20 50 1 0 0 0 0\n");
      text += h == special ? line : frame::items(h, "1 2 0 0 22 50 1 0", flags);
      text += '\n';
    }
    RecordedLog recorded;
    frame::TextInput file("RmHeat.txt", text);
    tsrf_module_rmheat::Data rmheat;
    Data data;
    const auto build = [&] { set_aircon(recorded.log, file, rmheat, BldCD, Strct, data); };
    read_aircon(recorded.log, file, rmheat, data);
    EXPECT_EQ(recorded.lines_of(build), c.lines);
    if (special > 0) continue;
    EXPECT_EQ(data.period(0, 12), (Period{9, 9.5, 18}));
    EXPECT_EQ(data.period(1, 12), Period{});
    rmheat.series.settings.LDATE = {3, 4};
    build();  // nothing to do
    reset(data);
    EXPECT_EQ(recorded.lines_of(build),
              "### program error -1- (tsrf_module_aircon)\n(set_aircon)\n");
  }
}

TEST(AirConditioning, ReadsThePairs) {
  for (const FaultCase& c : fault_table("aircon_pairs")) {
    RecordedLog recorded;
    Data data;
    frame::TextInput file("RmHeat.txt", c.input);
    EXPECT_EQ(recorded.lines_of([&] { read_aircon(recorded.log, file, {}, data); }), c.lines);
  }
}

}  // namespace
