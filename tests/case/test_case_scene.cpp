// Cutting along the grid loses nothing: areas, volumes, open fractions, by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "scene/crowns.hpp"
#include "scene/cut.hpp"
#include "scene/grid.hpp"
#include "scene/porous.hpp"

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
  Ring2 ring;
  for (const auto& [u, v] : {std::pair{0.0, 0.0}, {length, 0.0}, {length, width}, {0.0, width}}) {
    const Vector3 p = at(u, v, 0);
    ring.push_back({p.x, p.y});
  }
  out.footprint = {{ring, {}}};
  return out;
}

Site site_of(double turn) {
  Site site;
  site.grid.cell = {3.0, 4.0, 2.5};
  site.grid.margin = 11.0;
  site.grid.above = 10.0;
  site.grid.rotate = turn;
  return site;
}

Scene cut(const City& city, double turn = 0.0) {
  Report report;
  return cut_city(city, site_of(turn), report);
}

template <class Counts>
double area_where(const Scene& scene, Counts&& counts) {
  double sum = 0.0;
  for (const Group& group : scene.groups) sum += counts(group) ? group.area : 0.0;
  return sum;
}

double area_of(const Scene& scene, FaceKind face) {
  return area_where(scene, [face](const Group& group) {
    return group.kind == PatchKind::building && group.face == face;
  });
}

double area_of(const Scene& scene, const std::string& cover) {
  return area_where(scene, [&cover](const Group& group) { return group.cover == cover; });
}

double solid_volume(const Scene& scene) {
  double sum = 0.0;
  for (const PorousCell& cell : scene.porous) sum += (1.0 - cell.volume) * 3.0 * 4.0 * 2.5;
  return sum;
}

/// Of the cell that holds a place; fully open where it is not listed.
PorousCell porous_at(const Scene& scene, const Vector3& place) {
  const auto& nodes = scene.grid.nodes;
  const std::array<std::int32_t, 3> cell{cell_of(nodes[0], place.x), cell_of(nodes[1], place.y),
                                         cell_of(nodes[2], place.z)};
  for (const PorousCell& one : scene.porous) {
    if (one.cell == cell) return one;
  }
  return {cell, 1.0, {1.0, 1.0, 1.0, 1.0, 1.0, 1.0}};
}

TEST(CaseScene, KeepsAreasAndVolumesHoweverTheCellsLie) {
  for (const double turn : {0.0, 17.0, -35.0}) {
    City city;
    city.buildings = {house({0.7, 1.3}, 14, 8, 6, 9, 0.4), house({30.0, 4.0}, 12, 8, 7.5, 9, 0.0)};
    GroundArea lawn;
    lawn.kind = "grass";
    lawn.area.outer = {{-5, -5}, {40, -5}, {40, 6}, {-5, 6}};
    city.ground = {lawn};
    const Scene scene = cut(city, turn);
    const double slope = std::hypot(4.0, 3.0) * 14 * 2 + std::hypot(4.0, 1.5) * 12 * 2;
    EXPECT_NEAR(area_of(scene, FaceKind::roof), slope, 1e-9);
    const double walls = 2 * (14 * 6 + 8 * 7.5) + 2 * (12 * 7.5 + 8 * 8.25);
    EXPECT_NEAR(area_of(scene, FaceKind::wall), walls, 1e-9);
    const auto side = [&scene](std::size_t a) {
      return scene.grid.nodes[a].back() - scene.grid.nodes[a].front();
    };
    EXPECT_NEAR(area_of(scene, "asphalt") + area_of(scene, "grass"),
                side(0) * side(1) - 14 * 8 - 12 * 8, 1e-8);
    EXPECT_LT(area_of(scene, "grass"), 45 * 11);
    EXPECT_NEAR(solid_volume(scene), 14 * 8 * 7.5 + 12 * 8 * 8.25, 1e-8);
  }
}

TEST(CaseScene, ClosesTheFacesThatABlockFills) {
  City city;
  city.buildings = {house({3, 4}, 6, 8, 5, 5, 0.0)};  // two cells each way, to the planes
  const Scene scene = cut(city);
  using Faces = std::array<double, 6>;
  EXPECT_EQ(porous_at(scene, {4, 5, 1}).volume, 0.0);
  EXPECT_EQ(porous_at(scene, {4, 5, 1}).faces, (Faces{}));
  EXPECT_EQ(porous_at(scene, {2, 5, 1}).volume, 1.0);
  EXPECT_EQ(porous_at(scene, {2, 5, 1}).faces, (Faces{1, 0, 1, 1, 1, 1}));  // the street
  EXPECT_EQ(porous_at(scene, {4, 13, 4}).faces, (Faces{1, 1, 0, 1, 1, 1}));
  EXPECT_EQ(porous_at(scene, {4, 5, 6}).faces, (Faces{1, 1, 1, 1, 0, 1}));  // above the roof
  EXPECT_EQ(porous_at(scene, {0, 0, 1}).faces, (Faces{1, 1, 1, 1, 1, 1}));
  for (const Group& group : scene.groups) {
    const auto of = std::ranges::find(scene.porous, group.cell, &PorousCell::cell);
    if (of == scene.porous.end()) continue;
    EXPECT_EQ(of->volume, 1.0);  // all have air before them
  }
}

TEST(CaseScene, HalvesTheFacesOfACellThatARoofCutsInHalf) {
  City city;
  city.buildings = {house({3, 4}, 6, 8, 3.75, 3.75, 0.0)};  // one and a half layers high
  const PorousCell half = porous_at(cut(city), {4, 5, 3});
  EXPECT_NEAR(half.volume, 0.5, 1e-12);
  for (std::size_t side = 0; side < 4; ++side) EXPECT_NEAR(half.faces[side], 0.5, 1e-12);
  EXPECT_EQ(half.faces[4], 0.0);
  EXPECT_EQ(half.faces[5], 1.0);
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
  for (const std::int32_t division : {1, 3}) {
    Site site = site_of(0.0);
    site.grid.tree_division = division;
    Report report;
    const Scene scene = cut_city(city, site, report);
    double leaves = 0.0;
    for (const LeafCell& leaf : scene.leaves) {
      leaves += leaf.density * 3.0 * 4.0 * 2.5 / (division * division);
    }
    const double crown = 4.0 / 3.0 * std::numbers::pi * 5.0 * 5.0 * 4.0;
    EXPECT_NEAR(leaves, 1.2 * crown, 0.02 * 1.2 * crown);
    Vector3 sum;  // the faces close around the leaves
    for (const Group& group : scene.groups) {
      if (group.kind == PatchKind::tree) sum = sum + group.area * group.normal;
    }
    EXPECT_NEAR(length(sum), 0.0, 1e-9);
  }
}

}  // namespace
}  // namespace townskin_case
