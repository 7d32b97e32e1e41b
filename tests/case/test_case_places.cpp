// Coordinate systems: true lengths and places out of every kind of coordinates.
#include <gtest/gtest.h>

#include <numbers>
#include <numeric>

#include "city/crs_name.hpp"
#include "city/projection.hpp"
#include "city_files.hpp"

namespace townskin_case {
namespace {

TEST(CasePlaces, NamesInEverySpelling) {
  const std::vector<std::pair<const char*, const char*>> names = {
      {"urn:ogc:def:crs:EPSG::26912", "EPSG:26912"},
      {"urn:ogc:def:crs:EPSG:6.9:7415", "EPSG:7415"},
      {"https://www.opengis.net/def/crs/EPSG/0/7415", "EPSG:7415"},
      {"http://www.opengis.net/def/crs/EPSG/9.9.1/7415", "EPSG:7415"},
      {"urn:ogc:def:crs,crs:EPSG::28992,crs:EPSG::5709", "EPSG:28992"},
      {"epsg:4326", "EPSG:4326"},
      {"26912", "EPSG:26912"},
      {"urn:ogc:def:crs:OGC:1.3:CRS84", "OGC:CRS84"},
      {"+proj=utm +zone=12", "+proj=utm +zone=12 +type=crs"},
  };
  for (const auto& [name, key] : names) EXPECT_EQ(crs_key(name), key);
}

/// A ring around a box of the corner and the sides, in coordinates of 1e-9 of their unit.
std::string fine_box(double x, double y, double width, double depth) {
  std::ostringstream text;
  text.precision(16);
  text << "[[" << x << "," << y << "],[" << x + width << "," << y << "],[" << x + width << ","
       << y + depth << "],[" << x << "," << y + depth << "],[" << x << "," << y << "]]";
  return text.str();
}

std::string in_system(const std::string& name) {
  return R"("crs":{"type":"name","properties":{"name":")" + name + "\"}},";
}

constexpr double radian = std::numbers::pi / 180.0;

/// Radii of curvature of the WGS84 ellipsoid along the meridian and across.
std::pair<double, double> radii(double latitude) {
  constexpr double a = 6378137.0, e2 = 0.0066943799901413165;
  const double w = 1.0 - e2 * std::pow(std::sin(latitude * radian), 2);
  return {a * (1.0 - e2) / std::pow(w, 1.5), a / std::sqrt(w)};
}

// A thousandth of a degree each way at 48 N, in degrees and in the metres of EPSG 3857, which are
// none: both must give the area on the ellipsoid.
TEST(CasePlaces, DegreesAndMercatorComeOutInTrueMetres) {
  constexpr double latitude = 48.0, longitude = 10.0, span = 1e-3;
  const auto [along, across] = radii(latitude + 0.5 * span);
  const double north = along * span * radian;
  const double east = across * std::cos((latitude + 0.5 * span) * radian) * span * radian;
  const auto mercator = [](double degrees) {
    return 6378137.0 * std::log(std::tan((45.0 + 0.5 * degrees) * radian));
  };
  const double x = 6378137.0 * longitude * radian;
  const std::vector<std::string> cities = {
      collection(feature("x", R"("height":5)", fine_box(longitude, latitude, span, span))),
      collection(feature("x", R"("height":5)", fine_box(longitude, latitude, span, span)),
                 in_system("urn:ogc:def:crs:EPSG::4326")),
      collection(feature("x", R"("height":5)",
                         fine_box(x, mercator(latitude), 6378137.0 * span * radian,
                                  mercator(latitude + span) - mercator(latitude))),
                 in_system("EPSG:3857")),
  };
  for (const std::string& text : cities) {
    CityFiles files;
    Report report;
    const City city = files.read(text, report);
    EXPECT_TRUE(report.lines().empty()) << report.lines().front();
    EXPECT_NEAR(totals(city).footprint, north * east, 2e-6 * north * east);
    EXPECT_TRUE(city.placed);
    EXPECT_NEAR(city.latitude, latitude + 0.5 * span, 1e-8);
    EXPECT_NEAR(city.longitude, longitude + 0.5 * span, 1e-8);
  }
}

// UTM north of the site's meridian turns by the convergence; locally y must be true north, so a
// wall along a meridian keeps its x. Zone 32 at 3 degrees off its own meridian: 2.3 degrees.
TEST(CasePlaces, NorthIsTrue) {
  const CoordinateSystem degrees("OGC:CRS84", {}), utm("EPSG:32632", {});
  const LocalProjection local(utm, {50.0, 12.0});
  const LocalProjection to_local(degrees, {50.0, 12.0});
  const auto south = local({715000.0, 5542000.0});
  ASSERT_TRUE(south.has_value());
  const auto place = utm.place({715000.0, 5542000.0});
  ASSERT_TRUE(place.has_value());
  const auto again = to_local({place->longitude, place->latitude});
  EXPECT_NEAR(south->x, again->x, 1e-4);
  EXPECT_NEAR(south->y, again->y, 1e-4);
  const auto north = local({715000.0, 5543000.0});
  const double turn = std::atan2(north->x - south->x, north->y - south->y);
  // Convergence: (longitude - 9) sin(latitude), to first order; grid north lies east of true north.
  EXPECT_NEAR(turn, 3.0 * radian * std::sin(50.0 * radian), 1e-3);
}

TEST(CasePlaces, FeetAreFeet) {
  constexpr double foot = 1200.0 / 3937.0;
  CityFiles files;
  Report report;
  const City city =
      files.read(collection(feature("x", R"("height":"20 ft")",
                                    fine_box(400000 / foot, 3700000 / foot, 100 / foot, 50 / foot)),
                            in_system("+proj=utm +zone=12 +datum=WGS84 +units=us-ft")),
                 report);
  // Of a metre of UTM near its zone's 400 km line 1/0.99972 m on the ground.
  EXPECT_NEAR(totals(city).footprint, 5000.0 / std::pow(0.99972, 2), 0.5);
  EXPECT_NEAR(city.buildings[0].height, 6.096, 1e-9);
  EXPECT_EQ(report.lines().size(), 1U) << "that heights without a unit are metres";
}

TEST(CasePlaces, ASystemOutOfItsAreaIsToldAndRight) {
  CityFiles files;
  Report report;
  const City city =
      files.read(collection(feature("x", R"("height":5)", box(463200, 15224900, 20, 20)),
                            in_system("urn:ogc:def:crs:EPSG::32732")),
                 report);
  EXPECT_NEAR(city.latitude, 47.1775, 2e-3);
  EXPECT_NEAR(city.longitude, 8.5145, 2e-3);
  ASSERT_EQ(report.lines().size(), 1U);
  EXPECT_TRUE(report.lines()[0].starts_with("%%% EPSG:32732 is not made for 47.17"));
}

TEST(CasePlaces, ClippingKeepsWholeBuildings) {
  std::vector<std::string> row;
  for (int i = 0; i < 10; ++i) {
    row.push_back(feature(std::to_string(i), R"("height":5)", box(1000 + 20 * i, 1000, 10, 10)));
  }
  const std::string features = std::accumulate(
      row.begin() + 1, row.end(), row.front(),
      [](std::string all, const std::string& one) { return all.append(",").append(one); });
  CityFiles files;
  CityInput input;
  input.buildings = {files.write("city.json", collection(features))};
  Report report;
  input.clip_radius = 31.0;
  EXPECT_EQ(read_city(input, report).buildings.size(), 3U);
  input.clip_centre = {1005.0, 1005.0};
  EXPECT_EQ(read_city(input, report).buildings.size(), 2U);
  input.clip_radius.reset();
  input.clip_rectangle = {999.0, 0.0, 1046.0, 2000.0};
  EXPECT_EQ(read_city(input, report).buildings.size(), 3U);
  input.clip_rectangle = {0.0, 0.0, 1.0, 1.0};
  EXPECT_THROW(read_city(input, report), Fault);
}

}  // namespace
}  // namespace townskin_case
