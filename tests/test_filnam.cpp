// The names of a dated run's files: the rules as users write them, and what becomes of them.
#include <gtest/gtest.h>

#include "driver/filnam.hpp"
#include "recorded_log.hpp"

namespace {

using ubx_module_filnam::Data;

/// Reads both groups.
Data read(const std::string& rules, const std::string& monthly) {
  RecordedLog recorded;
  Data data;
  frame::TextInput file_name("file_name", "control.txt\nSun.txt\n" + rules);
  frame::TextInput control("control.txt", "14 11 7\n" + monthly);
  inputdata(recorded.log, file_name, control, data);
  EXPECT_EQ(control.tell(), 0U) << "the control file is left rewound";
  return data;
}

TEST(Filnam, BuildsNamesOfMonthsAndDaysFromTheRules) {
  struct Case {
    std::string rules;
    std::string row;
    std::string month;
    std::string day;
  };
  const std::vector<Case> cases = {
      {"BASE='data', MON='m', DAY='d'", "S.txt", "data/m07/S.txt", "data/m07/d15/S.txt"},
      {"BASE='/a/b/' mon='m/' day='d/'", "/S.txt", "/a/b/m07/S.txt", "/a/b/m07/d15/S.txt"},
      {"BASE='data//' MON='x/m'", "sub/S.txt", "data/x/m07/sub/S.txt", "data/x/m07/sub/S.txt"},
      {"BASE='data  ' DAY=\"d'\"", "S.txt", "data/S.txt", "data/d'15/S.txt"},
      {"MON='m'", "S.txt", "m07/S.txt", "m07/S.txt"},
      {"", "S.txt", "S.txt", "S.txt"},
      {"BASE='/'", "a///b////c", "a//b//c", "a//b//c"},
      {"BASE='a' MON='///'", "S", "a//07/S", "a//07/S"},
  };
  for (const Case& c : cases) {
    Data data = read("&dir_name " + c.rules + " /", "");
    set_file(data, ubx_module_filnam::kSun, 16, c.row);
    EXPECT_TRUE(data.dated);
    EXPECT_EQ(make_month_name(data, ubx_module_filnam::kSun, 7), c.month) << c.rules;
    EXPECT_EQ(make_day_name(data, ubx_module_filnam::kSun, 7, 15), c.day) << c.rules;
  }
}

TEST(Filnam, ReadsTheMonthsOfADatedRunOnly) {
  const std::string monthly = "&TSRF_MONTHLY MONTHS = 3, 4, DATE0 = 2015, 3, 2, 3*0 /";
  const Data repeating = read("", monthly);
  EXPECT_TRUE(!repeating.dated && repeating.MONTHS[0] == 1 && repeating.MONTHS[1] == 12);
  const Data dated = read("&DIR_NAME /", monthly);
  EXPECT_TRUE(dated.dated && dated.MONTHS[0] == 3 && dated.MONTHS[1] == 4 && dated.DATE0[2] == 2);
}

}  // namespace
