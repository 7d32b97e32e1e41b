#include "scene/groups.hpp"

#include <algorithm>
#include <cmath>

#include "scene/grid.hpp"
#include "scene/parts.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {

namespace {

using Cell = std::array<std::int32_t, 3>;

/// The cell of the air at a part: its own, or the next one in front where that holds more air.
Cell cell_of_air(const Porous& porous, const Cell& own, const Vector3& normal) {
  Cell front = own;
  const std::array<double, 3> n{normal.x, normal.y, normal.z};
  const auto axis = static_cast<std::size_t>(
      std::ranges::max_element(n, {}, [](double part) { return std::abs(part); }) - n.begin());
  front[axis] += n[axis] < 0.0 ? -1 : 1;
  if (!porous.has(own)) return front;
  if (porous.volume[porous.at(own)] >= 0.5 || !porous.has(front)) return own;
  return porous.volume[porous.at(front)] > porous.volume[porous.at(own)] ? front : own;
}

}  // namespace

Group& add_group(Scene& scene, PatchKind kind, const std::vector<Piece>& pieces) {
  const auto index = static_cast<std::int32_t>(scene.groups.size());
  Group group;
  group.kind = kind;
  group.cell = pieces.front().cell;
  Vector3 whole;
  for (const Piece& piece : pieces) {
    Polygon3 shape;
    for (const Vector3& point : piece.ring) shape.outer.push_back(from_cells(scene.grid, point));
    const auto first = static_cast<std::uint32_t>(scene.mesh.points.size());
    scene.mesh.points.insert(scene.mesh.points.end(), shape.outer.begin(), shape.outer.end());
    for (std::uint32_t p = 1; p + 1 < shape.outer.size(); ++p) {
      scene.mesh.triangles.push_back({first, first + p, first + p + 1});
      scene.mesh.group.push_back(index);
    }
    whole = whole + area_vector(shape.outer);
    group.area += length(area_vector(shape.outer));
    group.shapes.push_back(std::move(shape));
  }
  group.normal = (1.0 / length(whole)) * whole;
  return scene.groups.emplace_back(std::move(group));
}

void add_buildings(const std::vector<CutFace>& faces, const Porous& porous, double sliver,
                   Scene& scene) {
  for (const CutFace& face : faces) {
    for (const auto& [cell, part] : parts_of(scene.grid, face.pieces, face.normal, sliver)) {
      Group& group = add_group(scene, PatchKind::building, part.pieces);
      group.cell = cell_of_air(porous, cell, face.normal);
      group.building = face.building;
      group.face = face.kind;
    }
  }
}

}  // namespace townskin_case
