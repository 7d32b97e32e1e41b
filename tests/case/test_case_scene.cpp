// Cutting along the grid loses nothing: areas, volumes, open fractions, by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "make_scene.hpp"

namespace townskin_case {
namespace {

/// A house with a gable roof over a rectangle, turned about its first corner.
Building house(Point2 corner, double length, double width, double eaves, double ridge,
               double turn) {
  const double c = std::cos(turn);
  const double s = std::sin(turn);
  const auto at = [&](double u, double v, double z) {
    return Vector3{corner.x + c * u - s * v, corner.y + s * u + c * v, z};
  };
  Building out;
  const double middle = 0.5 * width;
  out.faces = {
      {{{at(0, 0, eaves), at(length, 0, eaves), at(length, middle, ridge), at(0, middle, ridge)},
        {}},
       FaceKind::roof},
      {{{at(0, middle, ridge), at(length, middle, ridge), at(length, width, eaves),
         at(0, width, eaves)},
        {}},
       FaceKind::roof},
      {{{at(0, 0, 0), at(length, 0, 0), at(length, 0, eaves), at(0, 0, eaves)}, {}},
       FaceKind::wall},
      {{{at(length, width, 0), at(0, width, 0), at(0, width, eaves), at(length, width, eaves)}, {}},
       FaceKind::wall},
      {{{at(length, 0, 0), at(length, width, 0), at(length, width, eaves),
         at(length, middle, ridge), at(length, 0, eaves)},
        {}},
       FaceKind::wall},
      {{{at(0, width, 0), at(0, 0, 0), at(0, 0, eaves), at(0, middle, ridge), at(0, width, eaves)},
        {}},
       FaceKind::wall}};
  for (const auto& [u, v] : {std::pair{0.0, 0.0}, {length, 0.0}, {length, width}, {0.0, width}}) {
    const Vector3 p = at(u, v, 0);
    out.footprint.outer.push_back({p.x, p.y});
  }
  return out;
}

SceneOptions options_of(double turn) {
  SceneOptions options;
  options.grid.cell = {3.0, 4.0, 2.5};
  options.grid.margin = 11.0;
  options.grid.turn = turn;
  options.build_up = [](const Building&) { return BuildUp{"tiles", "brick", "glass", 0.25}; };
  return options;
}

double area_of(const Scene& scene, const std::string& construction) {
  double sum = 0.0;
  for (const Patch& patch : scene.patches) {
    if (patch.construction == construction) sum += patch.area;
  }
  return sum;
}

double solid_volume(const District& district) {
  const CellGrid& grid = district.scene.grid;
  const double cell = 3.0 * 4.0 * 2.5;
  const double open =
      std::accumulate(district.porous.volume.begin(), district.porous.volume.end(), 0.0);
  EXPECT_EQ(district.porous.volume.size(),
            (grid.nodes[0].size() - 1) * (grid.nodes[1].size() - 1) * (grid.nodes[2].size() - 1));
  return (static_cast<double>(district.porous.volume.size()) - open) * cell;
}

TEST(CaseScene, KeepsAreasAndVolumesHoweverTheCellsLie) {
  for (const double turn : {0.0, 0.3, -0.6}) {
    City city;
    city.buildings = {house({0.7, 1.3}, 14, 8, 6, 9, 0.4), house({30.0, 4.0}, 12, 8, 7.5, 9, 0.0)};
    GroundArea lawn;
    lawn.kind = "grass";
    lawn.area.outer = {{-5, -5}, {40, -5}, {40, 6}, {-5, 6}};
    city.ground = {lawn};
    const District district = make_scene(city, options_of(turn));
    const Scene& scene = district.scene;
    const double slope = std::hypot(4.0, 3.0) * 14 * 2 + std::hypot(4.0, 1.5) * 12 * 2;
    EXPECT_NEAR(area_of(scene, "tiles"), slope, 1e-9);
    const double walls = 2 * (14 * 6 + 8 * 7.5) + 2 * (12 * 7.5 + 8 * 8.25);
    EXPECT_NEAR(area_of(scene, "brick"), 0.75 * walls, 1e-9);
    EXPECT_NEAR(area_of(scene, "glass"), 0.25 * walls, 1e-9);
    const auto side = [&scene](std::size_t a) {
      return scene.grid.nodes[a].back() - scene.grid.nodes[a].front();
    };
    EXPECT_NEAR(area_of(scene, "asphalt") + area_of(scene, "grass"),
                side(0) * side(1) - 14 * 8 - 12 * 8, 1e-8);
    EXPECT_LT(area_of(scene, "grass"), 45 * 11);
    EXPECT_NEAR(solid_volume(district), 14 * 8 * 7.5 + 12 * 8 * 8.25, 1e-8);
  }
}

TEST(CaseScene, ClosesTheFacesThatABlockFills) {
  City city;
  city.buildings = {house({3, 4}, 6, 8, 5, 5, 0.0)};  // two cells each way, to the planes
  const District district = make_scene(city, options_of(0.0));
  const Porous& porous = district.porous;
  const auto& nodes = district.scene.grid.nodes;
  const std::array<std::int32_t, 3> first{cell_of(nodes[0], 4.0), cell_of(nodes[1], 5.0), 1};
  const auto face = [&](std::array<std::int32_t, 3> cell, std::size_t axis, std::size_t end) {
    return porous.face[axis][end][porous.at(cell)];
  };
  EXPECT_EQ(porous.volume[porous.at(first)], 0.0);
  EXPECT_EQ(face(first, 0, 0), 0.0);
  EXPECT_EQ(face({first[0] - 1, first[1], 1}, 0, 1), 0.0);  // seen from the street
  EXPECT_EQ(face({first[0] - 1, first[1], 1}, 0, 0), 1.0);
  EXPECT_EQ(face({first[0], first[1] + 2, 2}, 1, 0), 0.0);
  EXPECT_EQ(face({first[0], first[1], 3}, 2, 0), 0.0);  // above the roof
  EXPECT_EQ(face({first[0], first[1], 3}, 2, 1), 1.0);
  EXPECT_EQ(porous.volume[porous.at({first[0], first[1], 3})], 1.0);
  for (const Group& group : district.scene.groups) {
    if (group.kind != PatchKind::building || !porous.has(group.cell)) continue;
    EXPECT_EQ(porous.volume[porous.at(group.cell)], 1.0);  // all have air before them
  }
}

TEST(CaseScene, HalvesTheFacesOfACellThatARoofCutsInHalf) {
  City city;
  city.buildings = {house({3, 4}, 6, 8, 3.75, 3.75, 0.0)};  // one and a half layers high
  const District district = make_scene(city, options_of(0.0));
  const Porous& porous = district.porous;
  const auto& nodes = district.scene.grid.nodes;
  const std::array<std::int32_t, 3> cut{cell_of(nodes[0], 4.0), cell_of(nodes[1], 5.0), 2};
  EXPECT_NEAR(porous.volume[porous.at(cut)], 0.5, 1e-12);
  for (const std::size_t axis : {0U, 1U}) {
    for (const std::size_t end : {0U, 1U}) {
      EXPECT_NEAR(porous.face[axis][end][porous.at(cut)], 0.5, 1e-12);
    }
  }
  EXPECT_EQ(porous.face[2][0][porous.at(cut)], 0.0);
  EXPECT_EQ(porous.face[2][1][porous.at(cut)], 1.0);
}

TEST(CaseScene, CrownsKeepTheirLeavesAndShowTheirOuterFaces) {
  City city;
  Tree tree;
  tree.foot = {20.3, 20.8};
  tree.height = 11.0;
  tree.crown_base = 3.0;
  tree.radius = 5.0;
  tree.leaf_area = 1.2;
  city.trees = {tree};
  const District district = make_scene(city, options_of(0.0));
  double leaves = 0.0;
  for (const auto& [cell, density] : district.leaves.density) leaves += density * 3.0 * 4.0 * 2.5;
  const double crown = 4.0 / 3.0 * 3.14159265 * 5.0 * 5.0 * 4.0;
  EXPECT_NEAR(leaves, 1.2 * crown, 0.02 * 1.2 * crown);
  Vector3 sum;  // the faces close around the leaves
  for (const Group& group : district.scene.groups) {
    if (group.kind != PatchKind::tree) continue;
    sum = sum + group.area * group.normal;
    EXPECT_FALSE(district.leaves.density.contains(group.cell));
  }
  EXPECT_NEAR(length(sum), 0.0, 1e-9);
}

}  // namespace
}  // namespace townskin_case
