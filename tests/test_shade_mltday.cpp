// The sunlit fractions of dated runs: bit planes, months of day files, every fault.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <vector>

#include "fault_table.hpp"
#include "patches_of.hpp"
#include "radiation/bit_planes.hpp"
#include "radiation/shade.hpp"
#include "recorded_log.hpp"
#include "temp_folder.hpp"

namespace {

using namespace tsrf_module_shade;

TEST(BitPlanes, GiveBackEverySlotToHalfAStep) {
  RecordedLog recorded;
  std::mt19937 random(3);
  const std::size_t n = 1500;  // more than is worked on at a time
  for (std::int32_t NBIT = 1; NBIT <= 30; ++NBIT) {
    std::vector<std::int32_t> words(n * static_cast<std::size_t>(NBIT), 0);
    std::vector<std::vector<double>> slots(30, {0.0, 1.0, 0.5});
    const auto pass = [&](std::int32_t direction, std::int32_t slot, std::vector<double>& values) {
      tsrf_utl::tsrf_utl_bitrdt(recorded.log, direction, n, n, NBIT, slot, words, values);
    };
    std::int32_t slot = 0;
    for (std::vector<double>& fractions : slots) {
      while (fractions.size() < n)
        fractions.push_back(static_cast<double>(random()) / 4294967295.0);
      pass(-1, ++slot, fractions);
    }
    std::vector<double> unpacked(n);
    for (slot = 1; slot <= 30; ++slot) {
      pass(1, slot, unpacked);
      const std::vector<double>& packed = slots[static_cast<std::size_t>(slot - 1)];
      for (std::size_t i = 0; i < n; ++i) {
        ASSERT_NEAR(unpacked[i], packed[i], i < 2 ? 0.0 : 0.5000001 / ((1 << NBIT) - 1));
      }
      EXPECT_TRUE(NBIT > 1 || unpacked[2] == 1.0);  // the nearest integer of a half
    }
  }
  std::vector<std::int32_t> words(40);
  std::vector<double> values(1);
  for (const auto& [NBIT, slot] : {std::pair(31, 1), std::pair(1, 31), std::pair(0, 1)}) {
    EXPECT_THROW(tsrf_utl::tsrf_utl_bitrdt(recorded.log, -1, 1, 1, NBIT, slot, words, values),
                 frame::Stop);
  }
}

/// Two patches; patch 1 has fraction 0 or 1 as the sum of month, day and hour is even or odd.
struct Tree {
  explicit Tree(int NITEM) {
    data.dated_run = true;
    data.settings = {.NITEM = NITEM, .NBIT = 2, .MONTHS = {1, 3}, .DAYS = {27, 30}};
    data.day_name = [this](int m, int d) { return folder.path(name(m, d)); };
    for (int file = 0; file < 12; ++file) {
      const int m = 1 + file / 4;
      const int d = 27 + file % 4;
      std::string text = "title\n";
      for (int h = 1; h <= 24; ++h) {
        text += frame::items(h, "0 2 0.6\n", h, "1 1", (m + d + h) % 2, "\n");
      }
      if (m != 2 || d <= 28) folder.write(name(m, d), text);
    }
  }
  static std::string name(int m, int d) { return frame::items("m", m, "d", d); }
  double at(double month, double day, double hour) {
    std::vector<double> fsun(2);
    const double time = tsrf_module_calendar::date2sec(calendar, {7, month, day, hour, 0, 0});
    set_shade(recorded.log, crew, nullptr, time, patch, calendar, data, fsun);
    EXPECT_EQ(fsun[1], 2.0 / 3.0);  // what two bits make of 0.6
    return fsun[0];
  }
  RecordedLog recorded;
  TempFolder folder;
  tsrf_module_patch::Data patch = patches_of({1.0, 1.0});
  tsrf_module_calendar::Data calendar;
  frame::Crew crew;
  Data data;
};

TEST(ShadeOfDatedRuns, InterpolatesWithinAMonthAndHoldsBeyondItsBlocks) {
  Tree tree(2);
  std::istringstream cases(R"(
1 28 1    0      1 28 2     1      1 28 2.25 0.75   1 28 24   1      1 29 0.75 1
1 27 0    1      1 27 0.5   1      1 27 1.5  0.5    1 30 23.5 0.5    2 27 1.25 0.25
2 28 23.75 0.25  1 28 2     1      3 27 1.25 0.75
)");
  for (double month, day, hour, fsun; cases >> month >> day >> hour >> fsun;) {
    EXPECT_EQ(tree.at(month, day, hour), fsun) << month << " " << day << " " << hour;
  }
  EXPECT_EQ(tree.data.months[1].words.size(), 2U * 2U * 4U);  // 96 blocks, 30 a word
}

TEST(ShadeOfDatedRuns, TakesPlainBlocksByAllHandsAsItTakesRecords) {
  constexpr std::int32_t n = 9000;  // several pieces a block
  const auto fractions = [&](std::string_view between, std::int32_t odd, std::size_t hands) {
    Tree tree(1);
    tree.patch = patches_of(std::vector<double>(n, 1.0));
    tree.data.settings.NBIT = 16;
    tree.data.settings.DAYS = {27, 28};
    std::string text = "title\n";
    for (std::int32_t line = 1; line <= 2 * n; ++line) {
      const std::int32_t hour = line <= n ? 6 : 12;
      text += frame::items(hour + (line == odd ? 1 : 0), between, line, between, (line - 1) % n + 1,
                           between, line * 7 % 101 / 100.0, "\n");
    }
    for (const int day : {27, 28}) tree.folder.write(Tree::name(1, day), text);
    std::vector<double> fsun(n);
    frame::Crew crew({.count = hands});
    const double time = tsrf_module_calendar::date2sec(tree.calendar, {7, 1, 27, 9, 0, 0});
    const std::string log = tree.recorded.lines_of([&] {
      set_shade(tree.recorded.log, crew, nullptr, time, tree.patch, tree.calendar, tree.data, fsun);
    });
    EXPECT_EQ(log.find("line no. = 13001\n") != std::string::npos, odd == 13001) << log;
    return fsun;
  };
  const std::vector<double> records = fractions(" , ", 0, 1);
  EXPECT_EQ(fractions(" ", 0, 1), records);
  EXPECT_EQ(fractions(" ", 0, 3), records);
  fractions(" ", 13001, 3);
}

TEST(ShadeOfDatedRuns, ReadsAMonthOnceWhileItIsKept) {
  for (const int NITEM : {1, 2}) {
    Tree tree(NITEM);
    std::string opened;
    for (const int month : {1, 2, 1, 2, 3, 2, 1}) {
      const std::string log = tree.recorded.lines_of([&] { tree.at(month, 28, 7.5); });
      const std::string name = tree.folder.path(Tree::name(month, 28));
      opened += log.find("%%% open file = " + name) == std::string::npos ? "-" : "+";
    }
    EXPECT_EQ(opened, NITEM == 1 ? "+++++++" : "++--+-+");
  }
}

TEST(ShadeOfDatedRuns, ReadsAFileThatServesAllDaysOnce) {
  Tree tree(1);
  tree.data.day_name = [&](int m, int) { return tree.folder.path(Tree::name(m, 28)); };
  const std::string log = tree.recorded.lines_of([&] {
    for (const double day : {27, 28, 29, 30}) EXPECT_EQ(tree.at(1, day, 2.25), 0.75) << day;
    EXPECT_EQ(tree.at(1, 29, 0.5), 0.5);  // between hour 24 and hour 1
    EXPECT_EQ(tree.at(2, 28, 2.25), 0.25);
  });
  EXPECT_EQ(std::ranges::count(log, '='), 2) << log;
  EXPECT_EQ(tree.data.months[0].words.size(), 2U * 2U);  // one day is kept
  tree.data.series.settings.LDATE = {3, 4};              // its lines are of one day
  tree.folder.write(Tree::name(1, 28), "title\n28 1 0 1 1\n28 1 0 2 0.6\n");
  tree.data.settings.DAYS[0] = 28;
  EXPECT_NE(tree.recorded.lines_of([&] { tree.at(1, 28, 1); }).find("it must be = 1 1 29 1 0 0"),
            std::string::npos);
}

TEST(ShadeOfDatedRuns, ReportsEveryFault) {
  std::string long_day;
  for (int h = 0; h <= 24; ++h) long_day += frame::items(h, "1 1 1|", h, "1 2 1|");
  for (const FaultCase& c : fault_table("shade_mltday", {{'@', long_day}})) {
    Tree tree(2);
    tree.folder.write(Tree::name(1, 27), "title\n" + c.input.substr(4));
    const std::string log = tree.recorded.lines_of(
        [&] { tree.at(c.input[0] - '0', std::stod(c.input.substr(2, 2)), 1.0); });
    EXPECT_TRUE(log.ends_with(c.lines)) << log << c.lines;
  }
  Tree tree(2);
  tree.data.settings.DAYS = {26, 27};
  const std::string log = tree.recorded.lines_of([&] { tree.at(1, 27, 1.0); });
  EXPECT_TRUE(
      log.ends_with(tree.folder.path(Tree::name(1, 26)) + " : No such file or directory\n"));
}

}  // namespace
