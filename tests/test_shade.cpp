// The sunlit fractions: the repeating day, its faults, its settings.
#include <gtest/gtest.h>

#include <vector>

#include "radiation/shade.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_shade;

struct Shade {
  explicit Shade(std::string text) : file("Sun.txt", "title\n" + std::move(text)) {
    patch.PID = {7, 2000000000, -3};
    patch.mpatch = 3;
    patch.by_pid = frame::CodeIndex(patch.PID);
  }
  std::vector<double> at(double hour) {
    std::vector<double> fsun(3);
    set_shade(recorded.log, &file, hour * 3600.0, patch, calendar, data, fsun);
    return fsun;
  }
  RecordedLog recorded;
  frame::TextInput file;
  tsrf_module_patch::Data patch;
  tsrf_module_calendar::Data calendar;
  Data data;
};

using Fractions = std::vector<double>;

TEST(Shade, InterpolatesBetweenBlocksOverTheRepeatingDay) {
  const std::string text =
      "6 1 7 0\n6 2 2000000000 -0.1\n6 3 -3 1.2\n"
      "12 1 -3 0.5\n12 2 7 1\n12 3 2000000000 0.25\n"  // another order of patches
      "24 1 7 1 /\n24 2 2000000000 0 extra\n24 3 -3 0";
  for (const std::int32_t stored : {2, 24}) {
    Shade shade(text);
    shade.data.series.settings.NSTRDT = stored;
    EXPECT_EQ(shade.at(6.0), (Fractions{0.0, 0.0, 1.0}));  // at a block's time: that block
    EXPECT_EQ(shade.at(7.5), (Fractions{0.25, 0.0625, 0.875}));
    EXPECT_EQ(shade.at(27.0), (Fractions{0.5, 0.0, 0.5}));
    EXPECT_EQ(shade.at(2.0 + 24 * 30.0), (Fractions{1.0 - 1.0 / 3, 0.0, 1.0 / 3}));
    EXPECT_EQ(shade.at(18.0), (Fractions{1.0, 0.125, 0.25}));
  }
}

TEST(Shade, ReportsEveryFaultOfTheRepeatingDay) {
  const std::string error = "### error : data error\n";
  const std::string check = "(tsrf_module_shade)(check_data)\n";
  const std::string block = "1 1 7 0\n1 2 2000000000 0\n1 3 -3 1\n";
  const std::string unknown = "### program error -2- (tsrf_module_shade)\n(set_shade_oneday)\n";
  const std::string tags =
      "(tsrf_module_shade)(set_shade_oneday)\n(tsrf_module_shade)(set_shade)\n";
  struct Case {
    std::string text, lines;
  };
  for (const Case& c : std::vector<Case>{
           {"", "### error : lack of Sun data\n" + check + tags},
           {"1 1 1 7 0\n",
            error + "no. of date elements in Sun data = 2\nit must be = 1\n" + check + tags},
           {block + "2 1 7 0\n3 1 2 0",
            error + "date in Sun data = 1 1 1 3 0 0\nit must be = 1 1 1 2 0 0\nline no. = 5\n" +
                check + tags},
           {block + block,
            error + "date in Sun data = 1 1 1 1 0 0\nit is not ascending order\ntime no. = 2\n" +
                check + tags},
           {"25 1 7 0\n25 1 7 0\n25 1 7 0",
            error + "date in Sun data = 1 1 1 25 0 0\ninvalid expression\ntime no. = 1\n" + check +
                tags},
           {block + "2 1 7 0\n2 1 2000000000 0\n",
            "%%% file Sun.txt, line 6\n### end of file : Sun data\n" + check + tags},
           {block + "2 1 7 0\n2 1 2000000000 nan\n",
            "%%% file Sun.txt, line 6\n### read error : Sun data\n" + check + tags},
           {block + "2 1 7 0\n2 1 7\n",
            "%%% file Sun.txt, line 6\n### read error : Sun data\n" + check + tags},
           {"1 1 7 0\n1 2 8 0\n1 3 -3 0", unknown},
           {"1 1 7 0\n1 2 7 0\n1 3 -3 0", unknown}}) {
    Shade shade(c.text);
    EXPECT_EQ(shade.recorded.lines_of([&] { shade.at(1.0); }), c.lines);
  }
}

TEST(Shade, ChecksItsSettings) {
  struct Case {
    bool dated_run;
    const char* members;
    const char* lines;
  };
  for (const Case& c : std::vector<Case>{
           {false, "NITEM = 0, NBIT = 31", "nitem = 0\nit must be > 0\n"},
           {false, "NBIT = 31, MONTHS = 1, 2", "nbit = 31\nit must be > 0 and <= 30\n"},
           {false, "MONTHS = 1, 2, DAYS = 1, 2", "months can not be specified\n"},
           {false, "DAYS = 1, 2", "days can not be specified\n"},
           {true, "LDATE = 4, 6", "lack of months\n"},
           {true, "MONTHS = 1, 13, DAYS = 0, 2",
            "months(1:2) = 1 13\nit must be >=1 and <=12 and months(1)<=months(2)\n"},
           {true, "MONTHS = 1, 2, DAYS = 3, 2",
            "days(1:2) = 3 2\nit must be >=1 and <=31 and days(1)<=days(2)\n"},
           {true, "MONTHS = 1, 2, DAYS = 3, 3", "no. of days = 1\nit must be > 1\n"},
           {true, "MONTHS = 1, 2, LDATE = 4, 5", "ldate = 4 5\nit must be = 4\n"}}) {
    Shade shade("");
    frame::TextInput control("control", "&TSRF_SHADE " + std::string(c.members) + " /");
    const std::string lines = shade.recorded.lines_of(
        [&] { inputdata(shade.recorded.log, control, c.dated_run, shade.data); });
    EXPECT_TRUE(lines.ends_with("### error : data error\n" + std::string(c.lines) +
                                "(tsrf_module_shade)(inputdata)\n"))
        << lines;
  }
}

}  // namespace
