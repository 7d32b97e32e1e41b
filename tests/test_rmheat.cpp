// The room heat series: values by building, every fault of its file.
#include <gtest/gtest.h>

#include <vector>

#include "buildings/aircon.hpp"
#include "fault_table.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_rmheat;

struct Rooms {
  explicit Rooms(const std::string& text) : file("RmHeat.txt", "title\n" + text) {}
  void at(double hour) {
    if (data.pairs.BCD.empty()) read_rmheat(recorded.log, file, data);
    set_rmheat(recorded.log, file, hour * 3600.0, calendar, data);
  }
  RecordedLog recorded;
  frame::TextInput file;
  tsrf_module_calendar::Data calendar;
  Data data;
};

TEST(RoomHeat, GivesEachBuildingTheValuesOfItsPair) {
  Rooms rooms(
      "6 1 2 10 1 20 100.05 0.5 9 0 0 0\n6 3 -2 20 2 24 40 1 9 0 0 0\n"
      "12 3 -2 40 4 28 80 2 5 0 0 0\n12 1 2 30 3 26 60 0.5 5 0 0 0\n");
  rooms.at(9.0);
  const std::vector<std::int32_t> BldCD{3, 1, 3};
  const std::vector<std::int32_t> Strct{-2, 2, -2};
  frame::PatchTable<double> out(4, 5, 7.0);  // room for one building more
  tsrf_set_rmheat(rooms.recorded.log, rooms.data, BldCD, Strct, kRmsens, kVent, out);
  const std::vector<double> values(out.all().begin(), out.all().end());
  EXPECT_EQ(values,
            (std::vector<double>{30, 20, 30, 0, 3,   2,   3,   0, 299.15, 296.15, 299.15, 0,  //
                                 60, 80, 60, 0, 1.5, 0.5, 1.5, 0}));
  std::vector<double> Tr(3), Tm(3);
  tsrf_module_aircon::set_initial_rooms(rooms.recorded.log, rooms.data, BldCD, Strct, Tr, Tm);
  EXPECT_EQ(Tr, (std::vector<double>{299.15, 296.15, 299.15}));
  EXPECT_EQ(Tm, Tr);
  for (const auto& [first, last] : {std::pair(0, 3), std::pair(1, 7), std::pair(7, 7)}) {
    EXPECT_THROW(tsrf_set_rmheat(rooms.recorded.log, rooms.data, BldCD, Strct, first, last, out),
                 frame::Stop);
  }
  const std::vector<std::int32_t> unknown{1, 2, 3};
  EXPECT_THROW(tsrf_set_rmheat(rooms.recorded.log, rooms.data, unknown, Strct, 1, 2, out),
               frame::Stop);
}

TEST(RoomHeat, ReportsEveryFault) {
  for (const FaultCase& c : fault_table("rmheat")) {
    Rooms rooms(c.input);
    EXPECT_EQ(rooms.recorded.lines_of([&] { rooms.at(1.0); }), c.lines) << c.input;
  }
}

}  // namespace
