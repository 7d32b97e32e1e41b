// Water temperatures: the first block, the series, every fault.
#include <gtest/gtest.h>

#include <vector>

#include "inputs/wtrtmp.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_wtrtmp;

struct Water {
  Water(std::string text, std::int32_t NITEM) : file("WaterTemp.txt", "title\n" + std::move(text)) {
    patch.PID = {5, 6, 8};
    patch.type = {4, 3, 4};
    patch.by_pid = frame::CodeIndex(patch.PID);
    data.settings.NITEM = NITEM;
  }
  void start() { read_wtrtmp(recorded.log, file, patch, data); }
  void at(double hour) { set_wtrtmp(recorded.log, file, hour * 3600.0, patch, calendar, data); }
  RecordedLog recorded;
  frame::TextInput file;
  tsrf_module_patch::Data patch;
  tsrf_module_calendar::Data calendar;
  Data data;
};

TEST(WaterTemperature, FollowsItsSeries) {
  Water water("6 8 1 10 11\n6 5 1 20 21\n18 5 1 22 25\n18 8 1 12 15", 2);
  water.start();
  water.at(9.0);
  EXPECT_EQ(water.data.now, (std::vector<double>{10.5, 12.0, 20.5, 22.0}));
  frame::PatchTable<double> tlyr(3, 3, 1.0);
  tsrf_set_wtrtmp(water.data, 2, tlyr);
  const std::vector<double> nodes(tlyr.all().begin(), tlyr.all().end());
  EXPECT_EQ(nodes, (std::vector<double>{293.65, 1, 283.65, 293.65, 1, 283.65, 1, 1, 1}));
}

TEST(WaterTemperature, ReportsEveryFault) {
  const std::string start = "(tsrf_module_wtrtmp)(read_wtrtmp)\n";
  const std::string check = "(tsrf_module_wtrtmp)(check_data)\n(tsrf_module_wtrtmp)(set_wtrtmp)\n";
  const std::string error = "### error : data error\n";
  const std::string of = " in WaterTemp data = ";
  const std::string block = "1 5 1 9\n1 8 1 9\n";
  const std::string cut = "%%% file WaterTemp.txt, line ";
  struct Case {
    std::string text, lines;
    std::int32_t NITEM = 1;
  };
  for (const Case& c : std::vector<Case>{
           {"", ""},
           {"\n", "", 2000000000},
           {"1 5 1 9\n1 7 1 9",
            error + "PID" + of + "7\nit is not defined in Patch data\n" + start},
           {"1 5 1 9\n1 6 1 9",
            error + "PID" + of + "6\nit does not have WaterTemp type\n" + start},
           {"1 5 1 9\n2 8 1 9",
            error + "PID in Patch data = 8\nit is not defined WaterTemp data\n" + start},
           {"1 5 1 9\n1 8 1 -", cut + "3\n### read error : WaterTemp data\n" + start},
           {block, cut + "2\n### read error : WaterTemp data\n" + start, 2000000000},
           {block + "2 5 1 -273.15\n",
            error + "temp." + of + "-273.15\nit must be > -273.15\nline no. = 3\n" + check},
           {block + "2 5 3 1\n2 8 1 0",
            error + "bid" + of + "1\nit must be = 3\nline no. = 4\n" + check},
           {block + "2 5 1 1\n3 8 1 0",
            error + "date" + of + "1 1 1 3 0 0\nit must be = 1 1 1 2 0 0\nline no. = 4\n" + check},
           {block + "2 5 1 1\n2 9 1 0",
            error + "PID" + of + "9\nit is not defined in Patch data\n" + check},
           {block + "2 5 1 1\n2 5 1 0",
            error + "PID" + of + "5\nduplicated data for this PID\ntime no. = 2\n" + check},
           {"2 5 1 9\n2 8 1 9\n" + block,
            error + "date" + of + "1 1 1 1 0 0\nit is not ascending order\nline no. = 3\n" + check},
           {"25 5 1 9\n25 8 1 9",
            error + "date" + of + "1 1 1 25 0 0\ninvalid expression\ntime no. = 1\n" + check},
           {block + "2 5 1 1\n2 8 1", cut + "5\n### read error : WaterTemp data\n" + check},
           {block + "2 5 1 1\n", cut + "4\n### end of file : WaterTemp data\n" + check},
           {"1 5 1 9 1\n1 8 1 9",
            error + "no. of date elements in Sun data = 2\nit must be = 1\n" + check}}) {
    Water water(c.text, c.NITEM);
    EXPECT_EQ(water.recorded.lines_of([&] {
      water.start();
      water.at(1.0);
    }),
              c.lines)
        << c.text;
  }
}

TEST(WaterTemperature, ReadsItsGroup) {
  Water water("", 1);
  frame::TextInput control("control", "&TSRF_WTRTMP NITEM = 0, LWTRTMP = 1 /");
  EXPECT_TRUE(water.recorded.lines_of([&] { inputdata(water.recorded.log, control, water.data); })
                  .ends_with("nitem = 0\nit must be > 0\n(tsrf_module_wtrtmp)(inputdata)\n"));
}

}  // namespace
