// Small cities as files, and what comes out of them added up.
#pragma once

#include <sstream>
#include <string>

#include "city/read_city.hpp"
#include "shapes/plan.hpp"
#include "temp_folder.hpp"

namespace townskin_case {

inline std::string feature(const std::string& id, const std::string& properties,
                           const std::string& rings) {
  return R"({"type":"Feature","id":")" + id + R"(","properties":{)" + properties +
         R"(},"geometry":{"type":"Polygon","coordinates":[)" + rings + "]}}";
}

inline std::string collection(const std::string& features, const std::string& members = "") {
  return R"({"type":"FeatureCollection",)" + members + R"("features":[)" + features + "]}";
}

/// A closed ring around a box.
inline std::string box(double x, double y, double width, double depth) {
  std::ostringstream text;
  text.precision(12);
  text << "[[" << x << "," << y << "],[" << x + width << "," << y << "],[" << x + width << ","
       << y + depth << "],[" << x << "," << y + depth << "],[" << x << "," << y << "]]";
  return text.str();
}

/// What stands far off, so that coordinates can only be metres.
inline std::string far_box() { return feature("far", R"("height":3)", box(900, 900, 10, 10)); }

struct Totals {
  double roof = 0.0, wall = 0.0, footprint = 0.0, volume = 0.0;
};

inline Totals totals(const City& city) {
  Totals sum;
  for (const Building& building : city.buildings) {
    for (const Face& face : building.faces) {
      (face.kind == FaceKind::roof ? sum.roof : sum.wall) += area(face.shape);
    }
    for (const Polygon2& part : building.footprint) sum.footprint += area(part);
    sum.volume += building.volume;
  }
  return sum;
}

/// Files of a test in a folder of its own.
class CityFiles {
 public:
  std::string write(const std::string& name, const std::string& text) {
    folder_.write(name, text);
    return folder_.path(name);
  }
  City read(const std::string& text, Report& report, const std::string& name = "city.json") {
    CityInput input;
    input.buildings = {write(name, text)};
    return read_city(input, report);
  }

 private:
  TempFolder folder_;
};

}  // namespace townskin_case
