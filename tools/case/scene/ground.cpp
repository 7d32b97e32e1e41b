#include "scene/ground.hpp"

#include <map>

#include "scene/grid.hpp"
#include "scene/groups.hpp"
#include "scene/parts.hpp"
#include "shapes/regions.hpp"

namespace townskin_case {

namespace {

/// The whole grid on the ground, in true directions.
Polygon2 site_of(const CellGrid& grid) {
  const auto& x = grid.nodes[0];
  const auto& y = grid.nodes[1];
  Polygon2 site;
  for (const auto& [u, v] : {std::pair{x.front(), y.front()},
                             {x.back(), y.front()},
                             {x.back(), y.back()},
                             {x.front(), y.back()}}) {
    const Vector3 corner = from_cells(grid, {u, v, 0.0});
    site.outer.push_back({corner.x, corner.y});
  }
  return site;
}

/// Regions by kind; none overlaps another.
std::map<std::string, Region> regions_of(const City& city, const std::string& other,
                                         const CellGrid& grid) {
  std::vector<Polygon2> covered;
  for (const Building& building : city.buildings) {
    covered.insert(covered.end(), building.footprint.begin(), building.footprint.end());
  }
  Leftover left(site_of(grid), covered);
  std::map<std::string, Region> regions;
  const auto keep = [&regions](const std::string& kind, const Region& held) {
    Region& of_kind = regions[kind];
    of_kind.insert(of_kind.end(), held.begin(), held.end());
  };
  for (auto area = city.ground.rbegin(); area != city.ground.rend(); ++area) {
    keep(area->kind, left.take(area->area));
  }
  keep(other, left.rest());
  return regions;
}

std::vector<Piece> pieces_of(const CellGrid& grid, const Region& region) {
  std::vector<Piece> all;
  for (const Polygon2& polygon : region) {
    for (const auto& triangle : triangles_of(polygon)) {
      Ring3 ring;
      for (const Point2& at : triangle) ring.push_back(to_cells(grid, {at.x, at.y, 0.0}));
      cut_along(grid, ring, {0.0, 0.0, 1.0}, all);
    }
  }
  return all;
}

}  // namespace

void add_ground(const City& city, const std::string& other, double sliver, Scene& scene) {
  for (const auto& [kind, region] : regions_of(city, other, scene.grid)) {
    const PatchKind type = kind == "water" ? PatchKind::water : PatchKind::land;
    const std::vector<Piece> pieces = pieces_of(scene.grid, region);
    for (const auto& [cell, part] : parts_of(scene.grid, pieces, {0.0, 0.0, 1.0}, sliver)) {
      add_group(scene, type, part.pieces).cover = kind;
    }
  }
}

}  // namespace townskin_case
