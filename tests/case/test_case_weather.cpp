// Weather years: what the reader takes and refuses, the choice of days, the lines of the Weather
// file, and where the sun stands above it.
#include <gtest/gtest.h>

#include <numbers>

#include "make_epw.hpp"
#include "temp_folder.hpp"
#include "weather/sun_course.hpp"
#include "weather/weather_lines.hpp"

namespace {

using namespace townskin_case;
using make_epw::Row;

constexpr double kDegrees = 180.0 / std::numbers::pi;

Epw read(const std::string& text, Report& report) {
  const TempFolder folder;
  folder.write("a.epw", text);
  return read_epw(folder.path("a.epw"), report);
}
Epw read(const std::string& text) {
  Report report;
  return read(text, report);
}
std::string fault_of(const std::function<void()>& work) {
  try {
    work();
  } catch (const Fault& fault) {
    return fault.what();
  }
  return "no fault";
}

/// An edit of one field of the row of 12 March, hour 5, which is line 1688 of the file.
make_epw::Options with(std::size_t field, const std::string& value) {
  make_epw::Options options;
  options.edit = [=](Row& row) {
    if (make_epw::is(row, 3, 12, 5)) row[field] = value;
  };
  return options;
}

TEST(CaseEpw, FaultsNameFileAndLine) {
  make_epw::Options no_row, no_end, minutes, two;
  no_row.edit = [](Row& row) {
    if (make_epw::is(row, 3, 12, 5)) row.clear();
  };
  no_end.edit = [](Row& row) {
    if (make_epw::is(row, 12, 31, 24)) row.clear();
  };
  minutes.period = "DATA PERIODS,1,4,Data,Sunday,1/1,12/31";
  two.period = "DATA PERIODS,1,1,Data,Sunday,1/1,11/30";
  make_epw::Options no_place;
  no_place.location = "SOMETHING";
  const std::string whole = make_epw::text();
  const std::vector<std::pair<std::string, std::string>> faults{
      {make_epw::text(no_row), "line 1688: the row is of 3/12 hour 6, not of 3/12 hour 5"},
      {make_epw::text(no_end),
       "line 8762: the file ends before the hour 12/31 hour 24 of the period 1/1 to 12/31, behind "
       "8759 hours"},
      {whole.substr(0, whole.find("2015,3,12,5,") + 40), "line 1688: a row of"},
      {whole.substr(0, 60), "no line DATA PERIODS: it is not a whole EPW file"},
      {"", "no line DATA PERIODS: it is not a whole EPW file"},
      {make_epw::text(no_place), "line 1: the first line is no LOCATION line of an EPW file"},
      {make_epw::text(minutes), "line 3: only files of one period with one row an hour"},
      {make_epw::text(two), "line 8020: a row behind the end of the period 1/1 to 11/30"},
      {make_epw::text(with(make_epw::kTemperature, "hot")), "line 1688: \"hot\" is no number"},
      {make_epw::text(with(make_epw::kTemperature, "nan")), "line 1688: \"nan\" is no number"},
      {make_epw::text(with(make_epw::kTemperature, "85")),
       "line 1688: dry bulb temperature 85 is not within -90 and 70"},
      {make_epw::text(with(make_epw::kDirect, "-3")), "line 1688: direct normal radiation -3"},
      {make_epw::text(with(make_epw::kHour, "5.5")), "line 1688: \"5.5\" is no whole number"},
  };
  for (const auto& [text, wanted] : faults) {
    EXPECT_NE(fault_of([&] { read(text); }).find(wanted), std::string::npos)
        << wanted << "\n"
        << fault_of([&] { read(text); });
  }
}

TEST(CaseEpw, EndsInOrderWhereverItIsCut) {
  make_epw::Options july;
  july.period = "DATA PERIODS,1,1,Data,Sunday,7/1,7/31";
  july.first_month = july.last_month = 7;
  const std::string whole = make_epw::text(july);
  EXPECT_EQ(read(whole).hours.size(), 31U * 24U);
  std::size_t faults = 0, cuts = 0;
  for (std::size_t end = 0; end < whole.size() - 200; end += 97, ++cuts) {
    if (fault_of([&] { read(whole.substr(0, end)); }) != "no fault") ++faults;
  }
  EXPECT_EQ(faults, cuts);
}

TEST(CaseEpw, FillsWhatIsMissingAndCounts) {
  make_epw::Options options;
  options.edit = [](Row& row) {
    if (make_epw::is(row, 7, 1, 3) || make_epw::is(row, 7, 1, 4)) row[make_epw::kWind] = "999";
    if (make_epw::is(row, 7, 1, 2)) row[make_epw::kWind] = "1";
    if (make_epw::is(row, 7, 1, 5)) row[make_epw::kWind] = "4";
    if (make_epw::is(row, 1, 1, 1)) row[make_epw::kPressure] = "999999";
    if (make_epw::is(row, 1, 1, 2)) row[make_epw::kPressure] = "90000";
    row[make_epw::kInfrared] = "9999";
    row[make_epw::kDirect] =
        row[make_epw::kDirect] == "0.000000" ? "-0.00" : row[make_epw::kDirect];
  };
  Report report;
  const Epw epw = read(make_epw::text(options), report);
  const std::size_t at = 181 * 24;  // 1 July
  EXPECT_DOUBLE_EQ(epw.hours[at + 2].wind, 2.0);
  EXPECT_DOUBLE_EQ(epw.hours[at + 3].wind, 3.0);
  EXPECT_DOUBLE_EQ(epw.hours[0].pressure, 90000.0);
  EXPECT_EQ(report.count("hours without wind speed filled by interpolation"), 2U);
  EXPECT_FALSE(epw.has_infrared);
  const Days days = choose_days(epw, {.day = "07-01", .from = {}, .to = {}});
  for (const WeatherLine& line : weather_lines(days, true, epw.has_infrared)) {
    EXPECT_EQ(line.AtmJsh, 0.0);
  }
}

TEST(CaseDays, AreFoundByTheirMeanTemperature) {
  make_epw::Options options;
  options.edit = [](Row& row) {  // one hot hour does not make a hot day
    if (make_epw::is(row, 1, 9, 14)) row[make_epw::kTemperature] = "50";
    if (row[make_epw::kMonth] == "7" && row[make_epw::kDay] == "19") {
      row[make_epw::kTemperature] = "36";
    }
    if (make_epw::is(row, 9, 2, 3)) row[make_epw::kTemperature] = "60";
    if (make_epw::is(row, 2, 3, 24)) row[make_epw::kTemperature] = "-80";
  };
  const Epw epw = read(make_epw::text(options));
  const auto chosen = [&](const std::string& day) {
    return text_of(choose_days(epw, {.day = day, .from = {}, .to = {}}).first);
  };
  EXPECT_EQ(chosen("hottest"), "07-19");
  EXPECT_EQ(chosen("coldest"), "02-03");
  EXPECT_EQ(chosen("12-31"), "12-31");
  const Days mean = choose_days(epw, {.day = "mean-09", .from = {}, .to = {}});
  double sum = 0.0;  // of the hours 3 of September
  for (const EpwHour& hour : epw.hours) {
    if (hour.month == 9 && hour.hour == 3) sum += hour.temperature;
  }
  EXPECT_NEAR(mean.hours[2].temperature, sum / 30.0, 1e-9);
  for (const char* day : {"02-29", "13-01", "7/21", "", "hot", "mean-13", "07-21x"}) {
    EXPECT_NE(fault_of([&] { chosen(day); }).find("is no day"), std::string::npos) << day;
  }
  const auto dates = [&](const char* from, const char* to) {
    return fault_of([&] { choose_days(epw, {.day = "hottest", .from = from, .to = to}); });
  };
  EXPECT_EQ(dates("08-03", "07-28"),
            "the last day 07-28 lies before the first 08-03; a run stays within a year");
  EXPECT_EQ(dates("08-03", ""), "dates need both a first and a last day (--from, --to)");
}

// The model draws straight lines between the lines of the file, so what it sees is their trapezia.
TEST(CaseWeather, ColumnsStandAsTheModelReadsThem) {
  const Epw epw = read(make_epw::text());
  for (const bool dated : {false, true}) {
    const Days days = choose_days(
        epw, {.day = "07-21", .from = dated ? "07-20" : "", .to = dated ? "07-22" : ""});
    const std::vector<WeatherLine> lines = weather_lines(days, true, true);
    ASSERT_EQ(lines.size(), dated ? 145U : 48U);
    const std::size_t first = dated ? 1 : 0;
    double direct = 0.0, wanted = 0.0;
    for (std::size_t h = 0; h < days.hours.size(); ++h) {
      const EpwHour& hour = days.hours[h];
      const WeatherLine& middle = lines[first + 2 * h];
      const WeatherLine& end = lines[first + 2 * h + 1];
      EXPECT_EQ(middle.hour, hour.hour - 1);
      EXPECT_EQ(middle.minute, 30);
      EXPECT_EQ(end.hour, hour.hour);
      EXPECT_DOUBLE_EQ(middle.SunJdn, hour.direct * 0.0036);
      EXPECT_DOUBLE_EQ(middle.SunJsh, hour.scattered * 0.0036);
      EXPECT_DOUBLE_EQ(middle.AtmJsh, hour.infrared * 0.0036);
      EXPECT_DOUBLE_EQ(end.Temp, hour.temperature);
      EXPECT_DOUBLE_EQ(end.Press, 977.0);
      EXPECT_EQ(end.SunRad, 0.0);
      direct += 0.5 * (middle.SunJdn + end.SunJdn);
      wanted += hour.direct * 0.0036;
    }
    EXPECT_NEAR(direct, wanted, 1e-3 * wanted);  // the sun of the day stays
    EXPECT_EQ(lines.front().month, dated ? 7 : 0);
  }
  const Days days = choose_days(epw, {.day = "07-21", .from = {}, .to = {}});
  const std::vector<WeatherLine> global = weather_lines(days, false, false);
  for (std::size_t h = 0; h < 24; ++h) {
    EXPECT_DOUBLE_EQ(global[2 * h].SunRad, days.hours[h].global * 0.0036);
    EXPECT_DOUBLE_EQ(global[2 * h + 1].SunRad, days.hours[h].global * 0.0036);
    EXPECT_EQ(global[2 * h].SunJdn + global[2 * h].AtmJsh, 0.0);
  }
}

// Positions of 2015 by XEphem's library (VSOP87, PyEphem 4.1.4), without refraction, which gives
// 50.128 for the zenith of 50.112 with refraction in Reda and Andreas (2004), table A5.1. Hours are
// standard time.
struct Position {
  const char* city;
  double latitude, longitude, zone;
  int month, day, hour;
  double altitude, azimuth;
};
constexpr std::array<Position, 48> kPositions{{
    {"Helsinki", 60.17, 24.94, 2, 1, 15, 10, 3.184, 145.466},
    {"Helsinki", 60.17, 24.94, 2, 3, 20, 9, 17.610, 124.276},
    {"Helsinki", 60.17, 24.94, 2, 5, 5, 16, 30.768, 247.471},
    {"Helsinki", 60.17, 24.94, 2, 6, 21, 12, 53.063, 171.607},
    {"Helsinki", 60.17, 24.94, 2, 8, 10, 8, 25.182, 102.774},
    {"Helsinki", 60.17, 24.94, 2, 9, 23, 15, 21.684, 225.862},
    {"Helsinki", 60.17, 24.94, 2, 11, 3, 13, 13.947, 193.981},
    {"Helsinki", 60.17, 24.94, 2, 12, 21, 11, 4.884, 162.073},
    {"London", 51.51, -0.13, 0, 1, 15, 10, 11.977, 149.235},
    {"London", 51.51, -0.13, 0, 3, 20, 9, 24.905, 126.226},
    {"London", 51.51, -0.13, 0, 5, 5, 16, 30.789, 257.005},
    {"London", 51.51, -0.13, 0, 6, 21, 12, 61.920, 178.908},
    {"London", 51.51, -0.13, 0, 8, 10, 8, 29.791, 102.803},
    {"London", 51.51, -0.13, 0, 9, 23, 15, 25.140, 233.589},
    {"London", 51.51, -0.13, 0, 11, 3, 13, 21.406, 199.716},
    {"London", 51.51, -0.13, 0, 12, 21, 11, 13.963, 166.206},
    {"Phoenix", 33.45, -111.98, -7, 1, 15, 10, 23.821, 139.738},
    {"Phoenix", 33.45, -111.98, -7, 3, 20, 9, 29.408, 112.029},
    {"Phoenix", 33.45, -111.98, -7, 5, 5, 16, 38.869, 264.339},
    {"Phoenix", 33.45, -111.98, -7, 6, 21, 12, 78.052, 145.049},
    {"Phoenix", 33.45, -111.98, -7, 8, 10, 8, 26.391, 88.255},
    {"Phoenix", 33.45, -111.98, -7, 9, 23, 15, 39.611, 236.442},
    {"Phoenix", 33.45, -111.98, -7, 11, 3, 13, 40.041, 195.364},
    {"Phoenix", 33.45, -111.98, -7, 12, 21, 11, 29.543, 157.268},
    {"Singapore", 1.35, 103.82, 8, 1, 15, 10, 37.551, 118.323},
    {"Singapore", 1.35, 103.82, 8, 3, 20, 9, 26.879, 91.086},
    {"Singapore", 1.35, 103.82, 8, 5, 5, 16, 43.604, 291.271},
    {"Singapore", 1.35, 103.82, 8, 6, 21, 12, 62.677, 34.808},
    {"Singapore", 1.35, 103.82, 8, 8, 10, 8, 12.349, 74.206},
    {"Singapore", 1.35, 103.82, 8, 9, 23, 15, 59.289, 267.769},
    {"Singapore", 1.35, 103.82, 8, 11, 3, 13, 73.441, 189.981},
    {"Singapore", 1.35, 103.82, 8, 12, 21, 11, 51.264, 131.685},
    {"Sao Paulo", -23.55, -46.63, -3, 1, 15, 10, 58.568, 92.324},
    {"Sao Paulo", -23.55, -46.63, -3, 3, 20, 9, 37.476, 70.736},
    {"Sao Paulo", -23.55, -46.63, -3, 5, 5, 16, 19.765, 298.843},
    {"Sao Paulo", -23.55, -46.63, -3, 6, 21, 12, 42.971, 2.593},
    {"Sao Paulo", -23.55, -46.63, -3, 8, 10, 8, 17.085, 63.863},
    {"Sao Paulo", -23.55, -46.63, -3, 9, 23, 15, 40.253, 291.416},
    {"Sao Paulo", -23.55, -46.63, -3, 11, 3, 13, 71.487, 294.013},
    {"Sao Paulo", -23.55, -46.63, -3, 12, 21, 11, 75.221, 92.781},
    {"Adelaide", -34.93, 138.6, 9.5, 1, 15, 10, 55.496, 76.297},
    {"Adelaide", -34.93, 138.6, 9.5, 3, 20, 9, 31.444, 65.322},
    {"Adelaide", -34.93, 138.6, 9.5, 5, 5, 16, 15.680, 303.297},
    {"Adelaide", -34.93, 138.6, 9.5, 6, 21, 12, 31.492, 4.637},
    {"Adelaide", -34.93, 138.6, 9.5, 8, 10, 8, 10.070, 62.616},
    {"Adelaide", -34.93, 138.6, 9.5, 9, 23, 15, 36.835, 301.628},
    {"Adelaide", -34.93, 138.6, 9.5, 11, 3, 13, 65.776, 321.839},
    {"Adelaide", -34.93, 138.6, 9.5, 12, 21, 11, 70.349, 59.093},
}};

double angle_between(const Vector3& a, const Vector3& b) {
  return std::atan2(length(cross(a, b)), dot(a, b)) * kDegrees;
}

TEST(CaseSun, StandsRightFromHelsinkiToAdelaide) {
  double worst_of_day = 0.0, worst_of_dates = 0.0;
  for (const Position& p : kPositions) {
    const double altitude = p.altitude / kDegrees;
    const double azimuth = p.azimuth / kDegrees;
    const Vector3 wanted{std::cos(altitude) * std::sin(azimuth),
                         std::cos(altitude) * std::cos(azimuth), std::sin(altitude)};
    for (const bool dated : {false, true}) {
      Days days;
      days.dated = dated;
      days.first = days.last = {p.month, p.day};
      const SolarDay noon = solar_day(2015, p.month, p.day, 12.0 - p.zone);
      days.declination = noon.declination;
      days.equation_of_time = noon.equation_of_time;
      const auto settings = sun_members({p.latitude, p.longitude, p.zone}, days);
      for (const SunHour& hour : sun_hours(settings, days)) {
        if (hour.hour != p.hour) continue;
        double& worst = dated ? worst_of_dates : worst_of_day;
        worst = std::max(worst, angle_between(hour.sun, wanted));
        EXPECT_LT(angle_between(hour.sun, wanted), dated ? 0.5 : 0.1)
            << p.city << ' ' << p.month << '-' << p.day << " dated " << dated;
      }
    }
  }
  EXPECT_GT(worst_of_day, 0.0);  // every table has met its sun
  EXPECT_GT(worst_of_dates, 0.0);
  RecordProperty("day", std::to_string(worst_of_day));
  RecordProperty("dates", std::to_string(worst_of_dates));
}

TEST(CaseSun, HoursEndWithADarkOne) {
  const auto hours_of = [](double latitude, const char* date) {
    Days days;
    days.first = days.last = calendar_day(date);
    const SolarDay noon = solar_day(2015, days.first.month, days.first.day, 12.0);
    days.declination = noon.declination;
    return sun_hours(sun_members({latitude, 0.0, 0.0}, days), days);
  };
  const auto summer = hours_of(45.0, "06-21");
  EXPECT_LE(summer.front().sun.z, 0.0);
  EXPECT_GT(summer[1].sun.z, 0.0);
  EXPECT_LE(summer.back().sun.z, 0.0);
  EXPECT_EQ(hours_of(80.0, "06-21").size(), 24U);
  EXPECT_EQ(hours_of(80.0, "12-21").size(), 1U);
  EXPECT_LE(hours_of(80.0, "12-21").front().sun.z, 0.0);
}

}  // namespace
