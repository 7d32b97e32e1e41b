// Flaws of data: what is told about each, and what the city is like after it.
#include <gtest/gtest.h>

#include "city/ground_data.hpp"
#include "city_files.hpp"
#include "city_models.hpp"

namespace townskin_case {
namespace {

struct Repair {
  const char* what;      ///< as the report names it, or nothing
  std::string features;  ///< beside a box of 100 m2
  double footprint;      ///< of them [m2]
  bool left_out = false;
};

std::string polygon(const std::string& rings) { return feature("x", R"("height":5)", rings); }

TEST(CaseRepairs, FootprintsAreSetRight) {
  const std::vector<Repair> repairs = {
      {"", polygon(box(1000, 1000, 4, 4)), 16},
      {"ring closed", polygon("[[1000,1000],[1004,1000],[1004,1004],[1000,1004]]"), 16},
      {"ring turned round",
       polygon("[[1000,1000],[1000,1004],[1004,1004],[1004,1000],[1000,1000]]"), 16},
      {"repeated points of a ring removed",
       polygon("[[1000,1000],[1004,1000],[1004,1000],[1004,1004],[1000,1004],[1000,1000]]"), 16},
      {"self-crossing outline set right",
       polygon("[[1000,1000],[1004,1004],[1004,1000],[1000,1004],[1000,1000]]"), 8},
      {"self-crossing outline set right",
       polygon(box(1000, 1000, 4, 4) + ",[[1001,1001],[1001,1008],[1003,1008],[1003,1001],"
                                       "[1001,1001]]"),
       10},
      {"hole without area dropped", polygon(box(1000, 1000, 4, 4) + ",[[1001,1001],[1002,1002]]"),
       16},
      {"outline without area", polygon("[[1000,1000],[1004,1000],[1008,1000],[1000,1000]]"), 0,
       true},
      {"outline without area", polygon("[[1000,1000]]"), 0, true},
      {"neither polygon nor point", polygon("[]"), 0, true},
      {"neither polygon nor point", polygon(""), 0, true},
      {"no geometry", R"({"type":"Feature","id":"x","geometry":null})", 0, true},
      {"no geometry", R"("Feature")", 0, true},
      {"neither polygon nor point",
       R"({"id":"x","geometry":{"type":"LineString","coordinates":[[1,2],[3,4]]}})", 0, true},
      {"no polygon", R"({"id":"x","geometry":{"type":"Point","coordinates":[1000,1000]}})", 0,
       true},
      {"a point is no pair of numbers", polygon(R"([[1000,"1000"],[1004,1000],[1004,1004]])"), 0,
       true},
      {"a point is no pair of numbers", polygon("[[1000],[1004,1000],[1004,1004]]"), 0, true},
      {"coordinates are no array", polygon("7"), 0, true},
      {"50 km or more from the middle of the buildings", polygon(box(0, 9e7, 4, 4)), 0, true},
      {"a point that lies nowhere near",
       polygon("[[1000,1000],[1004,1000,1e300],[1004,1004],[1000,1000]]"), 0, true},
      {"overlap given to the higher building",
       polygon(box(1000, 1000, 4, 4)) + "," + feature("y", R"("height":9)", box(1002, 1000, 4, 4)),
       24},
      {"nothing left of it beside the others",
       polygon(box(1000, 1000, 4, 4)) + "," + feature("y", R"("height":9)", box(999, 999, 8, 8)),
       64, true},
      {"corners within 0.05 m of another moved onto it",
       polygon(box(1000, 1000, 4, 4)) + "," + polygon(box(1004.03, 1000, 3.97, 4)), 32},
  };
  for (const Repair& repair : repairs) {
    SCOPED_TRACE(std::string(repair.what) + " in " + repair.features);
    const std::string text =
        collection(feature("a", R"("height":3)", box(900, 900, 10, 10)) + "," +
                   feature("b", R"("height":3)", box(920, 900, 0.2, 0.2)) + "," + repair.features);
    CityFiles files;
    Report report;
    const City city = files.read(text, report);
    EXPECT_NEAR(totals(city).footprint, 100.04 + repair.footprint, 1e-9);
    const auto lines = report.lines();
    if (*repair.what == 0) {
      EXPECT_EQ(lines.size(), 1U);
      continue;
    }
    EXPECT_EQ(report.count(repair.what), 1U) << testing::PrintToString(lines);
    Report strict(true);
    if (!repair.left_out) {
      EXPECT_NO_THROW(files.read(text, strict));
      continue;
    }
    try {
      files.read(text, strict);
      ADD_FAILURE() << "no fault";
    } catch (const Fault& fault) {
      EXPECT_NE(std::string(fault.what()).find(repair.what), std::string::npos) << fault.what();
      EXPECT_NE(std::string(fault.what()).find("city.json, "), std::string::npos) << fault.what();
    }
  }
}

struct HeightCase {
  const char* properties;
  double height;
  const char* told = "";
};

TEST(CaseRepairs, HeightsInEveryMeaning) {
  const std::vector<HeightCase> cases = {
      {R"("height":7.5)", 7.5},
      {R"("height":"7.5")", 7.5},
      {R"("height":" 7,5 m ")", 7.5},
      {R"("height":"40 ft")", 12.192},
      {R"("height":"40'")", 12.192},
      {R"("building:height":8)", 8},
      {R"("height_ag":8,"height_bg":3)", 8},
      {R"("measuredHeight":8)", 8},
      {R"("HEIGHT_WALL":6)", 6},
      {R"("HEIGHT_WALL":6,"HEIGHT_ROOF":10)", 8},
      {R"("HEIGHT_WALL":6,"HEIGHT_ROOF":4)", 8},
      {R"("RelativeEavesHeight":6,"RelativeRidgeHeight":10)", 8},
      {R"("b3_h_dak_50p":9.3,"b3_h_dak_70p":10.49,"b3_h_maaiveld":-0.07)", 10.56,
       "height above the sea made one above the ground"},
      {R"("h_dak_50p":9.3,"h_maaiveld":1.3)", 8, "height above the sea made one above the ground"},
      {R"("AbsoluteEavesHeight":96,"AbsoluteRidgeHeight":100,"base_elevation":90)", 8,
       "height above the sea made one above the ground"},
      {R"("height":3.14,"base_elevation":351)", 3.14},
      {R"("height":359,"base_elevation":351)", 8, "height above the sea made one above the ground"},
      {R"("height":12,"base_elevation":4)", 12},
      {R"("building:levels":"4")", 12, "height taken from the storeys"},
      {R"("floors_ag":2.5)", 7.5, "height taken from the storeys"},
      {R"("height":-9999,"building:levels":2)", 6, "unusable height set aside"},
      {R"("height":"tall","levels":2)", 6, "height taken from the storeys"},
      {R"("height":"","levels":"many")", 6, "no height: the default taken"},
      {R"("height":null)", 6, "no height: the default taken"},
      {R"("height":[8])", 6, "no height: the default taken"},
      {R"("own":11,"height":8)", 11},
  };
  for (const HeightCase& c : cases) {
    SCOPED_TRACE(c.properties);
    CityFiles files;
    Report report;
    CityInput input;
    input.names.height = {"own"};
    input.buildings = {
        files.write("city.json", R"({"type":"FeatureCollection","crs":null,"features":[)" +
                                     feature("x", c.properties, box(1000, 1000, 5, 5)) + "]}")};
    const City city = read_city(input, report);
    ASSERT_EQ(city.buildings.size(), 1U);
    EXPECT_NEAR(city.buildings[0].height, c.height, 1e-9);
    if (*c.told == 0) {
      EXPECT_EQ(report.lines().size(), 1U);
    } else {
      EXPECT_EQ(report.count(c.told), 1U);
    }
  }
}

TEST(CaseRepairs, OneWarningCountsTheDefaults) {
  CityFiles files;
  Report report;
  files.read(collection(feature("x", "", box(1000, 1000, 5, 5)) + "," +
                        feature("y", "", box(1010, 1000, 5, 5)) + "," + far_box()),
             report);
  const auto lines = report.lines();
  EXPECT_EQ(lines.back(), "%%% 2 of 3 buildings tell neither height nor storeys: 6.0 m are taken");
}

struct TreeCase {
  const char* properties;
  double height, base, radius, density;
  const char* told = "";
};

TEST(CaseRepairs, TreesFromWhatIsThere) {
  const std::vector<TreeCase> cases = {
      {R"("height":10,"crown_base":2,"crown_radius":4,"leaf_area_density":1.5)", 10, 2, 4, 1.5},
      {R"("height":"10 m","crown_diameter":"8")", 10, 2.5, 4, 0.8},
      {R"("height":10)", 10, 2.5, 3, 0.8, "tree's crown taken from its height"},
      {R"("crown_radius":3)", 10, 2.5, 3, 0.8, "tree's height taken from its crown"},
      {R"("crown_area":28.274333882308138)", 10, 2.5, 3, 0.8},
      {R"("height":10,"crown_base":12)", 10, 2.5, 3, 0.8, "crown base above the top set aside"},
      {R"("H":10)", 10, 2.5, 3, 0.8},
      {R"("height":"unknown")", 8, 2, 2.4, 0.8, "tree's default size taken"},
  };
  for (const TreeCase& c : cases) {
    SCOPED_TRACE(c.properties);
    CityFiles files;
    Report report;
    CityInput input;
    input.names.tree_height = {"H"};
    input.buildings = {files.write("city.json", collection(far_box()))};
    input.trees = {files.write(
        "trees.json", collection(std::string(R"({"id":"t","properties":{)") + c.properties +
                                 R"(},"geometry":{"type":"Point","coordinates":[915,905]}})"))};
    const City city = read_city(input, report);
    ASSERT_EQ(city.trees.size(), 1U);
    const Tree& tree = city.trees[0];
    EXPECT_NEAR(tree.height, c.height, 1e-9);
    EXPECT_NEAR(tree.crown_base, c.base, 1e-9);
    EXPECT_NEAR(tree.radius, c.radius, 1e-9);
    EXPECT_NEAR(tree.leaf_area, c.density, 1e-9);
    EXPECT_NEAR(tree.foot.x, 10.0, 1e-9);  // the centre is that of the one building
    EXPECT_NEAR(tree.foot.y, 0.0, 1e-9);
    if (*c.told != 0) {
      EXPECT_EQ(report.count(c.told), 1U);
    }
  }
}

TEST(CaseRepairs, GroundAndCrownsAsPolygons) {
  CityFiles files;
  Report report;
  CityInput input;
  input.buildings = {files.write("city.json", collection(far_box()))};
  input.ground = {files.write(
      "ground.json", collection(feature("g", R"("landuse":"Meadow")", box(920, 900, 10, 10)) + "," +
                                feature("h", R"("kind":"tartan")", box(930, 900, 10, 10)) + "," +
                                feature("i", "", box(940, 900, 10, 10))))};
  input.trees = {
      files.write("trees.json", collection(feature("t", R"("height":9)", box(950, 901, 2, 2))))};
  const City city = read_city(input, report);
  ASSERT_EQ(city.ground.size(), 2U);
  EXPECT_EQ(city.ground[0].kind, "grass");
  EXPECT_EQ(city.ground[1].kind, "tartan");
  EXPECT_NEAR(area(city.ground[0].area), 100.0, 1e-9);
  EXPECT_EQ(report.count("ground of no kind"), 1U);
  ASSERT_EQ(city.trees.size(), 1U);
  EXPECT_NEAR(city.trees[0].radius, std::sqrt(4.0 / 3.14159265358979), 1e-9);
  EXPECT_NEAR(city.trees[0].foot.x, 951.0 - 905.0, 1e-9);
}

struct ModelCase {
  const char* told;
  std::string model;
  double volume;
};

TEST(CaseRepairs, ModelsAreSetRight) {
  const std::string extent = R"("metadata":{"geographicalExtent":[1000,2000,5,1010,2008,13]},)";
  std::string twice = city_model({{.x = 1000, .y = 2000, .z = 5}}, extent);
  // A warped roof: one corner of the eaves 10 cm up.
  std::string warped = city_model({{.named = false}});
  warped.replace(warped.find("[0,0,5000]"), 10, "[0,0,5100]");
  std::string buried = city_model({{.floor = true}});
  buried.replace(buried.find("[[[0,3,2,1]]"), 12, "[[[0,3,2,1]],[[10,11,12]]");
  buried.replace(buried.find("[0,1,1"), 6, "[0,2,1,1");
  buried.replace(buried.rfind("]}"), 2, ",[0,0,-2000],[1000,0,-2000],[0,0,0]]}");
  std::string sliver = city_model({{.floor = true}});
  sliver.replace(sliver.find("[[[0,3,2,1]]"), 12, "[[[0,3,2,1]],[[4,5,4]]");
  sliver.replace(sliver.find("[0,1,1"), 6, "[0,2,1,1");
  std::string roofless = city_model({{}});
  roofless.replace(roofless.find("[[4,5,9,8]],[[7,8,9,6]],"), 24, "");
  roofless.replace(roofless.find("[0,1,1,"), 7, "[0,");
  // The foot of the southern wall set back by 4 m.
  std::string leaning = city_model({{}});
  leaning.replace(leaning.find("[0,0,0],[10000,0,0]"), 19, "[0,4000,0],[10000,4000,0]");
  const auto beside = [](const std::string& object) {
    std::string model = city_model({{}});
    return model.insert(model.find("\"CityObjects\":{") + 15, "\"z\":" + object + ",");
  };
  const std::vector<ModelCase> cases = {
      {"face without area dropped", sliver, 520},
      {"roof lacking: the outline raised to the top", roofless, 640},
      {"space under overhangs or raised floors filled to the ground", leaning, 520},
      {"no object", beside("7"), 520},
      {"no roof and no outline",
       beside(R"({"type":"Building","geometry":[{"lod":"2","type":"MultiSurface",)"
              R"("boundaries":[[[0,1,5,4]]]}]})"),
       520},
      {"translation applied twice taken back", twice, 520},
      {"face off its plane made flat", warped, 520.67},
      {"walls below the ground cut off", buried, 520},
  };
  for (const ModelCase& c : cases) {
    SCOPED_TRACE(c.told);
    CityFiles files;
    Report report;
    const City city = files.read(c.model, report);
    EXPECT_GE(report.count(c.told), 1U);
    EXPECT_NEAR(totals(city).volume, c.volume, 0.7);
  }
}

}  // namespace
}  // namespace townskin_case
