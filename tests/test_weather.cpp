// The weather series: its values between lines, and every fault of its file.
#include <gtest/gtest.h>

#include <vector>

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
  const double e = 0.62500125 * tsrf_module_phydat::satvap(now.temperature).es;
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
  const std::string error = "### error : data error\n";
  const std::string good = "1 10 50 1000 1 2 0 0 0\n";
  const auto value = [&error](const std::string& name, const std::string& number,
                              const std::string& rule, int line) {
    return error + name + " in Weather data = " + number + "\nit must be " + rule +
           "\nline no. = " + std::to_string(line) + "\n";
  };
  struct Case {
    std::string text, lines;
  };
  for (const Case& c : std::vector<Case>{
           {"", "### error : lack of Weather data\n"},
           {good + "2 -273 -1 1000 1 2 0 0 0", value("Temp", "-273", "> -273", 2)},
           {good + "2 9 -0.1 0 1 2 0 0 0", value("Rhum", "-0.1", ">= 0 and <= 100", 2)},
           {good + "2 9 100.01 1 1 2 0 0 0", value("Rhum", "100.01", ">= 0 and <= 100", 2)},
           {"1 9 9 0 -1 2 0 0 0", value("Press", "0", "> 0", 1)},
           {"1 9 9 1 -1 -2 0 0 0", value("SunRad", "-1", ">= 0", 1)},
           {"1 9 9 1 1 -2 -1 0 0", value("Wind", "-2", ">= 0", 1)},
           {"1 9 9 1 1 2 -3 -1 0", value("SunJdn", "-3", ">= 0", 1)},
           {"1 9 9 1 1 2 0 -4 -1", value("SunJsh", "-4", ">= 0", 1)},
           {"25 9 9 1 1 2 0 0 -5", value("AtmJsh", "-5", ">= 0", 1)},
           {"7 1 10 50 1000 1 2 0 0 0",
            error + "no. of date elements in Weather data = 2\nit must be = 1\n"},
           {good + "1 10 50 1000 1 2 0 0 0",
            error +
                "date in Weather data = 1 1 1 1 0 0\nit is not ascending order\nline no. = 2\n"},
           {good + "\n25 10 50 1000 1 2 0 0 0",
            error + "date in Weather data = 1 1 1 25 0 0\ninvalid expression\ntime no. = 2\n"},
           {good + "2 1O 50 1000 1 2 0 0 0",
            "%%% file Weather.txt, line 3\n### read error : Weather data\n"},
           {good + "2 10 50 1000", "%%% file Weather.txt, line 3\n### read error : Weather data\n"},
           {"1 9 9 1 0 2 1 0 0", error + "lack of SunJsh in Weather data\n"},
           {"1 9 9 1 1 2 0 1 0", error + "lack of SunJdn in Weather data\n"},
           {"1 9 9 1 1 2 1 1 0", error + "SunJdn in Weather data can not be specified\n"},
           {"1 9 9 1 0 2 0 0 0", error + "lack of SunRad in Weather data\n"},
           {"1 9 9 1 1 2 0 0 0\n2 9 9 1 1 2 0 0 0\n3 9 9 1 1 2 0 0 1",
            value("AtmJsh", "0", "> 0", 2)}}) {
    Series series(c.text);
    EXPECT_EQ(series.recorded.lines_of([&] { series.at(0.0); }),
              c.lines + "(tsrf_module_weather)(check_data)\n(tsrf_module_weather)(set_weather)\n");
  }
}

TEST(Weather, ReadsItsGroup) {
  Series series("");
  frame::TextInput control("control", "&tsrf_weather ldate = 2, 3 nstrdt = 2 /");
  inputdata(series.recorded.log, control, series.data);
  EXPECT_EQ(series.data.series.settings.LDATE[1], 3);  // the hour may be missing
  frame::TextInput broken("control", "&tsrf_weather ncycl = 5, ldate = 1, 2 /");
  EXPECT_TRUE(series.recorded.lines_of([&] { inputdata(series.recorded.log, broken, series.data); })
                  .ends_with("it must be >= 100\n(tsrf_module_weather)(inputdata)\n"));
  EXPECT_EQ(series.data.series.settings.LDATE[0], 2);
}

}  // namespace
