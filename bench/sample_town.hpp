// Scenes of rectangles for the tests and benchmarks of rays: single faces, blocks and whole towns.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/scene.hpp"

namespace sample {

using townskin_case::Group;
using townskin_case::PatchKind;
using townskin_case::Scene;
using townskin_case::Vector3;

/// A rectangle as n x m groups; its outer side is that of cross(first, second). Returns the first
/// group's number; they follow row by row along `first`.
inline std::int32_t add_face(Scene& scene, Vector3 corner, Vector3 first, Vector3 second, int n = 1,
                             int m = 1, PatchKind kind = PatchKind::land) {
  const auto number = static_cast<std::int32_t>(scene.groups.size());
  const Vector3 normal = cross(first, second);
  const Vector3 a = (1.0 / n) * first;
  const Vector3 b = (1.0 / m) * second;
  for (int j = 0; j < m; ++j) {
    for (int i = 0; i < n; ++i) {
      const Vector3 p = corner + static_cast<double>(i) * a + static_cast<double>(j) * b;
      const auto at = static_cast<std::uint32_t>(scene.mesh.points.size());
      const auto group = static_cast<std::int32_t>(scene.groups.size());
      scene.mesh.points.insert(scene.mesh.points.end(), {p, p + a, p + a + b, p + b});
      scene.mesh.triangles.push_back({at, at + 1, at + 2});
      scene.mesh.triangles.push_back({at, at + 2, at + 3});
      scene.mesh.group.insert(scene.mesh.group.end(), {group, group});
      Group made;
      made.shapes = {{{p, p + a, p + a + b, p + b}, {}}};
      made.normal = (1.0 / length(normal)) * normal;
      made.area = length(normal) / n / m;
      made.kind = kind;
      scene.groups.push_back(made);
    }
  }
  return number;
}

/// A block from `low` to `high` without a floor: four walls and a roof, cut into faces of about
/// `cell`; cells of 0 leave each side whole. `floor`: with the face below, too.
inline std::int32_t add_block(Scene& scene, Vector3 low, Vector3 high, double cell = 0.0,
                              PatchKind kind = PatchKind::building, bool floor = false) {
  const Vector3 x{high.x - low.x, 0, 0};
  const Vector3 y{0, high.y - low.y, 0};
  const Vector3 z{0, 0, high.z - low.z};
  const auto cuts = [&](const Vector3& edge) {
    return cell > 0.0 ? std::max(1, static_cast<int>(std::lround(length(edge) / cell))) : 1;
  };
  const auto number = add_face(scene, low + z, x, y, cuts(x), cuts(y), kind);  // up
  add_face(scene, low, x, z, cuts(x), cuts(z), kind);                          // to -y
  add_face(scene, high - z, {-x.x, 0, 0}, z, cuts(x), cuts(z), kind);          // to +y
  add_face(scene, low + y, {0, -y.y, 0}, z, cuts(y), cuts(z), kind);           // to -x
  add_face(scene, low + x, y, z, cuts(y), cuts(z), kind);                      // to +x
  if (floor) add_face(scene, low, y, x, cuts(y), cuts(x), kind);               // down
  return number;
}

/// n x n blocks of differing height on ground, with streets between them and a far boundary; all
/// faces about `cell` wide. A town of n = 22 with cells of 2 m has some 100,000 groups.
inline Scene town(int n, double cell) {
  constexpr double kBlock = 16.0;
  constexpr double kStreet = 12.0;
  constexpr double kStep = kBlock + kStreet;
  Scene scene;
  const auto cut = [&](double width) { return std::max(1, static_cast<int>(width / cell)); };
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      const double x = i * kStep;
      const double y = j * kStep;
      const double height = 6.0 + 2.0 * ((7 * i + 5 * j + i * j) % 10);
      add_block(scene, {x, y, 0}, {x + kBlock, y + kBlock, height}, cell);
      add_face(scene, {x + kBlock, y, 0}, {kStreet, 0, 0}, {0, kBlock, 0}, cut(kStreet),
               cut(kBlock));
      add_face(scene, {x, y + kBlock, 0}, {kStep, 0, 0}, {0, kStreet, 0}, cut(kStep), cut(kStreet));
    }
  }
  Group far;
  far.kind = PatchKind::far;
  far.normal = {0, 0, 1};
  scene.groups.push_back(far);
  return scene;
}

}  // namespace sample
