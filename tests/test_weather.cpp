// The weather series: its values between lines, and every fault of its file.
#include <gtest/gtest.h>

#include <vector>

#include "fault_table.hpp"
#include "inputs/moist_air.hpp"
#include "inputs/weather.hpp"
#include "radiation/phydat.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_weather;

struct Series {
  explicit Series(std::string text) : file("Weather.txt", "title\n" + std::move(text)) {}
  const Weather& at(double time) {
    set_weather(recorded.log, file, time, calendar, data);
    return data.now;
  }
  RecordedLog recorded;
  frame::TextInput file;
  tsrf_module_calendar::Data calendar;
  Data data;
};

TEST(Weather, InterpolatesAllButTheHourlySum) {
  Series series(
      "6 10 50 1000 0 2 0 0 1.08\n12 20 100.0005 1010 3.6 4 0 0 0.36\n18 20 80 1010 1.8 4 0 0 1");
  const Weather& now = series.at(6 * 3600.0 + 900.0 * 6);  // a quarter of the interval
  EXPECT_DOUBLE_EQ(now.temperature, 273.15 + 12.5);
  EXPECT_DOUBLE_EQ(now.pressure, 100250.0);
  EXPECT_DOUBLE_EQ(now.wind, 2.5);
  EXPECT_DOUBLE_EQ(now.Rhum, 62.500125);
  EXPECT_DOUBLE_EQ(now.SunRad, 1000.0);  // of the line that ends the interval
  EXPECT_EQ(now.SunJdn, kNotGiven);
  EXPECT_EQ(now.SunJsh, kNotGiven);
  EXPECT_DOUBLE_EQ(now.AtmJsh, 250.0);
  // Humidity from its definition: masses of vapour and dry air at their partial pressures.
  const double e = 0.62500125 * moist_air::satvap(now.temperature).es;
  const double vapour = e * 0.018015;
  EXPECT_NEAR(now.humidity, vapour / (vapour + (now.pressure - e) * 0.028964), 1e-15);
  EXPECT_DOUBLE_EQ(series.at(12 * 3600.0).Rhum, 100.0005);  // not clipped
}

TEST(Weather, GivesDirectAndScatteredWhereTheFileDoes) {
  Series series("6 10 50 1000 0 2 0 0 0\n12 20 60 1010 0 4 3.6 0.72 0");
  const Weather& now = series.at(9 * 3600.0);
  EXPECT_EQ(now.SunRad, kNotGiven);
  EXPECT_DOUBLE_EQ(now.SunJdn, 500.0);
  EXPECT_DOUBLE_EQ(now.SunJsh, 100.0);
  EXPECT_EQ(now.AtmJsh, kNotGiven);
}

TEST(Weather, ReportsEveryFault) {
  for (const FaultCase& c : fault_table("weather")) {
    Series series(c.input);
    EXPECT_EQ(series.recorded.lines_of([&] { series.at(0.0); }), c.lines);
  }
}

}  // namespace
