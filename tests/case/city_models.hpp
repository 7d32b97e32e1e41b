// Small CityJSON: gabled houses as bodies, in all the forms in which data have them.
#pragma once

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace townskin_case {

/// A house of 10 m (x) by 8 m (y) with eaves at 5 m and a ridge along x at 8 m: roof 100 m2, long
/// walls 100 m2, gables 104 m2, volume 520 m3.
struct GabledHouse {
  double x = 0.0, y = 0.0, z = 0.0;
  bool solid = true, named = true, floor = true, inside_out = false;
  std::string members{};  ///< more of the object, each with a comma after it

  /// Its ten corners in millimetres.
  [[nodiscard]] std::string vertices() const {
    std::ostringstream text;
    const double corners[10][3] = {{0, 0, 0},  {10, 0, 0}, {10, 8, 0}, {0, 8, 0}, {0, 0, 5},
                                   {10, 0, 5}, {10, 8, 5}, {0, 8, 5},  {0, 4, 8}, {10, 4, 8}};
    for (const auto& c : corners) {
      text << (&c == &corners[0] ? "[" : ",[") << std::llround(1e3 * (x + c[0])) << ","
           << std::llround(1e3 * (y + c[1])) << "," << std::llround(1e3 * (z + c[2])) << "]";
    }
    return text.str();
  }

  /// The object, whose corners begin at the vertex `first`.
  [[nodiscard]] std::string object(int first) const {
    const std::vector<std::vector<int>> faces = {{0, 3, 2, 1},   {4, 5, 9, 8}, {7, 8, 9, 6},
                                                 {0, 1, 5, 4},   {2, 3, 7, 6}, {0, 4, 8, 7, 3},
                                                 {1, 2, 6, 9, 5}};
    std::string text;
    for (std::size_t f = floor ? 0 : 1; f < faces.size(); ++f) {
      std::string ring;
      for (std::size_t i = 0; i < faces[f].size(); ++i) {
        const std::size_t k = inside_out ? faces[f].size() - 1 - i : i;
        ring.append(ring.empty() ? "" : ",").append(std::to_string(first + faces[f][k]));
      }
      text += (text.empty() ? "[[" : ",[[") + ring + "]]";
    }
    if (solid) text.insert(0, 1, '[').append("]");
    std::string values = floor ? "0,1,1,2,2,2,2" : "1,1,2,2,2,2";
    if (solid) values.insert(0, 1, '[').append("]");
    const std::string semantics =
        R"(,"semantics":{"surfaces":[{"type":"GroundSurface"},{"type":"RoofSurface"},)"
        R"({"type":"WallSurface"}],"values":[)" +
        values + "]}";
    return R"({"type":"Building",)" + members + R"("geometry":[{"lod":"2","type":")" +
           (solid ? "Solid" : "MultiSurface") + R"(","boundaries":[)" + text + "]" +
           (named ? semantics : "") + "}]}";
  }
};

/// A model of the houses, named "a", "b" and so on; `members` is more of it, with a comma at the
/// end.
inline std::string city_model(const std::vector<GabledHouse>& houses,
                              const std::string& members = "") {
  std::string objects, vertices;
  for (std::size_t i = 0; i < houses.size(); ++i) {
    if (i > 0) objects += ",", vertices += ",";
    objects += std::string("\"") + static_cast<char>('a' + i) +
               "\":" + houses[i].object(static_cast<int>(10 * i));
    vertices += houses[i].vertices();
  }
  return R"({"type":"CityJSON","version":"2.0",)" + members +
         R"("transform":{"scale":[0.001,0.001,0.001],"translate":[1000,2000,5]},"CityObjects":{)" +
         objects + R"(},"vertices":[)" + vertices + "]}";
}

}  // namespace townskin_case
