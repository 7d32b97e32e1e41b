// Water temperatures: the first block, the series, every fault.
#include <gtest/gtest.h>

#include <vector>

#include "fault_table.hpp"
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
  for (const FaultCase& c : fault_table("wtrtmp")) {
    Water water(c.input, 1);
    const std::string log = water.recorded.lines_of([&] {
      water.start();
      water.at(1.0);
    });
    EXPECT_EQ(log, c.lines) << c.input;
  }
}

TEST(WaterTemperature, RefusesCountsThatTheFileCannotHold) {
  Water water("1 5 1 9|1 8 1 9", 2000000000);
  EXPECT_THROW(water.start(), frame::Failure);
  Water empty("\n", 2000000000);
  empty.start();
  frame::TextInput control("control", "&TSRF_WTRTMP NITEM = 0, LWTRTMP = 1 /");
  const std::string log =
      empty.recorded.lines_of([&] { inputdata(empty.recorded.log, control, empty.data); });
  EXPECT_TRUE(log.ends_with("nitem = 0\nit must be > 0\n(tsrf_module_wtrtmp)(inputdata)\n"));
}

}  // namespace
