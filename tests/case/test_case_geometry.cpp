// Areas and volumes of small cities against values counted by hand.
#include <gtest/gtest.h>

#include "city_files.hpp"
#include "city_models.hpp"

namespace townskin_case {
namespace {

constexpr double exact = 1e-9;

void expect_totals(const Totals& found, const Totals& counted, double tolerance) {
  EXPECT_NEAR(found.roof, counted.roof, tolerance);
  EXPECT_NEAR(found.wall, counted.wall, tolerance);
  EXPECT_NEAR(found.footprint, counted.footprint, tolerance);
  EXPECT_NEAR(found.volume, counted.volume, tolerance);
}

/// The walls close each building over its footprint: their normals point outward.
void expect_closed(const City& city) {
  Vector3 sum;
  double footprint = 0.0;
  for (const Building& building : city.buildings) {
    footprint += building.floor_area;
    for (const Face& face : building.faces) {
      const auto add = [&sum](const Ring3& ring) {
        for (std::size_t i = 2; i < ring.size(); ++i) {
          sum = sum + 0.5 * cross(ring[i - 1] - ring[0], ring[i] - ring[0]);
        }
      };
      add(face.shape.outer);
      for (const Ring3& hole : face.shape.holes) add(hole);
    }
  }
  EXPECT_NEAR(sum.x, 0.0, 1e-8);
  EXPECT_NEAR(sum.y, 0.0, 1e-8);
  EXPECT_NEAR(sum.z, footprint, 1e-8);
}

double outward_flux(const City& city) {
  double volume = 0.0;
  for (const Building& building : city.buildings) {
    for (const Face& face : building.faces) {
      const auto add = [&volume](const Ring3& ring) {
        for (std::size_t i = 2; i < ring.size(); ++i) {
          volume += dot(ring[0], cross(ring[i - 1], ring[i])) / 6.0;
        }
      };
      add(face.shape.outer);
      for (const Ring3& hole : face.shape.holes) add(hole);
    }
  }
  return volume;
}

std::string height(double metres) {
  return std::string("\"height\":").append(std::to_string(metres));
}

// Ten footprints: one alone; a row of two; a block around a courtyard and one that leans on it from
// within; an L with a smaller one on half of its side; a triangle and a square on its slant; two
// parts of one building.
TEST(CaseGeometry, TenFootprintsByHand) {
  const std::string two =
      R"({"type":"Feature","id":"j","properties":{"height":3},"geometry":{"type":"MultiPolygon",)"
      R"("coordinates":[[)" +
      box(1400, 1000, 2, 2) + "],[" + box(1410, 1000, 2, 2) + "]]}}";
  const std::string courtyard =
      box(1100, 1000, 20, 20) + ",[[1106,1006],[1106,1014],[1114,1014],[1114,1006],[1106,1006]]";
  const std::string city = collection(
      feature("a", height(6), box(1000, 1000, 10, 10)) + "," +
      feature("b", height(9), box(1050, 1000, 10, 8)) + "," +
      feature("c", height(6), box(1060, 1000, 10, 8)) + "," + feature("d", height(12), courtyard) +
      "," + feature("e", height(4), box(1108, 1006, 4, 3)) + "," +
      feature("f", height(5),
              "[[1200,1000],[1210,1000],[1210,1006],[1206,1006],"
              "[1206,1010],[1200,1010],[1200,1000]]") +
      "," + feature("g", height(8), box(1210, 1003, 6, 6)) + "," +
      feature("h", height(10), "[[1300,1000],[1303,1000],[1300,1004],[1300,1000]]") + "," +
      feature("i", height(10), "[[1303,1000],[1307,1003],[1304,1007],[1300,1004],[1303,1000]]") +
      "," + two);
  CityFiles files;
  Report report;
  const City read = files.read(city, report);
  ASSERT_EQ(read.buildings.size(), 10U);
  const std::vector<std::pair<double, double>> walls_and_volume = {
      {240, 600}, {276, 720}, {168, 480}, {1328, 4032}, {40, 48},
      {185, 420}, {177, 288}, {70, 60},   {150, 250},   {48, 24}};
  double wall = 0.0, volume = 0.0;
  for (std::size_t i = 0; i < 10; ++i) {
    City one;
    one.buildings = {read.buildings[i]};
    EXPECT_NEAR(totals(one).wall, walls_and_volume[i].first, exact) << i;
    EXPECT_NEAR(totals(one).volume, walls_and_volume[i].second, exact) << i;
    wall += walls_and_volume[i].first;
    volume += walls_and_volume[i].second;
  }
  expect_totals(totals(read), {767, wall, 767, volume}, exact);
  expect_closed(read);
  EXPECT_NEAR(outward_flux(read), volume, 1e-6);
  EXPECT_EQ(report.lines().size(), 1U) << "only that no system is named";
}

struct TwoBoxes {
  const char* what;
  std::string first, second;  // rings
  Totals counted;
};

// 10 by 10 m, 6 m high, and a second of 9 m.
TEST(CaseGeometry, NeighboursMeetOverlapAndNearlyTouch) {
  const std::string first = box(1000, 1000, 10, 10);
  const std::vector<TwoBoxes> cases = {
      {"apart", first, box(1011, 1000, 10, 10), {200, 240 + 360, 200, 1500}},
      {"touching", first, box(1010, 1000, 10, 10), {200, 240 + 360 - 120, 200, 1500}},
      {"gap of 4 cm", first, box(1010.04, 1000, 9.96, 10), {200, 480, 200, 1500}},
      {"overlap of 4 cm", first, box(1009.96, 1000, 10.04, 10), {200, 480, 200, 1500}},
      {"overlap of 2 m", first, box(1008, 1000, 10, 10), {180, 156 + 300, 180, 1380}},
      {"within", first, box(1002, 1002, 5, 5), {100, 240 + 60, 100, 675}},
      {"gap of 4 cm, shifted", first, box(1010.04, 1005, 10, 10), {200, 540, 200, 1500}},
  };
  for (const TwoBoxes& c : cases) {
    SCOPED_TRACE(c.what);
    CityFiles files;
    Report report;
    const City city = files.read(
        collection(feature("low", height(6), c.first) + "," + feature("high", height(9), c.second)),
        report);
    // Bent by what a snapped corner moves where only a part of the sides meets.
    const double tolerance = std::string(c.what).ends_with("shifted") ? 3.5 : exact;
    expect_totals(totals(city), c.counted, tolerance);
    if (tolerance == exact) expect_closed(city);
    const bool overlaps = c.counted.footprint < 200.0;
    EXPECT_EQ(report.count("overlap given to the higher building"), overlaps ? 1U : 0U);
  }
}

struct BodyForm {
  const char* what;
  GabledHouse house;
  const char* repair;
};

TEST(CaseGeometry, AHouseIsTheSameInEveryForm) {
  const std::vector<BodyForm> forms = {
      {"solid", {}, ""},
      {"surfaces", {.solid = false}, ""},
      {"no names", {.named = false}, ""},
      {"surfaces without names", {.solid = false, .named = false}, ""},
      {"no floor", {.named = false, .floor = false}, "open body closed"},
      {"inside out", {.inside_out = true}, "body turned inside out"},
  };
  for (const BodyForm& form : forms) {
    SCOPED_TRACE(form.what);
    CityFiles files;
    Report report;
    const City city = files.read(city_model({form.house}), report);
    expect_totals(totals(city), {100, 204, 80, 520}, 1e-8);
    expect_closed(city);
    ASSERT_EQ(city.buildings.size(), 1U);
    EXPECT_EQ(city.buildings[0].faces.size(), 6U);
    EXPECT_NEAR(city.buildings[0].height, 8.0, exact);
    EXPECT_EQ(city.buildings[0].storeys, 2.0);
    EXPECT_EQ(report.lines().size(), *form.repair == 0 ? 1U : 3U);
    if (*form.repair != 0) {
      EXPECT_EQ(report.count(form.repair), 1U);
    }
  }
}

struct HousePair {
  const char* what;
  GabledHouse second;
  double wall;
};

// What faces the neighbour shows only above the neighbour's roof.
TEST(CaseGeometry, GablesOfTouchingHousesCancel) {
  const std::vector<HousePair> pairs = {
      {"in a row", {.x = 10}, 408 - 104},
      {"moved by half a depth", {.x = 10, .y = 4}, 200 + 104 + 58},
      {"on higher ground of its own", {.x = 10, .z = 2}, 408 - 104},
      {"4 cm apart", {.x = 10.04}, 408 - 104},
      {"eaves to eaves", {.y = 8}, 408 - 100},
  };
  for (const HousePair& pair : pairs) {
    SCOPED_TRACE(pair.what);
    CityFiles files;
    Report report;
    const City city = files.read(city_model({{}, pair.second}), report);
    const Totals found = totals(city);
    const double tolerance = pair.second.x == 10.04 ? 1.0 : 1e-8;
    EXPECT_NEAR(found.wall, pair.wall, tolerance);
    EXPECT_NEAR(found.roof, 200.0, tolerance);
    EXPECT_NEAR(found.volume, 1040.0, 5.0 * tolerance);
  }
}

// The roofs meet in a valley that no data have as an edge.
TEST(CaseGeometry, RoofsThatCrossAreCutAlongTheValley) {
  CityFiles files;
  Report report;
  // Side by side along the ridges, and half of their depth in each other.
  const City city = files.read(city_model({{}, {.y = 4.0}}), report);
  // Common ground y 4..8: the first falls from 8 to 5, the second rises from 5 to 8, equal at y
  // = 6.
  const Totals found = totals(city);
  EXPECT_NEAR(found.footprint, 120.0, 1e-8);
  EXPECT_NEAR(found.roof, 150.0, 1e-8);
  EXPECT_NEAR(found.volume, 2.0 * (260.0 + 145.0), 1e-6);
  expect_closed(city);
}

TEST(CaseGeometry, PartsBelongToTheirBuildingAndLevelsOfDetailAreChosen) {
  const std::string outline =
      R"({"lod":0,"type":"MultiSurface","boundaries":[[[0,1,2,3]]]},)"
      R"({"lod":1.2,"type":"MultiSurface","boundaries":[[[0,1,2,3]],[[4,5,6,7]]]})";
  const std::string model =
      R"({"type":"CityJSON","version":"1.1","CityObjects":{)"
      R"("part":{"type":"BuildingPart","parents":["whole"],"geometry":[)" +
      outline +
      R"(,{"lod":"2.2","type":"MultiSurface","boundaries":[[[0,1,2,3]],[[8,9,10,11]]]}]},)"
      R"("whole":{"type":"Building","children":["part"],"attributes":{"storeysAboveGround":3},)"
      R"("geometry":[{"lod":"0","type":"MultiSurface","boundaries":[[[0,1,2,3]]]}]}},)"
      R"("vertices":[[0,0,0],[10,0,0],[10,10,0],[0,10,0],[0,0,6],[10,0,6],[10,10,6],[0,10,6],)"
      R"([0,0,7],[10,0,7],[10,10,7],[0,10,7]]})";
  const std::vector<std::pair<double, double>> volumes = {{9, 700}, {1.2, 600}, {2, 600}, {0, 900}};
  for (const auto& [lod, volume] : volumes) {
    CityFiles files;
    Report report;
    CityInput input;
    input.buildings = {files.write("model.json", model)};
    input.lod = lod;
    const City city = read_city(input, report);
    ASSERT_EQ(city.buildings.size(), 1U);
    EXPECT_EQ(city.buildings[0].origin.feature, "whole");
    EXPECT_EQ(city.buildings[0].storeys, 3.0);
    EXPECT_NEAR(city.buildings[0].volume, volume, 1e-6) << lod;
  }
}

// The features of a sequence take the transform of its first line.
TEST(CaseGeometry, ASequenceIsTheSameAsItsModel) {
  std::string lines =
      R"({"type":"CityJSON","version":"2.0","transform":{"scale":[0.001,0.001,0.001],)"
      R"("translate":[1000,2000,5]},"CityObjects":{},"vertices":[]})";
  for (const double x : {0.0, 10.0}) {
    const GabledHouse house{.x = x};
    lines.append("\n").append(R"({"type":"CityJSONFeature","CityObjects":{")");
    lines.append(x > 0.0 ? "b" : "a").append("\":").append(house.object(0));
    lines.append(R"(},"vertices":[)").append(house.vertices()).append("]}");
  }
  CityFiles files;
  Report report;
  const City city = files.read(lines, report, "city.city.jsonl");
  ASSERT_EQ(city.buildings.size(), 2U);
  EXPECT_EQ(city.buildings[1].origin.feature, "b");
  expect_totals(totals(city), {200, 304, 160, 1040}, 1e-8);
}

// What a model has beside its buildings: ground by its type, and trees by the boxes around them.
TEST(CaseGeometry, GroundAndPlantsOfAModel) {
  std::string model = city_model({{}});
  const std::string more =
      R"("r":{"type":"Road","geometry":[{"lod":1,"type":"MultiSurface",)"
      R"("boundaries":[[[0,1,2]],[[0,2,3]],[[0,1,5,4]]]}]},)"
      R"("l":{"type":"LandUse","attributes":{"class":"1000"},"geometry":[{"lod":1,)"
      R"("type":"MultiSurface","boundaries":[[[0,1,2]]]}]},)"
      R"("t":{"type":"SolitaryVegetationObject","geometry":[{"lod":1,"type":"MultiSurface",)"
      R"("boundaries":[[[0,1,2,3]],[[4,5,9,8]]]}]},)";
  model.insert(model.find(R"("a":{)"), more);
  CityFiles files;
  Report report;
  const City city = files.read(model, report);
  ASSERT_EQ(city.ground.size(), 1U);
  EXPECT_EQ(city.ground[0].kind, "asphalt");
  EXPECT_NEAR(area(city.ground[0].area), 80.0, 1e-9);
  ASSERT_EQ(city.trees.size(), 1U);
  EXPECT_NEAR(city.trees[0].height, 8.0, 1e-6);
  EXPECT_NEAR(city.trees[0].radius, 0.25 * (10.0 + 8.0), 1e-9);
}

}  // namespace
}  // namespace townskin_case
