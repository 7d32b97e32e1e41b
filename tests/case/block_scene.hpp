// A district by hand: one block in the middle of a flat plate, on cells of 4 x 4 x 3 m.
#pragma once

#include <array>
#include <vector>

#include "city/city.hpp"
#include "scene/scene.hpp"

namespace block_scene {

using namespace townskin_case;

constexpr double kCell = 4.0, kLayer = 3.0;
constexpr int kSide = 6;           // cells of the plate along x and y
constexpr int kFrom = 2, kTo = 4;  // the block's cells: from 2 up to 4, without 4
constexpr int kStoreys = 2, kLayers = 6;

/// Adds a rectangle from `corner` along two edges; its normal is their cross product.
inline void add(Scene& scene, Group group, const Vector3& corner, const Vector3& a,
                const Vector3& b) {
  const Vector3 normal = cross(a, b);
  group.area = length(normal);
  group.normal = (1.0 / group.area) * normal;
  group.shapes = {{{corner, corner + a, corner + a + b, corner + b}, {}}};
  const auto first = static_cast<std::uint32_t>(scene.mesh.points.size());
  for (const Vector3& point : group.shapes[0].outer) scene.mesh.points.push_back(point);
  const auto number = static_cast<std::int32_t>(scene.groups.size());
  for (const std::array<std::uint32_t, 3>& triangle :
       {std::array<std::uint32_t, 3>{first, first + 1, first + 2}, {first, first + 2, first + 3}}) {
    scene.mesh.triangles.push_back(triangle);
    scene.mesh.group.push_back(number);
  }
  scene.groups.push_back(std::move(group));
}

inline Group wall_at(std::int32_t i, std::int32_t j, std::int32_t k) {
  Group group;
  group.kind = PatchKind::building;
  group.building = 0;
  group.cell = {i, j, k};
  return group;
}

inline void add_walls(Scene& scene) {
  const Vector3 up{0, 0, kLayer};
  for (int k = 0; k < kStoreys; ++k) {
    for (int n = kFrom; n < kTo; ++n) {
      const double from = kFrom * kCell, to = kTo * kCell, at = n * kCell, z = k * kLayer;
      add(scene, wall_at(n + 1, kFrom, k + 1), {at, from, z}, {kCell, 0, 0}, up);           // south
      add(scene, wall_at(n + 1, kTo + 1, k + 1), {at + kCell, to, z}, {-kCell, 0, 0}, up);  // north
      add(scene, wall_at(kFrom, n + 1, k + 1), {from, at + kCell, z}, {0, -kCell, 0}, up);  // west
      add(scene, wall_at(kTo + 1, n + 1, k + 1), {to, at, z}, {0, kCell, 0}, up);           // east
    }
  }
}

/// `cover` is the ground's kind; the plate's first cell is of `other`.
inline Scene scene(const std::string& cover = "asphalt", const std::string& other = "asphalt") {
  Scene scene;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (int n = 0; n <= (axis < 2 ? kSide : kLayers); ++n) {
      scene.grid.nodes[axis].push_back(n * (axis < 2 ? kCell : kLayer));
    }
  }
  for (int j = 0; j < kSide; ++j) {
    for (int i = 0; i < kSide; ++i) {
      const bool inside = i >= kFrom && i < kTo && j >= kFrom && j < kTo;
      Group group = wall_at(i + 1, j + 1, inside ? kStoreys + 1 : 1);
      group.face = FaceKind::roof;
      if (!inside) {
        group.kind = PatchKind::land;
        group.building = -1;
        group.cover = i + j == 0 ? other : cover;
      }
      add(scene, group, {i * kCell, j * kCell, inside ? kStoreys * kLayer : 0.0}, {kCell, 0, 0},
          {0, kCell, 0});
    }
  }
  add_walls(scene);
  Group far;
  far.kind = PatchKind::far;
  far.normal = {0, 0, 1};
  far.cell = {1, 1, 1};
  scene.groups.push_back(far);
  for (int j = kFrom + 1; j <= kTo; ++j) {
    for (int i = kFrom + 1; i <= kTo; ++i) {
      for (int k = 1; k <= kStoreys; ++k) {
        scene.porous.push_back({{i, j, k}, 0.0, {0, 0, 0, 0, 0, 0}});
      }
    }
  }
  return scene;
}

inline City city() {
  Building building;
  building.origin = {"by hand", "#1"};
  building.floor_area = 4.0 * kCell * kCell;
  building.storeys = kStoreys;
  building.height = kStoreys * kLayer;
  building.volume = building.floor_area * building.height;
  building.attributes = {{"year", "1962"}, {"kind", "office"}};
  City city;
  city.buildings.push_back(building);
  return city;
}

}  // namespace block_scene
