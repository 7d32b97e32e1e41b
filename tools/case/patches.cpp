#include "patches.hpp"

#include <algorithm>
#include <cmath>

#include "grid.hpp"
#include "parts.hpp"

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

void add_building_patches(Scene& scene, std::int32_t group, const CutFace& face,
                          const BuildUp& build_up) {
  const double area = scene.groups[static_cast<std::size_t>(group)].area;
  if (face.kind == FaceKind::roof) {
    scene.patches.push_back({group, face.building, area, build_up.roof});
    return;
  }
  const double glass = area * build_up.window_share;
  scene.patches.push_back({group, face.building, area - glass, build_up.wall});
  if (glass > 0.0) scene.patches.push_back({group, face.building, glass, build_up.window});
}

}  // namespace

std::int32_t add_group(Scene& scene, PatchKind kind, const std::vector<Piece>& pieces) {
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
  scene.groups.push_back(std::move(group));
  return index;
}

void add_buildings(const City& city, const std::vector<CutFace>& faces, const Porous& porous,
                   const BuildUpOf& build_up, Scene& scene) {
  for (const CutFace& face : faces) {
    const BuildUp of = build_up(city.buildings[static_cast<std::size_t>(face.building)]);
    const Parts parts = parts_of(scene.grid, face.pieces, face.normal);
    for (const auto& [cell, part] : parts) {
      const std::int32_t group = add_group(scene, PatchKind::building, part.pieces);
      scene.groups[static_cast<std::size_t>(group)].cell = cell_of_air(porous, cell, face.normal);
      add_building_patches(scene, group, face, of);
    }
  }
}

}  // namespace townskin_case
