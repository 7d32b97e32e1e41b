// Files that are no city: every one ends in a city or in a fault that names the file.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "city/json_file.hpp"
#include "city_files.hpp"
#include "city_models.hpp"

namespace townskin_case {
namespace {

/// Everything that a file of a test can hold, as buildings, ground and trees at once.
void read_anyhow(CityFiles& files, const std::string& text, const std::string& name) {
  CityInput input;
  input.buildings = {files.write(name, text)};
  input.ground = input.trees = input.buildings;
  try {
    Report report;
    const City city = read_city(input, report);
    EXPECT_FALSE(city.buildings.empty());
    for (const std::string& line : report.lines()) EXPECT_FALSE(line.empty());
  } catch (const Fault& fault) {
    const std::string what = fault.what();
    EXPECT_NE(what.find(name), std::string::npos) << what;
  }
}

std::string small_geojson() {
  return collection(
      feature("a", R"("height":"7","building:levels":2,"kind":"grass")", box(1000, 1000, 9, 9)) +
      R"(,{"type":"Feature","geometry":{"type":"GeometryCollection","geometries":[)"
      R"({"type":"MultiPolygon","coordinates":[[[[1020,1000],[1025,1000],[1025,1009],[1020,1000]]]]},)"
      R"({"type":"MultiPoint","coordinates":[[1030,1030,4]]}]},"properties":{"crown_radius":2}})");
}

std::string small_model() {
  return city_model({{.members = R"("children":["b"],"attributes":{"storeysAboveGround":2},)"},
                     {.x = 9, .solid = false, .members = R"("parents":["a"],)"}},
                    R"("metadata":{"geographicalExtent":[1000,2000,5,1019,2008,13]},)");
}

struct FaultRow {
  const char* text;
  const char* message;
};

TEST(CaseFaults, NameTheFileAndTheFault) {
  const std::vector<FaultRow> rows = {
      {"", "cannot be read, or is empty"},
      {"{", "no valid JSON at byte 2"},
      {"[1,NaN]", "no valid JSON at byte 4"},
      {"[1e999]", "holds a number beyond all range"},
      {"7", "neither GeoJSON nor CityJSON: type ''"},
      {R"({"type":"Topology"})", "neither GeoJSON nor CityJSON: type 'Topology'"},
      {R"({"type":"FeatureCollection"})", "a FeatureCollection without features"},
      {R"({"type":"FeatureCollection","features":[]})", "no building"},
      {R"({"type":"FeatureCollection","features":[],"crs":{"type":"link"}})",
       "its crs member does not name a coordinate system"},
      {R"({"type":"FeatureCollection","features":[],"crs":"EPSG:0000"})",
       "unknown coordinate system 'EPSG:0000'"},
      {R"({"type":"CityJSON","version":"2.0","vertices":[]})", "a city model without CityObjects"},
      {R"({"type":"CityJSON","version":"2.0","CityObjects":{}})", "a city model without vertices"},
      {R"({"type":"CityJSON","vertices":[[1,2,"3"]],"CityObjects":{}})",
       "vertex 0 is no three numbers"},
      {R"({"type":"CityJSON","transform":{"scale":[1,1]},"vertices":[]})",
       "its transform lacks three numbers of scale and translate"},
      {R"({"type":"Polygon","coordinates":[[[1,200],[2,200],[2,201],[1,200]]],"crs":"EPSG:4326"})",
       "its coordinates are no places in their coordinate system"},
  };
  for (const FaultRow& row : rows) {
    CityFiles files;
    Report report;
    try {
      files.read(row.text, report, "town.json");
      ADD_FAILURE() << row.text;
    } catch (const Fault& fault) {
      const std::string what = fault.what();
      EXPECT_NE(what.find("town.json: "), std::string::npos) << what;
      EXPECT_NE(what.find(row.message), std::string::npos) << what;
    }
  }
}

TEST(CaseFaults, AFileThatIsNotThere) {
  CityInput input;
  input.buildings = {"no/such/file.json"};
  Report report;
  EXPECT_THROW(read_city(input, report), Fault);
  input.buildings = {"/"};
  EXPECT_THROW(read_city(input, report), Fault);
  input.buildings.clear();
  EXPECT_THROW(read_city(input, report), Fault);
}

TEST(CaseFaults, NestingOfTenThousandLevels) {
  const std::string open(10000, '['), close(10000, ']');
  for (const std::string& text :
       {open, open + close, R"({"type":"Polygon","coordinates":)" + open + close + "}"}) {
    CityFiles files;
    Report report;
    EXPECT_THROW(files.read(text, report), Fault);
  }
}

TEST(CaseFaults, CutAnywhere) {
  CityFiles files;
  const std::string line = city_model({{}});
  const std::string sequence = line + "\n" + line + "\n";
  for (const auto& [text, name] :
       {std::pair(small_geojson(), "cut.geojson"), std::pair(small_model(), "cut.city.json"),
        std::pair(sequence, "cut.city.jsonl")}) {
    for (std::size_t at = 0; at < text.size(); at += 97) {
      read_anyhow(files, text.substr(0, at), name);
    }
  }
}

/// Calls `visit` with the whole value for each of its parts replaced by each of the others.
template <typename Visit>
void each_replaced(Json& whole, Json& part, const std::vector<Json>& others, const Visit& visit) {
  const Json kept = part;
  for (const Json& other : others) {
    part = other;
    visit(whole);
  }
  part = kept;
  if (part.is_structured()) {
    for (Json& inner : part) each_replaced(whole, inner, others, visit);
  }
}

TEST(CaseFaults, EveryValueOfAWrongType) {
  const std::vector<Json> others = {nullptr, -1, 1e300, "text", Json::array(), Json::object()};
  CityFiles files;
  for (const auto& [text, name] :
       {std::pair(small_geojson(), "types.geojson"), std::pair(small_model(), "types.city.json")}) {
    Json whole = Json::parse(text);
    each_replaced(whole, whole, others,
                  [&, file = name](const Json& wrong) { read_anyhow(files, wrong.dump(), file); });
  }
}

TEST(CaseFaults, AMillionPointsInARing) {
#ifdef __SANITIZE_ADDRESS__
  constexpr int count = 100000;  // ten times as many take half a minute
#else
  constexpr int count = 1000000;
#endif
  std::ostringstream ring;
  ring.precision(12);
  for (int i = 0; i <= count; ++i) {
    const double turn = 2.0 * 3.14159265358979 * (i % count) / count;
    ring << (i == 0 ? "[[" : ",[") << 1000.0 + 500.0 * std::cos(turn) << ","
         << 1000.0 + 500.0 * std::sin(turn) << "]";
  }
  CityFiles files;
  Report report;
  const City city =
      files.read(collection(feature("round", R"("height":5)", ring.str() + "]")), report);
  EXPECT_NEAR(totals(city).footprint, 3.14159265358979 * 250000.0, 50.0);
}

}  // namespace
}  // namespace townskin_case
