#include "scene/cut.hpp"

#include "scene/crowns.hpp"
#include "scene/grid.hpp"
#include "scene/ground.hpp"
#include "scene/groups.hpp"
#include "scene/open_air.hpp"

namespace townskin_case {

namespace {

/// Its four sides; rays that leave the district below the horizon are its.
void add_boundary(Scene& scene) {
  const auto length_of = [&scene](std::size_t a) {
    return scene.grid.nodes[a].back() - scene.grid.nodes[a].front();
  };
  Group group;
  group.kind = PatchKind::far;
  group.normal = {0.0, 0.0, 1.0};
  group.area = 2.0 * (length_of(0) + length_of(1)) * length_of(2);
  group.cell = {1, 1, 1};
  scene.groups.push_back(std::move(group));
}

/// The cells that are not fully open, with the faces in the order of the files.
std::vector<PorousCell> porous_cells(const Porous& porous) {
  std::vector<PorousCell> cells;
  std::array<std::int32_t, 3> cell{};
  for (cell[2] = 1; cell[2] <= porous.cells[2]; ++cell[2]) {
    for (cell[1] = 1; cell[1] <= porous.cells[1]; ++cell[1]) {
      for (cell[0] = 1; cell[0] <= porous.cells[0]; ++cell[0]) {
        const std::size_t at = porous.at(cell);
        PorousCell one{cell, porous.volume[at], {}};
        bool open = one.volume == 1.0;
        for (std::size_t f = 0; f < one.faces.size(); ++f) {
          one.faces[f] = porous.face[f / 2][f % 2][at];
          open = open && one.faces[f] == 1.0;
        }
        if (!open) cells.push_back(one);
      }
    }
  }
  return cells;
}

}  // namespace

Scene cut_city(const City& city, const Site& site, Report& report) {
  Scene scene;
  scene.grid = make_grid(city, site.grid);
  const std::vector<CutFace> faces = cut_faces(city, scene.grid);
  const Porous porous = open_fractions(scene.grid, faces);
  const Porous air = open_air(porous);
  scene.porous = porous_cells(porous);
  scene.air = porous_cells(air);
  add_buildings(faces, air, site.grid.sliver, scene);
  add_ground(city, site.ground.fallback, site.grid.sliver, scene);
  for (Group& group : scene.groups) group.cell = air_above(air, group.cell);
  const Leaves leaves = spread_leaves(city, scene.grid, porous, site.grid.tree_division);
  if (leaves.cut > 0) {
    report.warning(std::to_string(leaves.cut) +
                   " cells of crowns have no leaves, as they lie within buildings");
  }
  if (site.grid.far_boundary) add_boundary(scene);
  add_crowns(leaves, scene);
  return scene;
}

}  // namespace townskin_case
