#include "make_scene.hpp"

#include "ground.hpp"

namespace townskin_case {

namespace {

void add_boundary(Scene& scene) {
  const auto length_of = [&scene](std::size_t a) {
    return scene.grid.nodes[a].back() - scene.grid.nodes[a].front();
  };
  Group group;
  group.kind = PatchKind::far;
  group.normal = {0.0, 0.0, 1.0};
  group.area = 2.0 * (length_of(0) + length_of(1)) * length_of(2);
  group.cell = {1, 1, 1};
  const auto index = static_cast<std::int32_t>(scene.groups.size());
  scene.patches.push_back({index, -1, group.area, "boundary"});
  scene.groups.push_back(std::move(group));
}

}  // namespace

District make_scene(const City& city, const SceneOptions& options) {
  District out;
  Scene& scene = out.scene;
  scene.grid = make_grid(city, options.grid);
  const std::vector<CutFace> faces = cut_faces(city, scene.grid);
  out.porous = open_fractions(scene.grid, faces);
  add_buildings(city, faces, out.porous, options.build_up, scene);
  add_ground(city, options.ground, scene);
  out.leaves = spread_leaves(city, scene.grid, out.porous);
  add_crowns(out.leaves, out.porous, scene);
  if (options.boundary) add_boundary(scene);
  return out;
}

}  // namespace townskin_case
