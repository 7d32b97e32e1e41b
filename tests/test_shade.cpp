// The sunlit fractions: the repeating day, its faults, its settings.
#include <gtest/gtest.h>

#include <vector>

#include "fault_table.hpp"
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
  for (const FaultCase& c : fault_table("shade")) {
    Shade shade(c.input);
    EXPECT_EQ(shade.recorded.lines_of([&] { shade.at(1.0); }), c.lines) << c.input;
  }
}

TEST(Shade, ChecksItsSettings) {
  for (const FaultCase& c : fault_table("shade_group")) {
    Shade shade("");
    frame::TextInput control("control", "&TSRF_SHADE " + c.input.substr(2) + " /");
    const std::string log = shade.recorded.lines_of(
        [&] { inputdata(shade.recorded.log, control, c.input[0] == '1', shade.data); });
    EXPECT_TRUE(log.ends_with(c.lines + "(tsrf_module_shade)(inputdata)\n")) << log;
  }
}

}  // namespace
