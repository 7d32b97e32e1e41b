// The names of a dated run's files: the rules as users write them, and what becomes of them.
#include <gtest/gtest.h>

#include "driver/filnam.hpp"
#include "recorded_log.hpp"
#include "temp_folder.hpp"

namespace {

using ubx_module_filnam::Data;

/// Reads both groups; the log is the last lines that a failure leaves.
Data read(const std::string& rules, const std::string& monthly, std::string* lines = nullptr) {
  RecordedLog recorded;
  Data data;
  frame::TextInput file_name("file_name", "control.txt\nSun.txt\n" + rules);
  frame::TextInput control("control.txt", "14 11 7\n" + monthly);
  const std::string log =
      recorded.lines_of([&] { inputdata(recorded.log, file_name, control, data); });
  if (lines != nullptr) *lines = log.substr(std::min(log.size(), log.rfind("/\n") + 2));
  EXPECT_TRUE(recorded.log.failing() || control.tell() == 0) << "the control file is left rewound";
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

  const std::string range = "it must be >=1 and <=12\n";
  const std::string midnight = "hour, minute and second must be 0\n";
  const std::vector<std::pair<std::string, std::string>> faults = {
      {"MONTHS = 3, 2", "months = 3 2\nmonths(1) must be <= months(2)\n"},
      {"MONTHS = 0", "months = 0 12\n" + range},
      {"MONTHS(2) = 13", "months = 1 13\n" + range},
      {"DATE0 = 2015, 7, 2, 1, 0, 0", "date0 = 2015 7 2 1 0 0\n" + midnight},
      {"DATE0(6) = 59", "date0 = 1 1 1 0 0 59\n" + midnight},
      {"DATE0(2) = 13", "date0 = 1 13 1 0 0 0\nout of range\n"},
      {"DATE0 = 2016, 2, 29", "date0 = 2016 2 29 0 0 0\nout of range\n"},
      {"DATE0(3) = 0", "date0 = 1 1 0 0 0 0\nout of range\n"},
  };
  for (const auto& [members, words] : faults) {
    std::string lines;
    read("&DIR_NAME /", "&TSRF_MONTHLY " + members + " /", &lines);
    EXPECT_EQ(lines, "### error : data error\n" + words + "(ubx_module_filnam)(inputdata)\n");
  }
}

TEST(Filnam, OpensTheFirstMonthAndNamesTheFileThatIsMissing) {
  const TempFolder folder;
  RecordedLog recorded;
  frame::UnitTable units;
  Data data = read("&DIR_NAME MON='m' /", "&TSRF_MONTHLY MONTHS = 2, 3 /");
  data.BASE = folder.path();
  const std::vector<std::string> names = {"Prop", "Lad", "Water", "Building", "RmHeat"};
  for (std::int32_t i = 0; i < 5; ++i) {
    const std::string& name = names[static_cast<std::size_t>(i)];
    set_file(data, ubx_module_filnam::kSurfProp + i, 40 + i, name);
    if (i < 4) folder.write("m02/" + name, name);
  }
  EXPECT_EQ(
      recorded.lines_of([&] { open_first_month(recorded.log, units, data); }),
      frame::items("### cannot open", folder.path("m02/RmHeat"), ": No such file or directory\n"));
  EXPECT_EQ(units.input(43).content(), "Building");
}

}  // namespace
