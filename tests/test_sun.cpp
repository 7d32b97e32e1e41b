// Sun position and sky fluxes.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <tuple>
#include <vector>

#include "radiation/phydat.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_phydat;

constexpr double kDegrees = 180.0 / std::numbers::pi;
constexpr std::array<int, 12> kMonths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

Data site(double latitude, double longitude, double declination = 0.0) {
  Data data;
  data.LAT = latitude;
  data.LNG = longitude;
  data.SDECL = declination;
  data.RANGLE = 0.0;
  data.PPA = 0.7;
  return data;
}

double zenith(const SunVector& sun) { return std::acos(sun.z) * kDegrees; }
double azimuth(const SunVector& sun) {
  const double angle = std::atan2(sun.x, sun.y) * kDegrees;
  return angle < 0.0 ? angle + 360.0 : angle;
}
double length(const SunVector& sun) { return std::hypot(sun.x, sun.y, sun.z); }

SunVector dated(const Data& data, double month, double day, double hour, double minute = 0.0,
                double second = 0.0) {
  RecordedLog recorded;
  tsrf_module_calendar::Data calendar;
  const double time =
      tsrf_module_calendar::date2sec(calendar, {2003, month, day, hour, minute, second});
  return sunvec_mltday(recorded.log, calendar, data, time);
}

// Reda and Andreas (2004), Solar Energy 76:577, table A5.1: 2003-10-17 12:30:30 at UTC-7, with the
// declination and hour angle of the same table. The zenith there holds 0.0163 degrees refraction.
TEST(Sun, AgreesWithTheWorkedExampleOfTheSolarPositionAlgorithm) {
  Data golden = site(39.742476, -105.1786, -9.31434);
  golden.SHANGLE = 11.1059;
  const SunVector oneday = sunvec_oneday(golden, 12.0);
  EXPECT_NEAR(zenith(oneday), 50.111622 + 0.0163, 3e-3);
  EXPECT_NEAR(azimuth(oneday), 194.340241, 2e-3);
  // The dated form counts as in a leap year (up to 0.4 degrees of declination) on the clock of
  // UTC+9.
  const SunVector mltday = dated(golden, 10, 18, 4, 30, 30);
  EXPECT_NEAR(zenith(mltday), 50.111622, 0.5);
  EXPECT_NEAR(azimuth(mltday), 194.340241, 0.5);
}

// The dated form once more, each operation in double precision and rounded by hand, with the day
// counted on the calendar.
SunVector dated_step_by_step(const Data& data, int leap_day, double clock_hours) {
  const auto f = [](double value) { return static_cast<double>(static_cast<float>(value)); };
  const double radian = static_cast<double>(0.017453292F);
  const double w = f(leap_day * 0.01716717);
  double degrees = 0.3622133 - 23.24763 * std::cos(w + 0.153231);
  degrees = degrees - 0.3368908 * std::cos(2 * w + 0.2070988);
  degrees = degrees - 0.1852646 * std::cos(3 * w + 0.6201293);
  const double decl = f(f(degrees) * radian);
  double hours = -0.0002786409 + 0.1227715 * std::cos(w + 1.498311);
  hours = hours - 0.1654575 * std::cos(2 * w - 1.261546);
  hours = hours - 0.00535383 * std::cos(3 * w - 1.1571);
  const double angle = f((data.LNG - 135) + (f(hours) + f(clock_hours) - 12) * 15);
  const double h = f(angle * radian);
  const double lat = f(f(data.LAT) * radian);
  const double sl = f(std::sin(lat)), cl = f(std::cos(lat));
  const double sd = f(std::sin(decl)), cd = f(std::cos(decl));
  const double sh = f(std::sin(h)), ch = f(std::cos(h));
  return {-f(sh * cd), f(f(cl * sd) - f(f(sl * cd) * ch)), f(f(sd * sl) + f(f(cl * cd) * ch))};
}

TEST(Sun, DatedFormKeepsItsRoundingsToTheLastBit) {
  int leap_day = 0;
  for (int month = 1; month <= 12; ++month) {
    for (int day = 1; day <= kMonths[static_cast<std::size_t>(month - 1)]; ++day) {
      ++leap_day;
      for (const Data& data : {site(35.69, 139.77), site(-33.9, 18.4), site(90, 0), site(0, 135)}) {
        for (const int s : {0, 12345, 43200, 86399}) {
          const SunVector sun = dated(data, month, day, s / 3600, s / 60 % 60, s % 60);
          const double clock = s / 3600 + s / 60 % 60 / 60.0 + s % 60 / 3600.0;
          const SunVector plain = dated_step_by_step(data, leap_day, clock);
          ASSERT_EQ(std::tuple(sun.x, sun.y, sun.z), std::tuple(plain.x, plain.y, plain.z));
          ASSERT_NEAR(length(sun), 1.0, 3e-7);
        }
      }
    }
    if (month == 2) ++leap_day;
  }
}

TEST(Sun, RepeatingDayIsTheSphericalTriangleAtEverySite) {
  for (double latitude = -90.0; latitude <= 90.0; latitude += 2.5) {
    for (const double declination : {-23.44, 0.0, 21.0}) {
      for (double t = -12.0; t < 12.0; t += 0.25) {  // hours from noon, two days later
        const SunVector sun = sunvec_oneday(site(latitude, 0, declination), 60.0 + t);
        // From the equator's frame, turned by the latitude about the east axis.
        const double h = t / 12.0 * std::numbers::pi, d = declination / kDegrees;
        const double lat = latitude / kDegrees, out = std::cos(d) * std::cos(h);
        // Near the zenith the azimuth comes from an arccos of nearly 1.
        ASSERT_NEAR(sun.x, -std::cos(d) * std::sin(h), 1e-7);
        ASSERT_NEAR(sun.y, std::sin(d) * std::cos(lat) - out * std::sin(lat), 1e-7);
        ASSERT_NEAR(sun.z, std::sin(d) * std::sin(lat) + out * std::cos(lat), 1e-14);
        ASSERT_NEAR(length(sun), 1.0, 1e-14);
      }
    }
  }
}

TEST(Sky, TakesMeasuredPartsWhereTheyAreGiven) {
  const std::vector<std::tuple<double, MeasuredSky, double, double>> rows{
      {-0.2, {.SunRad = 7}, 0, 7},
      {0.0, {.SunRad = 7}, 0, 7},
      {0.5, {.SunRad = 0}, 0, 0},
      {0.5, {.SunRad = 300, .SunJdn = 0, .SunJsh = 80}, 0, 80},
      {-0.2, {.SunJdn = 20, .SunJsh = 8}, 20, 8}};
  for (const auto& [sinalt, measured, direct, scattered] : rows) {
    EXPECT_EQ(sky_fluxes(site(0, 0), sinalt, measured).direct, direct);
    EXPECT_EQ(sky_fluxes(site(0, 0), sinalt, measured).scattered, scattered);
  }
  const auto longwave = [](double measured) {
    return sky_fluxes(site(0, 0), 0.5, {293.15, 1200.0, 0, -1, 0, measured}).longwave;
  };
  EXPECT_EQ(longwave(345.0), 345.0);
  EXPECT_EQ(longwave(0.0), longwave(-999.0));
  // Brunt's formula at 20 degC and 9 mmHg (1199.9 Pa): 0.754 of a black body.
  EXPECT_NEAR(longwave(0.0), 0.754 * 418.76, 0.05);
}

}  // namespace
